// SPDX-License-Identifier: Apache-2.0
//
// Columns of tables (ECMA-376 part 1, 18.5.1.3). A column is called what its header cell says;
// applications take a table for damaged whose header says something else. So columns follow cells
// that are written, and structured references follow the columns.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "workbook/opc/opc_package.h"
#include "workbook/xlsx/cell_reference.h"

namespace workbook {

struct TableHeader {
    std::string part;                 ///< of the table
    std::string table;                ///< its name in formulas
    CellReference first;              ///< the header's first cell
    std::vector<std::string> columns; ///< their names
};

/// The headers of the tables on the sheet in part `sheet_part`; tables without one, and those that
/// cannot be read, are left out.
std::vector<TableHeader> read_table_headers(OpcPackage& package, const std::string& sheet_part);

/// Columns that have another name than in the package.
class RenamedColumns {
  public:
    bool empty() const { return tables_.empty(); }
    /// `names` has a name for every column of `table`.
    void add(const TableHeader& table, const std::vector<std::string>& names);

    /// The new name of a column; nothing when it keeps its name.
    std::optional<std::string> name(std::string_view table, std::string_view column) const;
    /// New names by the columns' positions, by the part of their table.
    const std::map<std::string, std::map<std::size_t, std::string>>& by_part() const {
        return by_part_;
    }
    /// The formula with these names; nothing when it stays as it is.
    std::optional<std::string> edited(std::string_view formula) const;

  private:
    using Names = std::unordered_map<std::u16string, std::string>; ///< new by old, case folded
    std::unordered_map<std::u16string, Names> tables_;             ///< by name, case folded
    std::map<std::string, std::map<std::size_t, std::string>> by_part_;
};

/// A column's name as an attribute of its element holds it.
std::string column_attribute(std::string_view name);

} // namespace workbook
