// SPDX-License-Identifier: Apache-2.0
//
// One pass over the tokens each; everything that does not change is copied.
#include "workbook/xlsx/formula/formula_text.h"

#include <algorithm>

#include "workbook/xlsx/formula/reference_text.h"

namespace workbook {

namespace {

using Kind = FormulaTokenKind;

constexpr std::string_view kNoReference = "#REF!";

bool is_broken(std::string_view formula) {
    FormulaTokenizer tokens(formula);
    while (!tokens.next().text.empty()) {
    }
    return tokens.is_broken();
}

class SheetRenamer {
  public:
    SheetRenamer(std::string_view formula, const SheetNameMap& map, const SheetSpanMap& spans)
        : tokens_(formula), map_(map), spans_(spans) {}

    std::optional<std::string> run() {
        for (FormulaToken token = tokens_.next(); !token.text.empty(); token = tokens_.next()) {
            if (token.kind == Kind::SheetPrefix)
                put_prefix(token.text);
            else
                out_ += token.text;
        }
        if (!changed_ || tokens_.is_broken()) return {};
        return std::move(out_);
    }

  private:
    std::optional<SheetPrefixNames> mapped(const SheetPrefixNames& names) const {
        if (!names.last.empty() && spans_) return spans_(names);
        const std::optional<std::string> first = map_(names.first);
        if (names.last.empty()) {
            if (!first) return {};
            return SheetPrefixNames{*first, {}};
        }
        const std::optional<std::string> last = map_(names.last);
        if (!first && !last) return {};
        return SheetPrefixNames{first ? *first : *last, first && last ? *last : std::string{}};
    }

    void put_prefix(std::string_view prefix) {
        const SheetPrefixNames names = names_in_prefix(prefix);
        const std::optional<SheetPrefixNames> now = mapped(names);
        if (!now) {
            changed_ = true;
            put_no_reference();
        } else if (now->first == names.first && now->last == names.last) {
            out_ += prefix;
        } else {
            changed_ = true;
            out_ += make_sheet_prefix(now->first, now->last == now->first ? "" : now->last);
        }
    }

    /// One #REF! for all of the reference whose prefix was taken: "X!A1", "X!A1:X!B2", "X!A1#".
    void put_no_reference() {
        out_ += kNoReference;
        if (!skip_operand(tokens_)) return;
        for (FormulaTokenizer ahead = tokens_; skip_range_tail(ahead);)
            tokens_ = ahead;
    }

    static bool skip_operand(FormulaTokenizer& tokens) {
        FormulaTokenizer ahead = tokens;
        const Kind kind = ahead.next().kind;
        if (kind != Kind::Reference && kind != Kind::Name && kind != Kind::Error) return false;
        tokens = ahead;
        return true;
    }

    bool skip_range_tail(FormulaTokenizer& tokens) const {
        const FormulaToken link = tokens.next();
        if (link.text == "#") return true;
        if (link.text != ":") return false;
        FormulaTokenizer ahead = tokens;
        const FormulaToken corner = ahead.next();
        if (corner.kind == Kind::SheetPrefix) {
            if (mapped(names_in_prefix(corner.text))) return false;
            tokens = ahead;
            return skip_operand(tokens);
        }
        tokens = ahead;
        return corner.kind == Kind::Reference;
    }

    FormulaTokenizer tokens_;
    const SheetNameMap& map_;
    const SheetSpanMap& spans_;
    std::string out_;
    bool changed_ = false;
};

/// The structured references of one table in brackets, "[Col]" or "[[#Data],[A]:[B]]".
class ColumnRenamer {
  public:
    ColumnRenamer(std::string_view table, const ColumnNameMap& map) : table_(table), map_(map) {}

    /// Returns whether a column was replaced.
    bool append(std::string& out, std::string_view brackets) {
        const std::string_view within = brackets.substr(1, brackets.size() - 2);
        if (within.find('[') == std::string_view::npos || !has_items(within)) {
            append_item(out, brackets);
            return changed_;
        }
        out += '[';
        for (std::size_t i = 0; i < within.size();) {
            const std::size_t length = within[i] == '[' ? item_length(within.substr(i)) : 1;
            if (length > 1)
                append_item(out, within.substr(i, length));
            else
                out += within[i];
            i += length;
        }
        out += ']';
        return changed_;
    }

  private:
    static bool has_items(std::string_view within) {
        const std::size_t first = within.find_first_not_of(" @");
        return first != std::string_view::npos && within[first] == '[';
    }

    /// An apostrophe precedes a character that means itself.
    static std::size_t item_length(std::string_view text) {
        for (std::size_t i = 1; i < text.size(); ++i) {
            if (text[i] == '\'')
                ++i;
            else if (text[i] == ']')
                return i + 1;
        }
        return text.size();
    }

    void append_item(std::string& out, std::string_view item) {
        std::string column;
        for (std::size_t i = 1; i + 1 < item.size(); ++i) {
            if (item[i] == '\'' && i + 2 < item.size()) ++i;
            column += item[i];
        }
        const bool is_part = item.substr(1).starts_with('#');
        const std::optional<std::string> name = is_part ? std::nullopt : map_(table_, column);
        if (!name) {
            out += item;
            return;
        }
        changed_ = true;
        out += '[';
        for (const char c : *name) {
            if (std::string_view("[]#'@").find(c) != std::string_view::npos) out += '\'';
            out += c;
        }
        out += ']';
    }

    std::string_view table_;
    const ColumnNameMap& map_;
    bool changed_ = false;
};

} // namespace

std::string translate_formula(std::string_view formula, int rows, int columns) {
    if (is_broken(formula)) return std::string{formula};
    std::string out;
    out.reserve(formula.size() + 8);
    FormulaTokenizer tokens(formula);
    for (FormulaToken token = tokens.next(); !token.text.empty(); token = tokens.next()) {
        if (token.kind == Kind::Reference)
            out += moved_reference(token.text, rows, columns);
        else
            out += token.text;
    }
    return out;
}

std::optional<std::string> rename_sheets(std::string_view formula, const SheetNameMap& map,
                                         const SheetSpanMap& spans) {
    if (formula.find('!') == std::string_view::npos) return {};
    return SheetRenamer(formula, map, spans).run();
}

std::optional<std::string> rename_tables(std::string_view formula, const TableNameMap& map) {
    std::string out;
    bool changed = false, is_behind_prefix = false;
    FormulaTokenizer tokens(formula);
    for (FormulaToken token = tokens.next(); !token.text.empty(); token = tokens.next()) {
        const std::size_t end = std::min(token.text.find('['), token.text.size());
        if (token.kind == Kind::Name && end > 0 && !is_behind_prefix)
            if (const std::optional<std::string> name = map(token.text.substr(0, end))) {
                out += *name;
                token.text.remove_prefix(end);
                changed = true;
            }
        out += token.text;
        is_behind_prefix = token.kind == Kind::SheetPrefix || token.kind == Kind::OtherPrefix;
    }
    if (!changed || tokens.is_broken()) return {};
    return out;
}

std::optional<std::string> rename_columns(std::string_view formula, const ColumnNameMap& map) {
    if (formula.find('[') == std::string_view::npos) return {};
    std::string out;
    bool changed = false, is_behind_prefix = false;
    FormulaTokenizer tokens(formula);
    for (FormulaToken token = tokens.next(); !token.text.empty(); token = tokens.next()) {
        const std::size_t end = std::min(token.text.find('['), token.text.size());
        if (token.kind == Kind::Name && end > 0 && end < token.text.size() && !is_behind_prefix) {
            const std::string_view table = token.text.substr(0, end);
            out += table;
            changed |= ColumnRenamer(table, map).append(out, token.text.substr(end));
        } else {
            out += token.text;
        }
        is_behind_prefix = token.kind == Kind::SheetPrefix || token.kind == Kind::OtherPrefix;
    }
    if (!changed || tokens.is_broken()) return {};
    return out;
}

} // namespace workbook
