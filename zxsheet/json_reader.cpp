// SPDX-License-Identifier: Apache-2.0
//
// Follows the parser's events; the types of all cells are kept, one byte each.
#include "zxsheet/json_reader.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "zxsheet/cell_guess.h"
#include "zxsheet/cell_text.h"
#include "zxsheet/failure.h"

namespace zxsheet {
namespace {

using spreadsheet::cell_type;

/// Of members that are passed over.
constexpr int kMaxDepth = 1000;

/// The longest text of a cell is a fifth of it when every character is escaped.
constexpr std::size_t kMaxTokenBytes = 1 << 20;

/// How far the parser has come.
struct Position {
    TextInput& input;
    std::size_t line = 1;
    std::size_t column = 0;
    std::size_t token_bytes = 0; ///< since the parser's last event

    void advance() {
        const int byte = input.next();
        if (++token_bytes > kMaxTokenBytes) fail("A value is too long.");
        if (byte == '\n') {
            ++line;
            column = 0;
        } else if ((byte & 0xC0) != 0x80) {
            ++column;
        }
    }

    [[noreturn]] void fail(const std::string& what) const {
        throw Failure(ExitCode::Failed, input.name() + ": Line " + std::to_string(line) +
                                            ", column " + std::to_string(column) + ": " + what);
    }
};

/// The input as the parser wants it.
class Characters {
  public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = char;

    Characters() = default;
    explicit Characters(Position& position) : position_(&position) {}
    char operator*() const { return static_cast<char>(position_->input.peek()); }
    Characters& operator++() {
        position_->advance();
        return *this;
    }
    void operator++(int) { ++*this; }
    bool operator==(const Characters& other) const { return at_end() == other.at_end(); }
    bool operator!=(const Characters& other) const { return !(*this == other); }

  private:
    bool at_end() const { return !position_ || position_->input.peek() == TextInput::kEnd; }
    Position* position_ = nullptr;
};

std::optional<cell_type> type_of_name(const std::string& name) {
    for (int i = 0; i <= static_cast<int>(cell_type::error); ++i)
        if (type_name(static_cast<cell_type>(i)) == name) return static_cast<cell_type>(i);
    return {};
}

/// The rows of "types".
class TypeRows {
  public:
    void add(cell_type type) { types_.push_back(type); }
    void end_row() { row_ends_.push_back(types_.size()); }
    bool empty() const { return row_ends_.empty(); }
    std::size_t rows() const { return row_ends_.size(); }
    std::size_t columns(std::size_t row) const {
        return row < rows() ? row_ends_[row] - row_begin(row) : 0;
    }
    cell_type at(std::size_t row, std::size_t column) const {
        return types_[row_begin(row) + column];
    }

  private:
    std::size_t row_begin(std::size_t row) const { return row == 0 ? 0 : row_ends_[row - 1]; }
    std::vector<cell_type> types_;
    std::vector<std::size_t> row_ends_;
};

class CellEvents : public nlohmann::json_sax<nlohmann::json> {
  public:
    CellEvents(Position& position, CellSink& sink) : position_(position), sink_(sink) {}

    bool null() override {
        return scalar("null", [this] { put_null(); });
    }
    bool boolean(bool value) override {
        return scalar("true or false", [&] { put(cell_type::boolean, value ? 1.0 : 0.0, {}); });
    }
    bool number_integer(number_integer_t value) override {
        return put_number(static_cast<double>(value));
    }
    bool number_unsigned(number_unsigned_t value) override {
        return put_number(static_cast<double>(value));
    }
    bool number_float(number_float_t value, const string_t&) override { return put_number(value); }
    bool string(string_t& text) override {
        return scalar("text", [&] { put_string(text); });
    }
    bool binary(binary_t&) override { return false; } // not in JSON text

    bool start_object(std::size_t) override {
        position_.token_bytes = 0;
        if (depth_ > 0 && member_ != Member::Other) wrong("An object does not belong here.");
        go_deeper();
        return true;
    }
    bool key(string_t& name) override {
        position_.token_bytes = 0;
        if (depth_ == 1) start_member(name);
        return true;
    }
    bool end_object() override {
        position_.token_bytes = 0;
        if (--depth_ == 0 && !has_values_) wrong("The object has no \"values\".");
        return true;
    }
    bool start_array(std::size_t) override {
        position_.token_bytes = 0;
        if (depth_ == 0) wrong("The data must be an object with \"values\".");
        if (member_ != Member::Other && (!is_matrix() || depth_ > 2))
            wrong("An array does not belong here.");
        if (depth_ == 1 && member_ == Member::Values) start_values();
        go_deeper();
        return true;
    }
    bool end_array() override {
        position_.token_bytes = 0;
        --depth_;
        if (is_matrix() && depth_ == 2) end_row();
        if (member_ == Member::Values && depth_ == 1) end_values();
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception& e) override {
        if (dynamic_cast<const nlohmann::json::out_of_range*>(&e) != nullptr)
            wrong("The number is too large.");
        const std::string text = e.what();
        const std::size_t reason = text.find(" - ");
        wrong("This is not JSON" +
              (reason == text.npos
                   ? std::string(".")
                   : ": " + text.substr(reason + 3, text.find("; last read") - reason - 3) + "."));
    }

  private:
    enum class Member { Sheet, Range, Types, Values, Other };

    bool is_matrix() const { return member_ == Member::Types || member_ == Member::Values; }

    [[noreturn]] void wrong(const std::string& what) const { position_.fail(what); }

    void go_deeper() {
        if (++depth_ > kMaxDepth) wrong("The data is nested too deeply.");
    }

    void start_member(const std::string& name) {
        constexpr std::array<std::pair<std::string_view, Member>, 4> kMembers{
            {{"sheet", Member::Sheet},
             {"range", Member::Range},
             {"types", Member::Types},
             {"values", Member::Values}}};
        member_ = Member::Other;
        for (const auto& [known, member] : kMembers)
            if (name == known) member_ = member;
        if (member_ != Member::Other && has_values_)
            wrong('"' + name + "\" must come before \"values\", and only once.");
        if (member_ == Member::Types && !types_.empty()) wrong("There are \"types\" already.");
    }

    void start_values() {
        has_values_ = true;
        sink_.set_place(place_);
    }

    void end_row() {
        if (member_ == Member::Types) return types_.end_row();
        if (!types_.empty() && column_ != types_.columns(row_))
            wrong("The row has " + std::to_string(column_) + " values but " +
                  std::to_string(types_.columns(row_)) + " types.");
        sink_.end_row();
        ++row_;
        column_ = 0;
    }

    void end_values() {
        if (!types_.empty() && row_ != types_.rows())
            wrong("There are " + std::to_string(row_) + " rows of values but " +
                  std::to_string(types_.rows()) + " of types.");
    }

    /// Any value without parts: `take` puts it where the member wants it.
    template <class Take>
    bool scalar(const char* kind, Take take) {
        position_.token_bytes = 0;
        if (depth_ == 0) wrong("The data must be an object with \"values\".");
        if (member_ == Member::Other) return true;
        if (is_matrix() && depth_ != 3)
            wrong(std::string("An array must stand here, not ") + kind + ".");
        take();
        return true;
    }

    bool put_number(double value) {
        return scalar("a number", [&] { put(cell_type::number, value, {}); });
    }

    void put_null() {
        if (member_ == Member::Types) wrong("The name of a type must stand here.");
        if (member_ == Member::Values) put(cell_type::empty, 0.0, {});
    }

    void put_string(std::string& text) {
        switch (member_) {
        case Member::Sheet:
            place_.sheet = text;
            return;
        case Member::Range:
            place_.range = text;
            return;
        case Member::Types:
            return add_type(text);
        default:
            put(cell_type::text, 0.0, text);
        }
    }

    void add_type(const std::string& name) {
        const auto type = type_of_name(name);
        if (!type) wrong("There is no type '" + name + "'.");
        types_.add(*type);
    }

    /// One value of the kind that JSON has for it.
    void put(cell_type kind, double number, const std::string& text) {
        if (member_ != Member::Values) wrong("Text must stand here.");
        cell_.type = kind;
        cell_.number = number;
        cell_.text = text;
        if (!types_.empty()) adopt_type();
        sink_.add(cell_);
        ++column_;
    }

    /// Makes the cell what its type says.
    void adopt_type() {
        if (column_ >= types_.columns(row_)) wrong("The row has more values than types.");
        const cell_type wanted = types_.at(row_, column_);
        const cell_type kind = cell_.type;
        if (kind == wanted || kind == cell_type::empty) return;
        if (kind == cell_type::text && wanted == cell_type::error) return;
        if (wanted == cell_type::date && kind == cell_type::text) {
            const auto serial = date_serial(cell_.text);
            if (!serial) wrong("'" + cell_.text + "' is not an ISO 8601 date.");
            cell_.number = *serial;
        } else if (wanted != cell_type::date || kind != cell_type::number) {
            wrong("The value is not of the type '" + std::string(type_name(wanted)) + "'.");
        }
        cell_.type = wanted;
    }

    Position& position_;
    CellSink& sink_;
    int depth_ = 0; ///< 1 in the object, 2 in a matrix, 3 in a row
    Member member_ = Member::Other;
    bool has_values_ = false;
    DataPlace place_;
    TypeRows types_;
    std::size_t row_ = 0;
    std::size_t column_ = 0;
    CellValue cell_;
};

} // namespace

void read_json(TextInput& input, CellSink& sink) {
    Position position{input};
    CellEvents events(position, sink);
    nlohmann::json::sax_parse(Characters(position), Characters(), &events);
}

} // namespace zxsheet
