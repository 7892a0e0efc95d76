// SPDX-License-Identifier: Apache-2.0
//
// Books: what runs beside the interpreter and what arrays go in and out.
#include "book.h"

#include <algorithm>
#include <filesystem>

#include <pybind11/stl.h>

#include "columns.h"
#include "foundation/unicode.h"
#include "waiting.h"

namespace zxpython {
namespace {

namespace py = pybind11;
namespace unicode = foundation::unicode;
using namespace spreadsheet;

Range range_of(const Corners& corners) {
    const auto [first_row, first_column, last_row, last_column] = corners;
    return {first_row, first_column, last_row, last_column};
}

Corners corners_of(const Range& range) {
    return {range.first_row, range.first_column, range.last_row, range.last_column};
}

/// The format that the name of a file says; a file that exists has the format of its content.
book::format format_of(const std::string& path, Book::Place place) {
    if (place == Book::Place::Google) return book::format::GSHEET;
    const std::u8string extension =
        std::filesystem::path(std::u8string(path.begin(), path.end())).extension().u8string();
    const std::u16string dotted =
        unicode::to_utf16(std::string(extension.begin(), extension.end()));
    if (dotted.size() < 2) return book::format::XLSX;
    try {
        const book::format format = book::create_format(dotted.substr(1));
        return format == book::format::GSHEET ? book::format::XLSX : format;
    } catch (const Exception&) {
        return book::format::XLSX;
    }
}

book::interactive mode_of(Book::Place place) {
    switch (place) {
    case Book::Place::Application:
        return book::interactive::application;
    case Book::Place::Google:
        return book::interactive::google;
    default:
        return book::interactive::file;
    }
}

TableOptions options_of(const py::dict& from) {
    TableOptions options;
    options.header_row = py::cast<int>(from["header_row"]);
    options.drop_blank_rows = py::cast<bool>(from["drop_blank_rows"]);
    options.drop_blank_columns = py::cast<bool>(from["drop_blank_columns"]);
    for (const py::handle text : py::cast<py::list>(from["missing"]))
        options.missing.push_back(py::cast<std::string>(text));
    for (const auto& [name, type] : py::cast<py::dict>(from["types"]))
        options.types.emplace_back(py::cast<std::string>(name),
                                   static_cast<ColumnType>(py::cast<int>(type)));
    if (!from["merged"].is_none()) {
        const auto [columns, rows] = py::cast<std::pair<int, int>>(from["merged"]);
        options.merged = MergedCellRules{static_cast<MergedCellColumnRule>(columns),
                                         static_cast<MergedCellRowRule>(rows)};
    }
    options.max_cells = py::cast<std::int64_t>(from["max_cells"]);
    return options;
}

/// The rectangle of the cells that have a value. Only a file knows it without looking at them.
Range value_range(const ISheet& sheet, bool is_file) {
    const Range range = is_file ? filled_range(sheet) : sheet.used_range();
    if (is_file || range.count() <= 0) return range;
    if (range.count() > TableOptions{}.max_cells) throw Exception(error_id::range_too_large);
    std::vector<cell_type> types(static_cast<std::size_t>(range.count()));
    sheet.cell_types(range, types.data());
    Range values{range.last_row + 1, range.last_column + 1, -1, -1};
    auto type = types.begin();
    for (int column = range.first_column; column <= range.last_column; ++column)
        for (int row = range.first_row; row <= range.last_row; ++row, ++type) {
            if (*type == cell_type::empty || *type == cell_type::other) continue;
            values = {std::min(values.first_row, row), std::min(values.first_column, column),
                      std::max(values.last_row, row), std::max(values.last_column, column)};
        }
    return values.last_row < 0 ? Range{0, 0, -1, -1} : values;
}

} // namespace

template <class Load>
std::unique_ptr<Book> Book::load_beside(Place place, Load load) {
    // An application's book belongs to the thread that opened it.
    if (place == Place::Application) return std::unique_ptr<Book>(new Book(load(), place));
    return std::unique_ptr<Book>(new Book(
        run_beside(OnInterrupt::Abandon, [load](const StopFlag&) { return load(); }), place));
}

/// Calls `work(flag)` while no other thread uses the book.
template <class Work>
auto Book::run(Work work) {
    if (place_ == Place::Application) {
        const std::lock_guard lock(mutex_);
        return work(std::make_shared<std::atomic<bool>>(false));
    }
    return run_beside(OnInterrupt::Wait,
                      [this, work = std::move(work)](const StopFlag& flag) mutable {
                          const std::lock_guard lock(mutex_);
                          return work(flag);
                      });
}

std::unique_ptr<Book> Book::load(const std::string& path, Place place) {
    const auto format = format_of(path, place);
    return load_beside(place, [path = unicode::to_utf16(path), format, place] {
        // A spreadsheet online hands out all of its sheets, whichever was asked for.
        return place == Place::Google
                   ? load_book_from_file_with_sheet_index(path, format, mode_of(place), 0)
                   : load_book_from_file(path, format, mode_of(place));
    });
}

std::unique_ptr<Book> Book::load_names(const std::string& path, Place place) {
    if (place == Place::Application) return load(path, place);
    const auto format = format_of(path, place);
    return load_beside(place, [path = unicode::to_utf16(path), format] {
        return load_book_from_file_with_sheetNames(path, format);
    });
}

std::unique_ptr<Book> Book::load_sheet(const std::string& path, Place place, std::size_t index) {
    const auto format = format_of(path, place);
    return load_beside(place, [path = unicode::to_utf16(path), format, place, index] {
        return load_book_from_file_with_sheet_index(path, format, mode_of(place), index);
    });
}

std::unique_ptr<Book> Book::load_rows(const std::string& path, Place place, std::size_t index,
                                      std::size_t first_row, std::size_t last_row) {
    const auto format = format_of(path, place);
    return load_beside(place,
                       [path = unicode::to_utf16(path), format, place, index, first_row, last_row] {
                           return load_book_from_file_with_range(path, format, mode_of(place),
                                                                 index, first_row, last_row);
                       });
}

std::unique_ptr<Book> Book::create(const std::string& path, Place place) {
    const auto format = format_of(path, place);
    const std::size_t sheets = place == Place::File ? 0 : 1;
    return std::unique_ptr<Book>(
        new Book(create_new_book(sheets, format, mode_of(place), u""), place));
}

std::string Book::format() const {
    return unicode::to_utf8(book::to_string(book_->format()));
}

std::vector<std::string> Book::sheet_names() const {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < book_->num_sheets(); ++i) {
        const auto name = book_->get_sheet_name(static_cast<int>(i));
        // A book in an application has its names at its sheets.
        names.push_back(unicode::to_utf8(name ? *name : book_->sheet(i)->name()));
    }
    return names;
}

bool Book::is_chart(std::size_t index) const {
    return book_->sheet_type(index) == sheet::type::chart;
}

py::object Book::names() {
    const auto known = run([this](const StopFlag&) { return named_ranges(book_); });
    if (!known) return py::none();
    py::list names;
    for (const NamedRange& one : *known)
        names.append(py::make_tuple(unicode::to_utf8(one.name), one.sheet, one.scope, one.is_table,
                                    corners_of(one.range)));
    return names;
}

std::shared_ptr<ISheet> Book::sheet(std::size_t index) const {
    if (index >= book_->num_sheets()) throw Exception(error_id::sheet_not_found);
    auto found = book_->sheet(book_->is_sheet_loaded() ? 0 : index);
    if (!found) throw Exception(error_id::sheet_not_opened);
    return found;
}

Corners Book::resolve(std::size_t index, const std::string& range) {
    return run([this, index, text = unicode::to_utf16(range)](const StopFlag&) {
        const auto on = sheet(index);
        return corners_of(text.empty() ? value_range(*on, place_ == Place::File)
                                       : sheet_range(text.data(), text.size(), on, book_->format(),
                                                     false, nullptr, nullptr));
    });
}

Corners Book::used_range(std::size_t index) {
    return run([this, index](const StopFlag&) { return corners_of(sheet(index)->used_range()); });
}

py::dict Book::read_table(std::size_t index, const Corners& range, const py::dict& from) {
    TableOptions options = options_of(from);
    Table table = run([this, index, range, options](const StopFlag& flag) mutable {
        options.interrupt = check_of(flag);
        return spreadsheet::read_table(*sheet(index), range_of(range), options);
    });
    py::dict result;
    py::list columns, coerced;
    for (const CoercedCells& cells : table.coerced)
        coerced.append(py::make_tuple(table.columns[cells.column].name,
                                      static_cast<int>(cells.coercion), cells.count,
                                      cells.first.row, cells.first.column));
    for (Column& column : table.columns)
        columns.append(to_python(std::move(column)));
    result["columns"] = columns;
    result["coerced"] = coerced;
    result["rows"] = table.rows;
    result["range"] = corners_of(table.range);
    return result;
}

py::array Book::read_numbers(std::size_t index, const Corners& corners, bool by_columns) {
    const Range range = range_of(corners);
    const auto count = range.count() < 0 ? 0 : range.count();
    const py::ssize_t rows = count == 0 ? 0 : range.last_row - range.first_row + 1;
    const py::ssize_t columns = count == 0 ? 0 : range.last_column - range.first_column + 1;
    if (count > TableOptions{}.max_cells) throw Exception(error_id::range_too_large);
    py::array_t<double> values =
        by_columns ? py::array_t<double>(py::array_t<double, py::array::f_style>({rows, columns}))
                   : py::array_t<double>({rows, columns});
    double* const out = values.mutable_data();
    run([this, index, range, out, by_columns](const StopFlag& flag) {
        spreadsheet::read_numbers(*sheet(index), range, out,
                                  by_columns ? MatrixOrder::columns_first : MatrixOrder::rows_first,
                                  check_of(flag));
    });
    return values;
}

py::array Book::cell_types(std::size_t index, const Corners& corners) {
    const Range range = range_of(corners);
    const bool is_none = range.count() <= 0;
    if (range.count() > TableOptions{}.max_cells) throw Exception(error_id::range_too_large);
    const py::ssize_t rows = is_none ? 0 : range.last_row - range.first_row + 1;
    const py::ssize_t columns = is_none ? 0 : range.last_column - range.first_column + 1;
    py::array_t<std::uint8_t, py::array::f_style> types({rows, columns});
    auto* const out = reinterpret_cast<cell_type*>(types.mutable_data());
    run([this, index, range, out, is_none](const StopFlag&) {
        const ISheet& from = *sheet(index);
        if (!is_none) from.cell_types(range, out);
    });
    return types;
}

Corners Book::write_table(std::size_t index, int row, int column, const py::list& columns,
                          std::size_t rows, bool header, bool keep_format) {
    Table table;
    table.rows = rows;
    for (const py::handle parts : columns)
        table.columns.push_back(from_python(py::cast<py::dict>(parts)));
    return run([&, this](const StopFlag&) {
        const Range written = spreadsheet::write_table(book_, *sheet(index), {row, column}, table,
                                                       {header, keep_format});
        check_stored();
        return corners_of(written);
    });
}

void Book::write_numbers(std::size_t index, int row, int column, const py::array& from) {
    const bool by_columns = (from.flags() & py::array::f_style) != 0;
    // Keeps what is contiguous in either order as it is.
    const py::array values =
        by_columns ? py::array(py::cast<py::array_t<double, py::array::f_style>>(from))
                   : py::array(py::cast<py::array_t<double, py::array::c_style>>(from));
    if (values.ndim() != 2) throw py::value_error("A matrix has two dimensions.");
    if (values.size() == 0) return;
    const std::int64_t last_row = std::int64_t{row} + values.shape(0) - 1;
    const std::int64_t last_column = std::int64_t{column} + values.shape(1) - 1;
    if (last_row > book::get_row_limit(book_->format()) ||
        last_column > book::get_col_limit(book_->format()))
        throw Exception(error_id::range_too_large);
    const Range range{row, column, static_cast<int>(last_row), static_cast<int>(last_column)};
    const auto* const data = static_cast<const double*>(values.data());
    run([this, index, range, data, by_columns](const StopFlag&) {
        spreadsheet::write_numbers(book_, *sheet(index), range, data,
                                   by_columns ? MatrixOrder::columns_first
                                              : MatrixOrder::rows_first);
        check_stored();
    });
}

/// Writes of a file's cells report a failure afterwards.
void Book::check_stored() {
    const auto failure = take_unreported_failure(book_);
    if (failure) throw Exception(error_id::write_failed, failure->cause);
}

void Book::clear(std::size_t index, const Corners& range) {
    run([this, index, range](const StopFlag&) { sheet(index)->clear(range_of(range)); });
}

void Book::add_sheet(std::size_t index, const std::string& name, const std::string& copied) {
    run([&, this](const StopFlag&) {
        spreadsheet::add_sheet(book_, index, unicode::to_utf16(name), unicode::to_utf16(copied));
    });
}

void Book::remove_sheet(std::size_t index) {
    run([this, index](const StopFlag&) {
        sheet(index); // no such index is an error of its own
        book_->remove_sheet(index);
    });
}

void Book::move_sheet(std::size_t from, std::size_t to) {
    run([this, from, to](const StopFlag&) { reorder_sheet(book_, from, to); });
}

void Book::rename_sheet(std::size_t index, const std::string& name) {
    run([&, this](const StopFlag&) {
        sheet(index)->name(unicode::to_utf16(name));
        if (take_unreported_failure(book_)) throw Exception(error_id::sheet_name_invalid);
    });
}

int Book::visibility(std::size_t index) const {
    return static_cast<int>(std::as_const(*sheet(index)).hidden());
}

void Book::set_visibility(std::size_t index, int visibility) {
    run([this, index, visibility](const StopFlag&) {
        sheet(index)->hidden(static_cast<sheet::hidden>(visibility));
    });
}

bool Book::is_protected(std::size_t index) const {
    return sheet(index)->is_protected();
}

void Book::set_protected(std::size_t index, bool on) {
    run([this, index, on](const StopFlag&) {
        sheet(index)->set_protected(on);
        check_stored();
    });
}

std::tuple<std::size_t, std::size_t, std::size_t> Book::save(const std::string& path) {
    return run([&, this](const StopFlag&) {
        save_book(book_, unicode::to_utf16(path));
        const SaveSummary summary = last_save(book_);
        return std::make_tuple(summary.parts_kept, summary.parts_written, summary.parts_dropped);
    });
}

} // namespace zxpython
