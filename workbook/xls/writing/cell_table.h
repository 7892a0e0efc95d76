// SPDX-License-Identifier: Apache-2.0
//
// The rows and cells of a sheet's substream as they are in the loaded file (MS-XLS 2.1.7.20.5
// CELLTABLE): where the records of each cell are, so that cells that were not changed are copied.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "workbook/cells/rectangle.h"
#include "workbook/xls/biff_version.h"
#include "workbook/xls/record_ids.h"
#include "workbook/xls/record_stream.h"

namespace workbook {

/// The records of one cell, or of neighbours that share a record (MULRK, MULBLANK), with what
/// belongs to them: a formula's string and the formula that it stands for. Positions in the stream.
struct CellExtent {
    std::uint32_t begin, end;
    std::uint16_t row;
    std::uint16_t first_column, last_column;
};

/// A formula that several cells share, from the cell that holds it.
struct SharedFormula {
    enum class Kind { Shared, Array, DataTable };
    Kind kind;
    Rectangle area;
    int row, column;      ///< the cell that holds it
    std::uint32_t record; ///< position of the SHRFMLA, ARRAY or TABLE record
};

/// A record that is neither a row nor a cell, with its CONTINUE records, or a whole substream
/// within the sheet.
struct OtherExtent {
    std::uint32_t begin, end;
    std::uint16_t id;
};

struct CellTable {
    std::vector<CellExtent> cells;       ///< ascending by row, then column
    std::vector<std::uint32_t> rows;     ///< position of each row's ROW record; 0 for none
    std::vector<SharedFormula> groups;   ///< of BIFF5 and later
    std::vector<OtherExtent> before;     ///< the place of the cells; BOF first
    std::vector<OtherExtent> after;      ///< that place; EOF last, unless the stream is cut
    std::size_t dimensions = kNoElement; ///< index in `before` of the used range's record

    static constexpr std::size_t kNoElement = static_cast<std::size_t>(-1);
};

/// The number of the record with the used range. BIFF2's is no such record in later versions.
constexpr record::Id dimensions_record(BiffVersion version) {
    return version == BiffVersion::Biff2 ? record::kDimensions2 : record::kDimensions;
}

/// Surveys the sheet whose BOF record is at `position`; records about positions in the stream
/// (INDEX, DBCELL) are left out. Throws `Error`.
CellTable survey_cells(std::string_view stream, std::size_t position, BiffVersion version);

} // namespace workbook
