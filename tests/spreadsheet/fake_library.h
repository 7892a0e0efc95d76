// SPDX-License-Identifier: Apache-2.0
//
// A workbook library that follows a script: what the sheets hold, which operations fail, in which
// order they were called. `FakeWorkbook` outlives the books made from it.
#pragma once

#include <algorithm>
#include <deque>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <climits>

#include "foundation/unicode.h"
#include "spreadsheet/libxl/libxl_book.h"
#include "spreadsheet/range.h"
#include "workbook/library.h"

namespace fake {

struct FakeCell {
    workbook::CellKind kind = workbook::CellKind::Empty;
    double number = 0.0;
    bool is_date = false;
    std::u16string text{};
};

inline FakeCell number(double value) {
    return {workbook::CellKind::Number, value};
}
inline FakeCell date(double serial) {
    return {workbook::CellKind::Number, serial, true};
}
inline FakeCell text(std::u16string value) {
    return {workbook::CellKind::String, 0.0, false, std::move(value)};
}
inline FakeCell boolean(bool value) {
    return {workbook::CellKind::Boolean, value ? 1.0 : 0.0};
}
inline FakeCell blank() {
    return {workbook::CellKind::Blank};
}
inline FakeCell error(std::u16string value) {
    return {workbook::CellKind::Error, 0.0, false, std::move(value)};
}

class FakeFormat final : public workbook::Format {
  public:
    explicit FakeFormat(int num_format = 0, bool locked = true)
        : num_format_(num_format), locked_(locked) {}
    int num_format() const override { return num_format_; }
    void set_num_format(int identifier) override { num_format_ = identifier; }
    bool locked() const override { return locked_; }

  private:
    int num_format_;
    bool locked_;
};

class FakeSheet final : public workbook::Sheet {
  public:
    std::u16string sheet_name;
    workbook::SheetState state = workbook::SheetState::Visible;
    bool is_protected = false;
    std::map<std::pair<int, int>, FakeCell> cells;
    std::map<std::pair<int, int>, FakeFormat> formats;
    std::vector<spreadsheet::Range> regions;
    std::map<std::u16string, spreadsheet::Range, std::less<>> names;
    mutable int calls = 0; ///< cells asked for

    std::u16string_view name() const override { return sheet_name; }
    workbook::SheetState hidden() const override { return state; }
    bool protect() const override { return is_protected; }

    workbook::CellKind cell_type(int row, int column) const override {
        return at(row, column).kind;
    }
    bool is_date(int row, int column) const override { return at(row, column).is_date; }
    double read_num(int row, int column) const override { return at(row, column).number; }
    bool read_bool(int row, int column) const override {
        const FakeCell& cell = at(row, column);
        return cell.kind == workbook::CellKind::Boolean && cell.number != 0.0;
    }
    std::u16string_view read_str(int row, int column) const override {
        const FakeCell& cell = at(row, column);
        if (cell.kind == workbook::CellKind::String || cell.kind == workbook::CellKind::Error)
            return cell.text;
        return {};
    }
    const workbook::Format* cell_format(int row, int column) const override {
        const auto found = formats.find({row, column});
        return found == formats.end() ? nullptr : &found->second;
    }

    int first_row() const override { return bounds(true).first_row; }
    int end_row() const override { return bounds(true).last_row; }
    int first_column() const override { return bounds(true).first_column; }
    int end_column() const override { return bounds(true).last_column; }
    int first_filled_row() const override { return bounds(false).first_row; }
    int end_filled_row() const override { return bounds(false).last_row; }
    int first_filled_column() const override { return bounds(false).first_column; }
    int end_filled_column() const override { return bounds(false).last_column; }

    int merge_size() const override { return static_cast<int>(regions.size()); }
    bool merge(int index, int& first_row, int& last_row, int& first_column,
               int& last_column) const override {
        if (index < 0 || index >= merge_size()) return false;
        return take(regions[static_cast<std::size_t>(index)], first_row, last_row, first_column,
                    last_column);
    }
    bool named_range(std::u16string_view name, int& first_row, int& last_row, int& first_column,
                     int& last_column) const override {
        const auto found = names.find(name);
        if (found == names.end()) return false;
        return take(found->second, first_row, last_row, first_column, last_column);
    }

    std::vector<std::string> changes; ///< in the order of the calls
    bool can_change = true;
    std::map<int, double> widths;

    bool set_name(std::u16string_view name) override {
        if (can_change) sheet_name = name;
        return can_change;
    }
    bool set_hidden(workbook::SheetState wanted) override {
        if (can_change) state = wanted;
        return can_change;
    }
    bool set_protect(bool on) override {
        is_protected = on;
        return can_change;
    }
    void expect_cells(int, int, int, int) override {}
    bool write_num(int row, int column, double value, const workbook::Format* format) override {
        return write(row, column, number(value), format);
    }
    bool write_str(int row, int column, std::u16string_view value,
                   const workbook::Format* format) override {
        return write(row, column, text(std::u16string(value)), format);
    }
    bool write_bool(int row, int column, bool value, const workbook::Format* format) override {
        return write(row, column, boolean(value), format);
    }
    bool write_blank(int row, int column, const workbook::Format* format) override {
        return write(row, column, blank(), format);
    }
    bool clear(int first_row, int last_row, int first_column, int last_column) override {
        if (!can_change) return false;
        std::erase_if(cells, [&](const auto& cell) {
            const auto [row, column] = cell.first;
            return row >= first_row && row <= last_row && column >= first_column &&
                   column <= last_column;
        });
        return true;
    }
    bool delete_merge(int index) override {
        changes.push_back("delete_merge " + std::to_string(index));
        if (can_change) regions.erase(regions.begin() + index);
        return can_change;
    }
    double column_width(int column) const override {
        const auto found = widths.find(column);
        return found == widths.end() ? 8.43 : found->second;
    }
    bool set_column_width(int column, double width) override {
        widths[column] = width;
        return can_change;
    }
    bool auto_fit_columns(int first_column, int last_column) override {
        changes.push_back("auto_fit_columns " + std::to_string(first_column) + " " +
                          std::to_string(last_column));
        return can_change;
    }

  private:
    bool write(int row, int column, FakeCell cell, const workbook::Format* format) {
        const bool has_format = format != nullptr;
        changes.push_back(std::to_string(row) + "," + std::to_string(column) +
                          (has_format ? " format " + std::to_string(format->num_format()) : ""));
        cell.is_date = has_format && format->num_format() == 22;
        cells[{row, column}] = std::move(cell);
        return can_change;
    }

    static bool take(const spreadsheet::Range& range, int& first_row, int& last_row,
                     int& first_column, int& last_column) {
        first_row = range.first_row;
        last_row = range.last_row;
        first_column = range.first_column;
        last_column = range.last_column;
        return true;
    }

    const FakeCell& at(int row, int column) const {
        static const FakeCell empty;
        ++calls;
        const auto found = cells.find({row, column});
        return found == cells.end() ? empty : found->second;
    }

    /// First and one-past-the-end indices.
    spreadsheet::Range bounds(bool with_blanks) const {
        spreadsheet::Range box{INT_MAX, INT_MAX, 0, 0};
        for (const auto& [place, cell] : cells) {
            if (!with_blanks && cell.kind == workbook::CellKind::Blank) continue;
            box = {std::min(box.first_row, place.first), std::min(box.first_column, place.second),
                   std::max(box.last_row, place.first + 1),
                   std::max(box.last_column, place.second + 1)};
        }
        return box.last_row == 0 ? spreadsheet::Range{} : box;
    }
};

/// What stands at one index of the book. Only a worksheet that is `readable` is handed out.
struct FakeEntry {
    std::u16string name;
    workbook::SheetKind kind = workbook::SheetKind::Worksheet;
    bool readable = true;
    bool has_name = true;
};

struct FakeWorkbook {
    std::vector<FakeEntry> entries;
    std::deque<FakeSheet> sheets;                   ///< filled up by the book to one per entry
    std::deque<FakeFormat> formats{FakeFormat(22)}; ///< handles survive an addition
    bool dates_1904 = false;
    bool can_load = true;
    bool can_load_part = true;
    bool can_load_info = true;
    bool can_add_format = true;
    bool has_memory = true;
    bool can_insert = true;
    bool can_delete = true;
    bool can_save = true;
    std::string message = "ok";
    workbook::ErrorKind error_kind = workbook::ErrorKind::None;
    std::optional<foundation::files::FileProblem> file_problem;
    std::vector<std::string> calls;
};

class FakeBook final : public workbook::Book {
  public:
    explicit FakeBook(FakeWorkbook& script) : script_(script) {
        script_.sheets.resize(script_.entries.size());
        for (std::size_t i = 0; i < script_.entries.size(); ++i)
            script_.sheets[i].sheet_name = script_.entries[i].name;
        for (FakeSheet& sheet : script_.sheets)
            order_.push_back(&sheet);
    }
    ~FakeBook() override { script_.calls.push_back("release"); }

    bool load(workbook::BookSource) override { return answer("load", script_.can_load); }
    bool load_sheet(workbook::BookSource, int sheet) override {
        return answer("load_sheet " + std::to_string(sheet), script_.can_load_part);
    }
    bool load_partially(workbook::BookSource, int sheet, int first_row, int last_row) override {
        return answer("load_partially " + std::to_string(sheet) + " " + std::to_string(first_row) +
                          " " + std::to_string(last_row),
                      script_.can_load_part);
    }
    bool load_info(workbook::BookSource) override {
        return answer("load_info", script_.can_load_info);
    }

    int sheet_count() const override { return static_cast<int>(script_.entries.size()); }
    workbook::Sheet* get_sheet(int index) override {
        const FakeEntry* found = entry(index);
        const bool readable =
            found && found->readable && found->kind == workbook::SheetKind::Worksheet;
        return readable ? order_[static_cast<std::size_t>(index)] : nullptr;
    }
    std::u16string_view get_sheet_name(int index) const override {
        const FakeEntry* found = entry(index);
        return found && found->has_name ? std::u16string_view(found->name) : std::u16string_view();
    }
    workbook::SheetKind sheet_type(int index) const override {
        const FakeEntry* found = entry(index);
        return found ? found->kind : workbook::SheetKind::Unknown;
    }

    int format_size() const override { return static_cast<int>(script_.formats.size()); }
    workbook::Format* format(int index) override {
        return &script_.formats.at(static_cast<std::size_t>(index));
    }
    workbook::Format* add_format() override {
        script_.calls.push_back("add_format");
        if (!script_.can_add_format) return nullptr;
        return &script_.formats.emplace_back();
    }
    bool is_date_1904() const override { return script_.dates_1904; }
    bool set_date_1904(bool on) override {
        script_.dates_1904 = on;
        return true;
    }

    workbook::Sheet* insert_sheet(int index, std::u16string_view name,
                                  const workbook::Sheet* source) override {
        std::string call =
            "insert_sheet " + std::to_string(index) + " " + foundation::unicode::to_utf8(name);
        if (source != nullptr) call += " of " + foundation::unicode::to_utf8(source->name());
        if (!answer(std::move(call), script_.can_insert)) return nullptr;
        script_.entries.insert(script_.entries.begin() + index, {std::u16string(name)});
        FakeSheet& sheet = script_.sheets.emplace_back();
        sheet.sheet_name = name;
        order_.insert(order_.begin() + index, &sheet);
        return &sheet;
    }
    bool delete_sheet(int index) override {
        if (!answer("delete_sheet " + std::to_string(index), script_.can_delete)) return false;
        script_.entries.erase(script_.entries.begin() + index);
        order_.erase(order_.begin() + index);
        return true;
    }
    bool move_sheet(int from, int to) override {
        std::swap(script_.entries[static_cast<std::size_t>(from)],
                  script_.entries[static_cast<std::size_t>(to)]);
        std::swap(order_[static_cast<std::size_t>(from)], order_[static_cast<std::size_t>(to)]);
        return answer("move_sheet " + std::to_string(from) + " " + std::to_string(to), true);
    }
    bool save(std::u16string_view path) override {
        return answer("save " + foundation::unicode::to_utf8(path), script_.can_save);
    }
    bool save(foundation::files::OutputFile&, std::u16string_view extension) override {
        return answer("save as " + foundation::unicode::to_utf8(extension), script_.can_save);
    }
    workbook::SaveCounts last_save() const override { return {3, 2, 1}; }
    workbook::ErrorKind error_kind() const override { return script_.error_kind; }
    std::optional<foundation::files::FileProblem> file_problem() const override {
        return script_.file_problem;
    }
    const char* error_message() const override { return script_.message.c_str(); }

  private:
    bool answer(std::string call, bool success) {
        script_.calls.push_back(std::move(call));
        if (!script_.has_memory) {
            script_.error_kind = workbook::ErrorKind::Memory;
            throw std::bad_alloc();
        }
        return success;
    }
    const FakeEntry* entry(int index) const {
        const bool exists = index >= 0 && index < sheet_count();
        return exists ? &script_.entries[static_cast<std::size_t>(index)] : nullptr;
    }

    FakeWorkbook& script_;
    std::vector<FakeSheet*> order_; ///< by index
};

/// Creators whose books all follow `script`; there is no creator for XLS.
inline spreadsheet::LibraryCreators creators(FakeWorkbook& script) {
    return {[] { return nullptr; }, [&script] { return std::make_unique<FakeBook>(script); }};
}

} // namespace fake
