// SPDX-License-Identifier: Apache-2.0
//
// A workbook library that follows a script: which sheets there are, which operations fail, in which
// order they were called. `FakeWorkbook` outlives the books made from it.
#pragma once

#include <deque>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/unicode.h"
#include "spreadsheet/libxl/libxl_book.h"
#include "workbook/library.h"

namespace fake {

class FakeFormat final : public workbook::Format {
  public:
    explicit FakeFormat(int num_format = 0) : num_format_(num_format) {}
    int num_format() const override { return num_format_; }
    void set_num_format(int identifier) override { num_format_ = identifier; }
    bool locked() const override { return true; }

  private:
    int num_format_;
};

/// Has one merged region, A1, and nothing in its cells but what `kinds` says.
class FakeSheet final : public workbook::Sheet {
  public:
    std::u16string sheet_name;
    std::map<std::pair<int, int>, workbook::CellKind> kinds;
    mutable int calls = 0; ///< cells asked for
    bool can_change = true;

    std::u16string_view name() const override { return sheet_name; }
    workbook::SheetState hidden() const override { return workbook::SheetState::Visible; }
    bool protect() const override { return false; }
    workbook::CellKind cell_type(int row, int column) const override {
        ++calls;
        const auto found = kinds.find({row, column});
        return found == kinds.end() ? workbook::CellKind::Empty : found->second;
    }
    bool is_date(int, int) const override { return false; }
    double read_num(int, int) const override { return 0.0; }
    bool read_bool(int, int) const override { return false; }
    std::u16string_view read_str(int, int) const override { return {}; }
    const workbook::Format* cell_format(int, int) const override { return nullptr; }
    int first_row() const override { return 0; }
    int end_row() const override { return 0; }
    int first_column() const override { return 0; }
    int end_column() const override { return 0; }
    int first_filled_row() const override { return 0; }
    int end_filled_row() const override { return 0; }
    int first_filled_column() const override { return 0; }
    int end_filled_column() const override { return 0; }
    int merge_size() const override { return 1; }
    bool merge(int, int& first_row, int& last_row, int& first_column,
               int& last_column) const override {
        first_row = last_row = first_column = last_column = 0;
        return true;
    }
    bool named_range(std::u16string_view, int&, int&, int&, int&) const override { return false; }

    bool set_name(std::u16string_view) override { return can_change; }
    bool set_hidden(workbook::SheetState) override { return can_change; }
    bool set_protect(bool) override { return can_change; }
    void expect_cells(int, int, int, int) override {}
    bool write_num(int, int, double, const workbook::Format*) override { return can_change; }
    bool write_str(int, int, std::u16string_view, const workbook::Format*) override {
        return can_change;
    }
    bool write_bool(int, int, bool, const workbook::Format*) override { return can_change; }
    bool write_blank(int, int, const workbook::Format*) override { return can_change; }
    bool clear(int, int, int, int) override { return can_change; }
    bool delete_merge(int) override { return can_change; }
    double column_width(int) const override { return 8.43; }
    bool set_column_width(int, double) override { return can_change; }
    bool auto_fit_columns(int, int) override { return can_change; }
};

/// What is at one index of the book. Only a worksheet that is `readable` is handed out.
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
