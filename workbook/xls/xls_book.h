// SPDX-License-Identifier: Apache-2.0
//
// A book of the binary formats, BIFF2 to BIFF8; new ones are BIFF8. A load that fails leaves
// nothing but the chance of another load; before any load, a book becomes a new one with its first
// change.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "foundation/output_file.h"
#include "workbook/last_error.h"
#include "workbook/library.h"
#include "workbook/xls/xls_contents.h"

namespace workbook {

class XlsBook final : public Book {
  public:
    XlsBook();
    ~XlsBook() override;

    bool load(BookSource source) override;
    bool load_sheet(BookSource source, int sheet_index) override;
    bool load_partially(BookSource source, int sheet_index, int first_row, int last_row) override;
    bool load_info(BookSource source) override;
    std::vector<std::string> load_warnings() const override;

    int sheet_count() const override;
    Sheet* get_sheet(int index) override;
    std::u16string_view get_sheet_name(int index) const override;
    SheetKind sheet_type(int index) const override;

    std::optional<SheetScan> scan_sheet(int index) override;
    std::vector<NamedCells> named_cells() override;

    int format_size() const override;
    Format* format(int index) override;
    Format* add_format() override;

    bool is_date_1904() const override;
    bool set_date_1904(bool on) override;

    Sheet* insert_sheet(int index, std::u16string_view name, const Sheet* source) override;
    bool delete_sheet(int index) override;
    bool move_sheet(int from, int to) override;
    bool save(std::u16string_view path) override;
    bool save(foundation::files::OutputFile& out, std::u16string_view extension) override;
    SaveCounts last_save() const override { return last_save_; }

    ErrorKind error_kind() const override { return error_.kind(); }
    std::optional<foundation::files::FileProblem> file_problem() const override {
        return error_.file_problem();
    }
    const char* error_message() const override { return error_.message().c_str(); }

  private:
    template <class Action>
    bool attempt(const Action& action);
    template <class ReadCells>
    bool open(BookSource source, const ReadCells& read_cells);
    bool load_rows(BookSource source, int sheet_index, RowSpan rows);
    /// As `attempt`, on what is loaded, or on a new book.
    template <class Action>
    bool try_change(const Action& action);
    const XlsSheetEntry* entry(int index) const;

    SaveCounts last_save_;
    bool load_failed_ = false;
    mutable LastError error_;
    std::unique_ptr<XlsContents> contents_;
};

} // namespace workbook
