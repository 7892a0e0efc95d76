// SPDX-License-Identifier: Apache-2.0
//
// Holds the order of the virtual functions of IBook and ISheet against docs/abi.md, and the layout
// of the structures that it names. A pointer to a virtual member function carries its place in the
// table: one more than the offset in bytes (Itanium C++ ABI 2.3, which GCC and clang follow on
// Windows as well).
#include <cstddef>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "spreadsheet/spreadsheet.h"

namespace spreadsheet {
namespace {

// The structures that the document calls fixed: words without gaps, in their order.
template <class Structure>
constexpr bool has_words(std::size_t count) {
    return sizeof(Structure) == count * sizeof(void*) && std::is_standard_layout_v<Structure>;
}
static_assert(sizeof(Cell) == 2 * sizeof(int) && offsetof(Cell, column) == sizeof(int));
static_assert(sizeof(Range) == 4 * sizeof(int) && offsetof(Range, first_column) == sizeof(int) &&
              offsetof(Range, last_row) == 2 * sizeof(int));
static_assert(has_words<SerialDatenum>(1));
static_assert(has_words<StringBuilder>(2) && offsetof(StringBuilder, append) == 8);
static_assert(has_words<StringProvider>(2) && offsetof(StringProvider, next) == 8);
static_assert(has_words<CellBuilder>(5) && offsetof(CellBuilder, text) == 8 &&
              offsetof(CellBuilder, number) == 16 && offsetof(CellBuilder, date) == 24);
static_assert(has_words<CellProvider>(6) && offsetof(CellProvider, text) == 8 &&
              offsetof(CellProvider, number) == 16 && offsetof(CellProvider, date) == 24 &&
              offsetof(CellProvider, boolean) == 32);

template <class Member>
std::size_t slot_of(Member member) {
    std::size_t words[2];
    static_assert(sizeof member == sizeof words);
    std::memcpy(words, &member, sizeof words);
    EXPECT_EQ(words[0] % sizeof(void*), 1u) << "not virtual";
    return (words[0] - 1) / sizeof(void*);
}

struct Slot {
    std::size_t index;
    std::string declaration;
};

// Written as it is declared; the cast picks the overload and fails to compile for another type.
#define ZX_SLOT(type, result, name, parameters, ...)                                               \
    Slot {                                                                                         \
        slot_of(static_cast<result(type::*) parameters __VA_ARGS__>(&type::name)),                 \
            joined(#result, #name #parameters, #__VA_ARGS__)                                       \
    }
#define ZX_BOOK(...) ZX_SLOT(IBook, __VA_ARGS__)
#define ZX_SHEET(...) ZX_SLOT(ISheet, __VA_ARGS__)

std::string joined(const std::string& result, const std::string& call, const std::string& suffix) {
    return result + ' ' + call + (suffix.empty() ? "" : " " + suffix);
}

using std::optional;
using std::shared_ptr;
using std::size_t;
using std::u16string;
using std::vector;

std::vector<Slot> book_slots() {
    return {
        ZX_BOOK(bool, is_interactive, (), const),
        ZX_BOOK(book::format, format, (), const),
        ZX_BOOK(bool, are_dates_1904, (), const),
        ZX_BOOK(size_t, num_sheets, (), const),
        ZX_BOOK(shared_ptr<ISheet>, sheet, (const u16string&), const),
        ZX_BOOK(shared_ptr<ISheet>, sheet, (size_t), const),
        ZX_BOOK(optional<u16string>, get_sheet_name, (int), const),
        ZX_BOOK(shared_ptr<ISheet>, add_sheet, (size_t, const u16string&, const u16string&), ),
        ZX_BOOK(void, remove_sheet, (size_t), ),
        ZX_BOOK(sheet::type, sheet_type, (size_t), const),
        ZX_BOOK(const u16string, get_file_name, (bool), ),
        ZX_BOOK(void, init_from_file, (const u16string&, book::format), ),
        ZX_BOOK(void, init_from_file_with_sheet, (const u16string&, book::format, size_t), ),
        ZX_BOOK(void, init_from_file_with_range,
                (const u16string&, book::format, size_t, size_t, size_t), ),
        ZX_BOOK(void, init_from_file_only_sheetNames, (const u16string&, book::format), ),
        ZX_BOOK(bool, is_loaded, (), const),
        ZX_BOOK(bool, is_sheet_loaded, (), const),
        ZX_BOOK(bool, sheet_names_only_required, (), const),
        ZX_BOOK(vector<u16string>, get_sheet_names, (), const),
        ZX_BOOK(void, init_new, (size_t, book::format, const u16string&), ),
        ZX_BOOK(void, init_from_memory, (const void*, size_t, book::format), ),
        ZX_BOOK(void, save, (const u16string&), ),
        ZX_BOOK(void, save_to_memory, (vector<unsigned char>&), ),
    };
}

std::vector<Slot> sheet_state_slots() {
    return {
        ZX_SHEET(void, name, (const u16string&), ),
        ZX_SHEET(u16string, name, (), const),
        ZX_SHEET(void, hidden, (sheet::hidden), ),
        ZX_SHEET(sheet::hidden, hidden, (), const),
        ZX_SHEET(bool, is_protected, (), const),
        ZX_SHEET(void, set_protected, (bool), ),
        ZX_SHEET(Range, used_range, (), const),
        ZX_SHEET(void, clear, (Cell), ),
        ZX_SHEET(void, clear, (Range), ),
        ZX_SHEET(Range, named_range, (const u16string&), const),
        ZX_SHEET(void, cell_types, (const CellIterator&, cell_type*), const),
        ZX_SHEET(bool, cell_types,
                 (Range, cell_type*, const MergedCellColumnRule&, const MergedCellRowRule&), ),
        ZX_SHEET(void, cell_types, (Range, cell_type*), const),
        ZX_SHEET(vector<bool>, get_merged_cells_vector, (), const),
        ZX_SHEET(vector<int>, get_omit_rows_vector, (), const),
        ZX_SHEET(vector<int>, get_omit_vars_vector, (), const),
        ZX_SHEET(void, reset_merged_cells_vector, (), ),
        ZX_SHEET(void, reset_omit_vars_bool, (), ),
        ZX_SHEET(void, set_return_empty_vars_bool, (bool), ),
        ZX_SHEET(cell_type, typeCheck, (int, int), ),
    };
}

std::vector<Slot> sheet_reading_slots() {
    return {
        ZX_SHEET(bool, read,
                 (Range, unsigned char*, const MergedCellColumnRule&, const MergedCellRowRule&), ),
        ZX_SHEET(void, read, (Range, unsigned char*), const),
        ZX_SHEET(bool, read,
                 (Range, bool*, const MergedCellColumnRule&, const MergedCellRowRule&), ),
        ZX_SHEET(void, read, (Range, bool*), const),
        ZX_SHEET(bool, read,
                 (Range, SerialDatenum*, const MergedCellColumnRule&, const MergedCellRowRule&), ),
        ZX_SHEET(void, read, (Range, SerialDatenum*), const),
        ZX_SHEET(bool, read,
                 (Range, double*, const MergedCellColumnRule&, const MergedCellRowRule&), ),
        ZX_SHEET(void, read, (Range, double*), const),
        ZX_SHEET(
            bool, read,
            (Range, const StringBuilder&, const MergedCellColumnRule&, const MergedCellRowRule&), ),
        ZX_SHEET(void, read, (Range, const StringBuilder&), const),
        ZX_SHEET(void, read, (Range, const cell_type*, const CellBuilder&), const),
        ZX_SHEET(Range, get_data_span,
                 (Range, const MergedCellColumnRule&, const MergedCellRowRule&), ),
        ZX_SHEET(void, get_types, (cell_type*), ),
        ZX_SHEET(void, read_cell_array,
                 (CellTypeIterator&, output::CellOutputBuilder&, bool, const MergedCellColumnRule&,
                  const MergedCellRowRule&), ),
        ZX_SHEET(void, read_cell_array, (CellTypeIterator&, output::CellOutputBuilder&, bool),
                 const),
        ZX_SHEET(bool, readDatesAsDoubles,
                 (Range, double*, const MergedCellColumnRule&, const MergedCellRowRule&), ),
        ZX_SHEET(void, readDatesAsDoubles, (Range, double*), const),
        ZX_SHEET(void, prefetch, (Range, cell_type*), const),
    };
}

std::vector<Slot> sheet_writing_slots() {
    return {
        ZX_SHEET(void, write, (Range, const unsigned char*), ),
        ZX_SHEET(void, write, (Range, const bool*), ),
        ZX_SHEET(void, write, (Range, const SerialDatenum*), ),
        ZX_SHEET(void, write, (Range, const double*), ),
        ZX_SHEET(void, write, (Range, const StringProvider&), ),
        ZX_SHEET(void, write, (Range, const cell_type*, const CellProvider&, bool), ),
        ZX_SHEET(void, auto_fit_column_widths, (Range), ),
        ZX_SHEET(void, unmerge, (Range), ),
        ZX_SHEET(bool, is_range_writeable, (Range), ),
    };
}

std::vector<Slot> sheet_slots() {
    std::vector<Slot> all = sheet_state_slots();
    for (const auto& more : {sheet_reading_slots(), sheet_writing_slots()})
        all.insert(all.end(), more.begin(), more.end());
    return all;
}

/// The lines `| n | declaration |` of one section of the document.
std::string documented(const std::string& section) {
    std::ifstream file(ZX_ABI_DOCUMENT);
    std::string line, lines;
    bool inside = false;
    while (std::getline(file, line)) {
        if (line.rfind("## ", 0) == 0) inside = line == "## " + section;
        if (inside && line.size() > 2 && line[2] >= '0' && line[2] <= '9') lines += line + '\n';
    }
    return lines;
}

/// Derived from the interface: its first own slot tells how many the interface has.
template <class Interface>
class Probe : public Interface {
  public:
    virtual void first_own_slot() = 0;
};

/// The same lines for what was compiled. The destructor, whose address nobody can take, has the two
/// places that no other function has.
template <class Interface>
std::string compiled(const std::vector<Slot>& slots, const std::string& destructor) {
    std::vector<std::string> table(slot_of(&Probe<Interface>::first_own_slot));
    for (const Slot& slot : slots)
        table.at(slot.index) = slot.declaration;
    std::ostringstream lines;
    const char* kind = " (complete)";
    for (std::size_t i = 0; i < table.size(); ++i) {
        const bool named = !table[i].empty();
        lines << "| " << i << " | `" << (named ? table[i] : destructor + kind) << "` |\n";
        if (!named) kind = " (deleting)";
    }
    return lines.str();
}

TEST(Slots, OfBooksStandAsDocumented) {
    EXPECT_EQ(compiled<IBook>(book_slots(), "~IBook()"), documented("Slots of IBook"));
}

TEST(Slots, OfSheetsStandAsDocumented) {
    EXPECT_EQ(compiled<ISheet>(sheet_slots(), "~ISheet()"), documented("Slots of ISheet"));
}

} // namespace
} // namespace spreadsheet
