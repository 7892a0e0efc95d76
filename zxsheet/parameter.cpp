// SPDX-License-Identifier: Apache-2.0
//
// Parameters that several commands have.
#include "zxsheet/parameter.h"

namespace zxsheet {

Parameter book_argument(BookLocation& book) {
    const auto take = [&book](const std::string& text) { book.set_text(text); };
    return Parameter{"BOOK", "", "Path of the workbook, - for standard input, or gsheet:ID", take}
        .required();
}

Parameter application_flag(BookLocation& book) {
    return {kApplicationFlag, "", "Let the spreadsheet application open the file",
            [&book] { book.use_application(); }};
}

Parameter sheet_option(std::string& sheet) {
    return {"-s,--sheet", "SHEET",
            "Name of the sheet, or its number from 1 (default: the first worksheet)", &sheet};
}

Parameter range_option(std::string& range, const char* what) {
    return {"-r,--range", "RANGE", what, &range};
}

Parameter all_cells_flag(bool& all_cells) {
    return {"--all-cells", "", "Cells that have a format but no value, too", &all_cells};
}

Parameter json_flag(bool& json) {
    return {"--json", "", "Print JSON", &json};
}

Parameter save_option(std::string& output) {
    return {"-o,--output", "FILE",
            "Save to FILE, of the same format, instead of BOOK; - for standard output", &output};
}

} // namespace zxsheet
