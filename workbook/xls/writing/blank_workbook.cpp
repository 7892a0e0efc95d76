// SPDX-License-Identifier: Apache-2.0
#include "workbook/xls/writing/blank_workbook.h"

#include <cstdint>

#include "workbook/xls/record_ids.h"
#include "workbook/xls/writing/record_writer.h"

namespace workbook {

namespace {

// Substreams (MS-XLS 2.4.21 BOF).
constexpr std::uint16_t kGlobals = 0x0005, kWorksheet = 0x0010;

constexpr int kFonts = 4;         ///< index 4 does not exist (MS-XLS 2.5.129 FontIndex)
constexpr int kStyleFormats = 15; ///< of the normal style and outline levels, before those of cells

void write_bof(RecordWriter& writer, std::uint16_t kind) {
    constexpr std::uint16_t kVersion = 0x0600, kBuild = 3515, kYear = 1996;
    constexpr std::uint32_t kHistory = 0x000000C1, kLowestVersion = 0x00000006;
    writer.begin(record::kBof);
    for (const std::uint16_t value : {kVersion, kind, kBuild, kYear})
        writer.u16(value);
    writer.u32(kHistory);
    writer.u32(kLowestVersion);
    writer.end();
}

void write_u16(RecordWriter& writer, std::uint16_t id, std::uint16_t value) {
    writer.begin(id);
    writer.u16(value);
    writer.end();
}

void write_window(RecordWriter& writer) {
    constexpr std::uint16_t kWidth = 0x3A98, kHeight = 0x2328, kOptions = 0x0038, kTabRatio = 600;
    writer.begin(record::kWindow1);
    const std::uint16_t values[] = {0, 0, kWidth, kHeight, kOptions, 0, 0, 1, kTabRatio};
    for (const std::uint16_t value : values)
        writer.u16(value);
    writer.end();
}

void write_font(RecordWriter& writer) {
    constexpr std::uint16_t kHeightTwips = 200, kAutomaticColor = 0x7FFF, kNormalWeight = 400;
    constexpr std::u16string_view kName = u"Arial";
    writer.begin(record::kFont);
    const std::uint16_t values[] = {kHeightTwips, 0, kAutomaticColor, kNormalWeight, 0, 0, 0};
    for (const std::uint16_t value : values)
        writer.u16(value);
    writer.u8(static_cast<std::uint8_t>(kName.size()));
    writer.characters(kName);
    writer.end();
}

/// An XF record (MS-XLS 2.4.353) without borders and fill.
void write_format(RecordWriter& writer, std::uint16_t parent, std::uint16_t unused_attributes) {
    constexpr std::uint16_t kBottomAligned = 0x0020, kDefaultColors = 0x20C0;
    writer.begin(record::kXf);
    const std::uint16_t values[] = {0, 0, parent, kBottomAligned, unused_attributes, 0,
                                    0, 0, 0,      kDefaultColors};
    for (const std::uint16_t value : values)
        writer.u16(value);
    writer.end();
}

void write_formats(RecordWriter& writer) {
    constexpr std::uint16_t kStyle = 0xFFF5, kCell = 0x0001, kInherited = 0xF400;
    for (int i = 0; i < kStyleFormats; ++i)
        write_format(writer, kStyle, i == 0 ? 0 : kInherited);
    write_format(writer, kCell, 0);
    // The normal style.
    constexpr std::uint16_t kBuiltIn = 0x8000, kNormal = 0xFF00;
    writer.begin(record::kStyle);
    writer.u16(kBuiltIn);
    writer.u16(kNormal);
    writer.end();
}

} // namespace

std::string blank_globals() {
    constexpr std::uint16_t kUnicode = 1200;
    std::string stream;
    RecordWriter writer(stream);
    write_bof(writer, kGlobals);
    write_u16(writer, record::kCodePage, kUnicode);
    write_window(writer);
    write_u16(writer, record::kDate1904, 0);
    write_u16(writer, record::kPrecision, 1);
    for (int i = 0; i < kFonts; ++i)
        write_font(writer);
    write_formats(writer);
    writer.record(record::kEof, {});
    return stream;
}

std::string blank_sheet(bool is_selected) {
    constexpr std::uint16_t kRowHeightTwips = 255, kOptions = 0x04C1, kColumnWidth = 8;
    constexpr std::uint16_t kShown = 0x00B6, kSelected = 0x0600, kGridColor = 64;
    std::string stream;
    RecordWriter writer(stream);
    write_bof(writer, kWorksheet);
    writer.begin(record::kDefaultRowHeight);
    writer.u16(0);
    writer.u16(kRowHeightTwips);
    writer.end();
    write_u16(writer, record::kSheetOptions, kOptions);
    write_u16(writer, record::kDefColWidth, kColumnWidth);
    writer.record(record::kDimensions, std::string(14, '\0'));
    writer.begin(record::kWindow2);
    const std::uint16_t options = is_selected ? kShown | kSelected : kShown;
    const std::uint16_t values[] = {options, 0, 0, kGridColor, 0, 0, 0, 0, 0};
    for (const std::uint16_t value : values)
        writer.u16(value);
    writer.end();
    writer.record(record::kEof, {});
    return stream;
}

} // namespace workbook
