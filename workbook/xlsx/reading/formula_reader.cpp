// SPDX-License-Identifier: Apache-2.0
//
// Shared formulas are kept by their number as long as the part is read; a member comes after its
// master in every file that applications write, and without a text elsewhere it is left out.
#include "workbook/xlsx/reading/formula_reader.h"

#include <string>
#include <unordered_map>

#include "workbook/error.h"
#include "workbook/limits.h"
#include "workbook/xlsx/formula/formula_text.h"
#include "workbook/xlsx/formula/stored_formula.h"
#include "workbook/xlsx/reading/worksheet_reader.h"
#include "workbook/xlsx/writing/source_cell.h"
#include "workbook/xml/xml_scanner.h"

namespace workbook {

namespace {

using Token = XmlScanner::Token;

class FormulaReader {
  public:
    FormulaReader(ByteSource& part, RowSpan rows, const FormulaVisitor& visit)
        : scanner_(part), rows_(rows), visit_(visit) {}

    void run() {
        while (scanner_.next() != Token::Start) {
        }
        require_sheet_root(scanner_);
        for (Token token = scanner_.next(); token != Token::Done; token = scanner_.next()) {
            if (token != Token::Start || scanner_.depth() != 2) continue;
            if (scanner_.name() == "sheetData") return read_rows();
            scanner_.skip_element();
        }
    }

  private:
    void read_rows() {
        const int depth = scanner_.depth();
        for (;;) {
            const Token token = scanner_.next();
            if (token == Token::End && scanner_.depth() < depth) return;
            if (token != Token::Start) continue;
            if (scanner_.depth() == depth + 1 && scanner_.name() == "row") {
                if (places_.begin_row(scanner_) > rows_.last) return;
            } else if (scanner_.depth() == depth + 2 && scanner_.name() == "c") {
                const CellReference place = places_.next_cell(scanner_);
                read_source_cell(scanner_, cell_);
                if (cell_.formula) take(place, *cell_.formula);
            } else {
                scanner_.skip_element();
            }
        }
    }

    void take(const CellReference& place, const SourceFormula& formula) {
        if (formula.type == "dataTable") return;
        if (formula.type != "shared" || !formula.group) return deliver(place, formula.text);
        if (!formula.text.empty()) {
            remember(*formula.group, place, formula.text);
            return deliver(place, formula.text);
        }
        const auto master = masters_.find(*formula.group);
        if (master == masters_.end()) return;
        const Master& shared = master->second;
        deliver(place, translate_formula(shared.text, place.row - shared.place.row,
                                         place.column - shared.place.column));
    }

    void remember(unsigned group, const CellReference& place, const std::string& text) {
        bytes_ += text.size();
        if (bytes_ > kMaxFormulaGroupBytes || masters_.size() >= kMaxFormulaGroups)
            throw Error::limit(scanner_.window().part_name(), "too many shared formulas");
        masters_[group] = {place, text};
    }

    void deliver(const CellReference& place, const std::string& text) const {
        if (text.empty() || !rows_.holds(place.row)) return;
        // A value is a "v" element with something in it.
        const std::size_t value = cell_.content.find("v>", cell_.formula->end);
        const bool has_result = value != std::string::npos && cell_.content[value + 2] != '<';
        const std::string shown = shown_formula(text);
        visit_({place.row, place.column, shown, has_result});
    }

    struct Master {
        CellReference place;
        std::string text;
    };

    XmlScanner scanner_;
    const RowSpan rows_;
    const FormulaVisitor& visit_;
    CellPlaces places_;
    SourceCell cell_;
    std::unordered_map<unsigned, Master> masters_;
    std::size_t bytes_ = 0;
};

} // namespace

void read_formulas(ByteSource& part, RowSpan rows, const FormulaVisitor& visit) {
    FormulaReader(part, rows, visit).run();
}

} // namespace workbook
