// SPDX-License-Identifier: Apache-2.0
//
// The elements around the cells, and new ones in their places.
#include "workbook/xlsx/writing/worksheet_rewriter.h"

#include <algorithm>
#include <string>
#include <utility>

#include "workbook/cells/cell_name.h"
#include "workbook/error.h"
#include "workbook/limits.h"
#include "workbook/xlsx/reading/column_widths.h"
#include "workbook/xlsx/reading/worksheet_reader.h"
#include "workbook/xlsx/writing/cell_markup.h"
#include "workbook/xlsx/writing/element_order.h"
#include "workbook/xlsx/writing/formula_groups.h"
#include "workbook/xlsx/writing/sheet_data_rewriter.h"
#include "workbook/xml/markup_writer.h"

namespace workbook {

namespace {

using Token = XmlScanner::Token;

std::string area_name(const Rectangle& area) {
    std::string name = cell_name(area.first_row, area.first_column);
    if (area.first_row != area.last_row || area.first_column != area.last_column)
        name += ":" + cell_name(area.last_row, area.last_column);
    return name;
}

/// Around the cells that were written; nothing when none was.
std::optional<Rectangle> changed_area(const CellStore& cells) {
    std::optional<Rectangle> area;
    for (std::size_t i = 0; i < cells.row_count(); ++i) {
        const CellStore::RowCells row = cells.row_at(i);
        if (!row.has_changes) continue;
        for (const StoredCell* cell = row.begin; cell != row.end; ++cell) {
            if (!cell->is_changed()) continue;
            const auto column = static_cast<int>(cell->column);
            if (!area) area = Rectangle{row.row, row.row, column, column};
            area->last_row = row.row;
            area->first_column = std::min(area->first_column, column);
            area->last_column = std::max(area->last_column, column);
        }
    }
    return area;
}

/// The encoding that a part is read in may be another; it is written in UTF-8.
std::string declare_utf8(std::string_view declaration) {
    std::string text(declaration);
    const std::size_t at = text.find("encoding");
    if (!text.starts_with("<?xml") || at == std::string::npos) return text;
    const std::size_t open = text.find_first_of("\"'", at);
    if (open == std::string::npos) return text;
    const std::size_t close = text.find(text[open], open + 1);
    if (close == std::string::npos) return text;
    return text.replace(open + 1, close - open - 1, "UTF-8");
}

class Rewriter {
  public:
    Rewriter(ByteSource& part, const CellStore& cells,
             const std::vector<std::uint32_t>& shared_index_of, const SheetChanges& changes,
             bool complete, ChangedPlaces& changed, FormulaGroups& groups, ByteSink& out)
        : scanner_(part),
          out_(out),
          cells_(cells),
          shared_index_of_(shared_index_of),
          changes_(changes),
          complete_(complete),
          changed_(changed),
          groups_(groups) {
        scanner_.report_everything();
    }

    void run() {
        copy_to_root();
        if (scanner_.is_empty_element()) {
            out_.append(open_tag(scanner_.raw()));
            out_.append(">");
            const std::string end_tag = "</" + prefix_ + std::string(scanner_.name()) + ">";
            write_new_before(kLastPlace);
            out_.append(end_tag);
            scanner_.next();
        } else {
            out_.append(scanner_.raw());
            rewrite_children();
        }
        while (scanner_.next() != Token::Done)
            out_.append(scanner_.raw());
        out_.flush();
    }

  private:
    static constexpr int kLastPlace = 1000;

    /// An element that a change makes.
    struct NewElement {
        std::string_view name;
        bool is_wanted;
        void (Rewriter::*write)();
    };

    void copy_to_root() {
        Token token = scanner_.next();
        for (; token != Token::Start; token = scanner_.next())
            out_.append(declare_utf8(scanner_.raw()));
        require_sheet_root(scanner_);
        prefix_ = scanner_.prefix();
        markup_.emplace(out_, prefix_, shared_index_of_, changes_.formulas);
        sheet_data_.emplace(scanner_, out_, prefix_, cells_, changed_, groups_, *markup_);
    }

    void rewrite_children() {
        for (;;) {
            const Token token = scanner_.next();
            if (token == Token::End && scanner_.depth() == 0) break;
            if (token == Token::Start)
                rewrite_child();
            else
                out_.append(scanner_.raw());
        }
        const std::string end_tag(scanner_.raw());
        write_new_before(kLastPlace);
        out_.append(end_tag);
    }

    void rewrite_child() {
        const std::string name(scanner_.name());
        if (name == "AlternateContent") {
            copy_alternatives();
            return;
        }
        const int place = worksheet_element_place(name);
        if (place >= 0) write_new_before(place);
        if (name == "sheetData") {
            new_elements_[1].is_wanted = false;
            sheet_data_->rewrite();
        } else if (name == "dimension" && changes_.cells) {
            rewrite_dimension();
        } else if (name == "cols" && !changes_.column_widths.empty()) {
            rewrite_columns();
        } else if ((name == "sheetProtection" && changes_.is_protected) ||
                   (name == "mergeCells" && changes_.merged_regions)) {
            replace_element(name);
        } else {
            copy_element();
        }
    }

    // What applications choose from has the place of what is in it.
    void copy_alternatives() {
        const int depth = scanner_.depth();
        std::string text(scanner_.raw());
        int place = -1;
        while (place < 0 && scanner_.depth() >= depth && text.size() < kMaxTokenBytes) {
            if (scanner_.next() == Token::Start) place = worksheet_element_place(scanner_.name());
            text += scanner_.raw();
        }
        if (place >= 0) write_new_before(place);
        out_.append(text);
        copy_rest(depth);
    }

    void copy_element() {
        out_.append(scanner_.raw());
        copy_rest(scanner_.depth());
    }

    void copy_rest(int depth) {
        while (scanner_.depth() >= depth) {
            scanner_.next();
            out_.append(scanner_.raw());
        }
    }

    void replace_element(std::string_view name) {
        for (NewElement& element : new_elements_)
            if (element.name == name && std::exchange(element.is_wanted, false))
                (this->*element.write)();
        scanner_.skip_element();
    }

    void rewrite_dimension() {
        const auto stated = parse_area_reference(scanner_.attribute("ref"));
        std::optional<Rectangle> area = changed_area(cells_);
        if (complete_) {
            const CellBounds& b = cells_.bounds();
            area = Rectangle{b.first_row, std::max(b.end_row - 1, 0), b.first_column,
                             std::max(b.end_column - 1, 0)};
        } else if (area && stated) {
            area = Rectangle{std::min(area->first_row, stated->first_row),
                             std::max(area->last_row, stated->last_row),
                             std::min(area->first_column, stated->first_column),
                             std::max(area->last_column, stated->last_column)};
        }
        if (!area || (!complete_ && !stated)) {
            copy_element();
            return;
        }
        const bool is_empty = scanner_.is_empty_element();
        out_.append(open_tag_without(scanner_, "ref"));
        out_.append(" ref=\"" + area_name(*area) + (is_empty ? "\"/>" : "\">"));
        copy_rest(scanner_.depth());
    }

    void rewrite_columns() {
        const int depth = scanner_.depth();
        std::string markup(scanner_.raw());
        while (scanner_.depth() >= depth) {
            scanner_.next();
            if (markup.size() > kMaxTokenBytes)
                throw Error::limit(scanner_.window().part_name(),
                                   "more than " + std::to_string(kMaxTokenBytes >> 20) +
                                       " MiB of column elements");
            markup += scanner_.raw();
        }
        const bool is_first = std::exchange(new_elements_[0].is_wanted, false);
        out_.append(is_first ? set_column_widths(markup, prefix_, changes_.column_widths) : markup);
    }

    void write_new_before(int place) {
        for (NewElement& element : new_elements_)
            if (worksheet_element_place(element.name) < place &&
                std::exchange(element.is_wanted, false))
                (this->*element.write)();
    }

    void write_columns() { out_.append(set_column_widths({}, prefix_, changes_.column_widths)); }

    void write_sheet_data() { sheet_data_->write_missing(); }

    // The options that applications set when a sheet is protected without a choice.
    void write_protection() {
        out_.append("<" + prefix_ + "sheetProtection sheet=\"1\" objects=\"1\" scenarios=\"1\"/>");
    }

    void write_merged_regions() {
        const std::vector<Rectangle>& regions = *changes_.merged_regions;
        out_.append("<" + prefix_ + "mergeCells count=\"" + std::to_string(regions.size()) + "\">");
        for (const Rectangle& r : regions)
            out_.append("<" + prefix_ + "mergeCell ref=\"" + area_name(r) + "\"/>");
        out_.append("</" + prefix_ + "mergeCells>");
    }

    XmlScanner scanner_;
    MarkupWriter out_;
    const CellStore& cells_;
    const std::vector<std::uint32_t>& shared_index_of_;
    const SheetChanges& changes_;
    const bool complete_;
    ChangedPlaces& changed_;
    FormulaGroups& groups_;
    std::string prefix_; ///< of the root element
    std::optional<CellMarkup> markup_;
    std::optional<SheetDataRewriter> sheet_data_;
    NewElement new_elements_[4] = {
        {"cols", !changes_.column_widths.empty(), &Rewriter::write_columns},
        {"sheetData", changes_.cells, &Rewriter::write_sheet_data},
        {"sheetProtection", changes_.is_protected.value_or(false), &Rewriter::write_protection},
        {"mergeCells", changes_.merged_regions && !changes_.merged_regions->empty(),
         &Rewriter::write_merged_regions}};
};

} // namespace

void rewrite_worksheet(const PartOpener& open_part, const CellStore& cells,
                       const std::vector<std::uint32_t>& shared_index_of,
                       const SheetChanges& changes, bool complete, ByteSink& out) {
    ChangedPlaces changed(cells, changes.cleared);
    FormulaGroups groups;
    if (changes.cells && may_have_formula_groups(*open_part()))
        groups.survey(*open_part(), changed);
    const std::unique_ptr<ByteSource> part = open_part();
    Rewriter(*part, cells, shared_index_of, changes, complete, changed, groups, out).run();
}

} // namespace workbook
