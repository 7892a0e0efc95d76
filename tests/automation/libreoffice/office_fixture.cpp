// SPDX-License-Identifier: Apache-2.0
#include "tests/automation/libreoffice/office_fixture.h"

#include <algorithm>
#include <charconv>
#include <sstream>

#include "automation/libreoffice/office_program.h"
#include "automation/libreoffice/start_problem.h"
#include "foundation/automation/automation.h"
#include "foundation/files.h"
#include "foundation/unicode.h"
#include "workbook/zip/zip_archive.h"

namespace spreadsheet {
namespace {

namespace unicode = foundation::unicode;

std::string shortest(double value) {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value);
    return {text, end.ptr};
}

CellTexts* texts_of(void* context) {
    return static_cast<CellTexts*>(context);
}

/// The cells that are left to be entered.
struct Entry {
    const CellTexts& cells;
    std::size_t next = 0;
    std::string take() {
        const std::string& cell = cells.at(next++);
        const std::size_t space = cell.find(' ');
        return space == std::string::npos ? std::string() : cell.substr(space + 1);
    }
};

Entry& entry_of(void* context) {
    return *static_cast<Entry*>(context);
}

cell_type type_named(const std::string& cell) {
    const std::string name = cell.substr(0, cell.find(' '));
    return name == "number"    ? cell_type::number
           : name == "text"    ? cell_type::text
           : name == "date"    ? cell_type::date
           : name == "boolean" ? cell_type::boolean
                               : cell_type::empty;
}

} // namespace

CellTexts cells_of(const ISheet& sheet, const Range& range) {
    std::vector<cell_type> types(static_cast<std::size_t>(range.count()));
    sheet.cell_types(range, types.data());
    CellTexts values;
    const CellBuilder builder{&values,
                              [](void* context, const std::u16string& value) {
                                  texts_of(context)->push_back("text " + unicode::to_utf8(value));
                              },
                              [](void* context, double value) {
                                  texts_of(context)->push_back("number " + shortest(value));
                              },
                              [](void* context, double value) {
                                  texts_of(context)->push_back("date " + shortest(value));
                              },
                              [](void* context, bool value) {
                                  texts_of(context)->push_back(value ? "boolean true"
                                                                     : "boolean false");
                              }};
    sheet.read(range, types.data(), builder);
    CellTexts texts;
    if (std::find(types.begin(), types.end(), cell_type::error) != types.end())
        sheet.read(range, StringBuilder{&texts, [](void* context, const std::u16string& value) {
                                            texts_of(context)->push_back(unicode::to_utf8(value));
                                        }});
    for (std::size_t index = 0; index < types.size(); ++index) {
        if (types[index] == cell_type::error) values[index] = "error " + texts.at(index);
        if (types[index] == cell_type::empty || types[index] == cell_type::other)
            values[index] = "empty";
    }
    return values;
}

CellTexts cells_in_file(const std::u16string& path, const Range& range) {
    const auto book = load_book_from_file(path, book::interactive::file);
    return cells_of(*book->sheet(0), range);
}

void enter(ISheet& sheet, const Range& range, const CellTexts& cells, bool keeps_format) {
    std::vector<cell_type> types;
    for (const std::string& cell : cells)
        types.push_back(type_named(cell));
    Entry entry{cells};
    const CellProvider provider{
        &entry,
        [](void* context) { return unicode::to_utf16(entry_of(context).take()); },
        [](void* context) { return std::stod(entry_of(context).take()); },
        [](void* context) { return SerialDatenum{std::stod(entry_of(context).take())}; },
        [](void* context) { return entry_of(context).take() == "true"; },
        [](void* context) { entry_of(context).take(); }};
    sheet.write(range, types.data(), provider, keeps_format);
}

std::string read_part(const std::filesystem::path& package, std::string_view part) {
    workbook::ZipArchive archive(foundation::files::open_for_reading(package.u16string()));
    const workbook::ZipEntry* const entry = archive.find(part);
    if (entry == nullptr) return {};
    const auto source = archive.open(*entry);
    std::string text;
    char block[4096];
    while (const std::size_t count = source->read(block, sizeof block))
        text.append(block, count);
    return text;
}

void OfficeTest::SetUpTestSuite() {
    foundation::automation::set_module_path(ZX_AUTOMATION_MODULE);
    initialize();
}

void OfficeTest::TearDownTestSuite() {
    release();
    EXPECT_THAT(office_processes(), testing::IsEmpty()) << "a process was left running";
}

void OfficeTest::SetUp() {
    try {
        office::find_office();
    } catch (const office::StartProblem& problem) {
        GTEST_SKIP() << problem.what();
    }
}

} // namespace spreadsheet
