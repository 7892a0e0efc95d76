// SPDX-License-Identifier: Apache-2.0
//
// What an open workbook says about itself, its sheets, saving and closing. Opening is in
// com_book_open.cpp.
#include "spreadsheet/com/com_book.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "foundation/ascii_case.h"
#include "spreadsheet/com/com_sheet.h"
#include "spreadsheet/com/workbook_path.h"

namespace spreadsheet {
namespace {

using foundation::automation::integer_in;
using foundation::automation::is_true;
using foundation::automation::Variant;

constexpr std::string_view kTag = "[COM BOOK MSG]:";

/// The application's numbers of the kinds of sheets.
constexpr LONG kWorksheet = -4167;
constexpr LONG kChart = -4109;

/// The application's number of a file format.
LONG file_format_number(book::format format) {
    switch (format) {
    case book::format::XLS:
        return -4143;
    case book::format::XLSM:
        return 52;
    case book::format::XLSB:
        return 50;
    case book::format::XLTX:
        return 54;
    case book::format::XLTM:
        return 53;
    case book::format::ODS:
        return 60;
    case book::format::CSV:
        return 6;
    default:
        return 51;
    }
}

/// Puts the sheet before the user at the end of a scope that was before him at its beginning.
class ActiveSheetKeeper {
  public:
    explicit ActiveSheetKeeper(IDispatch* workbook)
        : sheet_(com::get(workbook, OLESTR("ActiveSheet")).object()) {}
    ActiveSheetKeeper(const ActiveSheetKeeper&) = delete;
    ActiveSheetKeeper& operator=(const ActiveSheetKeeper&) = delete;
    ~ActiveSheetKeeper() {
        try {
            if (sheet_) com::call(sheet_.get(), OLESTR("Activate"));
        } catch (const std::exception&) {
            // Out of memory: another sheet is before the user.
        }
    }

  private:
    const std::shared_ptr<IDispatch> sheet_;
};

} // namespace

COMBook::COMBook() = default;

COMBook::~COMBook() {
    try {
        close_workbook();
    } catch (const std::exception&) {
        // Out of memory for a call: what is held goes without it.
    }
}

void COMBook::close_workbook() {
    if (workbook_) {
        sheets_.clear();
        // One owner is the instance's entry; a workbook on the screen is the user's.
        if (workbook_.use_count() == 2 && !application_->visible()) {
            com::put(workbook_.get(), OLESTR("Saved"), Variant::integer(1));
            com::call(workbook_.get(), OLESTR("Close"));
        }
    }
    workbook_.reset();
    if (restore_alerts_) show_alerts(true);
    if (application_) application_->release_unused_refs();
    worksheets_.reset();
    application_.reset();
}

void COMBook::show_alerts(bool on) {
    com::put(application_->application(), OLESTR("DisplayAlerts"), Variant::boolean(on));
}

// --- What the book says about itself

bool COMBook::is_interactive() const {
    return true;
}

book::format COMBook::format() const {
    return format_;
}

bool COMBook::are_dates_1904() const {
    const com::CallResult result = com::get(workbook_.get(), OLESTR("Date1904"));
    return result && is_true(result.value.get());
}

std::size_t COMBook::num_sheets() const {
    return sheets_.size();
}

std::optional<std::u16string> COMBook::get_sheet_name(const int) const {
    return std::nullopt;
}

bool COMBook::is_loaded() const {
    return workbook_ && worksheets_;
}

bool COMBook::is_sheet_loaded() const {
    return false;
}

bool COMBook::sheet_names_only_required() const {
    return false;
}

std::vector<std::u16string> COMBook::get_sheet_names() const {
    return {};
}

// --- Sheets

std::shared_ptr<ISheet> COMBook::sheet(const std::u16string& name) const {
    for (const std::shared_ptr<COMSheet>& candidate : sheets_)
        if (foundation::unicode::equal_ignoring_ascii_case(candidate->name(), name))
            return candidate;
    return nullptr;
}

std::shared_ptr<ISheet> COMBook::sheet(std::size_t index) const {
    return index < sheets_.size() ? sheets_[index] : nullptr;
}

sheet::type COMBook::sheet_type(std::size_t index) const {
    constexpr error_id kUnknown = error_id::sheet_type_unknown;
    IDispatch* const object = index < sheets_.size() ? sheets_[index]->object() : nullptr;
    const Variant type = com::get(object, OLESTR("Type")).or_fail(kTag, kUnknown);
    switch (integer_in(type.get()).value_or(0)) {
    case kWorksheet:
        return sheet::type::worksheet;
    case kChart:
        return sheet::type::chart;
    default:
        com::fail_call(kTag, kUnknown, OLESTR("Type"), S_OK);
    }
}

std::shared_ptr<COMSheet> COMBook::make_sheet(std::shared_ptr<IDispatch> sheet) const {
    return std::make_shared<COMSheet>(application_, std::move(sheet), format_);
}

std::shared_ptr<ISheet> COMBook::add_sheet(std::size_t index, const std::u16string& name,
                                           const std::u16string& second_name) {
    constexpr error_id kNotAdded = error_id::sheet_not_created;
    if (!second_name.empty())
        com::fail(kTag, kNotAdded,
                  {FailureKind::Unsupported,
                   "Sheets cannot be copied in interactive mode; add an empty one."});
    if (index > sheets_.size() || sheets_.empty())
        com::fail(kTag, kNotAdded,
                  {FailureKind::Missing, "The workbook has no sheet beside that place."});
    const ActiveSheetKeeper keeper(workbook_.get());
    return insert_sheet(index, name);
}

std::shared_ptr<COMSheet> COMBook::insert_sheet(std::size_t index, const std::u16string& name) {
    const Variant neighbour = Variant::object(sheets_[index == 0 ? 0 : index - 1]->object());
    const Variant missing = Variant::null();
    const Variant& before = index == 0 ? neighbour : missing;
    const Variant& after = index == 0 ? missing : neighbour;
    const auto object =
        application_->adopt(com::call(worksheets_.get(), OLESTR("Add"), {after.get(), before.get()})
                                .release_object_or_fail(kTag, error_id::sheet_not_created));
    std::shared_ptr<COMSheet> added = make_sheet(object);
    const auto place = sheets_.insert(sheets_.begin() + static_cast<std::ptrdiff_t>(index), added);
    try {
        added->name(name);
    } catch (...) {
        // A sheet that did not get its name does not remain.
        sheets_.erase(place);
        delete_sheet(object.get());
        throw;
    }
    return added;
}

com::CallResult COMBook::delete_sheet(IDispatch* object) {
    // Another book of this application may have switched alerts on when it was closed, and a
    // question of a hidden application is never answered.
    show_alerts(false);
    return com::call(object, OLESTR("Delete"));
}

void COMBook::remove_sheet(std::size_t index) {
    constexpr error_id kNotDeleted = error_id::sheet_not_deleted;
    if (index >= sheets_.size())
        com::fail(kTag, kNotDeleted, {FailureKind::Missing, "The workbook has no such sheet."});
    delete_sheet(sheets_[index]->object()).or_fail(kTag, kNotDeleted);
    sheets_.erase(sheets_.begin() + static_cast<std::ptrdiff_t>(index));
}

void COMBook::move_before(std::size_t index, std::size_t next) {
    const Variant neighbour = Variant::object(sheets_[next]->object());
    com::call(sheets_[index]->object(), OLESTR("Move"), {neighbour.get()})
        .or_fail(kTag, error_id::sheet_not_copied);
    const auto begin = sheets_.begin();
    const auto at = [&](std::size_t place) { return begin + static_cast<std::ptrdiff_t>(place); };
    if (index < next)
        std::rotate(at(index), at(index + 1), at(next));
    else
        std::rotate(at(next), at(index), at(index + 1));
}

void COMBook::reorder_sheet(std::size_t from, std::size_t to) {
    if (from >= sheets_.size() || to >= sheets_.size())
        com::fail(kTag, error_id::sheet_not_found,
                  {FailureKind::Missing, "The workbook has no such sheet."});
    const ActiveSheetKeeper keeper(workbook_.get());
    if (from == to) return;
    const std::size_t last = sheets_.size() - 1;
    if (to < from || (from < to && to < last)) return move_before(from, to < from ? to : to + 1);
    // To the end: the sheet goes before the last one, and that before the sheet.
    if (from + 1 < last) move_before(from, last);
    if (from < last) move_before(last, last - 1);
}

// --- Saving

void COMBook::save(const std::u16string& path) {
    const Variant file_name = Variant::text(com::absolute_path(path));
    const Variant file_format = Variant::integer(file_format_number(format_));
    if (!application_ || application_->application() == nullptr)
        com::fail(kTag, error_id::internal,
                  {FailureKind::NoApplication, "The workbook is not open in an application."});
    show_alerts(false); // an existing file is replaced without a question
    const com::CallResult saved =
        com::call(workbook_.get(), OLESTR("SaveAs"), {file_format.get(), file_name.get()});
    if (saved) return;
    Failure failure = com::cause_of(saved.member, saved.status);
    if (failure.kind == FailureKind::Unknown) failure.kind = FailureKind::FileNotWritten;
    failure.file = path;
    com::fail(kTag, error_id::book_not_saved, std::move(failure));
}

void COMBook::save_to_memory(std::vector<unsigned char>&) {
    com::fail(kTag, error_id::save_to_memory_unsupported,
              {FailureKind::Unsupported, "Interactive mode saves to files, not to memory."});
}

} // namespace spreadsheet
