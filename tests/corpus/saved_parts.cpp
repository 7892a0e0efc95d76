// SPDX-License-Identifier: Apache-2.0
#include "tests/corpus/saved_parts.h"

#include <algorithm>
#include <array>
#include <exception>
#include <memory>

#include "foundation/files.h"
#include "foundation/unicode.h"
#include "workbook/opc/opc_package.h"
#include "workbook/opc/part_name.h"
#include "workbook/xls/reading/workbook_stream.h"
#include "workbook/xls/record_ids.h"
#include "workbook/xls/record_stream.h"

namespace corpus {
namespace {

namespace record = workbook::record;
using workbook::Record;
using workbook::RecordStream;

// Records with positions of other records (MS-XLS 2.4.144 Index, 2.4.107 ExtSST), and the one that
// makes applications compute all formulas (2.4.215 RecalcId).
constexpr record::Id kIndex = 0x020B, kExtSst = 0x00FF, kRecalcId = 0x01C1;
/// Records of the cells and what describes where they are.
constexpr std::array<record::Id, 18> kCellRecords = {
    kIndex,           record::kRow,      0x00D7 /* DBCELL */, 0x0200 /* DIMENSIONS */,
    record::kBlank,   record::kNumber,   record::kLabel,      record::kBoolErr,
    record::kFormula, record::kString,   record::kRk,         record::kMulRk,
    record::kRString, record::kMulBlank, record::kLabelSst,   record::kArray,
    record::kShrFmla, record::kTable};

std::string read_whole(workbook::ByteSource& source) {
    std::string text, block(64u << 10, '\0');
    while (const std::size_t count = source.read(block.data(), block.size()))
        text.append(block, 0, count);
    return text;
}

Parts package_parts(workbook::ZipArchive archive) {
    Parts parts;
    for (const workbook::ZipEntry& entry : archive.entries()) {
        parts.order.push_back(entry.name);
        const std::string name = workbook::canonical_part_name(entry.name);
        if (archive.find(name) != &entry) continue; // a second entry of the name, or a folder
        try {
            parts.content[name] = read_whole(*archive.open(entry));
        } catch (const std::exception& damage) {
            parts.content[name] = damage.what(); // damaged in the original: it must stay as it is
        }
    }
    return parts;
}

void append_record(std::string& text, const Record& record, std::size_t first_byte) {
    text += static_cast<char>(record.id & 0xFF);
    text += static_cast<char>(record.id >> 8);
    text += record.data.substr(std::min(first_byte, record.size()));
}

constexpr bool is_cell_record(record::Id id) {
    return std::find(kCellRecords.begin(), kCellRecords.end(), id) != kCellRecords.end();
}

/// The substreams of a book by the position of their first record.
std::map<std::size_t, std::string> substream_names(std::string_view stream) {
    std::map<std::size_t, std::string> names = {{0, "globals"}};
    RecordStream records(stream, 0);
    while (records.next() && records.record().id != record::kEof)
        if (records.record().id == record::kBoundSheet)
            names.emplace(records.record().u32(0), "sheet " + std::to_string(names.size()));
    return names;
}

/// Adds the globals, each sheet, and each sheet's records around its cells.
void add_substreams(Parts& parts, std::string_view stream) {
    for (const auto& [position, name] : substream_names(stream)) {
        RecordStream records(stream, position);
        int depth = 0;
        bool is_among_cells = false;
        while (records.next()) {
            const Record& record = records.record();
            depth += record::is_bof(record.id) ? 1 : 0;
            // A sheet's position is the first field of its BOUNDSHEET record.
            if (record.id != kIndex && record.id != kExtSst && record.id != kRecalcId)
                append_record(parts.content[name], record,
                              record.id == record::kBoundSheet ? 4 : 0);
            if (record.id != record::kContinue) // which belongs to the record before it
                is_among_cells = is_cell_record(record.id);
            if (position != 0 && !(depth == 1 && is_among_cells))
                append_record(parts.content["around the cells of " + name], record, 0);
            if (record.id == record::kEof && --depth == 0) break;
        }
    }
}

Parts book_parts(workbook::WorkbookStream book) {
    Parts parts;
    const bool has_substreams = workbook::load_u16(book.bytes.data()) == record::kBof;
    if (has_substreams)
        add_substreams(parts, book.bytes);
    else
        parts.content["sheet 1"] = book.bytes;
    if (!book.container) return parts;
    for (const workbook::CompoundEntry& entry : book.container->entries()) {
        const std::string name = foundation::unicode::to_utf8(entry.name);
        parts.order.push_back(name);
        if (entry.kind != workbook::EntryKind::Stream) continue;
        if (entry.parent == 0 && entry.name == book.name) continue;
        try {
            parts.content[std::to_string(parts.order.size()) + " " + name] =
                book.container->read_stream(entry);
        } catch (const std::exception& damage) {
            parts.content[std::to_string(parts.order.size()) + " " + name] = damage.what();
        }
    }
    return parts;
}

} // namespace

Parts read_parts(const std::u16string& path) {
    auto file = foundation::files::open_for_reading(path);
    std::array<char, 2> start{};
    file->read_at(0, start.data(), start.size());
    if (start == std::array{'P', 'K'}) return package_parts(workbook::ZipArchive(std::move(file)));
    return book_parts(workbook::read_workbook_stream(std::move(file)));
}

bool may_follow_a_number(std::string_view part) {
    return part == "[content_types].xml" || part.ends_with("calcchain.xml") ||
           part.ends_with("workbook.xml") || part.ends_with("workbook.xml.rels") ||
           part.ends_with("book.xml") || part.ends_with("book.xml.rels");
}

} // namespace corpus
