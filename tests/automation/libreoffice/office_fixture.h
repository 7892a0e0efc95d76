// SPDX-License-Identifier: Apache-2.0
//
// What the tests share that drive LibreOffice: the library over the run-time module, one process
// for most of them, and cells as text.
#pragma once

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "spreadsheet/book_factory.h"
#include "spreadsheet/sheet.h"
#include "tests/automation/libreoffice/office_processes.h"
#include "tests/spreadsheet/thrown_id.h"
#include "tests/workbook/scratch_folder.h"

namespace spreadsheet {

inline constexpr auto kApplication = book::interactive::application;

/// A cell as its type and value: "number 1.5", "text a", "boolean true", "date 45000.5",
/// "error #N/A", "empty". A blank cell is empty, as the application has none.
using CellTexts = std::vector<std::string>;

/// The cells of a range, column after column.
CellTexts cells_of(const ISheet& sheet, const Range& range);
/// The same of the first sheet of a file, as the back-end for files reads it.
CellTexts cells_in_file(const std::u16string& path, const Range& range);
/// Enters cells in the form above, column after column.
void enter(ISheet& sheet, const Range& range, const CellTexts& cells, bool keeps_format = false);

/// The text of a part of a package.
std::string read_part(const std::filesystem::path& package, std::string_view part);

class OfficeTest : public testing::Test {
  protected:
    /// The library is started once for all tests: they share a process.
    static void SetUpTestSuite();
    static void TearDownTestSuite();
    void SetUp() override;

    std::shared_ptr<IBook> make(std::size_t sheets, book::format format = book::format::XLSX) {
        return create_new_book(sheets, format, kApplication, u"");
    }
    std::shared_ptr<IBook> open(const std::string& bytes, const std::string& name = "book.xlsx") {
        std::ofstream(folder.path() / name, std::ios::binary) << bytes;
        return load_book_from_file(folder.file(name), kApplication);
    }

    workbook::test::ScratchFolder folder;
};

} // namespace spreadsheet
