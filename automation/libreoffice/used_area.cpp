// SPDX-License-Identifier: Apache-2.0
#include "automation/libreoffice/used_area.h"

#include <algorithm>
#include <optional>

#include <com/sun/star/sheet/XCellRangeAddressable.hpp>
#include <com/sun/star/sheet/XCellRangeFormula.hpp>
#include <com/sun/star/sheet/XSheetCellCursor.hpp>
#include <com/sun/star/sheet/XUsedAreaCursor.hpp>

#include "automation/libreoffice/row_bands.h"

namespace office {
namespace {

/// The smallest area with all cells of another that hold something; nullopt for none.
std::optional<CellArea> area_of_contents(const DocumentCells& cells) {
    std::optional<CellArea> found;
    for_each_band(cells.area, [&](const CellArea& band) {
        const auto rows = as<css::sheet::XCellRangeFormula>(cells.object(band))->getFormulaArray();
        int row = band.first_row;
        for (const Sequence<OUString>& row_texts : rows) {
            int column = band.first_column;
            for (const OUString& text : row_texts) {
                if (!text.isEmpty()) {
                    if (!found) found = CellArea{row, column, row, column};
                    found->first_column = std::min(found->first_column, column);
                    found->last_column = std::max(found->last_column, column);
                    found->last_row = row;
                }
                ++column;
            }
            ++row;
        }
    });
    return found;
}

} // namespace

CellArea used_area(const std::shared_ptr<OpenDocument>& document,
                   const std::shared_ptr<DocumentSheet>& sheet) {
    const auto cursor = as<css::sheet::XUsedAreaCursor>(sheet->cells->createCursor());
    cursor->gotoStartOfUsedArea(false);
    cursor->gotoEndOfUsedArea(true);
    const auto address = as<css::sheet::XCellRangeAddressable>(cursor)->getRangeAddress();
    const CellArea area{address.StartRow, address.StartColumn, address.EndRow, address.EndColumn};
    const auto contents_of = [&](const CellArea& part) {
        return area_of_contents({document, sheet, part});
    };
    // Mostly there is something at each edge, and no need to look inside.
    const CellArea edges[] = {{area.first_row, area.first_column, area.first_row, area.last_column},
                              {area.last_row, area.first_column, area.last_row, area.last_column},
                              {area.first_row, area.first_column, area.last_row, area.first_column},
                              {area.first_row, area.last_column, area.last_row, area.last_column}};
    if (std::all_of(std::begin(edges), std::end(edges),
                    [&](const CellArea& edge) { return contents_of(edge).has_value(); }))
        return area;
    return contents_of(area).value_or(CellArea{0, 0, 0, 0});
}

} // namespace office
