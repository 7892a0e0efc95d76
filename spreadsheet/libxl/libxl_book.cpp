// SPDX-License-Identifier: Apache-2.0
//
// Loading a workbook file in each of its modes, and the cache of its sheets. Changes to the book
// are in libxl_book_write.cpp.
#include "spreadsheet/libxl/libxl_book.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "foundation/unicode.h"
#include "spreadsheet/exception.h"
#include "spreadsheet/libxl/chart_sheet.h"
#include "spreadsheet/libxl/libxl_sheet.h"

namespace spreadsheet {
namespace {

/// The built-in number format of a date with a time (ECMA-376 part 1, 18.8.30).
constexpr int kDateTimeNumberFormat = 22;

} // namespace

LibXLBook::LibXLBook(LibraryCreators creators) : creators_(std::move(creators)) {}

LibXLBook::~LibXLBook() {
    if (!book_) return;
    try {
        reporter_->log("[LIBXL BOOK OBJ DTOR MSG]:");
    } catch (const std::exception&) {
        // A record that cannot be delivered must not keep the book from being released.
    }
    book_.reset();
}

// --- What the book says about itself

bool LibXLBook::is_interactive() const {
    return false;
}

book::format LibXLBook::format() const {
    return format_;
}

bool LibXLBook::are_dates_1904() const {
    return book_ && book_->is_date_1904();
}

std::size_t LibXLBook::num_sheets() const {
    return book_ ? static_cast<std::size_t>(book_->sheet_count()) : 0;
}

std::optional<std::u16string> LibXLBook::get_sheet_name(const int index) const {
    return book_ ? std::u16string(book_->get_sheet_name(index)) : std::u16string();
}

sheet::type LibXLBook::sheet_type(std::size_t index) const {
    const bool is_chart =
        book_ && book_->sheet_type(libxl::library_index(index)) == workbook::SheetKind::Chart;
    return is_chart ? sheet::type::chart : sheet::type::worksheet;
}

const std::u16string LibXLBook::get_file_name(bool) {
    return file_name_;
}

bool LibXLBook::is_loaded() const {
    return book_ != nullptr;
}

bool LibXLBook::is_sheet_loaded() const {
    return sheet_loaded_;
}

bool LibXLBook::sheet_names_only_required() const {
    return sheet_names_only_;
}

std::vector<std::u16string> LibXLBook::get_sheet_names() const {
    return sheet_names_;
}

// --- Sheets

std::shared_ptr<ISheet> LibXLBook::sheet(std::size_t index) const {
    return index < sheets_.size() ? sheets_[index] : nullptr;
}

std::shared_ptr<ISheet> LibXLBook::sheet(const std::u16string& name) const {
    for (std::size_t position = 0; position < sheets_.size(); ++position) {
        if (!foundation::unicode::equal_ignoring_case(cached_sheet_name(position), name)) continue;
        if (book_->sheet_type(library_indices_[position]) == workbook::SheetKind::Chart)
            throw Exception(error_id::chart_sheet_unsupported);
        return sheets_[position];
    }
    return nullptr;
}

std::u16string LibXLBook::cached_sheet_name(std::size_t position) const {
    const int index = library_indices_[position];
    if (book_->sheet_type(index) != workbook::SheetKind::Chart) return sheets_[position]->name();
    if (!book_->get_sheet(index)) reporter_->log("[LIBXL BOOK SHEET METHOD MSG]:");
    return std::u16string(book_->get_sheet_name(index));
}

workbook::Sheet* LibXLBook::handle_of(const ISheet& sheet) {
    return static_cast<const LibXLSheet&>(sheet).handle(); // the cache holds nothing else
}

void LibXLBook::clear_sheets() {
    sheets_.clear();
    library_indices_.clear();
}

void LibXLBook::init_sheets() {
    SheetsByHandle known;
    for (std::shared_ptr<ISheet>& sheet : sheets_)
        if (workbook::Sheet* handle = handle_of(*sheet)) known.emplace(handle, std::move(sheet));
    clear_sheets();
    const int count = book_->sheet_count();
    for (int index = 0; index < count; ++index)
        cache_sheet(index, "[LIBXL BOOK OBJ INIT_SHEETS MSG]:", known);
}

void LibXLBook::set_sheets_in_book(int index) {
    cache_sheet(index, "[LIBXL BOOK OBJ SETSHEETSINBOOK MSG]:", {});
}

void LibXLBook::cache_sheet(int index, std::string_view tag, const SheetsByHandle& known) {
    if (workbook::Sheet* sheet = book_->get_sheet(index)) {
        const auto found = known.find(sheet);
        append_sheet(found != known.end() ? found->second
                                          : std::make_shared<LibXLSheet>(*sheet, common()),
                     index);
        return;
    }
    const workbook::SheetKind kind = book_->sheet_type(index);
    if (kind == workbook::SheetKind::Unknown) reporter_->fail(tag, error_id::format_unsupported);
    reporter_->log(tag);
    if (kind == workbook::SheetKind::Chart) append_sheet(std::make_shared<ChartSheet>(), index);
}

LibXLSheet::Common LibXLBook::common() {
    const workbook::Format* default_format = book_->format_size() > 0 ? book_->format(0) : nullptr;
    return {date_format_, default_format, dates_1904_, &*reporter_};
}

void LibXLBook::append_sheet(std::shared_ptr<ISheet> sheet, int index) {
    sheets_.push_back(std::move(sheet));
    library_indices_.push_back(index);
}

// --- What a look finds

std::optional<SheetSummary> LibXLBook::summarize_sheet(std::size_t index) {
    constexpr std::string_view tag = "[LIBXL BOOK SCAN MSG]:";
    const int library_index = libxl::library_index(index);
    if (!book_ || book_->sheet_type(library_index) != workbook::SheetKind::Worksheet)
        return std::nullopt;
    std::optional<workbook::SheetScan> scan;
    reporter_->run(tag, error_id::book_not_loaded, [&] {
        scan = book_->scan_sheet(library_index);
        return scan.has_value();
    });
    if (!scan) reporter_->fail(tag, error_id::book_not_loaded);
    return SheetSummary{
        {scan->first_row, scan->first_column, scan->end_row - 1, scan->end_column - 1},
        {scan->first_filled_row, scan->first_filled_column, scan->end_filled_row - 1,
         scan->end_filled_column - 1},
        scan->cells,
        scan->formulas,
        scan->formulas_without_result,
        static_cast<sheet::hidden>(scan->state),
        scan->is_protected};
}

std::optional<std::vector<NamedRange>> LibXLBook::named_ranges() {
    if (!book_) return std::nullopt;
    std::vector<NamedRange> named;
    for (const workbook::NamedCells& cells : book_->named_cells()) {
        NamedRange range{cells.name,
                         static_cast<std::size_t>(cells.sheet),
                         std::nullopt,
                         cells.is_table,
                         {cells.first_row, cells.first_column, cells.last_row, cells.last_column}};
        if (cells.scope) range.scope = static_cast<std::size_t>(*cells.scope);
        named.push_back(std::move(range));
    }
    return named;
}

// --- Loading

void LibXLBook::create_library_book(book::format format) {
    clear_sheets();
    date_format_ = nullptr;
    switch (format) {
    case book::format::XLS:
        book_ = creators_.binary();
        break;
    case book::format::XLSX:
    case book::format::XLSM:
    case book::format::XLTX:
    case book::format::XLTM:
        book_ = creators_.xml();
        break;
    default:
        throw Exception(error_id::format_unsupported);
    }
    if (!book_) throw Exception(error_id::book_not_created);
    reporter_.emplace(*book_, file_name_);
}

void LibXLBook::find_date_format(book::format format) {
    format_ = format;
    const int count = book_->format_size();
    for (int index = 0; index < count; ++index) {
        date_format_ = book_->format(index);
        if (date_format_ && date_format_->num_format() == kDateTimeNumberFormat) return;
    }
    date_format_ = book_->add_format();
    if (!date_format_) throw Exception(error_id::book_not_loaded);
    date_format_->set_num_format(kDateTimeNumberFormat);
}

void LibXLBook::set_date_system(book::format format) {
    dates_1904_ = book_->is_date_1904();
    find_date_format(format);
}

void LibXLBook::init_from_file(const std::u16string& name, book::format format) {
    create_library_book(format);
    init_from_file_common(name, format);
}

void LibXLBook::init_from_file_common(const std::u16string& name, book::format format) {
    constexpr std::string_view tag = "[LIBXL BOOK OBJ INIT_FROM_FILE_COMMON MSG]:";
    file_name_ = name;
    if (!reporter_->run(tag, error_id::book_not_loaded, [&] { return book_->load(name); }))
        reporter_->fail(tag, error_id::book_not_loaded);
    reporter_->log_load_warnings();
    set_date_system(format);
    init_sheets();
}

void LibXLBook::init_from_file_with_sheet(const std::u16string& name, book::format format,
                                          std::size_t sheet_index) {
    constexpr std::string_view tag = "[LIBXL BOOK OBJ INIT_FROM_FILE_WITH_SHEET MSG]:";
    create_library_book(format);
    file_name_ = name;
    sheet_loaded_ = true;
    if (reporter_->run(tag, error_id::book_not_loaded,
                       [&] { return book_->load_sheet(name, libxl::library_index(sheet_index)); }))
        finish_partial_load(format, sheet_index);
    else
        fall_back(tag, name, format);
}

void LibXLBook::init_from_file_with_range(const std::u16string& name, book::format format,
                                          std::size_t sheet_index, std::size_t first_row,
                                          std::size_t last_row) {
    constexpr std::string_view tag = "[LIBXL BOOK OBJ INIT_FROM_FILE_WITH_RANGE MSG]:";
    create_library_book(format);
    file_name_ = name;
    const bool loaded = reporter_->run(tag, error_id::book_not_loaded, [&] {
        return book_->load_partially(name, libxl::library_index(sheet_index),
                                     libxl::library_index(first_row),
                                     libxl::library_index(last_row));
    });
    if (loaded) {
        sheet_loaded_ = true;
        finish_partial_load(format, sheet_index);
    } else {
        fall_back(tag, name, format);
    }
}

void LibXLBook::finish_partial_load(book::format format, std::size_t sheet_index) {
    reporter_->log_load_warnings();
    set_date_system(format);
    clear_sheets();
    set_sheets_in_book(book_->sheet_count() < 2 ? 0 : libxl::library_index(sheet_index));
}

void LibXLBook::fall_back(std::string_view tag, const std::u16string& name, book::format format) {
    reporter_->log(tag);
    sheet_loaded_ = false;
    sheet_names_only_ = false;
    init_from_file_common(name, format);
}

void LibXLBook::init_from_file_only_sheetNames(const std::u16string& name, book::format format) {
    constexpr std::string_view tag =
        "[LIBXL BOOK OBJ INIT_FROM_FILE_ONLY_SHEETNAMES LOADINFO FAILURE MSG]:";
    create_library_book(format);
    file_name_ = name;
    sheet_names_only_ = true;
    if (!reporter_->run(tag, error_id::book_not_loaded, [&] { return book_->load_info(name); })) {
        fall_back(tag, name, format);
        return;
    }
    format_ = format;
    dates_1904_ = book_->is_date_1904();
    const int count = book_->sheet_count();
    sheet_names_.clear();
    sheet_names_.reserve(static_cast<std::size_t>(count));
    for (int index = 0; index < count; ++index) {
        const std::u16string_view sheet_name = book_->get_sheet_name(index);
        if (sheet_name.data())
            sheet_names_.emplace_back(sheet_name);
        else
            reporter_->log(
                "[LIBXL BOOK OBJ INIT_FROM_FILE_ONLY_SHEETNAMES GETSHEETNAME FAILURE MSG]:");
    }
}

void LibXLBook::init_from_memory(const void*, std::size_t, book::format) {
    throw Exception(error_id::load_from_memory_unsupported);
}

} // namespace spreadsheet
