// SPDX-License-Identifier: Apache-2.0
//
// Changes to the structure of a book: sheets that come, go, move and are renamed, and
// everything that has to follow them (workbook part, relationships, content types, defined names,
// references in formulas, charts and pivot caches). Small parts change as trees; parts that may be
// large are changed while they are streamed into the saved file.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbook/opc/opc_package.h"
#include "workbook/opc/package_writer.h"
#include "workbook/xlsx/reading/workbook_part.h"
#include "workbook/xlsx/structure/table_columns.h"

namespace workbook {

/// What the saved file says it is: the content type of its workbook part.
enum class DocumentType { Workbook, MacroWorkbook, Template, MacroTemplate };

class WorkbookEditor {
  public:
    /// `workbook` must outlive this and is changed along. `package` is where unchanged parts come
    /// from; it must live until `rebase` gives another.
    WorkbookEditor(OpcPackage& package, WorkbookPart& workbook);
    ~WorkbookEditor();

    // Every operation throws `Error` and then has changed nothing. Handles to other sheets' entries
    // stay valid.

    /// An empty sheet before the one at `index`. Its part exists in the saved file only.
    SheetEntry& insert_sheet(std::size_t index, std::u16string_view name);
    /// A copy of `source` with all that belongs to it: drawings and charts, comments, tables under
    /// new names, names of its own. References to `source` by name within it refer to the copy.
    SheetEntry& copy_sheet(std::size_t index, std::u16string_view name, const SheetEntry& source);
    /// Parts that only this sheet led to go with it; references to it become #REF!.
    void remove_sheet(std::size_t index);
    void move_sheet(std::size_t from, std::size_t to);
    void rename_sheet(SheetEntry& sheet, std::u16string_view name);
    void set_state(SheetEntry& sheet, SheetState state);
    void set_date_1904(bool on);

    /// Forgets the parts and columns of the save before: the cells that asked for them may be gone.
    void begin_save();
    /// The headers of a sheet's tables as the saved file has them, but for what was written.
    std::vector<TableHeader> table_headers(const SheetEntry& sheet);
    /// The columns' names in the saved file; see `RenamedColumns`.
    void name_columns(const TableHeader& table, const std::vector<std::string>& names);

    /// Has applications compute all formulas when they open the book.
    void recalculate_on_load();
    /// Drops the calculation chain, which names cells with formulas and is made again by
    /// applications.
    void drop_calculation_chain();
    /// Nothing: the type that the package has.
    void set_document_type(std::optional<DocumentType> type);
    /// Names of these parts; when the book has none they are entered into relationships and content
    /// types, and the caller has to write them.
    std::string need_shared_strings_part();
    std::string need_styles_part();

    /// The XML that a sheet's part is made from: that of the package, of the sheet it is a copy
    /// of, or of an empty sheet, with references to renamed and removed sheets brought up to date.
    std::unique_ptr<ByteSource> open_sheet(const SheetEntry& sheet);

    /// Everything that differs from the package, sheets' parts included, which the caller may
    /// replace by their name. The editor must live until it is written.
    PackageChanges changes();

    /// Continues after a save into the file that the package was read from: `package` is that file,
    /// opened again, and has all changes.
    void rebase(OpcPackage& package);

  private:
    struct State;
    class Gatherer;
    std::unique_ptr<State> state_;
};

} // namespace workbook
