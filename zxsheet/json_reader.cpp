// SPDX-License-Identifier: Apache-2.0
//
// Follows the parser's events; of the cells only their types are kept, one byte each.
#include "zxsheet/json_reader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <boost/json/basic_parser_impl.hpp>

#include "zxsheet/cell_guess.h"
#include "zxsheet/cell_text.h"
#include "zxsheet/command_error.h"

namespace zxsheet {
namespace {

using spreadsheet::cell_type;
using ErrorCode = boost::json::error_code;

/// Of members that are skipped.
constexpr std::size_t kMaxDepth = 1000;

/// The longest text of a cell is a fifth of it when every character is escaped.
constexpr std::size_t kMaxTokenBytes = 1 << 20;

/// How far the text has been parsed; lines from 1, columns in characters.
struct Position {
    std::size_t line = 1;
    std::size_t column = 0;

    void advance(std::string_view text) {
        const std::size_t last_feed = text.rfind('\n');
        if (last_feed != text.npos) {
            line += static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
            column = 0;
            text.remove_prefix(last_feed + 1);
        }
        column += static_cast<std::size_t>(std::count_if(
            text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
    }
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

/// What the cells of a text are, from the events of the parser. An event that is not allowed ends
/// the parsing with `problem`.
class CellEvents {
  public:
    CellEvents(CellSink& sink, JsonLayout layout, bool guess_dates)
        : sink_(sink), layout_(layout), guess_dates_(guess_dates) {}

    const std::string& problem() const { return problem_; }
    /// Whether the character after those that were parsed belongs to the problem: brackets and
    /// closing quotes come after their events.
    bool is_ahead() const { return is_ahead_; }

    // What the parser calls. False ends the parsing.

    static constexpr std::size_t max_array_size = static_cast<std::size_t>(-1);
    static constexpr std::size_t max_object_size = static_cast<std::size_t>(-1);
    static constexpr std::size_t max_string_size = static_cast<std::size_t>(-1);
    static constexpr std::size_t max_key_size = static_cast<std::size_t>(-1);

    bool on_document_begin(ErrorCode&) {
        if (layout_ == JsonLayout::Lines) enter_rows();
        return true;
    }
    bool on_document_end(ErrorCode&) { return true; }
    bool on_comment_part(std::string_view, ErrorCode&) { return true; }
    bool on_comment(std::string_view, ErrorCode&) { return true; }

    bool on_object_begin(ErrorCode& code) {
        is_ahead_ = true;
        if (is_rows_ && depth_ == 2) return begin_record();
        if (depth_ > 0 && member_ != Member::Other)
            return stop(code, "An object does not belong here.");
        ++depth_;
        return true;
    }
    bool on_object_end(std::size_t, ErrorCode& code) {
        is_ahead_ = true;
        if (in_record_) return end_record();
        if (--depth_ == 0 && !has_values_) return stop(code, "The object has no \"values\".");
        return true;
    }
    bool on_array_begin(ErrorCode& code) {
        is_ahead_ = true;
        if (in_record_) return stop(code, "An array does not belong here.");
        if (depth_ == 0) {
            enter_rows();
            return true;
        }
        if (member_ != Member::Other && (!is_matrix() || depth_ > 2))
            return stop(code, "An array does not belong here.");
        if (depth_ == 1 && member_ == Member::Values) start_values();
        ++depth_;
        return true;
    }
    bool on_array_end(std::size_t, ErrorCode& code) {
        is_ahead_ = true;
        --depth_;
        if (is_matrix() && depth_ == 2) return end_row(code);
        return member_ != Member::Values || depth_ != 1 || end_values(code);
    }

    bool on_key_part(std::string_view part, std::size_t, ErrorCode& code) {
        return append(part, code);
    }
    bool on_key(std::string_view part, std::size_t, ErrorCode& code) {
        is_ahead_ = true;
        if (!append(part, code)) return false;
        const std::string name = std::exchange(token_, {});
        if (in_record_) return start_field(name, code);
        return depth_ != 1 || start_member(name, code);
    }
    bool on_string_part(std::string_view part, std::size_t, ErrorCode& code) {
        return append(part, code);
    }
    bool on_string(std::string_view part, std::size_t, ErrorCode& code) {
        is_ahead_ = true;
        if (!append(part, code)) return false;
        const bool taken = take_scalar("text", code, [&] { return put_string(code); });
        token_.clear();
        return taken;
    }
    bool on_number_part(std::string_view part, ErrorCode& code) { return append(part, code); }
    bool on_int64(std::int64_t value, std::string_view, ErrorCode& code) {
        return put_number(static_cast<double>(value), code);
    }
    bool on_uint64(std::uint64_t value, std::string_view, ErrorCode& code) {
        return put_number(static_cast<double>(value), code);
    }
    bool on_double(double value, std::string_view part, ErrorCode& code) {
        is_ahead_ = false;
        if (!append(part, code)) return false;
        // The parser's own conversion can be one unit off in the last place.
        double exact = 0.0;
        const char* const end = token_.data() + token_.size();
        const auto [parsed_end, failure] = std::from_chars(token_.data(), end, exact);
        if (failure == std::errc::result_out_of_range) exact = std::fabs(value) < 1.0 ? 0.0 : value;
        if (!std::isfinite(exact) || (failure != std::errc() && exact != 0.0))
            return stop(code, kNumberTooLarge);
        return put_number(exact, code);
    }
    bool on_bool(bool value, ErrorCode& code) {
        is_ahead_ = false;
        return take_scalar("true or false", code,
                           [&] { return put(cell_type::boolean, value ? 1.0 : 0.0, code); });
    }
    bool on_null(ErrorCode& code) {
        is_ahead_ = false;
        return take_scalar("null", code, [&] { return put_null(code); });
    }

    static constexpr const char* kNumberTooLarge = "The number is too large.";

  private:
    enum class Member { Sheet, Range, Types, Values, Other };

    static constexpr const char* kNoObject =
        "The data must be an object with \"values\", or an array.";

    bool is_matrix() const { return member_ == Member::Types || member_ == Member::Values; }

    bool stop(ErrorCode& code, const std::string& problem) {
        problem_ = problem;
        code = boost::json::error::exception; // any error; the problem is the one to report
        return false;
    }
    bool append(std::string_view part, ErrorCode& code) {
        if (token_.size() + part.size() > kMaxTokenBytes) return stop(code, "A value is too long.");
        token_ += part;
        return true;
    }

    bool start_member(const std::string& name, ErrorCode& code) {
        constexpr std::array<std::pair<std::string_view, Member>, 4> kMembers{
            {{"sheet", Member::Sheet},
             {"range", Member::Range},
             {"types", Member::Types},
             {"values", Member::Values}}};
        member_ = Member::Other;
        for (const auto& [known, member] : kMembers)
            if (name == known) member_ = member;
        if (member_ == Member::Values && has_values_)
            return stop(code, "There are \"values\" already.");
        if (member_ != Member::Other && has_values_)
            return stop(code, '"' + name + "\" must come before \"values\".");
        if (member_ == Member::Types && !types_.empty())
            return stop(code, "There are \"types\" already.");
        return true;
    }

    // --- Rows without an object around them

    /// As if inside the array of "values".
    void enter_rows() {
        if (!has_values_) start_values();
        is_rows_ = true;
        member_ = Member::Values;
        depth_ = 2;
    }

    bool begin_record() {
        in_record_ = true;
        depth_ = 3;
        field_ = 0;
        for (CellValue& value : record_)
            value = {};
        return true;
    }

    bool start_field(const std::string& name, ErrorCode& code) {
        const auto known = columns_.find(name);
        if (known != columns_.end()) {
            field_ = known->second;
            const bool is_new = record_[field_].type == cell_type::empty;
            return is_new || stop(code, "The object has \"" + name + "\" twice.");
        }
        if (has_names_) return stop(code, "The first object has no \"" + name + "\".");
        field_ = names_.size();
        columns_.emplace(name, field_);
        names_.push_back(name);
        record_.emplace_back();
        return true;
    }

    bool end_record() {
        if (!has_names_) {
            has_names_ = true;
            sink_.expect_header();
            for (const std::string& name : names_)
                sink_.add({cell_type::text, 0.0, name});
            sink_.end_row();
        }
        for (const CellValue& value : record_)
            sink_.add(value);
        sink_.end_row();
        in_record_ = false;
        depth_ = 2;
        return true;
    }

    void guess_date() {
        CellValue guessed{cell_type::text, 0.0, cell_.text};
        guess_cell(guessed);
        if (guessed.type == cell_type::date) cell_ = guessed;
    }

    void start_values() {
        has_values_ = true;
        sink_.set_place(place_);
    }

    bool end_row(ErrorCode& code) {
        if (member_ == Member::Types) {
            types_.end_row();
            return true;
        }
        if (!types_.empty() && column_ != types_.columns(row_))
            return stop(code, "The row has " + std::to_string(column_) + " values but " +
                                  std::to_string(types_.columns(row_)) + " types.");
        sink_.end_row();
        ++row_;
        column_ = 0;
        return true;
    }

    bool end_values(ErrorCode& code) {
        if (types_.empty() || row_ == types_.rows()) return true;
        return stop(code, "There are " + std::to_string(row_) + " rows of values but " +
                              std::to_string(types_.rows()) + " of types.");
    }

    /// Any value without parts: `take` puts it where the member wants it.
    template <class Take>
    bool take_scalar(const char* kind, ErrorCode& code, Take take) {
        if (depth_ == 0) return stop(code, kNoObject);
        if (member_ == Member::Other) return true;
        if (is_matrix() && depth_ != 3)
            return stop(code, std::string("An array is expected here, not ") + kind + ".");
        return take();
    }

    bool put_number(double value, ErrorCode& code) {
        is_ahead_ = false;
        token_.clear();
        return take_scalar("a number", code, [&] { return put(cell_type::number, value, code); });
    }

    bool put_null(ErrorCode& code) {
        if (member_ == Member::Types) return stop(code, "The name of a type is expected here.");
        return member_ != Member::Values || put(cell_type::empty, 0.0, code);
    }

    bool put_string(ErrorCode& code) {
        switch (member_) {
        case Member::Sheet:
            place_.sheet = token_;
            return true;
        case Member::Range:
            place_.range = token_;
            return true;
        case Member::Types:
            return add_type(code);
        default:
            return put(cell_type::text, 0.0, code);
        }
    }

    bool add_type(ErrorCode& code) {
        const auto type = type_of_name(token_);
        if (!type) return stop(code, "There is no type '" + token_ + "'.");
        types_.add(*type);
        return true;
    }

    /// One value of the kind that JSON has for it; its text is `token_`.
    bool put(cell_type kind, double number, ErrorCode& code) {
        if (member_ != Member::Values) return stop(code, "Text is expected here.");
        cell_.type = kind;
        cell_.number = number;
        cell_.text = token_;
        if (!types_.empty() && !adopt_type(code)) return false;
        if (is_rows_ && guess_dates_ && kind == cell_type::text) guess_date();
        if (in_record_) {
            record_[field_] = cell_;
            return true;
        }
        sink_.add(cell_);
        ++column_;
        return true;
    }

    /// Makes the cell what its type says.
    bool adopt_type(ErrorCode& code) {
        if (column_ >= types_.columns(row_))
            return stop(code, "The row has more values than types.");
        const cell_type wanted = types_.at(row_, column_);
        const cell_type kind = cell_.type;
        if (kind == wanted || kind == cell_type::empty) return true;
        if (kind == cell_type::text && wanted == cell_type::error) return true;
        if (wanted == cell_type::date && kind == cell_type::text) {
            const auto serial = date_serial(cell_.text);
            if (!serial) return stop(code, "'" + cell_.text + "' is not an ISO 8601 date.");
            cell_.number = *serial;
        } else if (wanted != cell_type::date || kind != cell_type::number) {
            return stop(code,
                        "The value is not of the type '" + std::string(type_name(wanted)) + "'.");
        }
        cell_.type = wanted;
        return true;
    }

    CellSink& sink_;
    const JsonLayout layout_;
    const bool guess_dates_;
    std::string token_; ///< the text or number that is being read
    std::string problem_;
    bool is_ahead_ = false;
    int depth_ = 0; ///< 1 in the object, 2 in a matrix, 3 in a row
    Member member_ = Member::Other;
    bool has_values_ = false;
    DataPlace place_;
    TypeRows types_;
    std::size_t row_ = 0;
    std::size_t column_ = 0;
    CellValue cell_;

    bool is_rows_ = false; ///< no object around the rows
    bool in_record_ = false;
    bool has_names_ = false; ///< those of the first object are complete
    std::vector<std::string> names_;
    std::unordered_map<std::string, std::size_t> columns_; ///< by name
    std::vector<CellValue> record_;
    std::size_t field_ = 0; ///< the column of the value to come
};

/// One JSON text, fed to the parser block by block.
class JsonReader {
  public:
    JsonReader(TextInput& input, CellSink& sink, JsonLayout layout, bool guess_dates)
        : input_(input),
          is_lines_(layout == JsonLayout::Lines),
          parser_(options(), sink, layout, guess_dates) {}

    void read() {
        for (std::string_view block; !(block = input_.ahead()).empty();) {
            if (is_lines_ && !in_value_ && skip_space(block)) continue;
            in_value_ = true;
            ErrorCode code;
            const std::size_t parsed = parser_.write_some(true, block.data(), block.size(), code);
            position_.advance(block.substr(0, parsed));
            if (code) fail(code, block.substr(parsed));
            if (parsed < block.size() && !is_lines_)
                fail_ahead("This is not JSON: more data after the object.");
            input_.skip(parsed);
            if (!is_lines_ || !parser_.done()) continue;
            parser_.reset();
            in_value_ = false;
        }
        if (is_lines_ && !in_value_) return;
        ErrorCode code;
        parser_.write_some(false, nullptr, 0, code);
        if (code) fail(code, {});
    }

  private:
    /// Skips blanks and line ends before a value; false when there are none.
    bool skip_space(std::string_view block) {
        const std::size_t count = std::min(block.find_first_not_of(" \t\r\n"), block.size());
        position_.advance(block.substr(0, count));
        input_.skip(count);
        return count != 0;
    }

    static boost::json::parse_options options() {
        boost::json::parse_options options;
        options.max_depth = kMaxDepth;
        return options;
    }

    [[noreturn]] void fail(const std::string& what) const {
        throw CommandError(ExitCode::Failed, input_.name() + ": Line " +
                                                 std::to_string(position_.line) + ", column " +
                                                 std::to_string(position_.column) + ": " + what);
    }

    /// About the next character.
    [[noreturn]] void fail_ahead(const std::string& what) {
        ++position_.column;
        fail(what);
    }

    /// `rest` is what follows the text that was parsed.
    [[noreturn]] void fail(const ErrorCode& code, std::string_view rest) {
        using boost::json::error;
        const CellEvents& events = parser_.handler();
        if (!events.problem().empty())
            events.is_ahead() ? fail_ahead(events.problem()) : fail(events.problem());
        if (code == error::too_deep) fail_ahead("The data is nested too deeply.");
        if (code == error::exponent_overflow) fail(CellEvents::kNumberTooLarge);
        if (code == error::incomplete) fail("This is not JSON: unexpected end of input.");
        if (rest.empty() || static_cast<unsigned char>(rest.front()) < 0x20)
            fail_ahead("This is not JSON: " + code.message() + ".");
        const bool is_ascii = static_cast<unsigned char>(rest.front()) < 0x80;
        fail_ahead(is_ascii ? std::string("This is not JSON: unexpected '") + rest.front() + "'."
                            : "This is not JSON: the text is not UTF-8.");
    }

    TextInput& input_;
    const bool is_lines_;
    bool in_value_ = false; ///< of lines: a value has begun
    Position position_;
    boost::json::basic_parser<CellEvents> parser_;
};

} // namespace

void read_json(TextInput& input, CellSink& sink, JsonLayout layout, bool guess_dates) {
    JsonReader(input, sink, layout, guess_dates).read();
}

} // namespace zxsheet
