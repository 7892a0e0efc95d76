// SPDX-License-Identifier: Apache-2.0
//
// A small book that has one of everything that refers to sheets, and a book under edit whose saved
// parts can be looked at.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tests/workbook/zip_builder.h"
#include "workbook/xlsx/structure/workbook_editor.h"

namespace workbook::test {

/// Sheets "Data" (table, comments, links, rules), "Report" (chart, picture, pivot table, slicer),
/// "It's here" (hidden) and the chart sheet "Graph".
std::vector<ZipItem> structured_book();

/// One relationship of the office document's base; `target` as it is written.
std::string relationship(std::string_view id, std::string_view type, std::string_view target);
std::string relationships(std::string_view elements);

class EditedBook {
  public:
    explicit EditedBook(const std::vector<ZipItem>& items = structured_book());

    WorkbookEditor& editor() { return *editor_; }
    WorkbookPart& model() { return workbook_; }
    SheetEntry& sheet(std::size_t index) { return *workbook_.sheets.at(index); }
    /// Names of the sheets in their order, separated by '|'.
    std::string sheet_names() const;

    /// Texts of the parts that changed or came, by name; each is checked to be well-formed, and to
    /// come once.
    std::map<std::string, std::string> changed_parts();
    /// The text of a part as it would be saved; "absent" for one that is not there.
    std::string saved(const std::string& part);
    bool drops(const std::string& part);

    /// Saves into a new package and goes on with that.
    void save();
    /// What a reader makes of the saved package.
    WorkbookPart reloaded();

  private:
    std::vector<ZipItem> saved_items();

    std::vector<ZipItem> items_;
    std::unique_ptr<OpcPackage> package_;
    WorkbookPart workbook_;
    std::unique_ptr<WorkbookEditor> editor_;
};

} // namespace workbook::test
