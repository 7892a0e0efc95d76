// SPDX-License-Identifier: Apache-2.0
//
// Loading: package, workbook part, wanted sheets, then the shared strings that their cells need.
#include "workbook/xlsx/book_contents.h"

#include <algorithm>

#include "workbook/error.h"
#include "workbook/xlsx/shared_strings.h"
#include "workbook/xlsx/xlsx_sheet.h"

namespace workbook {

BookContents::BookContents(std::unique_ptr<OpcPackage> opened, std::string& error_text)
    : package(std::move(opened)),
      workbook(read_workbook_part(*package)),
      sheets(workbook.sheets.size()),
      error_message(error_text) {}

BookContents::~BookContents() = default;

void BookContents::load_sheets() {
    read_styles();
    for (std::size_t i = 0; i < sheets.size(); ++i)
        read_sheet(i, {});
    read_strings();
}

void BookContents::load_rows(int sheet_index, RowSpan rows) {
    read_styles();
    read_sheet(wanted_sheet(sheet_index), rows);
    read_strings();
}

int BookContents::index_of(const SheetEntry& sheet) const {
    const auto found = std::find_if(workbook.sheets.begin(), workbook.sheets.end(),
                                    [&sheet](const auto& entry) { return entry.get() == &sheet; });
    return static_cast<int>(found - workbook.sheets.begin());
}

void BookContents::close_package() {
    const bool is_complete = std::all_of(sheets.begin(), sheets.end(), [](const auto& sheet) {
        return sheet == nullptr || sheet->is_complete();
    });
    if (is_complete) package.reset();
}

void BookContents::read_styles() {
    const std::string& part = workbook.styles_part;
    if (!part.empty()) styles = Styles(*package->open_part(part));
    // Cells without a format have format 0, which a file need not define: a format added later must
    // not become theirs.
    if (styles.size() == 0) styles.add_format();
    for (std::size_t i = 0; i < styles.size(); ++i)
        formats.emplace_back(styles, i);
}

void BookContents::read_sheet(std::size_t index, RowSpan rows) {
    if (workbook.sheets[index]->kind != SheetKind::Worksheet) return;
    sheets[index] = std::make_unique<XlsxSheet>(*this, *workbook.sheets[index], rows);
}

void BookContents::read_strings() {
    std::uint64_t wanted = 0;
    for (const auto& sheet : sheets)
        if (sheet != nullptr) wanted = std::max(wanted, sheet->shared_strings_end());
    const std::string& part = workbook.shared_strings_part;
    if (wanted > 0 && !part.empty())
        read_shared_strings(*package->open_part(part), wanted, shared_strings);
    for (const auto& sheet : sheets)
        if (sheet != nullptr) sheet->check_shared_strings();
}

std::size_t BookContents::wanted_sheet(int index) const {
    const std::size_t count = workbook.sheets.size();
    if (index >= 0 && static_cast<std::size_t>(index) < count)
        return static_cast<std::size_t>(index);
    if (count == 1) return 0;
    throw Error::missing("the workbook has no sheet " + std::to_string(index + std::int64_t{1}) +
                         ", it has " + std::to_string(count));
}

} // namespace workbook
