// SPDX-License-Identifier: Apache-2.0
//
// Changes to worksheet parts. The first bytes choose cells that are written or cleared, the rest is
// the part; of a part alone they are its own. When the part is well-formed and can be read, what is
// written holds the cells in memory.
#include <cstdio>
#include <cstdlib>

#include <pugixml.hpp>

#include "fuzz/parse.h"
#include "tests/workbook/rewrite.h"
#include "workbook/cells/cell_name.h"
#include "workbook/xml/xml_scanner.h"

namespace workbook::fuzz {
namespace {

constexpr std::size_t kChanges = 4, kChangeBytes = 3;

// Well-formed, and with rows and cells only where they belong. Elsewhere the reader may find what
// only looks like a sheet, and need not find the same again.
bool is_sane(const std::string& text) {
    pugi::xml_document tree;
    if (!tree.load_buffer(text.data(), text.size(), pugi::parse_full)) return false;
    test::MemorySource part(text);
    XmlScanner scanner(part);
    std::string prefix;
    for (auto token = scanner.next(); token != XmlScanner::Token::Done; token = scanner.next()) {
        if (token != XmlScanner::Token::Start) continue;
        const std::string_view name = scanner.name();
        if (scanner.depth() == 1) prefix = scanner.prefix();
        const int wanted = name == "sheetData" ? 2 : name == "row" ? 3 : name == "c" ? 4 : 0;
        if (wanted != 0 && (scanner.depth() != wanted || scanner.prefix() != prefix)) return false;
    }
    return true;
}

void apply_changes(test::RewrittenSheet& sheet, const std::string& bytes) {
    for (std::size_t i = 0; i < kChanges; ++i) {
        const auto row = static_cast<unsigned char>(bytes[kChangeBytes * i]);
        const auto column = static_cast<unsigned char>(bytes[kChangeBytes * i + 1]);
        const auto kind = static_cast<unsigned char>(bytes[kChangeBytes * i + 2]);
        const std::string place = cell_name(row % 16, column % 8);
        const char* const values[] = {"=1.5", "/3=blank", "=#7", "=true"};
        if (kind % 8 < 4)
            sheet.apply(place + values[kind % 4]);
        else if (kind % 8 < 7)
            sheet.clear(place + ":" + cell_name(row / 16, column / 8));
    }
}

void check(bool holds, const std::string& text) {
    if (holds) return;
    std::fprintf(stderr, "written: %s\n", text.c_str());
    std::abort();
}

void rewrite(const std::string& input) {
    constexpr std::size_t kHead = kChanges * kChangeBytes;
    if (input.size() < kHead) return;
    const std::string source = input.starts_with('<') ? input : input.substr(kHead);
    const bool is_checked = is_sane(source);
    test::RewrittenSheet sheet(source);
    apply_changes(sheet, input);
    const std::string text = sheet.write();
    if (is_checked) check(test::describe_part(text) == test::describe_cells(sheet.cells), text);
}

} // namespace
} // namespace workbook::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return workbook::fuzz::run(data, size, workbook::fuzz::rewrite);
}
