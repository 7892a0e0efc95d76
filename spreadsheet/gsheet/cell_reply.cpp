// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/cell_reply.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "spreadsheet/gsheet/reply_events.h"

namespace gsheet {

namespace {

using spreadsheet::cell_type;

/// What stands around the present event.
enum class Place : std::uint8_t {
    outside,
    root,
    sheets,
    sheet,
    data_list,
    data,
    rows,
    row,
    cells,
    cell,
    entered_value,
    effective_value,
    entered_format,
    effective_format,
    entered_number_format,
    effective_number_format,
    ignored
};

enum class Key : std::uint8_t {
    other,
    sheets,
    data,
    row_data,
    values,
    user_entered_value,
    effective_value,
    user_entered_format,
    effective_format,
    number_format,
    type,
    number_value,
    string_value,
    bool_value,
    formula_value,
    error_value
};

Key to_key(std::string_view name) {
    static constexpr std::pair<std::string_view, Key> kKeys[] = {
        {"numberValue", Key::number_value},
        {"stringValue", Key::string_value},
        {"boolValue", Key::bool_value},
        {"userEnteredValue", Key::user_entered_value},
        {"effectiveValue", Key::effective_value},
        {"values", Key::values},
        {"userEnteredFormat", Key::user_entered_format},
        {"effectiveFormat", Key::effective_format},
        {"numberFormat", Key::number_format},
        {"type", Key::type},
        {"formulaValue", Key::formula_value},
        {"errorValue", Key::error_value},
        {"rowData", Key::row_data},
        {"data", Key::data},
        {"sheets", Key::sheets},
    };
    for (const auto& [text, key] : kKeys)
        if (text == name) return key;
    return Key::other;
}

/// An entered or computed value.
struct Value {
    enum class Kind : std::uint8_t { none, number, text, boolean, formula, error };
    Kind kind = Kind::none;
    bool boolean = false;
    double number = 0.0;
    std::string text;

    void reset() {
        kind = Kind::none;
        text.clear();
    }
};

/// One cell of a reply, before its type is known.
struct CellDraft {
    Value entered, effective;
    std::string entered_format, effective_format; ///< types of number formats

    void reset() {
        entered.reset();
        effective.reset();
        entered_format.clear();
        effective_format.clear();
    }

    /// The value that decides what the cell is.
    const Value& decisive() const {
        const bool is_computed =
            entered.kind == Value::Kind::none || entered.kind == Value::Kind::formula;
        return is_computed ? effective : entered;
    }
    bool is_error() const {
        return effective.kind == Value::Kind::error || entered.kind == Value::Kind::error;
    }
    /// The two tests differ: a computed number is a date by other names of formats than an entered
    /// one.
    bool is_date() const {
        if (&decisive() == &entered)
            return entered_format == "DATE_TIME" || entered_format == "DATE" ||
                   entered_format == "TIME";
        const std::string& format = entered_format.empty() ? effective_format : entered_format;
        return format == "DATE" || format == "DATETIME";
    }
};

class CellReader : public ReplyEvents<CellReader> {
  public:
    explicit CellReader(const spreadsheet::Range& range) : cache_(range) { around_.reserve(16); }

    CellCache take() { return std::move(cache_); }

    void begin(bool is_array) {
        around_.push_back(place_);
        note_element();
        place_ = is_array ? place_of_array() : place_of_object();
        if (place_ == Place::cell) draft_.reset();
    }

    void end() {
        if (place_ == Place::cell) add_cell();
        place_ = around_.back();
        around_.pop_back();
    }

    void key(std::string_view name) { key_ = place_ == Place::ignored ? Key::other : to_key(name); }

    void text_part(std::string_view part, bool is_last) {
        if (Value* const value = value_here()) {
            if (key_ == Key::string_value) {
                value->text.append(part);
                value->kind = Value::Kind::text;
            } else if (key_ == Key::formula_value) {
                value->kind = Value::Kind::formula;
            }
        } else if (place_ == Place::entered_number_format) {
            if (key_ == Key::type) draft_.entered_format.append(part);
        } else if (place_ == Place::effective_number_format) {
            if (key_ == Key::type) draft_.effective_format.append(part);
        } else if (is_last) {
            note_stray();
        }
    }

    void number(double number) {
        Value* const value = value_here();
        if (value == nullptr) return note_stray();
        if (key_ != Key::number_value) return;
        value->kind = Value::Kind::number;
        value->number = number;
    }

    void boolean(bool boolean) {
        Value* const value = value_here();
        if (value == nullptr) return note_stray();
        if (key_ != Key::bool_value) return;
        value->kind = Value::Kind::boolean;
        value->boolean = boolean;
    }

    void null() { note_stray(); }
    bool is_overfull() const { return is_overfull_; }

  private:
    /// An array or object that begins as an element of an array, before `place_` changes.
    void note_element() {
        if (place_ == Place::rows) cache_.begin_row();
        if (place_ == Place::effective_value && key_ == Key::error_value)
            draft_.effective.kind = Value::Kind::error;
        if (place_ == Place::entered_value && key_ == Key::error_value)
            draft_.entered.kind = Value::Kind::error;
    }

    /// A plain value where a row or a cell is expected counts as an empty one.
    void note_stray() {
        if (place_ == Place::rows) cache_.begin_row();
        if (place_ == Place::cells) store(CachedCell());
    }

    Value* value_here() {
        if (place_ == Place::entered_value) return &draft_.entered;
        return place_ == Place::effective_value ? &draft_.effective : nullptr;
    }

    Place place_of_array() {
        if (place_ == Place::cells) store(CachedCell());
        switch (key_) {
        case Key::sheets:
            return place_ == Place::root ? Place::sheets : Place::ignored;
        case Key::data:
            return place_ == Place::sheet ? Place::data_list : Place::ignored;
        case Key::row_data:
            return place_ == Place::data ? Place::rows : Place::ignored;
        case Key::values:
            return place_ == Place::row ? Place::cells : Place::ignored;
        default:
            return Place::ignored;
        }
    }

    Place place_of_object() {
        switch (place_) {
        case Place::outside:
            return Place::root;
        case Place::sheets:
            return std::exchange(has_sheet_, true) ? Place::ignored : Place::sheet;
        case Place::data_list:
            return std::exchange(has_data_, true) ? Place::ignored : Place::data;
        case Place::rows:
            return Place::row;
        case Place::cells:
            return Place::cell;
        case Place::cell:
            return place_in_cell();
        case Place::entered_format:
            return key_ == Key::number_format ? Place::entered_number_format : Place::ignored;
        case Place::effective_format:
            return key_ == Key::number_format ? Place::effective_number_format : Place::ignored;
        default:
            return Place::ignored;
        }
    }

    Place place_in_cell() const {
        switch (key_) {
        case Key::user_entered_value:
            return Place::entered_value;
        case Key::effective_value:
            return Place::effective_value;
        case Key::user_entered_format:
            return Place::entered_format;
        case Key::effective_format:
            return Place::effective_format;
        default:
            return Place::ignored;
        }
    }

    void add_cell() {
        const Value& value = draft_.decisive();
        if (draft_.is_error()) return store(CachedCell(cell_type::error));
        switch (value.kind) {
        case Value::Kind::number:
            return store(
                CachedCell(draft_.is_date() ? cell_type::date : cell_type::number, value.number));
        case Value::Kind::text:
            is_overfull_ |= !cache_.add_text(value.text);
            return;
        case Value::Kind::boolean:
            return store(CachedCell(value.boolean));
        default:
            return store(CachedCell());
        }
    }

    void store(const CachedCell& cell) { is_overfull_ |= !cache_.add(cell); }

    CellCache cache_;
    CellDraft draft_;
    Place place_ = Place::outside;
    Key key_ = Key::other;
    std::vector<Place> around_;
    bool has_sheet_ = false;
    bool has_data_ = false;
    bool is_overfull_ = false;
};

/// Counts the elements of the root's "values".
class ValueCounter : public ReplyEvents<ValueCounter> {
  public:
    std::size_t count() const { return count_; }

    void begin(bool is_array) {
        note_element();
        if (depth_ == 1) is_values_ = is_array && is_values_key_;
        ++depth_;
    }
    void end() { --depth_; }
    void key(std::string_view name) {
        if (depth_ == 1) is_values_key_ = name == "values";
    }
    void text_part(std::string_view, bool is_last) {
        if (is_last) note_element();
    }
    void number(double) { note_element(); }
    void boolean(bool) { note_element(); }
    void null() { note_element(); }
    bool is_overfull() const { return false; }

  private:
    void note_element() {
        if (depth_ == 2 && is_values_) ++count_;
    }

    std::size_t depth_ = 0;
    std::size_t count_ = 0;
    bool is_values_key_ = false;
    bool is_values_ = false;
};

} // namespace

CellCache parse_cells(std::string_view text, const spreadsheet::Range& range) {
    return read_reply(text, CellReader(range)).take();
}

std::size_t count_values(std::string_view text) {
    return read_reply(text, ValueCounter()).count();
}

} // namespace gsheet
