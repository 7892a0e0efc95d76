// SPDX-License-Identifier: Apache-2.0
#include "workbook/xls/writing/sheet_name_changes.h"

#include <algorithm>
#include <optional>

#include "foundation/case_folding.h"
#include "workbook/io/little_endian.h"
#include "workbook/xls/record_ids.h"
#include "workbook/xls/writing/record_writer.h"

namespace workbook {

namespace {

// The flags of a hyperlink (MS-OSHARED 2.3.7.1).
constexpr std::uint32_t kHasMoniker = 0x01, kHasPlace = 0x08, kHasText = 0x10, kHasFrame = 0x80;

constexpr char16_t kThisBook = 0x0002; ///< before the name of a sheet (MS-XLS 2.5.69 DConFile)

bool is_letter(char16_t c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

/// What could be read as a cell ("AB12", "R1C1") needs quotes. They are always allowed, so names of
/// fewer than four letters get them too.
bool needs_quotes(std::u16string_view name) {
    constexpr std::ptrdiff_t kFewestLetters = 4;
    const auto rest = std::find_if_not(name.begin(), name.end(), is_letter);
    return rest - name.begin() < kFewestLetters || !std::all_of(rest, name.end(), [](char16_t c) {
               return is_letter(c) || c == u'_' || (c >= u'0' && c <= u'9');
           });
}

std::u16string quoted(std::u16string_view name) {
    if (!needs_quotes(name)) return std::u16string(name);
    std::u16string result = u"'";
    for (const char16_t c : name)
        result.append(c == u'\'' ? 2 : 1, c);
    return result + u'\'';
}

/// The sheet of a place, without quotes; `end` is the position of the '!' after it.
std::optional<std::u16string> sheet_of(std::u16string_view place, std::size_t& end) {
    if (!place.starts_with(u'\'')) {
        end = place.rfind(u'!');
        if (end == place.npos) return {};
        return std::u16string(place.substr(0, end));
    }
    std::u16string name;
    for (std::size_t at = 1; at < place.size(); ++at) {
        if (place[at] != u'\'') {
            name += place[at];
        } else if (place.substr(at + 1).starts_with(u'\'')) {
            name += place[at++];
        } else {
            end = at + 1;
            if (place.substr(end).starts_with(u'!')) return name;
            return {};
        }
    }
    return {};
}

} // namespace

std::u16string renamed_place(std::u16string_view place, const SheetNameChanges& changes) {
    std::size_t end = 0;
    const auto sheet = sheet_of(place, end);
    const std::u16string* const name = sheet ? changes.find(*sheet) : nullptr;
    return name == nullptr ? std::u16string() : quoted(*name).append(place.substr(end));
}

void SheetNameChanges::set(std::u16string_view old_name, std::u16string_view new_name) {
    std::u16string key = foundation::unicode::fold_case(old_name);
    if (old_name == new_name)
        new_names_.erase(key);
    else
        new_names_.insert_or_assign(std::move(key), std::u16string(new_name));
}

const std::u16string* SheetNameChanges::find(std::u16string_view name) const {
    const auto found = new_names_.find(foundation::unicode::fold_case(name));
    return found == new_names_.end() ? nullptr : &found->second;
}

bool SheetNameChanges::apply(std::uint16_t id, std::string& data) const {
    constexpr std::size_t kAreaBytes = 6, kNameHeader = 3;
    if (empty()) return false;
    if (id == record::kHyperlink) return rename_in_hyperlink(data);
    if (id == record::kSourceArea) return rename_in_source(data, kAreaBytes);
    if (id != record::kSourceName || data.size() < kNameHeader) return false;
    const std::size_t width = (data[2] & 1) != 0 ? 2 : 1;
    return rename_in_source(data, kNameHeader + width * load_u16(data.data()));
}

bool SheetNameChanges::rename_in_hyperlink(std::string& data) const {
    constexpr std::size_t kFlags = 28, kStrings = 32;
    if (data.size() < kStrings) return false;
    const std::uint32_t flags = load_u32(data.data() + kFlags);
    if ((flags & kHasPlace) == 0 || (flags & kHasMoniker) != 0) return false; // another document
    std::size_t at = kStrings;
    std::size_t units = 0; // of the string at `at`, its null included
    const auto enter = [&] {
        if (data.size() - at < 4) return false;
        units = load_u32(data.data() + at);
        return units <= (data.size() - at - 4) / 2;
    };
    for (const std::uint32_t flag : {kHasText, kHasFrame}) {
        if ((flags & flag) == 0) continue;
        if (!enter()) return false;
        at += 4 + 2 * units;
    }
    if (!enter() || units == 0) return false;
    std::u16string place;
    for (std::size_t i = 0; i + 1 < units; ++i)
        place += static_cast<char16_t>(load_u16(data.data() + at + 4 + 2 * i));
    const std::u16string now = renamed_place(place, *this);
    std::string bytes;
    append_u32(bytes, static_cast<std::uint32_t>(now.size() + 1));
    for (const char16_t unit : now)
        append_u16(bytes, unit);
    append_u16(bytes, 0);
    const std::size_t old_bytes = 4 + 2 * units;
    if (now.empty() || data.size() - old_bytes + bytes.size() > kMaxRecordBytes) return false;
    data.replace(at, old_bytes, bytes);
    return true;
}

// A length, a string with a flag byte in front, and for a place in this book one unused character.
bool SheetNameChanges::rename_in_source(std::string& data, std::size_t file) const {
    constexpr std::size_t kHeader = 3;
    if (file + kHeader > data.size()) return false;
    const std::size_t units = load_u16(data.data() + file);
    const std::size_t width = (data[file + 2] & 1) != 0 ? 2 : 1;
    const std::size_t begin = file + kHeader;
    if (units < 2 || units > (data.size() - begin) / width) return false;
    std::u16string text;
    for (std::size_t i = 0; i < units; ++i)
        text += width == 2 ? static_cast<char16_t>(load_u16(data.data() + begin + 2 * i))
                           : static_cast<char16_t>(static_cast<unsigned char>(data[begin + i]));
    const std::u16string* const name =
        text.front() == kThisBook ? find(std::u16string_view(text).substr(1)) : nullptr;
    if (name == nullptr) return false;
    const std::u16string now = kThisBook + *name;
    const bool has_unused = data.size() > begin + width * units;
    data.resize(file);
    RecordWriter writer(data);
    writer.u16(static_cast<std::uint16_t>(now.size()));
    writer.characters(now);
    if (has_unused) data.append(is_compressible(now) ? 1 : 2, '\0');
    return true;
}

} // namespace workbook
