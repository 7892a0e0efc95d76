// SPDX-License-Identifier: Apache-2.0
//
// Entries of the three kinds of sheet lists.
#include "workbook/xls/reading/sheet_list.h"

#include "foundation/unicode.h"

namespace workbook {

namespace {

constexpr std::uint8_t kChartSheet = 2, kModule = 6;

SheetState state_of(std::uint8_t field) {
    switch (field & 0x03) {
    case 1:
        return SheetState::Hidden;
    case 2:
        return SheetState::VeryHidden;
    default:
        return SheetState::Visible;
    }
}

} // namespace

XlsSheetEntry read_bound_sheet(RecordStream& records, RecordStrings& strings) {
    require_size(records.record(), 7, "a BOUNDSHEET record");
    ContinuedRecord record(records);
    XlsSheetEntry entry;
    entry.position = record.u32();
    entry.state = state_of(record.u8());
    const std::uint8_t type = record.u8();
    if (type == kChartSheet) entry.kind = SheetKind::Chart;
    entry.has_cells = type != kModule;
    entry.name = foundation::unicode::to_utf16(strings.read(record, LengthField::OneByte));
    return entry;
}

XlsSheetEntry read_sheet_header(RecordStream& records, RecordStrings& strings) {
    const Record header = records.record();
    require_size(header, 5, "the header of a sheet");
    ContinuedRecord record(records);
    record.u32(); // bytes of the sheet
    XlsSheetEntry entry;
    entry.name = foundation::unicode::to_utf16(strings.read(record, LengthField::OneByte));
    entry.position = header.position + RecordStream::kHeaderBytes + header.size();
    return entry;
}

XlsSheetEntry only_sheet(SubstreamKind kind) {
    XlsSheetEntry entry;
    entry.name = u"Sheet1";
    if (kind == SubstreamKind::Chart) entry.kind = SheetKind::Chart;
    return entry;
}

} // namespace workbook
