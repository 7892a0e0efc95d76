// SPDX-License-Identifier: Apache-2.0
//
// Operators need no precedence here: a formula is operands with an operator between any two.
#include "workbook/xlsx/formula/formula_syntax.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <utility>
#include <vector>

#include "foundation/ascii_case.h"
#include "workbook/functions/function_table.h"
#include "workbook/functions/later_functions.h"
#include "workbook/library.h"
#include "workbook/xlsx/formula/formula_tokens.h"

namespace workbook {

namespace {

using Kind = FormulaTokenKind;

constexpr int kMaxFunctionDepth = 64; ///< that applications take (18.17.2.7)
constexpr int kMaxDepth = 256;        ///< of parentheses

bool is_named(std::string_view function, std::string_view name) {
    return foundation::unicode::equal_ignoring_ascii_case(without_later_prefix(function), name);
}

bool is_blank(std::string_view text) {
    return text == " " || text == "\n" || text == "\t";
}

class SyntaxChecker {
  public:
    explicit SyntaxChecker(std::string_view formula) : formula_(formula) {}

    void check() {
        check_characters();
        FormulaTokenizer tokenizer(formula_);
        std::size_t position = 0;
        for (FormulaToken token = tokenizer.next(); !token.text.empty(); token = tokenizer.next()) {
            tokens_.push_back({token, position});
            position += token.text.size();
        }
        if (tokenizer.is_broken()) {
            at_ = tokens_.size() - 1;
            fail(tokens_.back().token.text.starts_with('"') ? "a string has no closing quote"
                                                            : "a name or bracket is not closed");
        }
        skip_blanks();
        check_expression();
        if (is("(")) fail("there is an operator missing before the parenthesis");
        if (!is_end()) fail_unexpected();
    }

  private:
    struct Place {
        FormulaToken token;
        std::size_t position;
    };

    [[noreturn]] void fail(std::string reason) const {
        throw FormulaProblem{is_end() ? formula_.size() : tokens_[at_].position, std::move(reason)};
    }

    [[noreturn]] void fail_unexpected() const {
        const std::string_view text = tokens_[at_].token.text;
        if (text == ";") fail("arguments are separated by commas, not by semicolons");
        if (text == ")") fail("a closing parenthesis has no opening one");
        fail("'" + std::string(text.substr(0, 40)) + "' is not expected");
    }

    void check_characters() const {
        std::size_t units = 0;
        for (std::size_t i = 0; i < formula_.size(); ++i) {
            const auto byte = static_cast<unsigned char>(formula_[i]);
            if ((byte & 0xC0) != 0x80) units += byte >= 0xF0 ? 2 : 1;
            if (byte < 0x20 && byte != '\n' && byte != '\t')
                throw FormulaProblem{i, "it has a control character"};
        }
        if (units > kMaxFormulaUnits)
            throw FormulaProblem{0, "it has more than " + std::to_string(kMaxFormulaUnits) +
                                        " characters"};
    }

    bool is_end() const { return at_ >= tokens_.size(); }
    bool is(std::string_view text) const {
        return !is_end() && tokens_[at_].token.kind == Kind::Other &&
               tokens_[at_].token.text == text;
    }
    bool is_kind(Kind kind) const { return !is_end() && tokens_[at_].token.kind == kind; }

    /// Returns whether there were any.
    bool skip_blanks() {
        const std::size_t before = at_;
        while (!is_end() && is_blank(tokens_[at_].token.text))
            ++at_;
        return at_ > before;
    }

    bool take(std::string_view text) {
        if (!is(text)) return false;
        ++at_;
        skip_blanks();
        return true;
    }

    bool take_one_of(std::initializer_list<std::string_view> texts) {
        return std::any_of(texts.begin(), texts.end(), [this](auto text) { return take(text); });
    }

    bool take_operator() {
        if (take("<")) return take_one_of({">", "="}), true;
        if (take(">")) return take("="), true;
        return take_one_of({"=", "&", "+", "-", "*", "/", "^"});
    }

    void check_expression() {
        if (++depth_ > kMaxDepth) fail("it is nested too deeply");
        do
            check_operand();
        while (take_operator());
        --depth_;
    }

    /// Values with signs before them and percent signs after them. References may be joined by a
    /// colon, or by a blank, which means the cells that both have.
    void check_operand() {
        while (take_one_of({"+", "-"})) {
        }
        for (;;) {
            const bool is_reference = check_value();
            const bool is_apart = skip_blanks();
            if (is_reference && take(":")) continue;
            if (is_reference && is_apart && begins_reference()) continue;
            break;
        }
        while (take("%")) {
        }
    }

    bool begins_reference() const {
        return is_kind(Kind::SheetPrefix) || is_kind(Kind::Reference) || is_kind(Kind::Name) ||
               is_kind(Kind::Function) || is("(");
    }

    /// Returns whether it may be a reference.
    bool check_value() {
        if (is_end()) fail("something is missing at the end");
        const std::string_view text = tokens_[at_].token.text;
        switch (tokens_[at_].token.kind) {
        case Kind::OtherPrefix:
            fail("it refers to another book, to which the file has no link");
        case Kind::SheetPrefix:
            ++at_;
            if (!is_kind(Kind::Reference) && !is_kind(Kind::Name) && !is_kind(Kind::Error))
                fail("there are no cells after '" + std::string(text) + "'");
            take_cells();
            return true;
        case Kind::Reference:
            take_cells();
            return true;
        case Kind::Name:
            if (text.starts_with('[') || text.find("[@") != std::string_view::npos)
                fail("a column of a table is written as Table[[#This Row],[Column]]");
            take_cells();
            return true;
        case Kind::Error:
            ++at_;
            return text == "#REF!";
        case Kind::Function:
            ++at_;
            check_arguments(text);
            while (is_named(text, "LAMBDA") && is("(")) {
                ++at_;
                check_arguments({});
            }
            return true;
        case Kind::Other:
            break;
        }
        if (text == "(") return check_parentheses();
        if (text == "{") return check_array(), false;
        check_constant();
        return false;
    }

    /// With the '#' after one cell or a name: all cells that it fills.
    void take_cells() {
        const FormulaToken& token = tokens_[at_++].token;
        if (token.kind != Kind::Error && token.text.find(':') == std::string_view::npos && is("#"))
            ++at_;
    }

    bool check_parentheses() {
        take("(");
        do
            check_expression();
        while (take(","));
        close();
        return true;
    }

    void close() {
        if (is_end()) fail("a closing parenthesis is missing");
        if (!is(")")) fail_unexpected();
        ++at_; // a blank after it may be an operator
    }

    void check_arguments(std::string_view name) {
        const std::size_t begin = at_ - 1;
        if (++function_depth_ > kMaxFunctionDepth) fail("functions are nested too deeply");
        take("(");
        const bool is_let = is_named(name, "LET"), is_lambda = is_named(name, "LAMBDA");
        std::size_t count = 0;
        if (!is(")")) {
            do {
                ++count;
                const std::size_t argument = at_;
                const bool has_name = is_lambda || (is_let && count % 2 == 1);
                if (has_name && take_parameter(is_lambda)) continue;
                if (!is(",") && !is(")")) check_expression();
                if (has_name && is(",")) {
                    at_ = argument;
                    fail(std::string(is_let ? "LET" : "LAMBDA") +
                         " needs a name here, one that is not a cell");
                }
            } while (take(","));
        }
        close();
        --function_depth_;
        if (is_let && (count < 3 || count % 2 == 0)) {
            at_ = begin;
            fail("LET takes names with their values, and a calculation at the end");
        }
        const FunctionFacts* const known = function_with_name(name);
        if (known == nullptr) return;
        if (count >= known->least_arguments && count <= known->most_arguments) return;
        at_ = begin;
        const bool are_few = count < known->least_arguments;
        fail(std::string(known->name) + " has too " + (are_few ? "few" : "many") + " arguments");
    }

    /// A name that LET or LAMBDA gives to a value, in brackets where LAMBDA may go without it.
    bool take_parameter(bool may_be_in_brackets) {
        if (!is_kind(Kind::Name)) return false;
        const std::size_t bracket = tokens_[at_].token.text.find('[');
        if (bracket != std::string_view::npos && (bracket != 0 || !may_be_in_brackets))
            return false;
        const std::size_t before = std::exchange(at_, at_ + 1);
        skip_blanks();
        if (!is(",")) at_ = before;
        return at_ != before;
    }

    void check_array() {
        take("{");
        std::optional<std::size_t> width;
        do {
            std::size_t count = 0;
            do {
                while (take_one_of({"+", "-"})) {
                }
                if (is_end()) fail("a closing brace is missing");
                if (is_kind(Kind::Name) || is_kind(Kind::Error))
                    ++at_;
                else
                    check_constant();
                skip_blanks();
                ++count;
            } while (take(","));
            if (width.value_or(count) != count) fail("the rows of an array differ in length");
            width = count;
        } while (take(";"));
        if (is_end()) fail("a closing brace is missing");
        if (!is("}")) fail_unexpected();
        ++at_;
    }

    void check_constant() {
        const std::string_view text = tokens_[at_].token.text;
        if (!text.starts_with('"')) {
            double number = 0;
            const auto [end, failure] =
                std::from_chars(text.data(), text.data() + text.size(), number);
            if (failure != std::errc() || end != text.data() + text.size()) fail_unexpected();
        }
        ++at_;
    }

    const std::string_view formula_;
    std::vector<Place> tokens_;
    std::size_t at_ = 0;
    int depth_ = 0;
    int function_depth_ = 0;
};

} // namespace

std::optional<FormulaProblem> check_formula(std::string_view formula) {
    try {
        SyntaxChecker(formula).check();
        return {};
    } catch (const FormulaProblem& problem) {
        return problem;
    }
}

std::string formula_problem(std::string_view formula) {
    constexpr std::size_t kShownBytes = 100;
    const auto problem = check_formula(formula);
    if (!problem) return {};
    const std::string_view before = formula.substr(0, problem->position);
    const auto characters = std::count_if(before.begin(), before.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    });
    std::string shown(formula.substr(0, kShownBytes));
    if (shown.size() < formula.size()) shown += "...";
    return "\"=" + shown + "\": " + problem->reason + ", at character " +
           std::to_string(characters + 2);
}

} // namespace workbook
