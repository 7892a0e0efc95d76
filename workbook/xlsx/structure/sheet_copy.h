// SPDX-License-Identifier: Apache-2.0
//
// What a copy of a sheet needs besides its own part: which parts are copied with it under which
// names, which it shares with the original, and what its tables are called.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "workbook/opc/new_part_names.h"
#include "workbook/opc/opc_package.h"
#include "workbook/xlsx/reading/defined_names.h"

namespace workbook {

/// A part of the package that the copy has an equal of.
struct CopiedPart {
    std::string source, part;
    std::string type; ///< of the relationship that leads to it, last segment
};

/// A table of the copy.
struct CopiedTable {
    std::uint32_t id = 0;
    std::string name;
};

struct SheetCopyPlan {
    std::vector<CopiedPart> parts;                        ///< the sheet's own part first
    std::unordered_map<std::string, std::string> copy_of; ///< new names by those in the package
    std::vector<std::string> shared;                      ///< parts that both sheets lead to
    std::unordered_map<std::string, CopiedTable> tables;  ///< by source part
    std::unordered_map<std::u16string, std::string> table_names; ///< new by old, case folded
    bool drops_slicers = false; ///< the original has slicers or timelines

    /// The copy's name for a table of the original; nothing for any other name.
    std::optional<std::string> table_name(std::string_view name) const;
};

/// Names and identifiers of all tables of a book, so that new ones differ from them.
class TableNames {
  public:
    /// Tables share their names with defined names. Throws `Error`.
    TableNames(OpcPackage& package, const std::vector<std::string>& table_parts,
               const std::vector<DefinedName>& defined_names);

    /// A free name made from `name`, and a free identifier.
    CopiedTable make(std::string_view name);

  private:
    bool take(std::string_view name);

    std::unordered_set<std::u16string> names_; ///< case folded
    std::uint32_t last_id_ = 0;
};

/// What becomes of a relationship of a sheet, or of a part that is copied with it.
enum class CopyRule { Copy, Share, Drop };
CopyRule copy_rule(std::string_view relationship_type);

/// Finds the parts that a copy of the sheet in part `source` needs; the sheet's own new name is
/// `part`. Tables get no names yet. Throws `Error`.
SheetCopyPlan plan_sheet_copy(OpcPackage& package, const std::string& source, std::string part,
                              NewPartNames& names);

/// Gives the tables of a plan their names. Throws `Error`.
void name_copied_tables(OpcPackage& package, SheetCopyPlan& plan, TableNames& names);

/// Whether a plan has tables.
bool has_tables(const SheetCopyPlan& plan);

} // namespace workbook
