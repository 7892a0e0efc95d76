// SPDX-License-Identifier: Apache-2.0
//
// Opening a file and making a workbook in the application.
#include <algorithm>
#include <chrono>
#include <utility>

#include "foundation/clock.h"
#include "foundation/files.h"
#include "spreadsheet/com/com_book.h"
#include "spreadsheet/com/com_sheet.h"
#include "spreadsheet/com/workbook_path.h"

namespace spreadsheet {
namespace {

using foundation::automation::integer_in;
using foundation::automation::is_true;
using foundation::automation::Variant;
using std::chrono_literals::operator""ms;

constexpr std::string_view kTag = "[COM BOOK OPEN MSG]:";

/// How long a workbook that is still being loaded is waited for.
constexpr auto kPause = 50ms;
constexpr auto kLongestWait = 5000ms;

constexpr LONG kPlainText = -4158;
constexpr LONG kOpenXmlWorkbook = 51;

/// Why the application has not opened a file; `failure` is what it says itself.
Failure explain_open(const std::u16string& path, Failure failure) {
    failure.file = path;
    if (failure.kind != FailureKind::Unknown) return failure;
    failure.kind = FailureKind::NotAWorkbook;
    try {
        foundation::files::open_for_reading(path);
    } catch (const foundation::files::FileError& problem) {
        failure.kind = problem.problem() == foundation::files::FileProblem::NotFound
                           ? FailureKind::FileNotFound
                           : FailureKind::FileNotReadable;
        failure.cause = problem.what();
    }
    return failure;
}

} // namespace

// --- Both ways

void COMBook::open_workbook(book::format format, const std::u16string* path) {
    format_ = format;
    const std::u16string absolute = path == nullptr ? u"" : com::absolute_path(*path);
    application_ = excel_application::acquire(path == nullptr ? nullptr : absolute.c_str());
    IDispatch* const application = application_->application();
    if (application == nullptr) com::fail_start(RPC_E_DISCONNECTED);
    if (application_->workbooks() != nullptr) {
        const com::CallResult alerts = com::get(application, OLESTR("DisplayAlerts"));
        restore_alerts_ = alerts && is_true(alerts.value.get());
        show_alerts(false);
    }
    workbook_ = path == nullptr ? make_workbook() : open_file(*path);
    show_alerts(false);
    check_file_format(path);
    worksheets_ = application_->adopt(com::get(workbook_.get(), OLESTR("Worksheets"))
                                          .release_object_or_fail(kTag, error_id::internal));
}

void COMBook::check_file_format(const std::u16string* path) {
    auto wait = 0ms;
    com::CallResult result = com::get(workbook_.get(), OLESTR("FileFormat"));
    for (; !result && wait < kLongestWait; wait += kPause) {
        foundation::Clock& clock = foundation::clock();
        clock.sleep_until(clock.now() + kPause);
        result = com::get(workbook_.get(), OLESTR("FileFormat"));
    }
    const bool is_text = path != nullptr && integer_in(result.value.get()) == kPlainText;
    if (result && !is_text) return;
    Failure failure =
        is_text ? Failure{FailureKind::NotAWorkbook,
                          "The application has read the file as plain text, not as a workbook."}
                : com::cause_of(result.member, result.status);
    if (path != nullptr) failure.file = *path;
    com::fail(kTag, error_id::book_not_loaded, std::move(failure));
}

void COMBook::read_date_formats() {
    try {
        application_->date_formats();
    } catch (const Exception&) {
        // Logged; the first question for the types of cells asks again and fails.
    }
}

std::size_t COMBook::count_worksheets() const {
    const Variant count =
        com::get(worksheets_.get(), OLESTR("Count")).or_fail(kTag, error_id::internal);
    const std::optional<LONG> number = integer_in(count.get());
    if (!number || *number < 0) com::fail_call(kTag, error_id::internal, OLESTR("Count"), S_OK);
    return static_cast<std::size_t>(*number);
}

std::shared_ptr<IDispatch> COMBook::worksheet(std::size_t number) {
    return application_->adopt(com::get(worksheets_.get(), OLESTR("Item"),
                                        {Variant::integer(static_cast<LONG>(number)).get()})
                                   .release_object_or_fail(kTag, error_id::internal));
}

// --- From a file

std::shared_ptr<IDispatch> COMBook::open_file(const std::u16string& path) {
    const Variant file_name = Variant::text(com::absolute_path(path));
    com::CallResult opened =
        com::call(application_->workbooks(), OLESTR("Open"), {file_name.get()});
    IDispatch* const workbook = opened ? opened.value.release_object() : nullptr;
    if (workbook == nullptr)
        com::fail(kTag, error_id::book_not_loaded,
                  explain_open(path, com::cause_of(opened.member, opened.status)));
    return application_->adopt(workbook);
}

void COMBook::init_from_file(const std::u16string& path, book::format format) {
    open_workbook(format, &path);
    const std::size_t count = count_worksheets();
    for (std::size_t number = 1; number <= count; ++number)
        sheets_.push_back(make_sheet(worksheet(number)));
    read_date_formats();
}

void COMBook::init_from_file_with_sheet(const std::u16string&, book::format, std::size_t) {}

void COMBook::init_from_file_with_range(const std::u16string&, book::format, std::size_t,
                                        std::size_t, std::size_t) {}

void COMBook::init_from_file_only_sheetNames(const std::u16string&, book::format) {}

void COMBook::init_from_memory(const void*, std::size_t, book::format) {
    com::fail(kTag, error_id::load_from_memory_unsupported,
              {FailureKind::Unsupported, "Interactive mode opens files, not memory."});
}

// --- A new workbook

std::shared_ptr<IDispatch> COMBook::make_workbook() {
    constexpr error_id kNotMade = error_id::book_not_created;
    constexpr const OLECHAR* kDefaultFormat = OLESTR("DefaultSaveFormat");
    IDispatch* const application = application_->application();
    const bool sets_format = book::larger_than_xls(format_);
    Variant kept;
    if (sets_format) {
        kept = com::get(application, kDefaultFormat).or_fail(kTag, kNotMade);
        com::put(application, kDefaultFormat, Variant::integer(kOpenXmlWorkbook))
            .or_fail(kTag, kNotMade);
    }
    com::CallResult added = com::call(application_->workbooks(), OLESTR("Add"));
    if (added ? sets_format : format_ == book::format::XLSX)
        com::put(application, kDefaultFormat, kept);
    return application_->adopt(std::move(added).release_object_or_fail(kTag, kNotMade));
}

void COMBook::init_new(std::size_t sheet_count, book::format format, const std::u16string&) {
    open_workbook(format, nullptr);
    std::size_t count = count_worksheets();
    // A new sheet may come before one that is counted already, so all are made before any is taken.
    for (; count < sheet_count; ++count) {
        com::call(worksheets_.get(), OLESTR("Add")).object_or_fail(kTag, error_id::internal);
    }
    for (std::size_t number = 1; number <= sheet_count; ++number)
        sheets_.push_back(make_sheet(worksheet(number)));
    for (; count > sheet_count; --count) {
        const auto surplus = com::get(worksheets_.get(), OLESTR("Item"),
                                      {Variant::integer(static_cast<LONG>(sheet_count + 1)).get()})
                                 .object_or_fail(kTag, error_id::internal);
        delete_sheet(surplus.get()).or_fail(kTag, error_id::sheet_not_deleted);
    }
    read_date_formats();
}

} // namespace spreadsheet
