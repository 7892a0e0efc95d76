// SPDX-License-Identifier: Apache-2.0
//
// A formula that is one rectangle is one token: PtgRef, PtgArea or their 3-D forms, in one of three
// classes (MS-XLS 2.5.198).
#include "workbook/xls/reading/name_records.h"

#include <algorithm>

#include "foundation/unicode.h"
#include "workbook/xls/record_ids.h"
#include "workbook/xls/xls_limits.h"

namespace workbook {

namespace {

constexpr std::uint16_t kBuiltIn = 0x0020;

/// MS-XLS 2.4.150, by the one character that such a name has.
constexpr std::u16string_view kBuiltInNames[] = {
    u"Consolidate_Area", u"Auto_Open",       u"Auto_Close",   u"Extract",        u"Database",
    u"Criteria",         u"Print_Area",      u"Print_Titles", u"Recorder",       u"Data_Form",
    u"Auto_Activate",    u"Auto_Deactivate", u"Sheet_Title",  u"_FilterDatabase"};

std::u16string full_name(std::u16string name, bool is_built_in) {
    if (!is_built_in || name.size() != 1 || name.front() >= std::size(kBuiltInNames)) return name;
    return std::u16string(u"_xlnm.").append(kBuiltInNames[name.front()]);
}

/// The fields before the name.
struct NameHeader {
    bool is_built_in = false;
    std::size_t name_length = 0;
    std::size_t formula_bytes = 0;
    std::uint16_t scope_number = 0; ///< of the sheet, from 1; 0 for the book
};

NameHeader read_header(ContinuedRecord& record, BiffVersion version) {
    NameHeader header;
    if (version == BiffVersion::Biff2) {
        record.u16(); // flags
        record.u8();  // keyboard shortcut
        header.name_length = record.u8();
        header.formula_bytes = record.u8();
        return header;
    }
    header.is_built_in = (record.u16() & kBuiltIn) != 0;
    record.u8(); // keyboard shortcut
    header.name_length = record.u8();
    header.formula_bytes = record.u16();
    if (version >= BiffVersion::Biff5) {
        record.u16();
        header.scope_number = record.u16();
        record.u32(); // lengths of the strings for menus and help
    }
    return header;
}

enum class Token { Other, Reference, Area, Reference3d, Area3d };

Token token_of(char byte) {
    switch (static_cast<unsigned char>(byte) & 0x9F) { // without the two bits of the class
    case 0x04:
        return Token::Reference;
    case 0x05:
        return Token::Area;
    case 0x1A:
        return Token::Reference3d;
    case 0x1B:
        return Token::Area3d;
    default:
        return Token::Other;
    }
}

/// Reads the corners that a token ends with: rows, then columns.
Rectangle corners(std::string_view bytes, bool is_area, BiffVersion version) {
    const bool is_biff8 = version == BiffVersion::Biff8;
    const std::uint16_t row_mask = is_biff8 ? 0xFFFF : 0x3FFF; // the rest says "relative"
    const std::size_t rows = is_area ? 2 : 1;
    const auto row = [&](std::size_t i) { return load_u16(bytes.data() + 2 * i) & row_mask; };
    const auto column = [&](std::size_t i) {
        const std::size_t at = 2 * rows + i * (is_biff8 ? 2 : 1);
        return static_cast<int>(static_cast<unsigned char>(bytes[at]));
    };
    const std::size_t last = rows - 1;
    return {std::min(row(0), row(last)), std::max(row(0), row(last)),
            std::min(column(0), column(last)), std::max(column(0), column(last))};
}

} // namespace

bool NameRecords::read(RecordStream& records, RecordStrings& strings) {
    const Record& record = records.record();
    switch (record.id) {
    case record::kName:
    case record::kName3:
        read_name(records, strings);
        return true;
    case record::kExternSheet:
        if (version_ == BiffVersion::Biff8) read_links(records);
        return true;
    case record::kSupBook: {
        constexpr std::size_t kOwnBookBytes = 4;
        constexpr std::uint16_t kOwnBook = 0x0401;
        is_own_book_.push_back(record.size() == kOwnBookBytes && record.u16(2) == kOwnBook);
        return true;
    }
    default:
        return false;
    }
}

void NameRecords::read_name(RecordStream& records, RecordStrings& strings) {
    const std::size_t header_bytes = version_ >= BiffVersion::Biff5 ? 14 : 6;
    if (records.record().size() <= header_bytes) {
        names_.emplace_back(); // formulas have the numbers of names
        return;
    }
    ContinuedRecord record(records);
    const NameHeader header = read_header(record, version_);
    XlsName name;
    name.name = full_name(
        foundation::unicode::to_utf16(strings.read_characters(record, header.name_length)),
        header.is_built_in);
    if (header.scope_number > 0) name.scope = header.scope_number - 1;
    // Only formulas in one piece are short enough to be a rectangle.
    if (header.formula_bytes > 0 && header.formula_bytes <= record.rest().size())
        parse_formula(record.rest().substr(0, header.formula_bytes), name);
    names_.push_back(std::move(name));
}

void NameRecords::parse_formula(std::string_view tokens, XlsName& name) const {
    const Token token = token_of(tokens.front());
    if (token == Token::Other) return;
    const bool is_area = token == Token::Area || token == Token::Area3d;
    const bool is_3d = token == Token::Reference3d || token == Token::Area3d;
    const bool is_biff8 = version_ == BiffVersion::Biff8;
    // BIFF8 names a reference to a sheet; BIFF5 has eight unused bytes, then first and last sheet.
    const std::size_t prefix = !is_3d ? 0 : is_biff8 ? 2 : 14;
    const std::size_t corner_bytes = std::size_t{is_area ? 2u : 1u} * (is_biff8 ? 4 : 3);
    if (tokens.size() != 1 + prefix + corner_bytes) return;
    tokens.remove_prefix(1);
    if (is_3d && is_biff8) {
        name.link = load_u16(tokens.data());
    } else if (is_3d) {
        const bool is_own_book = (load_u16(tokens.data()) & 0x8000) != 0;
        const std::uint16_t first = load_u16(tokens.data() + 10);
        if (!is_own_book || first != load_u16(tokens.data() + 12)) return;
        name.sheet = first;
    }
    name.cells = corners(tokens.substr(prefix), is_area, version_);
}

void NameRecords::read_links(RecordStream& records) {
    ContinuedRecord record(records);
    if (record.at_end()) return;
    const std::size_t count = record.u16();
    constexpr std::size_t kLinkBytes = 6;
    while (links_.size() < count && record.rest().size() >= kLinkBytes) {
        SheetSpan link{};
        link.book = record.u16();
        link.first = record.u16();
        link.last = record.u16();
        links_.push_back(link);
        if (record.rest().empty()) record.at_end();
    }
}

void NameRecords::finish() {
    for (XlsName& name : names_) {
        if (!name.link) continue;
        const bool is_known = *name.link < links_.size();
        const SheetSpan link = is_known ? links_[*name.link] : SheetSpan{};
        const bool is_one_sheet = is_known && link.book < is_own_book_.size() &&
                                  is_own_book_[link.book] && link.first == link.last;
        if (is_one_sheet)
            name.sheet = link.first;
        else
            name.cells.reset();
    }
}

const XlsName* NameRecords::find(std::u16string_view name, std::optional<int> scope) const {
    const auto found = std::find_if(names_.begin(), names_.end(), [&](const XlsName& candidate) {
        return candidate.scope == scope &&
               foundation::unicode::equal_ignoring_case(candidate.name, name);
    });
    return found == names_.end() ? nullptr : &*found;
}

std::optional<Rectangle> NameRecords::find(std::u16string_view name, int sheet) const {
    const XlsName* found = find(name, std::optional<int>(sheet));
    if (found == nullptr) found = find(name, std::nullopt);
    if (found == nullptr || !found->cells) return std::nullopt;
    // Without a sheet, cells of the sheet whose name it is; books of one sheet have no scopes.
    const bool is_own = found->scope == sheet || version_ < BiffVersion::Biff5;
    const bool is_here = found->sheet ? *found->sheet == sheet : is_own;
    return is_here ? found->cells : std::nullopt;
}

} // namespace workbook
