// SPDX-License-Identifier: Apache-2.0
//
// One pass over the tokens with the open parentheses on a stack. A name of LET is known after its
// value, one of LAMBDA at once, both until the function's parenthesis closes.
#include "workbook/xlsx/formula/stored_formula.h"

#include <cstddef>
#include <unordered_map>
#include <utility>
#include <vector>

#include "foundation/case_folding.h"
#include "foundation/unicode.h"
#include "workbook/functions/later_functions.h"
#include "workbook/xlsx/formula/formula_tokens.h"

namespace workbook {

namespace {

using Kind = FormulaTokenKind;

constexpr std::string_view kParameter = "_xlpm.";
constexpr std::string_view kOptionalParameter = "_xlop.";
constexpr std::string_view kSpill = "_xlfn.ANCHORARRAY";
constexpr std::size_t kMaxShownBytes = 1 << 17; ///< no application writes formulas of this length

bool is_blank(const FormulaToken& token) {
    return token.text == " " || token.text == "\n" || token.text == "\t";
}

std::vector<FormulaToken> tokens_of(std::string_view formula) {
    std::vector<FormulaToken> tokens;
    FormulaTokenizer tokenizer(formula);
    for (FormulaToken token = tokenizer.next(); !token.text.empty(); token = tokenizer.next())
        tokens.push_back(token);
    return tokens;
}

class StoredFormulaMaker {
  public:
    explicit StoredFormulaMaker(std::string_view formula) : tokens_(tokens_of(formula)) {}

    std::string make() {
        for (at_ = 0; at_ < tokens_.size(); ++at_) {
            const std::string_view text = tokens_[at_].text;
            if (begins_spill()) (out_ += kSpill) += '(';
            if (has_kind(Kind::Function) && !follows_prefix())
                append_function(text);
            else if (has_kind(Kind::Name) && !follows_prefix())
                append_name(text);
            else
                out_ += ends_spill(at_) ? ")" : text;
            if (has_kind(Kind::Other)) follow_parentheses(text);
        }
        return std::move(out_);
    }

  private:
    enum class Binder { None, Let, Lambda };

    struct Level {
        Binder binder = Binder::None;
        std::size_t argument = 0;
        std::u16string next_name; ///< of LET, whose value is not complete
        std::vector<std::u16string> names;
    };

    bool has_kind(Kind kind) const { return tokens_[at_].kind == kind; }

    bool follows_prefix() const {
        if (at_ == 0) return false;
        const Kind before = tokens_[at_ - 1].kind;
        return before == Kind::SheetPrefix || before == Kind::OtherPrefix;
    }

    /// Whether the token is the '#' in "A1#" or "Name#".
    bool ends_spill(std::size_t at) const {
        if (at == 0 || at >= tokens_.size() || tokens_[at].text != "#") return false;
        const Kind before = tokens_[at - 1].kind;
        return before == Kind::Reference || before == Kind::Name;
    }

    bool begins_spill() const {
        if (has_kind(Kind::SheetPrefix)) return ends_spill(at_ + 2);
        return !follows_prefix() && ends_spill(at_ + 1);
    }

    static std::u16string key_of(std::string_view name) {
        return foundation::unicode::fold_case(foundation::unicode::to_utf16(name));
    }

    bool is_known(std::string_view name) const {
        return !known_.empty() && known_.contains(key_of(name));
    }

    void append_function(std::string_view text) {
        if (is_known(text)) {
            (out_ += kParameter) += text;
            return;
        }
        const LaterFunction later = later_function(text);
        if (later.prefix.empty())
            out_ += text;
        else
            (out_ += later.prefix) += later.name;
    }

    void append_name(std::string_view text) {
        const bool has_prefix =
            text.starts_with(kParameter) || text.starts_with(kOptionalParameter);
        if (has_prefix || !is_parameter(text)) {
            if (!has_prefix && is_known(text)) out_ += kParameter;
            out_ += text;
            return;
        }
        const bool is_optional = text.starts_with('[');
        if (is_optional) text = text.substr(1, text.size() - 2);
        (out_ += is_optional ? kOptionalParameter : kParameter) += text;
        Level& level = levels_.back();
        if (level.binder == Binder::Let)
            level.next_name = key_of(text);
        else
            declare(level, key_of(text));
    }

    /// Whether a name is an argument on its own, with others after it, where names are given.
    bool is_parameter(std::string_view text) const {
        if (levels_.empty() || levels_.back().binder == Binder::None) return false;
        const Level& level = levels_.back();
        const bool is_lambda = level.binder == Binder::Lambda;
        if (!is_lambda && level.argument % 2 != 0) return false;
        const std::size_t bracket = text.find('[');
        if (bracket != std::string_view::npos && (bracket != 0 || !is_lambda)) return false;
        std::size_t before = at_ - 1, after = at_ + 1; // a parenthesis is before it
        while (is_blank(tokens_[before]))
            --before;
        while (after < tokens_.size() && is_blank(tokens_[after]))
            ++after;
        return (tokens_[before].text == "(" || tokens_[before].text == ",") &&
               after < tokens_.size() && tokens_[after].text == ",";
    }

    void declare(Level& level, std::u16string name) {
        ++known_[name];
        level.names.push_back(std::move(name));
    }

    void follow_parentheses(std::string_view text) {
        if (text == "(" || text == "{") {
            levels_.emplace_back();
            if (at_ > 0 && tokens_[at_ - 1].kind == Kind::Function)
                levels_.back().binder = binder_of(tokens_[at_ - 1].text);
        } else if (levels_.empty()) {
            return;
        } else if (text == ",") {
            Level& level = levels_.back();
            if (!level.next_name.empty() && level.argument % 2 != 0)
                declare(level, std::exchange(level.next_name, {}));
            ++level.argument;
        } else if (text == ")" || text == "}") {
            for (const std::u16string& name : levels_.back().names)
                if (const auto known = known_.find(name); --known->second == 0) known_.erase(known);
            levels_.pop_back();
        }
    }

    static Binder binder_of(std::string_view function) {
        const std::string_view name = later_function(without_later_prefix(function)).name;
        return name == "LET" ? Binder::Let : name == "LAMBDA" ? Binder::Lambda : Binder::None;
    }

    const std::vector<FormulaToken> tokens_;
    std::size_t at_ = 0;
    std::vector<Level> levels_;
    std::unordered_map<std::u16string, std::size_t> known_; ///< how many levels know a name
    std::string out_;
};

/// The position of the parenthesis that closes "_xlfn.ANCHORARRAY(A1)", which begins at `at`; 0 for
/// anything else.
std::size_t end_of_spill(const std::vector<FormulaToken>& tokens, std::size_t at) {
    if (tokens[at].text != kSpill || tokens[at].kind != Kind::Function) return 0;
    std::size_t i = at + 2;
    if (i < tokens.size() && tokens[i].kind == Kind::SheetPrefix) ++i;
    if (i + 1 >= tokens.size() || tokens[i + 1].text != ")") return 0;
    return tokens[i].kind == Kind::Reference || tokens[i].kind == Kind::Name ? i + 1 : 0;
}

void append_shown(const FormulaToken& token, std::string& shown) {
    const bool is_function = token.kind == Kind::Function;
    const std::string_view text = token.text;
    if (!is_function && token.kind != Kind::Name)
        shown += text;
    else if (text.starts_with(kParameter))
        shown += text.substr(kParameter.size());
    else if (!is_function && text.starts_with(kOptionalParameter))
        ((shown += '[') += text.substr(kOptionalParameter.size())) += ']';
    else
        shown += is_function ? without_later_prefix(text) : text;
}

} // namespace

std::string stored_formula(std::string_view formula) {
    return StoredFormulaMaker(formula).make();
}

std::string shown_formula(std::string_view stored) {
    std::string shown;
    if (stored.find("_xl") == std::string_view::npos || stored.size() > kMaxShownBytes)
        return shown = stored;
    const std::vector<FormulaToken> tokens = tokens_of(stored);
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        const std::size_t end = end_of_spill(tokens, i);
        if (end == 0) {
            append_shown(tokens[i], shown);
            continue;
        }
        for (i += 2; i < end; ++i)
            append_shown(tokens[i], shown);
        shown += '#';
    }
    if (stored_formula(shown) != stored) shown = stored;
    return shown;
}

} // namespace workbook
