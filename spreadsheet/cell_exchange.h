// SPDX-License-Identifier: Apache-2.0
//
// The values and callbacks through which cells travel between sheets and the host's arrays. Cells
// always travel column after column.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "foundation/export.h"
#include "foundation/host_array.h"

namespace spreadsheet {

/// What a cell holds, for every back-end.
enum class cell_type : std::uint8_t {
    empty = 0,
    number = 1,
    text = 2,
    date = 3,
    boolean = 4,
    other = 5, ///< content of no other kind; a blank cell with a format
    error = 6
};

namespace sheet {
/// The kind of sheet at an index.
enum class type : std::uint8_t { worksheet = 0, chart = 1 };
/// Visibility of a sheet; a very hidden one cannot be shown again by the application's user.
enum class hidden : std::uint8_t { visible = 0, hidden = 1, very_hidden = 2 };
} // namespace sheet

/// What becomes of cells that are merged across columns. `MergedCellRowRule` has the same values
/// for cells merged across rows.
enum class MergedCellColumnRule : std::uint8_t {
    first = 0,  ///< the region's first cell keeps the value, the others have none
    last = 1,   ///< the region's last cell carries the first cell's value, the others have none
    repeat = 2, ///< every cell of the region has the first cell's value
    error = 3,  ///< `Exception` 38 (rows: 39)
    omit = 4    ///< the region's cells are left out
};

/// What becomes of cells that are merged across rows; see `MergedCellColumnRule`.
enum class MergedCellRowRule : std::uint8_t {
    first = 0,
    last = 1,
    repeat = 2,
    error = 3,
    omit = 4
};

/// A date as a serial day number: whole days count calendar days, the fraction is the time of day.
struct SerialDatenum {
    double value = 0.0;
};

/// Receives the texts of a range, once per cell. Copied freely; the context stays the caller's.
struct StringBuilder {
    void* context;
    void (*append)(void* context, const std::u16string& text);
};

/// Supplies the texts of a range, once per cell.
struct StringProvider {
    void* context;
    std::u16string (*next)(void* context);
};

/// Receives the cells of a range, one call per cell, chosen by the cell's requested type. Empty,
/// blank and error cells arrive as an empty text. Texts live until the callback returns; dates are
/// serial numbers of the 1900 system.
struct CellBuilder {
    void* context;
    void (*text)(void* context, const std::u16string& value);
    void (*number)(void* context, double value);
    void (*date)(void* context, double serial);
    void (*boolean)(void* context, bool value);
};

/// Supplies the cells of a range, one call per cell, chosen by the cell's type. `skip` consumes the
/// element of a cell that is written without a value.
struct CellProvider {
    void* context;
    std::u16string (*text)(void* context);
    double (*number)(void* context);
    SerialDatenum (*date)(void* context);
    bool (*boolean)(void* context);
    void (*skip)(void* context);
};

namespace output {

/// Receives the cells that `ISheet::read_cell_array` walks over, one call per cell in the walk's
/// order.
class ZX_API CellOutputBuilder {
  public:
    virtual ~CellOutputBuilder();

    /// Called once before the first cell with the shape of the array, rows and columns counted over
    /// the whole selection.
    virtual void begin(std::size_t rows, std::size_t columns) = 0;
    virtual void add_text(const std::u16string& value) = 0;
    virtual void add_number(double value) = 0;
    /// `serial` counts days of the 1900 system.
    virtual void add_date(double serial) = 0;
    virtual void add_boolean(bool value) = 0;
    /// A cell without a value: empty, blank, an error, or left out by a merged-cell rule.
    virtual void add_empty() = 0;
};

/// Builds a cell array of 1-by-1 elements: strings, doubles (numbers and serial dates), logicals;
/// cells without a value stay null.
class ZX_API CellArrayBuilder : public CellOutputBuilder {
  public:
    CellArrayBuilder();
    ~CellArrayBuilder() override;
    void begin(std::size_t rows, std::size_t columns) override;
    void add_text(const std::u16string& value) override;
    void add_number(double value) override;
    void add_date(double serial) override;
    void add_boolean(bool value) override;
    void add_empty() override;

    /// Hands the array over; null before `begin`.
    std::unique_ptr<foundation::CellArray> take();

  private:
    void put(foundation::HostArrayPtr element);
    std::unique_ptr<foundation::CellArray> array_;
    std::size_t next_ = 0;
};

} // namespace output
} // namespace spreadsheet
