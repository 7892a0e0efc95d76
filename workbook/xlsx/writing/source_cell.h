// SPDX-License-Identifier: Apache-2.0
//
// Rows and cells of a worksheet part as it has them: their XML, where they are, and the
// formula that a cell has.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "workbook/xlsx/cell_reference.h"
#include "workbook/xml/xml_scanner.h"

namespace workbook {

/// Follows rows and cells with and without a reference as the reader of worksheets does.
class CellPlaces {
  public:
    /// At the Start of a row; returns its index. Throws `Error` for one that a sheet cannot have.
    int begin_row(XmlScanner& scanner);
    /// At the Start of a cell.
    CellReference next_cell(XmlScanner& scanner);

    /// The place that a row or a cell without a reference would have.
    int next_row() const { return row_ + 1; }
    CellReference next_place() const { return {row_, next_column_}; }
    /// A row or cell was met at this place.
    void set_row(int row) {
        row_ = row;
        next_column_ = 0;
    }
    void set_place(const CellReference& place) {
        row_ = place.row;
        next_column_ = place.column + 1;
    }

  private:
    int row_ = -1;
    int next_column_ = 0;
};

/// An `f` element (ECMA-376 part 1, 18.3.1.40).
struct SourceFormula {
    std::string type;              ///< "shared", "array", "dataTable" or empty
    std::optional<unsigned> group; ///< si
    std::optional<Rectangle> area;
    std::string text;             ///< references resolved
    std::string prefix;           ///< of the element, with its colon
    std::string other_attributes; ///< all but t, si and ref, unchanged, each after a space
    std::size_t begin = 0;        ///< where the element is within `SourceCell::content`
    std::size_t end = 0;
};

struct SourceCell {
    std::string head;    ///< start tag; of an empty element without its "/>" or ">"
    std::string content; ///< between the tags
    std::string tail;    ///< end tag; empty for an empty element
    std::string prefix;  ///< of the element, with its colon
    bool has_reference = false;
    bool has_metadata = false; ///< cm: the anchor of a dynamic array
    std::optional<SourceFormula> formula;

    /// The whole element, with `extra` attributes (after a space) after the others.
    void append_to(std::string& out, std::string_view extra) const;
};

/// Reads the element of the scanner's last Start, a `c`, to its End. Throws `Error`.
void read_source_cell(XmlScanner& scanner, SourceCell& cell);

/// Appends `text` as XML character data.
void append_character_data(std::string& out, std::string_view text);

/// The start tag `raw` without its '>' or "/>".
std::string_view open_tag(std::string_view raw);

/// The same without the attribute `name` (no prefix), which the scanner's last Start has or not.
std::string open_tag_without(const XmlScanner& scanner, std::string_view name);

} // namespace workbook
