// SPDX-License-Identifier: Apache-2.0
//
// A document that is open in the application, and its sheets. Nobody else changes it, so what has
// been asked for once is kept until a member changes it.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include <com/sun/star/sheet/XSpreadsheet.hpp>
#include <com/sun/star/sheet/XSpreadsheetDocument.hpp>
#include <com/sun/star/sheet/XSpreadsheetView.hpp>
#include <com/sun/star/table/CellRangeAddress.hpp>
#include <com/sun/star/table/XCellRange.hpp>

#include "automation/libreoffice/cell_area.h"
#include "automation/libreoffice/format_map.h"
#include "automation/libreoffice/number_formats.h"
#include "automation/libreoffice/uno_access.h"

namespace office {

class OpenDocument;

/// A sheet of a document; found by its object, whatever its place and name are now.
struct DocumentSheet {
    Reference<css::sheet::XSpreadsheet> cells;
    std::u16string name;
    /// The application knows hidden sheets alone; this holds while the document is open.
    bool is_very_hidden = false;
    /// The formats of the area that was read last.
    std::optional<FormatMap> formats;
};

/// Cells of a sheet.
struct DocumentCells {
    std::shared_ptr<OpenDocument> document;
    std::shared_ptr<DocumentSheet> sheet;
    CellArea area;

    /// The application's object of an area of the sheet.
    Reference<css::table::XCellRange> object(const CellArea& part) const;
    Reference<css::table::XCellRange> object() const { return object(area); }
};

class OpenDocument : public std::enable_shared_from_this<OpenDocument> {
  public:
    /// Throws css::uno::RuntimeException for a document without sheets.
    explicit OpenDocument(const Reference<css::uno::XInterface>& document);

    const Reference<css::sheet::XSpreadsheetDocument>& object() const { return document_; }
    NumberFormats& formats() { return formats_; }
    /// Days from 30 December 1899 to the day that the document counts from.
    double first_day();
    bool counts_from_1904();
    /// Whether it was read from a binary file, whose boolean cells the application does not know
    /// as such.
    bool loses_booleans() const { return loses_booleans_; }
    /// Whether the file asks to be opened for reading; its list of sheets cannot be changed then.
    bool is_read_only() const;

    /// The sheets in their order.
    const std::vector<std::shared_ptr<DocumentSheet>>& sheets() const { return sheets_; }
    /// The zero-based place of a sheet; throws `Refusal` when it has been removed.
    int place_of(const DocumentSheet& sheet) const;
    /// The sheet at a zero-based place.
    std::shared_ptr<DocumentSheet> insert_sheet(int place);
    void remove_sheet(const DocumentSheet& sheet);
    /// Moves a sheet to the place before another.
    void move_sheet(const DocumentSheet& sheet, const DocumentSheet& next);
    Reference<css::sheet::XSpreadsheetView> view() const;
    std::shared_ptr<DocumentSheet> active_sheet() const;
    css::table::CellRangeAddress address_of(const DocumentCells& cells) const;
    /// The formats of an area, asked for unless they are known.
    const FormatMap& formats_of(const DocumentCells& cells);
    /// The application's number of a cell's error, asked for unless it is known.
    std::int32_t error_of(const DocumentSheet& sheet, int row, int column);
    /// To be called after cells have changed: formulas anywhere may give other errors.
    void forget_errors() { errors_.clear(); }

  private:
    std::shared_ptr<DocumentSheet> make_sheet(int place) const;
    std::u16string unused_name() const;

    const Reference<css::sheet::XSpreadsheetDocument> document_;
    NumberFormats formats_;
    std::vector<std::shared_ptr<DocumentSheet>> sheets_;
    std::optional<double> first_day_;
    /// By sheet, row and column. A cell's error takes two calls, and a block is read several times.
    std::map<std::tuple<const DocumentSheet*, int, int>, std::int32_t> errors_;
    bool loses_booleans_ = false;
};

} // namespace office
