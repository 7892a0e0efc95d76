// SPDX-License-Identifier: Apache-2.0
#include "workbook/xls/formula/extern_sheets.h"

#include <algorithm>

#include "workbook/io/little_endian.h"

namespace workbook::biff {

namespace {

constexpr std::size_t kEntryBytes = 6;
constexpr std::size_t kMaxEntries = 0xFFFF;

bool is_sheet(std::uint16_t number) {
    return number < kWholeBook;
}

} // namespace

ExternSheets::ExternSheets(std::string_view body, std::uint16_t own_book) : own_book_(own_book) {
    if (body.size() < 2) return;
    const std::size_t count =
        std::min<std::size_t>(load_u16(body.data()), (body.size() - 2) / kEntryBytes);
    for (std::size_t i = 0; i < count; ++i) {
        const char* entry = body.data() + 2 + i * kEntryBytes;
        entries_.push_back({load_u16(entry), load_u16(entry + 2), load_u16(entry + 4)});
    }
}

std::string ExternSheets::body() const {
    std::string bytes;
    append_u16(bytes, static_cast<std::uint16_t>(entries_.size()));
    for (const ExternSheet& entry : entries_)
        for (const std::uint16_t field : {entry.book, entry.first, entry.last})
            append_u16(bytes, field);
    return bytes;
}

std::optional<std::uint16_t> ExternSheets::find_or_add(std::uint16_t first, std::uint16_t last) {
    const ExternSheet wanted{own_book_, first, last};
    const auto found = std::find(entries_.begin(), entries_.end(), wanted);
    const auto number = static_cast<std::uint16_t>(found - entries_.begin());
    if (found != entries_.end()) return number;
    if (entries_.size() == kMaxEntries) return {};
    entries_.push_back(wanted);
    return number;
}

void ExternSheets::renumber(const std::vector<std::optional<std::uint16_t>>& now) {
    const auto is_left = [&](std::size_t sheet) { return sheet < now.size() && now[sheet]; };
    for (ExternSheet& entry : entries_) {
        if (entry.book != own_book_ || !is_sheet(entry.first) || !is_sheet(entry.last)) continue;
        const auto [low, high] = std::minmax(entry.first, entry.last);
        std::size_t first = low;
        std::size_t last = std::min<std::size_t>(high, now.size());
        while (first < last && !is_left(first))
            ++first;
        while (last > first && !is_left(last))
            --last;
        if (!is_left(first)) {
            entry.first = entry.last = kRemovedSheet;
            continue;
        }
        const auto ends = std::minmax(*now[first], *now[last]);
        entry.first = ends.first;
        entry.last = ends.second;
    }
}

bool ExternSheets::is_removed(std::uint16_t entry) const {
    return entry >= entries_.size() || entries_[entry].first == kRemovedSheet ||
           entries_[entry].last == kRemovedSheet;
}

std::optional<std::uint16_t> ExternSheets::for_copy(std::uint16_t entry, std::uint16_t source,
                                                    std::uint16_t copy) {
    if (entry >= entries_.size() || entries_[entry] != ExternSheet{own_book_, source, source})
        return entry;
    return find_or_add(copy, copy);
}

} // namespace workbook::biff
