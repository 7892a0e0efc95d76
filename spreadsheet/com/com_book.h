// SPDX-License-Identifier: Apache-2.0
//
// A workbook that is open in a spreadsheet application. Made empty by the factory, which then calls
// `init_from_file` or `init_new`; used on that thread. Its sheets must not outlive it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "spreadsheet/book.h"
#include "spreadsheet/book_extras.h"
#include "spreadsheet/com/excel_application.h"
#include "spreadsheet/com/late_bound_call.h"

namespace spreadsheet {

class COMSheet;

/// A failed automation call is logged with its cause and becomes an `Exception`. The workbook is
/// closed without being saved when the book goes, unless the user has the application on the
/// screen. Loads of parts do nothing: this back-end loads whole workbooks only.
class COMBook : public IBook, public IBookExtras {
  public:
    COMBook();
    COMBook(const COMBook&) = delete;
    COMBook& operator=(const COMBook&) = delete;

    bool is_interactive() const override;
    book::format format() const override;
    bool are_dates_1904() const override;
    std::size_t num_sheets() const override;
    /// Compared without regard to the case of ASCII letters.
    std::shared_ptr<ISheet> sheet(const std::u16string& name) const override;
    std::shared_ptr<ISheet> sheet(std::size_t index) const override;
    std::optional<std::u16string> get_sheet_name(const int index) const override;
    /// `Exception` 2 when the application adds no sheet, or when `second_name` asks for a copy,
    /// which this back-end does not make; 26 for a name that the application refuses.
    std::shared_ptr<ISheet> add_sheet(std::size_t index, const std::u16string& name,
                                      const std::u16string& second_name) override;
    void remove_sheet(std::size_t index) override;
    void reorder_sheet(std::size_t from, std::size_t to) override;
    sheet::type sheet_type(std::size_t index) const override;
    /// `Exception` 9 when the application cannot open the file, or has opened it as plain text; 18
    /// when there is no application.
    void init_from_file(const std::u16string& path, book::format format) override;
    void init_from_file_with_sheet(const std::u16string& path, book::format,
                                   std::size_t sheet_index) override;
    void init_from_file_with_range(const std::u16string& path, book::format,
                                   std::size_t sheet_index, std::size_t first_row,
                                   std::size_t last_row) override;
    void init_from_file_only_sheetNames(const std::u16string& path, book::format) override;
    bool is_loaded() const override;
    bool is_sheet_loaded() const override;
    bool sheet_names_only_required() const override;
    std::vector<std::u16string> get_sheet_names() const override;
    ~COMBook() override;
    /// The application names the sheets; `name` is not used.
    void init_new(std::size_t sheet_count, book::format format,
                  const std::u16string& name) override;
    void init_from_memory(const void* bytes, std::size_t size, book::format format) override;
    void save(const std::u16string& path) override;
    void save_to_memory(std::vector<unsigned char>& bytes) override;

  private:
    /// Opens a file, or makes a workbook for a null path.
    void open_workbook(book::format format, const std::u16string* path);
    std::shared_ptr<IDispatch> open_file(const std::u16string& path);
    std::shared_ptr<IDispatch> make_workbook();
    /// Waits until the workbook reports its format; `Exception` 9 when it does not, or when the
    /// file at `path` (null for a new workbook) was read as plain text.
    void check_file_format(const std::u16string* path);
    /// Switches alerts of the application on or off; the result is not checked.
    void show_alerts(bool on);
    /// Reads the user's date formats once, so that no later read has to.
    void read_date_formats();
    std::size_t count_worksheets() const;
    /// The object of a sheet by its one-based number; `Exception` 18 when there is none.
    std::shared_ptr<IDispatch> worksheet(std::size_t number);
    std::shared_ptr<COMSheet> make_sheet(std::shared_ptr<IDispatch> sheet) const;
    std::shared_ptr<COMSheet> insert_sheet(std::size_t index, const std::u16string& name);
    /// Moves a sheet to the place before another.
    void move_before(std::size_t index, std::size_t next);
    /// Deletes a sheet in the application without a question.
    com::CallResult delete_sheet(IDispatch* object);
    void close_workbook();

    std::shared_ptr<excel_application> application_;
    std::shared_ptr<IDispatch> workbook_;
    std::shared_ptr<IDispatch> worksheets_;
    std::vector<std::shared_ptr<COMSheet>> sheets_;
    book::format format_ = book::format::XLSX;
    bool restore_alerts_ = false;
};

} // namespace spreadsheet
