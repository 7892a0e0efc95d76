// SPDX-License-Identifier: Apache-2.0
#include "workbook/xls/writing/globals_rewriter.h"

#include <algorithm>
#include <utility>

#include "workbook/error.h"
#include "workbook/io/little_endian.h"
#include "workbook/xls/record_ids.h"
#include "workbook/xls/record_stream.h"
#include "workbook/xls/writing/drawing_group.h"
#include "workbook/xls/writing/format_records_writer.h"
#include "workbook/xls/writing/record_writer.h"
#include "workbook/xls/writing/shared_strings_writer.h"
#include "workbook/xls/writing/sheet_name_changes.h"
#include "workbook/xls/writing/sheet_references.h"

namespace workbook {

namespace {

constexpr std::size_t kBoundSheetName = 6; ///< after position, state and type

class GlobalsWriter {
  public:
    explicit GlobalsWriter(const GlobalsRewrite& globals)
        : globals_(globals), references_(globals.references), writer_(written_.bytes) {}

    WrittenGlobals run() {
        find_bound_sheets();
        written_.sheet_positions.resize(globals_.sheets.size());
        RecordStream records(globals_.stream, 0);
        int depth = 0;
        while (records.next()) {
            const Record& record = records.record();
            if (record.id == record::kBof) ++depth;
            if (is_biff8()) references_.before(record, written_.bytes);
            if (record.id == record::kEof && --depth == 0) {
                end_formats();
                write_bound_sheets();
                write_strings();
                writer_.record(record::kEof, {});
                return std::move(written_);
            }
            if (depth == 1)
                write(record);
            else
                copy(record);
        }
        throw Error::damaged("the workbook stream", "its globals have no end");
    }

  private:
    bool is_biff8() const { return globals_.version == BiffVersion::Biff8; }

    void copy(const Record& record) {
        last_copied_ = written_.bytes.size();
        written_.bytes.append(
            globals_.stream.substr(record.position, RecordStream::kHeaderBytes + record.size()));
    }

    void find_bound_sheets() {
        RecordStream records(globals_.stream, 0);
        while (records.next() && records.record().id != record::kEof)
            if (records.record().id == record::kBoundSheet)
                bound_sheets_.push_back(records.record().data);
    }

    void write(const Record& record) {
        if (record.id == record::kContinue && is_dropped_) return;
        is_dropped_ = false;
        if (record.id != record::kXf) end_formats();
        switch (record.id) {
        case record::kXf:
            copy(record);
            has_formats_ = true;
            return;
        case record::kXfCrc:
            write_format_checksum(record);
            return;
        case record::kBoundSheet:
            write_bound_sheets();
            return;
        case record::kTabId:
            write_sheet_ids(record);
            return;
        case record::kDate1904:
            write_date_system(record);
            return;
        case record::kRecalcId:
            write_recalculation(record);
            return;
        case record::kSst:
            write_bound_sheets();
            write_strings();
            is_dropped_ = true;
            return;
        case record::kExtSst:
            is_dropped_ = true;
            return;
        case record::kDrawingGroup:
            write_drawing_group(record);
            return;
        case record::kSourceArea:
        case record::kSourceName:
            write_source(record);
            return;
        default:
            copy(record);
            if (is_biff8()) references_.adjust(record, last_copied_, written_.bytes);
        }
    }

    // --- Sheets

    void write_bound_sheets() {
        if (has_bound_sheets_) return;
        has_bound_sheets_ = true;
        has_formats_ = true; // a book without any gets its first ones here
        end_formats();
        for (std::size_t i = 0; i < globals_.sheets.size(); ++i)
            write_bound_sheet(globals_.sheets[i], written_.sheet_positions[i]);
    }

    void write_bound_sheet(const PlannedSheet& sheet, std::size_t& position) {
        const auto source = sheet.original ? sheet.original : sheet.copy_of;
        std::string_view old;
        if (source && *source < bound_sheets_.size()) old = bound_sheets_[*source];
        writer_.begin(record::kBoundSheet);
        position = writer_.position();
        writer_.u32(0);
        const auto state = static_cast<std::uint8_t>(sheet.state);
        // The upper bits of the state are not defined; they stay.
        writer_.u8(
            old.size() < kBoundSheetName
                ? state
                : static_cast<std::uint8_t>((static_cast<std::uint8_t>(old[4]) & ~3u) | state));
        writer_.u8(old.size() < kBoundSheetName ? std::uint8_t{0}
                                                : static_cast<std::uint8_t>(old[5]));
        if (old.size() > kBoundSheetName && sheet.original && !sheet.is_renamed) {
            writer_.bytes(old.substr(kBoundSheetName));
        } else {
            writer_.u8(static_cast<std::uint8_t>(sheet.name.size()));
            writer_.characters(sheet.name);
        }
        writer_.end();
    }

    /// Numbers that sheets keep when they move (MS-XLS 2.4.300 RRTabId).
    void write_sheet_ids(const Record& record) {
        if (!references_.has_changed()) {
            copy(record);
            return;
        }
        std::vector<std::uint16_t> old(record.size() / 2);
        std::uint16_t highest = 0;
        for (std::size_t i = 0; i < old.size(); ++i) {
            old[i] = record.u16(2 * i);
            highest = std::max(highest, old[i]);
        }
        writer_.begin(record::kTabId);
        for (const PlannedSheet& sheet : globals_.sheets) {
            if (writer_.room() < 2) break; // more than anybody looks at
            const bool is_known = sheet.original && *sheet.original < old.size();
            writer_.u16(is_known ? old[*sheet.original] : ++highest);
        }
        writer_.end();
    }

    /// Where the cells of a pivot table come from.
    void write_source(const Record& record) {
        std::string data(record.data);
        if (is_biff8() && globals_.names.apply(record.id, data))
            writer_.record(record.id, data);
        else
            copy(record);
    }

    void write_drawing_group(const Record& record) {
        if (!globals_.drawings.has_changed()) {
            copy(record);
            return;
        }
        is_dropped_ = true; // with those after it
        if (std::exchange(has_drawing_group_, true)) return;
        const std::string data = globals_.drawings.data();
        int records = 0;
        for (std::size_t at = 0; at < data.size(); at += kMaxRecordBytes) {
            // Applications write two of these before they go on in CONTINUE records.
            const record::Id id = records++ < 2 ? record::kDrawingGroup : record::kContinue;
            writer_.record(id, std::string_view(data).substr(at, kMaxRecordBytes));
        }
    }

    // --- Formats, strings, settings

    /// After the last XF record.
    void end_formats() {
        if (!has_formats_ || are_formats_written_) return;
        are_formats_written_ = true;
        for (std::size_t i = globals_.first_new_format; i < globals_.formats_end; ++i)
            append_cell_format(globals_.formats[i], globals_.version, written_.bytes);
    }

    void write_format_checksum(const Record& record) {
        copy(record);
        if (globals_.formats_end > globals_.first_new_format)
            update_format_checksum(written_.bytes, last_copied_);
    }

    void write_strings() {
        if (has_strings_ || !is_biff8()) return;
        has_strings_ = true;
        if (!globals_.old_strings && globals_.added_strings.size() == 0) return;
        write_shared_strings(globals_.stream, globals_.old_strings, globals_.added_strings,
                             globals_.added_uses, written_.bytes);
    }

    void write_date_system(const Record& record) {
        copy(record);
        if (globals_.date_1904 && record.size() >= 2)
            writer_.set_u16(last_copied_ + RecordStream::kHeaderBytes, *globals_.date_1904 ? 1 : 0);
    }

    /// An engine of another version computed the results, so applications compute them again
    /// (MS-XLS 2.4.215 RecalcId).
    void write_recalculation(const Record& record) {
        copy(record);
        if (globals_.has_changed_cells && record.size() >= 8)
            writer_.set_u32(last_copied_ + RecordStream::kHeaderBytes + 4, 0);
    }

    const GlobalsRewrite& globals_;
    SheetReferences& references_;
    WrittenGlobals written_;
    RecordWriter writer_;
    std::vector<std::string_view> bound_sheets_; ///< data of the old records
    std::size_t last_copied_ = 0; ///< header of the last copied record in the new globals
    bool is_dropped_ = false;     ///< the last record, with what continues it
    bool has_formats_ = false, are_formats_written_ = false;
    bool has_bound_sheets_ = false, has_strings_ = false, has_drawing_group_ = false;
};

} // namespace

WrittenGlobals rewrite_globals(const GlobalsRewrite& globals) {
    return GlobalsWriter(globals).run();
}

} // namespace workbook
