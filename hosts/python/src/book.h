// SPDX-License-Identifier: Apache-2.0
//
// A workbook as the package sees it: sheets by index, ranges by their corners, everything long
// beside the interpreter.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include "spreadsheet/spreadsheet.h"

namespace zxpython {

/// First row, first column, last row, last column; zero-based, inclusive.
using Corners = std::tuple<int, int, int, int>;

/// Used by any thread of the interpreter: one operation at a time holds the book.
class Book {
  public:
    /// Where a book is: a path, the ID of a Google spreadsheet, a path for an application.
    enum class Place { File = 0, Application = 1, Google = 2 };

    static std::unique_ptr<Book> load(const std::string& path, Place place);
    static std::unique_ptr<Book> load_names(const std::string& path, Place place);
    static std::unique_ptr<Book> load_sheet(const std::string& path, Place place,
                                            std::size_t index);
    static std::unique_ptr<Book> load_rows(const std::string& path, Place place, std::size_t index,
                                           std::size_t first_row, std::size_t last_row);
    /// A file gets no sheet yet; an application's and an online book has one.
    static std::unique_ptr<Book> create(const std::string& path, Place place);

    std::string format() const;
    bool are_dates_1904() const { return book_->are_dates_1904(); }
    std::vector<std::string> sheet_names() const;
    /// True for a chart sheet, which has no cells.
    bool is_chart(std::size_t index) const;
    /// (name, sheet, scope or None, whether it is a table, corners) of each; None where the
    /// back-end does not know them.
    pybind11::object names();
    /// The corners of a range text or defined name; of all cells with a value where it is empty.
    Corners resolve(std::size_t index, const std::string& range);
    Corners used_range(std::size_t index);

    pybind11::dict read_table(std::size_t index, const Corners& range,
                              const pybind11::dict& options);
    pybind11::array read_numbers(std::size_t index, const Corners& range, bool by_columns);
    pybind11::array cell_types(std::size_t index, const Corners& range);
    Corners write_table(std::size_t index, int row, int column, const pybind11::list& columns,
                        std::size_t rows, bool header, bool keep_format);
    void write_numbers(std::size_t index, int row, int column, const pybind11::array& values);
    void clear(std::size_t index, const Corners& range);

    void add_sheet(std::size_t index, const std::string& name, const std::string& copied);
    void remove_sheet(std::size_t index);
    void move_sheet(std::size_t from, std::size_t to);
    void rename_sheet(std::size_t index, const std::string& name);
    int visibility(std::size_t index) const;
    void set_visibility(std::size_t index, int visibility);
    bool is_protected(std::size_t index) const;
    void set_protected(std::size_t index, bool on);

    /// Parts kept, written and dropped.
    std::tuple<std::size_t, std::size_t, std::size_t> save(const std::string& path);

  private:
    explicit Book(std::shared_ptr<spreadsheet::IBook> book, Place place)
        : book_(std::move(book)), place_(place) {}

    template <class Load>
    static std::unique_ptr<Book> load_beside(Place place, Load load);
    template <class Work>
    auto run(Work work);
    std::shared_ptr<spreadsheet::ISheet> sheet(std::size_t index) const;
    void check_stored();

    std::shared_ptr<spreadsheet::IBook> book_;
    Place place_;
    std::mutex mutex_;
};

} // namespace zxpython
