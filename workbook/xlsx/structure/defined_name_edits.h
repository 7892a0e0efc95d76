// SPDX-License-Identifier: Apache-2.0
//
// The defined names of a book while sheets come, go, move and are renamed. The model's
// names are changed at once; the workbook part follows when it is written.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

#include "workbook/xlsx/formula/formula_text.h"
#include "workbook/xlsx/reading/workbook_part.h"

namespace workbook {

class DefinedNameEdits {
  public:
    /// `workbook` must outlive this; its names are in the order of the package.
    explicit DefinedNameEdits(WorkbookPart& workbook);

    // Each is called right after the sheets themselves changed.

    void sheet_inserted(std::size_t index);
    void sheet_moved(std::size_t from, std::size_t to);
    void sheet_renamed(std::u16string_view old_name, std::u16string_view name);
    /// `left` and `right` are the names of the sheets beside the one that went, empty at an end.
    void sheet_removed(std::size_t index, std::u16string_view name, std::u16string_view left,
                       std::u16string_view right);
    /// The copy gets names of its own in place of those that are the original's. References to the
    /// original by its name become references to the copy.
    void sheet_copied(std::size_t original, std::size_t copy);

    /// Brings the elements of a workbook part that is as in the package up to date.
    void write(pugi::xml_node workbook_element) const;

  private:
    struct Origin {
        std::size_t element;    ///< in the package
        bool is_copy = false;   ///< made of the element, which another name is made of
        bool is_astray = false; ///< of a sheet that the package does not have; stays as it is
    };

    template <class NewIndex>
    void renumber(const NewIndex& new_index);
    void rename(const SheetNameMap& names, const SheetSpanMap& spans);

    WorkbookPart& workbook_;
    std::vector<Origin> origins_; ///< of the model's names, by index
};

} // namespace workbook
