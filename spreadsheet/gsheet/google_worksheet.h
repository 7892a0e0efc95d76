// SPDX-License-Identifier: Apache-2.0
//
// A sheet of the service: fetches its cells and sends its changes. Reading is in
// google_worksheet_read.cpp, writing in google_worksheet_write.cpp.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "spreadsheet/cell_exchange.h"
#include "spreadsheet/gsheet/cell_cache.h"
#include "spreadsheet/gsheet/grid_plan.h"
#include "spreadsheet/gsheet/sheet_properties.h"
#include "spreadsheet/range.h"

namespace spreadsheet {

class CellIterator;
class CellTypeIterator;

/// Keeps the cells of the range fetched last; reads of cells within it send nothing. Every change
/// through this object drops them. A request that fails leaves the object as it was. After the
/// sheet was removed from its spreadsheet every operation throws `Exception` 6.
class GoogleSheetWorksheet {
  public:
    /// Where a typed read puts its cells.
    using ReadTarget = std::variant<double*, SerialDatenum*, bool*, unsigned char*, StringBuilder>;
    /// Appends one cell to a target: stores it and moves the pointer on, or calls the builder.
    using ReadFunction = std::function<void(ReadTarget& target, int row, int column)>;

    GoogleSheetWorksheet(std::u16string spreadsheet_id,
                         std::shared_ptr<gsheet::SheetProperties> properties);

    /// What the metadata tell of the sheet.
    const gsheet::SheetProperties& properties() const;

    // --- Reading

    /// Rows and columns up to the last that hold a value; asked once, again while it is empty.
    Range used_range();
    /// Takes over a used range that was asked for elsewhere.
    void note_used_range(const Range& used);
    /// `Exception` 23 when the spreadsheet has no such name on this sheet.
    Range named_range(const std::u16string& name) const;
    /// Fetches the range and tells its types; `out` may be null.
    void fetch_types(const Range& range, cell_type* out);
    void cell_types(const CellIterator& cells, cell_type* out);
    void read(const Range& range, ReadTarget target);
    void read(const Range& range, const cell_type* types, const CellBuilder& builder);
    void read_cell_array(CellTypeIterator& cells, output::CellOutputBuilder& builder,
                         bool dates_as_numbers);
    /// What converts the cached cells for a target.
    ReadFunction allReadFunction(const ReadTarget& target) const;

    // --- Writing

    void write(const Range& range, const cell_type* types, const CellProvider& provider,
               bool preserve_format);
    /// As `spreadsheet::write_formulas`; one request.
    void write_formulas(const Range& range, const std::string_view* formulas);
    /// As `OnlineSheet::replace`.
    void replace(const Range& range, const cell_type* types, const CellProvider& provider,
                 bool keep_formats);
    void clear(const Range& range);
    void set_hidden(bool hidden);
    void rename(const std::u16string& title);
    bool is_range_writeable(const Range& range) const;
    /// As `OnlineSheet::may_write`.
    bool may_write(const Range& range) const;
    void set_protected(bool on);
    void unmerge(const Range& range);
    void auto_fit_column_widths(const Range& range);

  private:
    gsheet::SheetProperties& sheet() const;
    /// Fetches the range, whatever is there.
    void fetch(const Range& range);
    /// Fetches the range unless its cells are there.
    void hold(const Range& range);
    /// Number of columns or rows up to the last one with a value.
    int count_of(const char* major_dimension) const;
    std::vector<gsheet::ProtectedRange> protected_ranges(const std::u16string& range) const;

    void send(std::string_view request_name, gsheet::Object request) const;
    /// Makes the grid such that `range` lies in it and the sheet stays within its limit.
    void fit_grid(const Range& range);
    void shrink_grid(const gsheet::GridPlan& plan);
    void grow_grid(const char* dimension, std::int64_t length, std::int64_t& count);
    /// The requests of a batch that do what the plan says.
    gsheet::Array grid_requests(const gsheet::GridPlan& plan) const;
    /// Takes rows and columns away again that a repeated request has appended once too often.
    void mend_repeated_growth(const gsheet::GridSize& growth);
    void note_filled(const class CellsToWrite& cells);
    void write_clear_format(const Range& range, const CellsToWrite& cells);
    void write_preserve_format(const Range& range, const CellsToWrite& cells);
    /// Cells have changed: what was fetched counts no longer.
    void forget_cells();

    std::u16string spreadsheet_id_;
    std::shared_ptr<gsheet::SheetProperties> properties_;
    gsheet::CellCache cells_;
    Range used_range_;
    bool used_range_known_ = false;
};

} // namespace spreadsheet
