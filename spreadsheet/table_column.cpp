// SPDX-License-Identifier: Apache-2.0
//
// Cells of one column become typed values.
#include "spreadsheet/table_column.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>
#include <limits>

#include "foundation/unicode.h"
#include "spreadsheet/table_error.h"

namespace spreadsheet {
namespace {

constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kPhantomDay = 60; ///< 1900-02-29

std::optional<double> parse_number(std::string_view text) {
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    double value = 0.0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (failure != std::errc() || end != text.data() + text.size() || !std::isfinite(value))
        return {};
    return value;
}

std::string number_text(double value) {
    std::array<char, 32> text;
    const auto [end, failure] = std::to_chars(text.data(), text.data() + text.size(), value);
    return failure == std::errc() ? std::string(text.data(), end) : std::string();
}

bool equal_ignoring_ascii_case(std::string_view text, std::string_view lower) {
    return std::equal(text.begin(), text.end(), lower.begin(), lower.end(), [](char a, char b) {
        return (a >= 'A' && a <= 'Z' ? static_cast<char>(a + ('a' - 'A')) : a) == b;
    });
}

ColumnType type_of(cell_type kind) {
    switch (kind) {
    case cell_type::number:
        return ColumnType::number;
    case cell_type::boolean:
        return ColumnType::boolean;
    case cell_type::date:
        return ColumnType::date;
    default:
        return ColumnType::text;
    }
}

} // namespace

void StringList::add(std::string_view text) {
    constexpr std::size_t kMaxBytes = std::numeric_limits<std::int32_t>::max();
    if (text.size() > kMaxBytes - bytes.size())
        throw table_error(error_id::internal, FailureKind::Limit,
                          "The distinct texts of a column have more than 2 GiB.");
    bytes += text;
    offsets.push_back(static_cast<std::int32_t>(bytes.size()));
}

// TextIndex

std::int32_t TextIndex::code_of(std::u16string_view text) {
    if (2 * ends_.size() >= slots_.size()) grow();
    const std::size_t hash = std::hash<std::u16string_view>{}(text);
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = hash & mask;
    for (; slots_[slot] >= 0; slot = (slot + 1) & mask) {
        const auto code = static_cast<std::size_t>(slots_[slot]);
        if (hashes_[code] == hash && (*this)[code] == text) return slots_[slot];
    }
    const auto code = static_cast<std::int32_t>(ends_.size());
    units_ += text;
    ends_.push_back(units_.size());
    hashes_.push_back(hash);
    slots_[slot] = code;
    return code;
}

std::u16string_view TextIndex::operator[](std::size_t code) const {
    const std::size_t begin = code == 0 ? 0 : ends_[code - 1];
    return std::u16string_view(units_).substr(begin, ends_[code] - begin);
}

void TextIndex::clear() {
    units_.clear();
    ends_.clear();
    hashes_.clear();
    std::fill(slots_.begin(), slots_.end(), -1);
}

void TextIndex::grow() {
    constexpr std::size_t kFirstSlots = 64;
    slots_.assign(std::max(kFirstSlots, 2 * slots_.size()), -1);
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t code = 0; code < hashes_.size(); ++code) {
        std::size_t slot = hashes_[code] & mask;
        while (slots_[slot] >= 0)
            slot = (slot + 1) & mask;
        slots_[slot] = static_cast<std::int32_t>(code);
    }
}

// MissingValues

MissingValues::MissingValues(const std::vector<std::string>& texts) : texts_(texts) {
    for (const std::string& text : texts)
        if (const auto number = parse_number(text)) numbers_.push_back(*number);
}

bool MissingValues::has(std::string_view text) const {
    return std::find(texts_.begin(), texts_.end(), text) != texts_.end();
}

bool MissingValues::has(double number) const {
    return std::find(numbers_.begin(), numbers_.end(), number) != numbers_.end();
}

// ColumnCollector

/// Stores the values of one column in the layout of its type.
class ColumnCollector::Converter {
  public:
    Converter(Column& column, const TextIndex& texts, ColumnCoercions& coercions)
        : column_(column), coercions_(coercions), texts_(texts) {}

    void reserve(std::size_t rows) {
        column_.validity.reserve((rows + 7) / 8);
        switch (column_.type) {
        case ColumnType::mixed:
            column_.kinds.reserve(rows);
            column_.codes.reserve(rows);
            column_.numbers.reserve(rows);
            break;
        case ColumnType::number:
            column_.numbers.reserve(rows);
            break;
        case ColumnType::boolean:
            column_.booleans.reserve(rows);
            break;
        case ColumnType::date:
            column_.microseconds.reserve(rows);
            break;
        case ColumnType::text:
            column_.codes.reserve(rows);
            break;
        }
    }

    void add(std::size_t row, cell_type kind, double value) {
        row_ = row;
        if (kind == cell_type::empty) return add_missing();
        switch (column_.type) {
        case ColumnType::number:
            return add_number(kind, value);
        case ColumnType::boolean:
            return add_boolean(kind, value);
        case ColumnType::date:
            return add_date(kind, value);
        case ColumnType::text:
            return add_text(kind, value);
        case ColumnType::mixed:
            return add_mixed(kind, value);
        }
    }

  private:
    void note(Coercion coercion) {
        CoercedRows& rows = coercions_[static_cast<std::size_t>(coercion)];
        if (rows.count++ == 0) rows.first = row_;
    }

    void append_bit(bool bit) {
        if (added_ % 8 == 0) column_.validity.push_back(0);
        if (bit)
            column_.validity.back() =
                static_cast<std::uint8_t>(column_.validity.back() | (1U << (added_ % 8)));
        ++added_;
    }

    void add_missing() {
        append_bit(false);
        ++column_.null_count;
        switch (column_.type) {
        case ColumnType::number:
            return column_.numbers.push_back(kNoNumber);
        case ColumnType::boolean:
            return column_.booleans.push_back(0);
        case ColumnType::date:
            return column_.microseconds.push_back(kMissingDate);
        case ColumnType::text:
            return column_.codes.push_back(kMissingText);
        case ColumnType::mixed:
            column_.kinds.push_back(cell_type::empty);
            column_.numbers.push_back(kNoNumber);
            return column_.codes.push_back(kMissingText);
        }
    }

    void refuse() {
        note(Coercion::not_convertible);
        add_missing();
    }

    std::string utf8(double code) const {
        return foundation::unicode::to_utf8(texts_[static_cast<std::size_t>(code)]);
    }

    void add_number(cell_type kind, double value) {
        if (kind != cell_type::number) {
            if (kind == cell_type::text) {
                const auto number = parse_number(utf8(value));
                if (!number) return refuse();
                value = *number;
            }
            note(Coercion::converted);
        }
        column_.numbers.push_back(value);
        append_bit(true);
    }

    void add_boolean(cell_type kind, double value) {
        if (kind != cell_type::boolean) {
            if (kind == cell_type::text) {
                const std::string text = utf8(value);
                value = equal_ignoring_ascii_case(text, "true")    ? 1.0
                        : equal_ignoring_ascii_case(text, "false") ? 0.0
                                                                   : kNoNumber;
            }
            if (kind == cell_type::date || !(value == 0.0 || value == 1.0)) return refuse();
            note(Coercion::converted);
        }
        column_.booleans.push_back(value != 0.0 ? 1 : 0);
        append_bit(true);
    }

    void add_date(cell_type kind, double value) {
        std::int64_t time = kMissingDate;
        if (kind == cell_type::text)
            time = microseconds_from_iso_text(utf8(value));
        else if (kind != cell_type::boolean)
            time = microseconds_from_serial(value);
        if (time == kMissingDate && kind != cell_type::date) return refuse();
        if (time == kMissingDate) {
            note(Coercion::date_out_of_range);
            return add_missing();
        }
        if (kind != cell_type::date)
            note(Coercion::converted);
        else if (std::floor(value) == kPhantomDay)
            note(Coercion::no_such_date);
        column_.microseconds.push_back(time);
        append_bit(true);
    }

    void add_text(cell_type kind, double value) {
        if (kind == cell_type::text) {
            column_.codes.push_back(column_code(value));
        } else {
            note(Coercion::converted);
            std::string text = kind == cell_type::boolean ? (value != 0.0 ? "true" : "false")
                               : kind == cell_type::date
                                   ? iso_text_from_microseconds(microseconds_from_serial(value))
                                   : number_text(value);
            if (text.empty()) text = number_text(value); // a serial number that is no date
            column_.codes.push_back(made_code(text));
        }
        append_bit(true);
    }

    void add_mixed(cell_type kind, double value) {
        column_.kinds.push_back(kind);
        const bool is_text = kind == cell_type::text;
        column_.codes.push_back(is_text ? column_code(value) : kMissingText);
        column_.numbers.push_back(is_text ? kNoNumber : value);
        append_bit(true);
    }

    /// The code in the column of a text that was collected. Codes of both agree unless cells were
    /// converted to text or texts are missing.
    std::int32_t column_code(double code) {
        const auto index = static_cast<std::size_t>(code);
        if (code_map_.empty()) code_map_.assign(texts_.size(), kMissingText);
        if (code_map_[index] == kMissingText) {
            const std::string text = utf8(code);
            // Converted cells may have brought the text already.
            code_map_[index] = made_texts_.size() == 0 ? append_text(text) : made_code(text);
        }
        return code_map_[index];
    }

    std::int32_t append_text(std::string_view text) {
        column_.strings.add(text);
        return static_cast<std::int32_t>(column_.strings.size() - 1);
    }

    /// The code of a text that a conversion made.
    std::int32_t made_code(const std::string& text) {
        if (made_texts_.size() == 0) // from now on every text of the column is in the index
            for (std::size_t code = 0; code < column_.strings.size(); ++code)
                made_texts_.code_of(foundation::unicode::to_utf16(column_.strings[code]));
        const std::int32_t code = made_texts_.code_of(foundation::unicode::to_utf16(text));
        if (static_cast<std::size_t>(code) == column_.strings.size()) append_text(text);
        return code;
    }

    Column& column_;
    ColumnCoercions& coercions_;
    const TextIndex& texts_;
    TextIndex made_texts_;
    std::vector<std::int32_t> code_map_; ///< from codes of `texts_` to codes of the column
    std::size_t row_ = 0;
    std::size_t added_ = 0;
};

void ColumnCollector::begin(std::size_t rows) {
    kinds_.clear();
    values_.clear();
    texts_.clear();
    kinds_.reserve(rows);
    values_.reserve(rows);
}

void ColumnCollector::mark_missing(const MissingValues& missing, ColumnCoercions& coercions) {
    std::vector<bool> missing_texts(texts_.size());
    for (std::size_t code = 0; !missing.none() && code < texts_.size(); ++code)
        missing_texts[code] = missing.has(foundation::unicode::to_utf8(texts_[code]));
    CoercedRows& errors = coercions[static_cast<std::size_t>(Coercion::error_dropped)];
    for (std::size_t row = 0; row < kinds_.size(); ++row) {
        cell_type& kind = kinds_[row];
        if (kind == cell_type::error) {
            if (errors.count++ == 0) errors.first = row;
            kind = cell_type::empty;
        } else if (kind == cell_type::text) {
            if (missing_texts[static_cast<std::size_t>(values_[row])]) kind = cell_type::empty;
        } else if (kind == cell_type::number && !missing.none() && missing.has(values_[row])) {
            kind = cell_type::empty;
        }
    }
}

ColumnType ColumnCollector::common_type() const {
    std::array<bool, 7> has{};
    for (const cell_type kind : kinds_)
        has[static_cast<std::size_t>(kind)] = true;
    std::optional<ColumnType> common;
    for (const cell_type kind :
         {cell_type::number, cell_type::text, cell_type::date, cell_type::boolean}) {
        if (!has[static_cast<std::size_t>(kind)]) continue;
        if (common) return ColumnType::mixed;
        common = type_of(kind);
    }
    return common.value_or(ColumnType::number);
}

Column ColumnCollector::finish(std::optional<ColumnType> wanted, const std::vector<bool>& kept,
                               const MissingValues& missing, ColumnCoercions& coercions) {
    mark_missing(missing, coercions);
    Column column;
    column.type = wanted ? *wanted : common_type();
    Converter converter(column, texts_, coercions);
    converter.reserve(kinds_.size());
    for (std::size_t row = 0; row < kinds_.size(); ++row)
        if (kept.empty() || kept[row]) converter.add(row, kinds_[row], values_[row]);
    return column;
}

} // namespace spreadsheet
