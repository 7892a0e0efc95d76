// SPDX-License-Identifier: Apache-2.0
//
// The children of CT_Worksheet in their order (ECMA-376 part 1, A.2).
#include <algorithm>
#include <iterator>

#include "workbook/xlsx/writing/element_order.h"

namespace workbook {

namespace {

constexpr std::string_view kOrder[] = {"sheetPr",
                                       "dimension",
                                       "sheetViews",
                                       "sheetFormatPr",
                                       "cols",
                                       "sheetData",
                                       "sheetCalcPr",
                                       "sheetProtection",
                                       "protectedRanges",
                                       "scenarios",
                                       "autoFilter",
                                       "sortState",
                                       "dataConsolidate",
                                       "customSheetViews",
                                       "mergeCells",
                                       "phoneticPr",
                                       "conditionalFormatting",
                                       "dataValidations",
                                       "hyperlinks",
                                       "printOptions",
                                       "pageMargins",
                                       "pageSetup",
                                       "headerFooter",
                                       "rowBreaks",
                                       "colBreaks",
                                       "customProperties",
                                       "cellWatches",
                                       "ignoredErrors",
                                       "smartTags",
                                       "drawing",
                                       "legacyDrawing",
                                       "legacyDrawingHF",
                                       "drawingHF",
                                       "picture",
                                       "oleObjects",
                                       "controls",
                                       "webPublishItems",
                                       "tableParts",
                                       "extLst"};

} // namespace

int worksheet_element_place(std::string_view local_name) {
    const auto found = std::find(std::begin(kOrder), std::end(kOrder), local_name);
    return found == std::end(kOrder) ? -1 : static_cast<int>(found - std::begin(kOrder));
}

} // namespace workbook
