// SPDX-License-Identifier: Apache-2.0
//
// Tokens are in postfix order: operands wait on a stack for their operator. Parentheses are tokens
// of their own, so precedence needs no thought.
#include "workbook/xls/formula/formula_printer.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

#include "foundation/unicode.h"
#include "workbook/cells/cell_name.h"
#include "workbook/functions/function_table.h"
#include "workbook/functions/later_functions.h"
#include "workbook/io/little_endian.h"
#include "workbook/xls/formula/token_stream.h"
#include "workbook/xls/reading/formula_results.h"

namespace workbook::biff {

namespace {

constexpr std::uint16_t kRelativeRow = 0x8000, kRelativeColumn = 0x4000, kColumnMask = 0x00FF;
constexpr int kLastRow = 0xFFFF, kLastColumn = 0xFF;

/// Tokens 0x03 to 0x11 (MS-XLS 2.5.198.25).
constexpr std::string_view kBinary[] = {
    "+", "-", "*", "/", "^", "&", "<", "<=", "=", ">=", ">", "<>", " ", ",", ":"};

/// No formula has more, in bytes; and what joining strings may cost for one.
constexpr std::size_t kMaxTextBytes = std::size_t{4} * 8192;
constexpr std::size_t kMaxCopiedBytes = 4u << 20;

/// Thrown and caught here: there is no text.
struct NoText {};

bool is_letter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

/// Whether a sheet's name may do without quotes; those that look like references may not. Quotes
/// that are not needed do no harm.
bool is_plain_name(std::string_view name) {
    std::size_t letters = 0;
    while (letters < name.size() && is_letter(name[letters]))
        ++letters;
    const bool looks_like_cell = letters <= 3 && name.size() <= 10;
    if (letters == 0 || looks_like_cell) return false;
    for (const char c : name)
        if (!is_letter(c) && !is_digit(c) && c != '_') return false;
    return true;
}

std::string quoted(std::string_view name) {
    std::string text = "'";
    for (const char c : name)
        text.append(c == '\'' ? 2 : 1, c);
    return text + "'";
}

std::string prefix_of(std::string_view book, std::string_view first, std::string_view last) {
    std::string text;
    if (!book.empty()) text.append("[").append(book).append("]");
    text.append(first);
    if (!last.empty()) text.append(":").append(last);
    const bool is_plain =
        book.empty() && is_plain_name(first) && (last.empty() || is_plain_name(last));
    return (is_plain ? text : quoted(text)) + '!';
}

std::string number_text(double value) {
    if (!std::isfinite(value)) throw NoText();
    std::array<char, 40> digits{};
    // As applications show them: an exponent for the very large and small only.
    const double size = std::abs(value);
    const bool is_plain = value == 0.0 || (size >= 1e-9 && size < 1e16);
    const auto format = is_plain ? std::chars_format::fixed : std::chars_format::scientific;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, format).ptr;
    std::string text(digits.data(), end);
    if (const std::size_t exponent = text.find('e'); exponent != text.npos) text[exponent] = 'E';
    return text;
}

std::string known_error(std::uint8_t code) {
    const std::string_view text = error_text(code);
    if (text == "#ERROR!") throw NoText();
    return std::string(text);
}

/// A string of one or two bytes for a character.
std::string characters(std::string_view bytes, std::size_t count, bool is_wide) {
    std::u16string units;
    for (std::size_t i = 0; i < count; ++i)
        units += is_wide ? static_cast<char16_t>(load_u16(bytes.data() + 2 * i))
                         : static_cast<char16_t>(static_cast<unsigned char>(bytes[i]));
    return foundation::unicode::to_utf8(units);
}

std::string string_constant(std::string_view text) {
    std::string quoted_text = "\"";
    for (const char c : text)
        quoted_text.append(c == '"' ? 2 : 1, c);
    return quoted_text + '"';
}

class Printer {
  public:
    Printer(std::string_view formula, const FormulaContext& context)
        : formula_(formula), context_(context) {}

    std::string print(const std::vector<FormulaToken>& tokens) {
        for (const FormulaToken& token : tokens)
            print_token(token);
        if (stack_.size() != 1) throw NoText();
        return std::move(stack_.front());
    }

  private:
    // --- The stack

    void push(std::string text) {
        copied_ += text.size();
        if (text.size() > kMaxTextBytes || copied_ > kMaxCopiedBytes) throw NoText();
        stack_.push_back(std::move(text));
    }

    std::string pop() {
        if (stack_.empty()) throw NoText();
        std::string text = std::move(stack_.back());
        stack_.pop_back();
        return text;
    }

    void join(std::string_view between) {
        const std::string right = pop();
        push(pop().append(between).append(right));
    }

    void wrap(std::string_view before, std::string_view after) {
        const std::string operand = pop();
        push(std::string(before).append(operand).append(after));
    }

    void call(std::string_view name, std::size_t count) {
        if (count > stack_.size()) throw NoText();
        const std::size_t first = stack_.size() - count;
        std::string text(name);
        text += '(';
        for (std::size_t i = first; i < stack_.size(); ++i) {
            if (i != first) text += ',';
            text += stack_[i];
        }
        stack_.resize(first);
        push(text + ')');
    }

    // --- Fields

    std::uint8_t byte(std::size_t position) const {
        return static_cast<std::uint8_t>(formula_[position]);
    }
    std::uint16_t u16(std::size_t position) const { return load_u16(formula_.data() + position); }
    double number(std::size_t position) const {
        const std::uint64_t bits = load_u64(formula_.data() + position);
        double value;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }

    // --- Tokens

    void print_token(const FormulaToken& token) {
        constexpr std::uint8_t kFirstBinary = 0x03, kLastBinary = 0x11;
        const auto id = static_cast<std::uint8_t>(token.id());
        if (id >= kFirstBinary && id <= kLastBinary) return join(kBinary[id - kFirstBinary]);
        const std::size_t body = token.body;
        switch (id) {
        case 0x12:
            return wrap("+", "");
        case 0x13:
            return wrap("-", "");
        case 0x14:
            return wrap("", "%");
        case 0x15:
            return wrap("(", ")");
        case 0x16: // a missing argument
            return push({});
        case 0x17:
            return push(string_constant(
                characters(formula_.substr(body + 2), byte(body), (byte(body + 1) & 1) != 0)));
        case 0x19:
            return print_attribute(byte(body));
        case 0x1C:
            return push(known_error(byte(body)));
        case 0x1D:
            return push(byte(body) != 0 ? "TRUE" : "FALSE");
        case 0x1E:
            return push(std::to_string(u16(body)));
        case 0x1F:
            return push(number_text(number(body)));
        case 0x20:
            return push(array_text(token));
        case 0x21:
            return print_function(u16(body), std::nullopt);
        case 0x22:
            return print_function(u16(body + 1), byte(body) & 0x7F);
        case 0x23:
            return push(name_text(load_u32(formula_.data() + body), std::nullopt));
        case 0x24:
            return push(corner(u16(body), u16(body + 2)));
        case 0x25:
            return push(area(body));
        case 0x26: // what a memory token stands for follows it
        case 0x27:
        case 0x28:
        case 0x29:
            return;
        case 0x2A:
        case 0x2B:
            return push("#REF!");
        case 0x39:
            return push(external_name(u16(body), load_u32(formula_.data() + body + 2)));
        case 0x3A:
            return push_on_sheet(u16(body), corner(u16(body + 2), u16(body + 4)));
        case 0x3B:
            return push_on_sheet(u16(body), area(body + 2));
        case 0x3C:
        case 0x3D:
            return push_on_sheet(u16(body), "#REF!");
        default:
            throw NoText();
        }
    }

    /// The others say how to compute, or how many blanks there are.
    void print_attribute(std::uint8_t kind) {
        constexpr std::uint8_t kSum = 0x10;
        if ((kind & kSum) != 0) call("SUM", 1);
    }

    /// Without a count the function takes one number of arguments alone.
    void print_function(std::uint16_t number, std::optional<std::size_t> count) {
        constexpr std::uint16_t kUserDefined = 0x00FF;
        if (number == kUserDefined) {
            if (!count || *count == 0 || *count > stack_.size()) throw NoText();
            const auto at = stack_.end() - static_cast<std::ptrdiff_t>(*count);
            const std::string name = own_function_name(*at);
            stack_.erase(at);
            return call(name, *count - 1);
        }
        const FunctionFacts* const function = function_with_number(number);
        if (function == nullptr || (!count && !function->takes_one_count())) throw NoText();
        call(function->name, count.value_or(function->least_arguments));
    }

    /// Functions of the first version with more of them have names in files before it.
    static std::string own_function_name(const std::string& name) {
        constexpr std::string_view kLater = "_xlfn.";
        if (name.empty()) throw NoText();
        for (const std::string_view known :
             {"IFERROR", "COUNTIFS", "SUMIFS", "AVERAGEIF", "AVERAGEIFS"})
            if (name.starts_with(kLater) && name.substr(kLater.size()) == known)
                return std::string(known);
        return std::string(without_later_prefix(name));
    }

    std::string array_text(const FormulaToken& token) {
        std::size_t at = token.extra;
        const std::size_t columns = byte(at) + std::size_t{1};
        const std::size_t rows = u16(at + 1) + std::size_t{1};
        at += 3;
        std::string text = "{";
        for (std::size_t i = 0; i < rows * columns; ++i) {
            if (i != 0) text += i % columns == 0 ? ';' : ',';
            text += array_value(at);
            if (text.size() > kMaxTextBytes) throw NoText();
        }
        return text + '}';
    }

    /// The value at a position, which moves past it.
    std::string array_value(std::size_t& at) const {
        const std::uint8_t type = byte(at++);
        if (type == 2) {
            const std::size_t count = u16(at);
            const bool is_wide = (byte(at + 2) & 1) != 0;
            const std::string text = characters(formula_.substr(at + 3), count, is_wide);
            at += 3 + (is_wide ? 2 * count : count);
            return string_constant(text);
        }
        const std::size_t value = at;
        at += 8;
        switch (type) {
        case 1:
            return number_text(number(value));
        case 4:
            return byte(value) != 0 ? "TRUE" : "FALSE";
        case 16:
            return known_error(byte(value));
        default:
            throw NoText();
        }
    }

    // --- References

    static std::string column_text(std::uint16_t field) {
        const std::string text = cell_name(0, field & kColumnMask);
        return ((field & kRelativeColumn) != 0 ? "" : "$") + text.substr(0, text.size() - 1);
    }

    static std::string row_text(std::uint16_t row, std::uint16_t field) {
        return ((field & kRelativeRow) != 0 ? "" : "$") + std::to_string(row + 1);
    }

    static std::string corner(std::uint16_t row, std::uint16_t column) {
        return column_text(column) + row_text(row, column);
    }

    std::string area(std::size_t position) const {
        const std::uint16_t rows[] = {u16(position), u16(position + 2)};
        const std::uint16_t columns[] = {u16(position + 4), u16(position + 6)};
        if (rows[0] == 0 && rows[1] == kLastRow)
            return column_text(columns[0]) + ':' + column_text(columns[1]);
        if ((columns[0] & kColumnMask) == 0 && (columns[1] & kColumnMask) == kLastColumn)
            return row_text(rows[0], columns[0]) + ':' + row_text(rows[1], columns[1]);
        return corner(rows[0], columns[0]) + ':' + corner(rows[1], columns[1]);
    }

    const SupportingBook& book_of(const ExternSheet& entry) const {
        if (entry.book >= context_.books.size()) throw NoText();
        return context_.books[entry.book];
    }

    const ExternSheet& entry(std::uint16_t number) const {
        if (number >= context_.entries.entries().size()) throw NoText();
        return context_.entries.entries()[number];
    }

    void push_on_sheet(std::uint16_t number, const std::string& cells) {
        const ExternSheet& sheets = entry(number);
        const SupportingBook& book = book_of(sheets);
        if (context_.entries.is_removed(number)) return push("#REF!");
        const bool is_own = book.kind == SupportingBook::Kind::Own;
        if (!is_own && (book.kind != SupportingBook::Kind::Other || book.file.empty()))
            throw NoText();
        const std::vector<std::string>& names = is_own ? context_.sheets : book.sheets;
        if (sheets.first >= names.size() || sheets.last >= names.size()) throw NoText();
        const std::string& first = names[sheets.first];
        const std::string& last = names[sheets.last];
        if (first.empty() || last.empty()) throw NoText();
        push(prefix_of(is_own ? "" : book.file, first,
                       sheets.first == sheets.last ? std::string_view() : last) +
             cells);
    }

    // --- Names, whose numbers begin with 1

    std::string name_text(std::uint32_t number, std::optional<std::uint16_t> sheet) const {
        constexpr std::string_view kBuiltIn = "_xlnm.";
        if (number == 0 || number > context_.names.size()) throw NoText();
        const FormulaName& known = context_.names[number - 1];
        if (known.name.empty()) throw NoText();
        std::string name =
            known.name.starts_with(kBuiltIn) ? known.name.substr(kBuiltIn.size()) : known.name;
        if (!sheet || !known.scope) return name;
        if (*known.scope >= context_.sheets.size()) throw NoText();
        return prefix_of("", context_.sheets[*known.scope], "") + name;
    }

    std::string external_name(std::uint16_t number, std::uint32_t name) const {
        const ExternSheet& sheets = entry(number);
        const SupportingBook& book = book_of(sheets);
        if (book.kind == SupportingBook::Kind::Own) return name_text(name, sheets.first);
        if (name == 0 || name > book.names.size() || book.names[name - 1].empty()) throw NoText();
        const std::string& text = book.names[name - 1];
        if (book.kind == SupportingBook::Kind::AddIn) return text;
        if (book.kind != SupportingBook::Kind::Other || book.file.empty()) throw NoText();
        return quoted(book.file) + '!' + text;
    }

    const std::string_view formula_;
    const FormulaContext& context_;
    std::vector<std::string> stack_;
    std::size_t copied_ = 0;
};

} // namespace

std::optional<std::string> formula_text(std::string_view formula, std::size_t token_bytes,
                                        const FormulaContext& context) {
    const auto tokens = parse_tokens(formula, token_bytes);
    if (!tokens) return {};
    try {
        return Printer(formula, context).print(*tokens);
    } catch (const NoText&) {
        return {};
    }
}

} // namespace workbook::biff
