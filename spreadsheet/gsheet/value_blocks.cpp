// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/value_blocks.h"

#include <algorithm>
#include <string>

#include "spreadsheet/gsheet/reply_events.h"
#include "spreadsheet/limits.h"

namespace gsheet {

namespace {

/// Follows the path of keys; arrays count as a step without a name.
class BlockReader : public ReplyEvents<BlockReader> {
  public:
    std::vector<ValueBlock> take() { return std::move(blocks_); }

    void begin(bool) {
        note_value();
        path_.push_back(key_);
        key_ = Key::other;
        if (is_at({Key::value_ranges, Key::other})) blocks_.emplace_back();
        const bool is_row = is_inside({Key::value_ranges, Key::other, Key::value_range}) &&
                            path_.size() == kRowDepth && path_[kRowDepth - 2] == Key::values;
        if (is_row) {
            ++blocks_.back().rows;
            row_columns_ = 0;
        }
    }
    void end() {
        path_.pop_back();
        key_ = Key::other; // what follows in an array has no name
    }
    void key(std::string_view name) {
        key_ = name == "valueRanges"  ? Key::value_ranges
               : name == "valueRange" ? Key::value_range
               : name == "values"     ? Key::values
               : name == "gridRange"  ? Key::grid_range
               : name == "sheetId"    ? Key::sheet_id
                                      : Key::other;
    }
    void text_part(std::string_view, bool is_last) {
        if (is_last) note_value();
    }
    void number(double value) {
        note_value();
        const bool is_id = key_ == Key::sheet_id && path_.back() == Key::grid_range &&
                           is_inside({Key::value_ranges, Key::other});
        // Identifiers are 32-bit numbers.
        if (is_id && value >= 0 && value <= 2147483647.0)
            blocks_.back().sheet_id = static_cast<std::int64_t>(value);
    }
    void boolean(bool) { note_value(); }
    void null() { note_value(); }
    bool is_overfull() const { return blocks_.size() > spreadsheet::kMaxGoogleCells; }

  private:
    enum class Key : std::uint8_t {
        other,
        value_ranges,
        value_range,
        values,
        grid_range,
        sheet_id
    };
    /// Containers around a value of a row: root, list, block, "valueRange", "values", row.
    static constexpr std::size_t kRowDepth = 6;

    /// Whether the containers inside the root begin with these.
    bool is_inside(std::initializer_list<Key> names) const {
        return path_.size() > names.size() &&
               std::equal(names.begin(), names.end(), path_.begin() + 1);
    }
    bool is_at(std::initializer_list<Key> names) const {
        return path_.size() == names.size() + 1 && is_inside(names);
    }
    void note_value() {
        if (path_.size() != kRowDepth || path_[kRowDepth - 2] != Key::values ||
            !is_inside({Key::value_ranges, Key::other, Key::value_range}))
            return;
        std::size_t& widest = blocks_.back().columns;
        widest = std::max(widest, ++row_columns_);
    }

    std::vector<ValueBlock> blocks_;
    std::vector<Key> path_;
    Key key_ = Key::other;
    std::size_t row_columns_ = 0;
};

} // namespace

std::vector<ValueBlock> measure_value_blocks(std::string_view text) {
    return read_reply(text, BlockReader()).take();
}

} // namespace gsheet
