// SPDX-License-Identifier: Apache-2.0
//
// A worksheet part that lies in memory, changes to it, and what is written in the end.
#pragma once

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "tests/workbook/memory_source.h"
#include "tests/workbook/string_sink.h"
#include "workbook/cells/cell_name.h"
#include "workbook/xlsx/cell_reference.h"
#include "workbook/xlsx/reading/worksheet_reader.h"
#include "workbook/xlsx/writing/worksheet_rewriter.h"
#include "workbook/xlsx/xlsx_limits.h"

namespace workbook::test {

class RewrittenSheet {
  public:
    explicit RewrittenSheet(std::string source, RowSpan rows = {}, std::size_t step = 1u << 20)
        : source_(std::move(source)),
          step_(step),
          is_whole_(rows.first <= 0 && rows.last >= kMaxRows - 1) {
        MemorySource part(source_, step_);
        read_worksheet(part, rows, DateBase::From1900, cells, tail);
        for (std::uint32_t i = 0; i < 1000; ++i)
            shared_index_of.push_back(1000 + i);
    }

    void put(const std::string& place, StoredKind kind, double number, std::uint32_t format = 0) {
        StoredCell cell{};
        cell.value.number = number;
        put(place, kind, cell, format);
    }
    /// Added string `index`, which is written as shared string 1000 + index.
    void put_string(const std::string& place, std::uint32_t index) {
        StoredCell cell{};
        cell.value.text = index;
        put(place, StoredKind::AddedString, cell, 0);
    }
    /// "B2=5; C3=#2; D4=true; E5=blank; A1/3=7; clear A1:B2": numbers, added strings, booleans,
    /// blanks, with a format; cleared rectangles.
    void apply(const std::string& script) {
        std::istringstream steps(script);
        for (std::string step; std::getline(steps >> std::ws, step, ';');) {
            if (step.starts_with("clear ")) {
                clear(step.substr(6));
                continue;
            }
            const std::size_t equals = step.find('='), slash = step.find('/');
            const std::uint32_t format =
                slash < equals ? static_cast<std::uint32_t>(std::stoul(step.substr(slash + 1))) : 0;
            const std::string place = step.substr(0, std::min(equals, slash));
            const std::string value = step.substr(equals + 1);
            if (value.starts_with('#'))
                put_string(place, static_cast<std::uint32_t>(std::stoul(value.substr(1))));
            else if (value == "true" || value == "false")
                put(place, StoredKind::Boolean, value == "true", format);
            else if (value == "blank")
                put(place, StoredKind::Blank, 0, format);
            else
                put(place, StoredKind::Number, std::stod(value), format);
        }
    }
    void clear(const std::string& area) {
        const Rectangle a = *parse_area_reference(area);
        changes.cells = true;
        changes.cleared.add(a);
        cells.cells.remove(a);
    }

    std::string write() const { return write_over(source_); }
    /// The part that the same changes make of another.
    std::string write_over(const std::string& source) const {
        StringSink sink;
        rewrite_worksheet([&] { return std::make_unique<MemorySource>(source, step_); },
                          cells.cells, shared_index_of, changes, is_whole_, sink);
        return sink.text;
    }

    SheetCells cells{kMaxColumns};
    SheetTail tail;
    SheetChanges changes;
    std::vector<std::uint32_t> shared_index_of;

  private:
    void put(const std::string& place, StoredKind kind, StoredCell cell, std::uint32_t format) {
        const CellReference at = *parse_cell_reference(place);
        cell.column = static_cast<std::uint32_t>(at.column);
        cell.format = format & kMaxStoredFormat;
        cell.kind = static_cast<std::uint32_t>(kind);
        cells.cells.put(at.row, cell);
        changes.cells = true;
    }

    std::string source_;
    std::size_t step_;
    bool is_whole_;
};

/// "A1/3=1.5 B1='text' C1=#7": all cells with their formats.
inline std::string describe_cells(const SheetCells& cells) {
    std::ostringstream out;
    out.precision(17);
    cells.cells.for_each([&](int row, const StoredCell& cell) {
        out << cell_name(row, static_cast<int>(cell.column));
        if (cell.format != 0) out << '/' << cell.format;
        switch (cell.stored_kind()) {
        case StoredKind::Number:
        case StoredKind::StrictDate:
            out << '=' << cell.value.number;
            break;
        case StoredKind::String:
            out << "=#" << cell.value.text;
            break;
        case StoredKind::AddedString:
            out << "=#" << 1000 + cell.value.text;
            break;
        case StoredKind::OwnString:
        case StoredKind::Error:
            out << "='" << cells.own_strings[cell.value.text] << "'";
            break;
        case StoredKind::Boolean:
            out << (cell.value.number != 0.0 ? "=true" : "=false");
            break;
        case StoredKind::Blank:
        case StoredKind::Formula: // what a blank cell of an array that is cut becomes
            out << "=blank";
            break;
        }
        out << ' ';
    });
    return out.str();
}

/// What the library's own reader finds in a part.
inline std::string describe_part(const std::string& text) {
    MemorySource part(text);
    SheetCells cells(kMaxColumns);
    SheetTail tail;
    read_worksheet(part, {}, DateBase::From1900, cells, tail);
    return describe_cells(cells);
}

} // namespace workbook::test
