// SPDX-License-Identifier: Apache-2.0
//
// Surveys the formulas of a part, then decides what cells that stay have to hold.
#include "workbook/xlsx/writing/formula_groups.h"

#include <algorithm>

#include "workbook/cells/cell_name.h"
#include "workbook/error.h"
#include "workbook/limits.h"
#include "workbook/xlsx/formula/formula_text.h"
#include "workbook/xml/simple_types.h"

namespace workbook {

namespace {

using Token = XmlScanner::Token;

// Longest formula that applications accept.
constexpr std::size_t kMaxFormula = 8192;

// Whether a formula at `place` is for other cells too. Applications have it in the
// first cell of its block.
bool is_block(const Rectangle& area, const CellReference& place) {
    return area.first_row == place.row && area.first_column == place.column &&
           (area.first_row != area.last_row || area.first_column != area.last_column);
}

bool is_before(const CellReference& a, const CellReference& b) {
    return a.row != b.row ? a.row < b.row : a.column < b.column;
}

bool holds(const Rectangle& area, const CellReference& place) {
    return place.row >= area.first_row && place.row <= area.last_row &&
           place.column >= area.first_column && place.column <= area.last_column;
}

// Which item of an array a cell of its block shows; an array of one row or column fills all rows or
// columns. Empty when the formula would be too long.
std::string item_of(const std::string& array, int row_number, int column_number) {
    const std::string row = std::to_string(row_number), column = std::to_string(column_number);
    std::string text = "INDEX(" + array + ",IF(ROWS(" + array + ")=1,1," + row + "),IF(COLUMNS(" +
                       array + ")=1,1," + column + "))";
    if (text.size() > kMaxFormula) text = "INDEX(" + array + "," + row + "," + column + ")";
    return text.size() > kMaxFormula ? std::string() : text;
}

std::string formula_element(const std::string& prefix, const std::string& attributes,
                            const std::string& text) {
    std::string markup = "<" + prefix + "f" + attributes + ">";
    append_character_data(markup, text);
    return markup + "</" + prefix + "f>";
}

void replace_formula(SourceCell& cell, const std::string& markup) {
    if (cell.formula)
        cell.content.replace(cell.formula->begin, cell.formula->end - cell.formula->begin, markup);
    else
        cell.content.insert(0, markup);
}

std::string array_attributes(const CellReference& place) {
    return " t=\"array\" ref=\"" + cell_name(place.row, place.column) + "\"";
}

} // namespace

bool ChangedPlaces::holds(int row, int column) {
    const StoredCell* cell = cells_.find(row, column);
    if (cell != nullptr && cell->is_changed()) return true;
    return walk_.move_to(row) && walk_.holds(column);
}

int ChangedPlaces::next_cleared_row(int row) {
    walk_.move_to(row);
    return walk_.next_row();
}

bool ChangedPlaces::intersects(const Rectangle& area) const {
    if (cleared_.intersects(area)) return true;
    for (std::size_t i = cells_.row_from(area.first_row); i < cells_.row_count(); ++i) {
        const CellStore::RowCells row = cells_.row_at(i);
        if (row.row > area.last_row) return false;
        if (row.has_changes && std::any_of(row.begin, row.end, [&area](const StoredCell& cell) {
                const auto column = static_cast<int>(cell.column);
                return cell.is_changed() && column >= area.first_column &&
                       column <= area.last_column;
            }))
            return true;
    }
    return false;
}

// Such a formula has attributes: "<f " or "<x:f ".
bool may_have_formula_groups(ByteSource& part) {
    TextWindow window(part);
    do {
        const char* const begin = window.cursor();
        const char* const end = window.end();
        for (const char* p = find_byte(begin, end, 'f'); p < end; p = find_byte(p + 1, end, 'f'))
            if (p > begin && (p[-1] == '<' || p[-1] == ':') && is_space(p[1])) return true;
        window.set_cursor(std::max(begin, end - 2)); // one may cross the window's end
    } while (window.refill());
    return false;
}

void FormulaGroups::survey(ByteSource& part, ChangedPlaces& changed) {
    part_name_ = part.part_name();
    XmlScanner scanner(part);
    CellPlaces places;
    SourceCell cell;
    bool in_cells = false;
    for (Token token = scanner.next(); token != Token::Done; token = scanner.next()) {
        if (token != Token::Start) continue;
        if (scanner.depth() == 2) {
            in_cells = scanner.name() == "sheetData";
            places = {};
        } else if (!in_cells) {
            continue;
        } else if (scanner.depth() == 3 && scanner.name() == "row") {
            places.begin_row(scanner);
        } else if (scanner.depth() == 4 && scanner.name() == "c") {
            const CellReference place = places.next_cell(scanner);
            read_source_cell(scanner, cell);
            if (cell.formula) note(cell, place, changed);
        }
    }
    for (auto& [number, group] : shared_) {
        if (!group.has_lost_master) continue;
        include_rows(group.first_row, group.last_row);
        std::stable_sort(
            group.masters.begin(), group.masters.end(),
            [](const Master& a, const Master& b) { return is_before(a.place, b.place); });
    }
    std::stable_sort(blocks_.begin(), blocks_.end(), [](const Block& a, const Block& b) {
        return a.area.first_row < b.area.first_row;
    });
}

void FormulaGroups::note(const SourceCell& cell, const CellReference& place,
                         ChangedPlaces& changed) {
    const SourceFormula& formula = *cell.formula;
    if (formula.type == "shared" && formula.group)
        add_shared(formula, place, changed);
    else if ((formula.type == "array" || formula.type == "dataTable") && formula.area &&
             is_block(*formula.area, place))
        add_block(cell, place, changed);
}

void FormulaGroups::add_shared(const SourceFormula& formula, const CellReference& place,
                               ChangedPlaces& changed) {
    SharedGroup& group = shared_.try_emplace(*formula.group).first->second;
    group.first_row = std::min(group.first_row, place.row);
    group.last_row = std::max(group.last_row, place.row);
    if (shared_.size() > kMaxFormulaGroups)
        throw Error::limit(part_name_,
                           "more than " + std::to_string(kMaxFormulaGroups) + " shared formulas");
    if (formula.text.empty()) return;
    const bool is_lost = changed.holds(place.row, place.column);
    group.masters.push_back({place, is_lost, is_lost ? formula.text : std::string()});
    group.has_lost_master |= is_lost;
    count_text(group.masters.back().text.size());
}

void FormulaGroups::add_block(const SourceCell& cell, const CellReference& place,
                              ChangedPlaces& changed) {
    const SourceFormula& formula = *cell.formula;
    if (!changed.intersects(*formula.area)) return;
    const BlockKind kind = formula.type == "dataTable" ? BlockKind::DataTable
                           : cell.has_metadata         ? BlockKind::DynamicArray
                                                       : BlockKind::Array;
    count_text(formula.text.size());
    blocks_.push_back({*formula.area, place, kind, formula.text, formula.prefix});
    include_rows(formula.area->first_row, formula.area->last_row);
    highest_block_ = std::max(highest_block_, formula.area->last_row - formula.area->first_row);
}

void FormulaGroups::count_text(std::size_t bytes) {
    text_bytes_ += bytes;
    if (++masters_ > kMaxFormulaGroups || text_bytes_ > kMaxFormulaGroupBytes)
        throw Error::limit(part_name_, "more than " + std::to_string(kMaxFormulaGroups) +
                                           " formulas of several cells, or " +
                                           std::to_string(kMaxFormulaGroupBytes >> 20) +
                                           " MiB of their text");
}

void FormulaGroups::include_rows(int first, int last) {
    first_row_ = std::min(first_row_, first);
    last_row_ = std::max(last_row_, last);
}

void FormulaGroups::adjust(SourceCell& cell, const CellReference& place) {
    if (place.row < first_row_ || place.row > last_row_) return;
    if (cell.formula && cell.formula->type == "shared")
        adjust_shared(cell, place);
    else if (const Block* const block = block_at(place))
        adjust_block(cell, place, *block);
}

// A cell without a text belongs to the last formula of its number before it, else to the first one
// after it.
void FormulaGroups::adjust_shared(SourceCell& cell, const CellReference& place) const {
    const SourceFormula& formula = *cell.formula;
    const auto found = formula.group ? shared_.find(*formula.group) : shared_.end();
    if (found == shared_.end() || !found->second.has_lost_master || !formula.text.empty()) return;
    const std::vector<Master>& masters = found->second.masters;
    auto master = std::upper_bound(
        masters.begin(), masters.end(), place,
        [](const CellReference& a, const Master& b) { return is_before(a, b.place); });
    if (master != masters.begin()) --master;
    if (!master->is_lost) return;
    const std::string text = translate_formula(master->text, place.row - master->place.row,
                                               place.column - master->place.column);
    replace_formula(cell, formula_element(formula.prefix, formula.other_attributes, text));
}

const FormulaGroups::Block* FormulaGroups::block_at(const CellReference& place) {
    if (active_row_ != place.row) {
        active_row_ = place.row;
        active_.clear();
        auto block =
            std::lower_bound(blocks_.begin(), blocks_.end(), place.row - highest_block_,
                             [](const Block& a, int row) { return a.area.first_row < row; });
        for (; block != blocks_.end() && block->area.first_row <= place.row; ++block)
            if (block->area.last_row >= place.row) active_.push_back(&*block);
    }
    for (const Block* const block : active_)
        if (holds(block->area, place)) return block;
    return nullptr;
}

void FormulaGroups::adjust_block(SourceCell& cell, const CellReference& place,
                                 const Block& block) const {
    const bool is_anchor = block.anchor.row == place.row && block.anchor.column == place.column;
    if (!is_anchor && (cell.formula || block.kind != BlockKind::Array)) return;
    if (block.kind == BlockKind::DataTable) {
        replace_formula(cell, {});
        return;
    }
    const std::string others = cell.formula ? cell.formula->other_attributes : std::string();
    std::string text = block.text;
    if (block.kind == BlockKind::Array)
        text = item_of(block.text, place.row - block.area.first_row + 1,
                       place.column - block.area.first_column + 1);
    replace_formula(
        cell, text.empty() ? std::string()
                           : formula_element(block.prefix, array_attributes(place) + others, text));
}

} // namespace workbook
