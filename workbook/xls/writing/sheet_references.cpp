// SPDX-License-Identifier: Apache-2.0
//
// While the tables are changed, sheets have provisional numbers: those of the loaded book, then
// one for each new sheet. So a copy of a sheet that was removed can take over its references.
#include "workbook/xls/writing/sheet_references.h"

#include <algorithm>

#include "workbook/io/little_endian.h"
#include "workbook/xls/reading/continued_record.h"
#include "workbook/xls/record_ids.h"
#include "workbook/xls/writing/globals_rewriter.h"
#include "workbook/xls/writing/record_writer.h"

namespace workbook {

namespace {

// A WINDOW1 record (MS-XLS 2.4.346).
constexpr std::size_t kActiveSheet = 10, kFirstTab = 12, kSelectedTabs = 14, kWindowBytes = 18;

// A SUPBOOK record that stands for the book itself.
constexpr std::size_t kOwnBookBytes = 4;
constexpr std::uint16_t kOwnBook = 0x0401;

// A NAME record: fields, a string with a flag byte in front, the formula, other strings.
constexpr std::size_t kNameLength = 3, kFormulaBytes = 4, kNameSheet = 8, kNameFlags = 14;
constexpr std::size_t kMostNames = 0xFFFF;

bool is_own_book(const Record& record) {
    return record.size() == kOwnBookBytes && record.u16(2) == kOwnBook;
}

std::string joined_data(RecordStream& records) {
    std::string data(records.record().data);
    ContinuedRecord segments(records);
    while (segments.next_segment())
        data += segments.rest();
    return data;
}

/// The record's data for another sheet; nullopt when it breaks the format.
std::optional<std::string> name_for_sheet(std::string_view name, std::size_t sheet,
                                          const biff::TokenChanges& changes) {
    const auto byte = [&](std::size_t at) { return static_cast<std::uint8_t>(name[at]); };
    const std::size_t width = (byte(kNameFlags) & 1) != 0 ? 2 : 1;
    const std::size_t begin = kNameFlags + 1 + width * byte(kNameLength);
    const std::size_t token_bytes = load_u16(name.data() + kFormulaBytes);
    if (begin + token_bytes > name.size()) return {};
    std::string data(name.substr(0, begin));
    RecordWriter(data).set_u16(kNameSheet, static_cast<std::uint16_t>(sheet + 1));
    std::string formula(name.substr(begin));
    biff::rewrite_tokens(formula, token_bytes, changes);
    return data + formula;
}

template <class Key, class Value>
Value replaced(const std::map<Key, Value>& map, Value value) {
    const auto found = map.find(value);
    return found == map.end() ? value : found->second;
}

} // namespace

SheetReferences::SheetReferences(std::string_view stream, const std::vector<PlannedSheet>& sheets,
                                 std::size_t original_count)
    : sheets_(sheets), new_index_(original_count) {
    for (std::size_t i = 0; i < sheets.size(); ++i)
        if (sheets[i].original && *sheets[i].original < original_count)
            new_index_[*sheets[i].original] = i;
    has_changed_ = sheets.size() != original_count;
    for (std::size_t i = 0; i < original_count; ++i)
        has_changed_ |= new_index_[i] != i;
    if (!has_changed_) return;
    read(stream);
    plan_copies(original_count);
}

void SheetReferences::read(std::string_view stream) {
    RecordStream records(stream, 0);
    std::optional<std::string> links;
    std::uint16_t books = 0;
    int depth = 0;
    while (records.next()) {
        const Record& record = records.record();
        if (record::is_bof(record.id)) ++depth;
        if (record.id == record::kEof && --depth <= 0) break;
        if (depth != 1) continue;
        if (record.id == record::kSupBook) {
            if (is_own_book(record) && !own_book_) own_book_ = books;
            ++books;
        } else if (record.id == record::kName) {
            // One that goes on in other records is not copied.
            old_names_.push_back(records.next_id() == record::kContinue ? std::string_view{}
                                                                        : record.data);
        } else if (record.id == record::kExternSheet && !links) {
            links = joined_data(records);
        }
    }
    links_ = biff::ExternSheets(links.value_or(std::string()), own_book_.value_or(0xFFFF));
    for (const biff::ExternSheet& link : links_.entries())
        link_books_.push_back(link.book);
}

void SheetReferences::plan_copies(std::size_t original_count) {
    std::vector<std::optional<std::uint16_t>> same, now;
    for (std::size_t i = 0; i < original_count; ++i) {
        same.push_back(static_cast<std::uint16_t>(i));
        now.emplace_back();
        if (new_index_[i]) now.back() = static_cast<std::uint16_t>(*new_index_[i]);
    }
    links_.renumber(same); // references to sheets that never were must not become a copy's
    for (std::size_t i = 0; i < sheets_.size(); ++i) {
        if (sheets_[i].original) continue;
        const std::size_t number = now.size();
        now.emplace_back(static_cast<std::uint16_t>(i));
        if (!sheets_[i].copy_of || number >= biff::kWholeBook) continue;
        Copy& copy = copies_[i];
        for (std::size_t entry = 0; entry < link_books_.size(); ++entry) {
            const auto old = static_cast<std::uint16_t>(entry);
            const auto own = links_.for_copy(old, static_cast<std::uint16_t>(*sheets_[i].copy_of),
                                             static_cast<std::uint16_t>(number));
            if (own && *own != old) copy.links[old] = *own;
        }
        add_copied_names(i, copy);
    }
    links_.renumber(now);
}

void SheetReferences::add_copied_names(std::size_t sheet, Copy& copy) {
    const std::size_t scope = *sheets_[sheet].copy_of + 1;
    std::vector<std::string_view> names;
    for (std::size_t i = 0; i < old_names_.size(); ++i) {
        const std::string_view name = old_names_[i];
        if (name.size() <= kNameFlags || load_u16(name.data() + kNameSheet) != scope) continue;
        const std::size_t number = old_names_.size() + copied_name_count_ + names.size() + 1;
        if (number > kMostNames || !name_for_sheet(name, sheet, {})) continue;
        copy.names[static_cast<std::uint32_t>(i + 1)] = static_cast<std::uint32_t>(number);
        names.push_back(name);
    }
    const biff::TokenChanges changes = changes_for_copy(sheet);
    RecordWriter writer(copied_names_);
    for (const std::string_view name : names)
        writer.record(record::kName, *name_for_sheet(name, sheet, changes));
    copied_name_count_ += names.size();
}

biff::TokenChanges SheetReferences::changes_for_copy(std::size_t sheet) const {
    biff::TokenChanges changes;
    const auto found = copies_.find(sheet);
    if (found == copies_.end()) return changes;
    const Copy& copy = found->second;
    if (!copy.links.empty())
        changes.extern_sheet = [&copy](std::uint16_t entry) -> std::optional<std::uint16_t> {
            return replaced(copy.links, entry);
        };
    if (copy.names.empty()) return changes;
    changes.name = [&copy](std::uint32_t name) { return replaced(copy.names, name); };
    changes.extern_name = [this, &copy](std::uint16_t entry, std::uint32_t name) {
        const bool is_own = entry < link_books_.size() && own_book_ == link_books_[entry];
        return is_own ? replaced(copy.names, name) : name;
    };
    return changes;
}

void SheetReferences::before(const Record& record, std::string& globals) {
    const bool belongs_to_name = record.id == record::kName || record.id == record::kContinue ||
                                 record.id == record::kNameComment ||
                                 record.id == record::kNameGroup ||
                                 record.id == record::kNamePublished;
    if (copied_names_.empty() || names_ < old_names_.size() || belongs_to_name) return;
    globals += copied_names_;
    copied_names_.clear();
}

void SheetReferences::adjust(const Record& record, std::size_t position, std::string& globals) {
    if (!has_changed_) return;
    if (record.id == record::kContinue) {
        if (is_dropped_) globals.resize(position);
        return;
    }
    is_dropped_ = false;
    const std::size_t data = position + RecordStream::kHeaderBytes;
    if (record.id == record::kWindow1) adjust_window(globals, data, record.size());
    if (record.id == record::kSupBook && is_own_book(record))
        RecordWriter(globals).set_u16(data, static_cast<std::uint16_t>(sheets_.size()));
    if (record.id == record::kName) {
        ++names_;
        adjust_name(record, position, globals);
    }
    if (record.id == record::kExternSheet && !are_links_written_) {
        are_links_written_ = is_dropped_ = true;
        globals.resize(position);
        append_links(globals);
    }
}

void SheetReferences::append_links(std::string& globals) const {
    constexpr std::size_t kLinkBytes = 6;
    constexpr std::size_t kLinksBytes = kMaxRecordBytes / kLinkBytes * kLinkBytes; // uncut ones
    const std::string body = links_.body();
    std::string_view rest = body;
    RecordWriter writer(globals);
    std::uint16_t id = record::kExternSheet;
    std::size_t room = 2 + kLinksBytes;
    while (!rest.empty()) {
        writer.record(id, rest.substr(0, room));
        rest.remove_prefix(std::min(room, rest.size()));
        id = record::kContinue;
        room = kLinksBytes;
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

// A name of a removed sheet keeps its place, since formulas refer to names by number.
void SheetReferences::adjust_name(const Record& record, std::size_t position,
                                  std::string& globals) {
    if (record.size() <= kNameFlags) return;
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
    is_dropped_ = true;
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
