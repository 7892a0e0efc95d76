// SPDX-License-Identifier: Apache-2.0
//
// Changes to a worksheet.
#include "workbook/xlsx/xlsx_sheet.h"

namespace workbook {

bool XlsxSheet::set_name(std::u16string_view) {
    return false;
}
bool XlsxSheet::set_hidden(SheetState) {
    return false;
}
bool XlsxSheet::set_protect(bool) {
    return false;
}
void XlsxSheet::expect_cells(int, int, int, int) {}
bool XlsxSheet::write_num(int, int, double, const Format*) {
    return false;
}
bool XlsxSheet::write_str(int, int, std::u16string_view, const Format*) {
    return false;
}
bool XlsxSheet::write_bool(int, int, bool, const Format*) {
    return false;
}
bool XlsxSheet::write_blank(int, int, const Format*) {
    return false;
}
bool XlsxSheet::clear(int, int, int, int) {
    return false;
}
bool XlsxSheet::delete_merge(int) {
    return false;
}
double XlsxSheet::column_width(int) const {
    return 0.0;
}
bool XlsxSheet::set_column_width(int, double) {
    return false;
}
bool XlsxSheet::auto_fit_columns(int, int) {
    return false;
}

} // namespace workbook
