// SPDX-License-Identifier: Apache-2.0
#include "workbook/xls/writing/sheet_references.h"

#include <algorithm>
#include <string>

#include "workbook/io/little_endian.h"
#include "workbook/xls/record_ids.h"
#include "workbook/xls/writing/globals_rewriter.h"
#include "workbook/xls/writing/record_writer.h"

namespace workbook {

namespace {

// A WINDOW1 record (MS-XLS 2.4.346).
constexpr std::size_t kActiveSheet = 10, kFirstTab = 12, kSelectedTabs = 14, kWindowBytes = 18;

// A SUPBOOK record that stands for the book itself.
constexpr std::uint16_t kOwnBook = 0x0401;

// The sheet of a reference to a removed one.
constexpr std::uint16_t kRemovedSheet = 0xFFFF;

// A NAME record.
constexpr std::size_t kNameSheet = 8, kNameBytes = 15;

} // namespace

SheetReferences::SheetReferences(const std::vector<PlannedSheet>& sheets,
                                 std::size_t original_count)
    : sheets_(sheets), new_index_(original_count) {
    for (std::size_t i = 0; i < sheets.size(); ++i)
        if (sheets[i].original && *sheets[i].original < original_count)
            new_index_[*sheets[i].original] = i;
    has_changed_ = sheets.size() != original_count;
    for (std::size_t i = 0; i < original_count; ++i)
        has_changed_ |= new_index_[i] != i;
}

void SheetReferences::adjust(const Record& record, std::size_t position, std::string& globals) {
    const std::size_t data = position + RecordStream::kHeaderBytes;
    if (record.id != record::kContinue) last_id_ = record.id;
    if (record.id == record::kSupBook) adjust_book(globals, data, record.size());
    if (record.id == record::kName) ++names_;
    if (!has_changed_) return;
    if (record.id == record::kWindow1) adjust_window(globals, data, record.size());
    if (record.id == record::kName) adjust_name(record, position, globals);
    if (record.id == record::kExternSheet && record.size() >= 2) {
        link_.clear();
        adjust_links(globals, data + 2, record.size() - 2);
    } else if (record.id == record::kContinue && last_id_ == record::kExternSheet) {
        adjust_links(globals, data, record.size());
    }
}

void SheetReferences::adjust_window(std::string& globals, std::size_t data,
                                    std::size_t size) const {
    if (size < kWindowBytes) return;
    RecordWriter writer(globals);
    const std::size_t old = load_u16(globals.data() + data + kActiveSheet);
    std::size_t active = 0;
    if (old < new_index_.size() && new_index_[old]) {
        active = *new_index_[old];
    } else {
        const auto visible = std::find_if(sheets_.begin(), sheets_.end(), [](const auto& sheet) {
            return sheet.state == SheetState::Visible;
        });
        if (visible != sheets_.end()) active = static_cast<std::size_t>(visible - sheets_.begin());
    }
    writer.set_u16(data + kActiveSheet, static_cast<std::uint16_t>(active));
    writer.set_u16(data + kFirstTab, 0);
    writer.set_u16(data + kSelectedTabs, 1);
}

void SheetReferences::adjust_book(std::string& globals, std::size_t data, std::size_t size) {
    const bool is_own = size >= 4 && load_u16(globals.data() + data + 2) == kOwnBook;
    is_own_book_.push_back(is_own);
    if (is_own && has_changed_)
        RecordWriter(globals).set_u16(data, static_cast<std::uint16_t>(sheets_.size()));
}

void SheetReferences::adjust_links(std::string& globals, std::size_t data, std::size_t size) {
    RecordWriter writer(globals);
    for (std::size_t at = data; at < data + size; ++at) {
        link_.push_back(at);
        if (link_.size() < kLinkBytes) continue;
        const auto value_at = [&](std::size_t byte) {
            return static_cast<std::uint16_t>(static_cast<std::uint8_t>(globals[link_[byte]]) |
                                              static_cast<std::uint8_t>(globals[link_[byte + 1]])
                                                  << 8);
        };
        const auto put = [&](std::size_t byte, std::uint16_t value) {
            globals[link_[byte]] = static_cast<char>(value & 0xFF);
            globals[link_[byte + 1]] = static_cast<char>(value >> 8);
        };
        const std::size_t book = value_at(0);
        const auto first = static_cast<std::int16_t>(value_at(2));
        const auto last = static_cast<std::int16_t>(value_at(4));
        const bool is_sheet =
            first >= 0 && last >= first && static_cast<std::size_t>(last) < new_index_.size();
        if (book < is_own_book_.size() && is_own_book_[book] && is_sheet) {
            // Of several sheets, those that are left, from the first of them to the last.
            std::optional<std::size_t> lowest, highest;
            for (auto i = static_cast<std::size_t>(first); i <= static_cast<std::size_t>(last);
                 ++i) {
                if (!new_index_[i]) continue;
                lowest = std::min(lowest.value_or(*new_index_[i]), *new_index_[i]);
                highest = std::max(highest.value_or(*new_index_[i]), *new_index_[i]);
            }
            put(2, lowest ? static_cast<std::uint16_t>(*lowest) : kRemovedSheet);
            put(4, highest ? static_cast<std::uint16_t>(*highest) : kRemovedSheet);
        }
        link_.clear();
    }
}

// A name of a removed sheet keeps its place, since formulas refer to names by number.
void SheetReferences::adjust_name(const Record& record, std::size_t position,
                                  std::string& globals) {
    if (record.size() < kNameBytes) return;
    const std::size_t sheet_number = record.u16(kNameSheet);
    if (sheet_number == 0 || sheet_number > new_index_.size()) return;
    RecordWriter writer(globals);
    if (const auto index = new_index_[sheet_number - 1]) {
        writer.set_u16(position + RecordStream::kHeaderBytes + kNameSheet,
                       static_cast<std::uint16_t>(*index + 1));
        return;
    }
    constexpr std::uint16_t kHidden = 1;
    constexpr std::string_view kReferenceError("\x1C\x17", 2);
    globals.resize(position);
    const std::string name = "_removed_" + std::to_string(names_);
    writer.begin(record::kName);
    writer.u16(kHidden);
    writer.u8(0);
    writer.u8(static_cast<std::uint8_t>(name.size()));
    writer.u16(static_cast<std::uint16_t>(kReferenceError.size()));
    writer.bytes(std::string_view("\0\0\0\0\0\0\0\0", 8));
    writer.u8(0);
    writer.bytes(name);
    writer.bytes(kReferenceError);
    writer.end();
}

} // namespace workbook
