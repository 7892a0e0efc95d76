// SPDX-License-Identifier: Apache-2.0
//
// A Google spreadsheet. Its "file name" is the spreadsheet's identifier; every change is on the
// server at once, so that saving does nothing. Made empty by the factory, which then calls one of
// the `init_` operations.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "spreadsheet/book.h"
#include "spreadsheet/book_extras.h"
#include "spreadsheet/gsheet/google_workbook.h"
#include "spreadsheet/online.h"

namespace spreadsheet {

/// Failures of the service are the `Exception`s of utils/util_gsheet.h and leave the book as it
/// was. Sheet objects stay the same through every change; that of a removed sheet throws
/// `Exception` 6 from then on. The list of sheets ends before the first one that is neither a grid
/// nor a chart.
class GSheetWorkbook : public IBook, public IBookExtras, public OnlineBook {
  public:
    explicit GSheetWorkbook(book::format format = book::format::GSHEET);
    GSheetWorkbook(const GSheetWorkbook&) = delete;
    GSheetWorkbook& operator=(const GSheetWorkbook&) = delete;

    bool is_interactive() const override;
    book::format format() const override;
    bool are_dates_1904() const override;
    std::size_t num_sheets() const override;
    std::shared_ptr<ISheet> sheet(const std::u16string& name) const override;
    std::shared_ptr<ISheet> sheet(std::size_t index) const override;
    std::optional<std::u16string> get_sheet_name(const int index) const override;
    std::shared_ptr<ISheet> add_sheet(std::size_t index, const std::u16string& name,
                                      const std::u16string& second_name) override;
    void remove_sheet(std::size_t index) override;
    /// `Exception` 17 for a kind that is neither.
    sheet::type sheet_type(std::size_t index) const override;
    const std::u16string get_file_name(bool) override;
    /// Refused with `Exception` 43: a spreadsheet is never loaded as a whole.
    void init_from_file(const std::u16string& id, book::format) override;
    /// Both get hold of all sheets; cells come when they are asked for.
    void init_from_file_with_sheet(const std::u16string& id, book::format,
                                   std::size_t sheet_index) override;
    void init_from_file_with_range(const std::u16string& id, book::format, std::size_t sheet_index,
                                   std::size_t first_row, std::size_t last_row) override;
    void init_from_file_only_sheetNames(const std::u16string& id, book::format) override;
    bool is_loaded() const override;
    bool is_sheet_loaded() const override;
    bool sheet_names_only_required() const override;
    std::vector<std::u16string> get_sheet_names() const override;
    ~GSheetWorkbook() override;
    /// A new spreadsheet with that title and the service's one sheet, whatever `sheet_count` is.
    void init_new(std::size_t sheet_count, book::format, const std::u16string& title) override;
    void init_from_memory(const void* bytes, std::size_t size, book::format) override;
    void save(const std::u16string& name) override;
    void save_to_memory(std::vector<unsigned char>& bytes) override;

    /// Moves a sheet of this book to `index` and returns it. `Exception` 32 for
    /// an index that no sheet has, 6 for a sheet that is not in the list.
    std::shared_ptr<ISheet> move_sheet(const std::shared_ptr<ISheet>& sheet, std::size_t index);
    /// The same by indices; `Exception` 6 when one of them is out of range.
    void reorder_sheet(std::size_t from, std::size_t to) override;

    std::u16string title() override;
    std::optional<std::size_t> sheet_with_id(std::int64_t id) override;
    std::vector<Range> used_ranges(const std::vector<std::size_t>& sheet_indices) override;
    std::optional<NamedCells> find_name(const std::u16string& name) override;
    void copy_sheet(std::size_t source, std::size_t index, const std::u16string& name) override;

  private:
    using Sheets = std::vector<std::shared_ptr<ISheet>>;
    using Worksheets = std::vector<std::shared_ptr<GoogleSheetWorksheet>>;

    /// Rebuilds the list; sheets that were in it keep their objects.
    void init_sheets() const;
    /// The list, rebuilt when the metadata had to be fetched anew after a change that failed half
    /// way.
    const std::vector<std::shared_ptr<ISheet>>& listed_sheets() const;
    void init_with(std::shared_ptr<GoogleSheetWorkbook> implementation);
    /// `Exception` 9 before an `init_` operation.
    GoogleSheetWorkbook& implementation() const;
    std::shared_ptr<ISheet> object_of(const std::shared_ptr<GoogleSheetWorksheet>& worksheet,
                                      gsheet::SheetKind kind) const;
    std::size_t index_of(const std::u16string& name) const;

    std::shared_ptr<GoogleSheetWorkbook> implementation_; ///< null before an `init_` operation
    mutable Sheets sheets_;
    mutable Worksheets worksheets_;             ///< what stands behind the sheets
    mutable std::uint64_t listed_revision_ = 0; ///< of the metadata that the list was made from
    bool loaded_ = false;
    bool sheet_names_only_ = false;
    const book::format format_;
};

} // namespace spreadsheet
