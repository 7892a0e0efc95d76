// SPDX-License-Identifier: Apache-2.0
//
// One pass over the globals; sheets are not looked at, except in BIFF4 workbooks.
#include "workbook/xls/reading/globals.h"

#include <string>
#include <unordered_set>
#include <utility>

#include "foundation/unicode.h"
#include "workbook/error.h"
#include "workbook/xls/record_ids.h"
#include "workbook/xls/xls_limits.h"

namespace workbook {

namespace {

class GlobalsReader {
  public:
    GlobalsReader(std::string_view stream, SubstreamStart start)
        : stream_(stream),
          start_(start),
          globals_(start.version),
          strings_(start.version, globals_.byte_text) {}

    XlsGlobals run() {
        const bool has_one_sheet = start_.kind == SubstreamKind::Sheet ||
                                   start_.kind == SubstreamKind::Macros ||
                                   start_.kind == SubstreamKind::Chart;
        if (has_one_sheet) globals_.sheets.push_back(only_sheet(start_.kind));
        read_substream();
        if (start_.version == BiffVersion::Biff4 && !has_one_sheet)
            for (XlsSheetEntry& sheet : globals_.sheets)
                read_globals_of(sheet);
        drop_repeated_sheets();
        globals_.formats.finish();
        globals_.names.finish();
        return std::move(globals_);
    }

  private:
    void read_substream() {
        RecordStream records(stream_, 0);
        records.next(); // BOF
        for (int depth = 1; depth > 0 && records.next();) {
            const Record& record = records.record();
            if (record.id == record::kEof)
                --depth;
            else if (read_bof(record))
                enter(depth, record);
            else if (depth == 1)
                read_record(records);
        }
    }

    static void enter(int& depth, const Record& record) {
        if (++depth > kMaxSubstreamDepth) refuse_record(record, "substreams are nested too deeply");
    }

    void read_record(RecordStream& records) {
        const Record& record = records.record();
        switch (record.id) {
        case record::kBoundSheet:
            // BIFF4 has names only, and says more where the sheets are.
            if (start_.version >= BiffVersion::Biff5)
                add_sheet(read_bound_sheet(records, strings_));
            return;
        case record::kSheetHeader4:
            if (start_.version == BiffVersion::Biff4)
                add_sheet(read_sheet_header(records, strings_));
            return;
        case record::kSst:
            globals_.shared_strings = record.position;
            return;
        case record::kDate1904:
            if (record.size() >= 2) globals_.date_1904 = record.u16(0) != 0;
            return;
        case record::kCodePage:
            if (record.size() >= 2) globals_.byte_text.set_code_page(record.u16(0));
            return;
        case record::kFont2:
            read_font(record);
            return;
        default:
            if (!globals_.formats.read(records, strings_)) globals_.names.read(records, strings_);
        }
    }

    void add_sheet(XlsSheetEntry entry) {
        if (globals_.sheets.size() == kMaxXlsSheets)
            throw Error::limit("the workbook stream",
                               "more than " + std::to_string(kMaxXlsSheets) + " sheets");
        globals_.sheets.push_back(std::move(entry));
    }

    /// A sheet that several entries refer to would be read once for each of them.
    void drop_repeated_sheets() {
        std::unordered_set<std::size_t> positions;
        for (XlsSheetEntry& sheet : globals_.sheets) {
            if (!sheet.has_cells || sheet.kind != SheetKind::Worksheet) continue;
            if (positions.insert(sheet.position).second) continue;
            sheet.has_cells = false;
            globals_.warnings.push_back(
                "sheet \"" + foundation::unicode::to_utf8(sheet.name) +
                "\" is read as empty: its cells are those of another sheet");
        }
    }

    void read_font(const Record& record) {
        constexpr std::size_t kCharset = 12;
        if (has_font_ || start_.version != BiffVersion::Biff5 || record.size() <= kCharset) return;
        has_font_ = true;
        globals_.byte_text.set_font_charset(record.u8(kCharset));
    }

    /// In BIFF4 each sheet of a workbook has what a book of one sheet has.
    void read_globals_of(XlsSheetEntry& sheet) {
        globals_.formats.begin_sheet();
        RecordStream records(stream_, sheet.position);
        if (!records.next()) return;
        const std::optional<SubstreamStart> start = read_bof(records.record());
        if (!start) return;
        if (start->kind == SubstreamKind::Chart) sheet.kind = SheetKind::Chart;
        while (records.next() && records.record().id != record::kEof)
            read_record_of_sheet(records);
        sheet.first_format = globals_.formats.first_format();
    }

    void read_record_of_sheet(RecordStream& records) {
        const std::uint16_t id = records.record().id;
        if (id == record::kDate1904 || id == record::kCodePage)
            read_record(records);
        else
            globals_.formats.read(records, strings_);
    }

    const std::string_view stream_;
    const SubstreamStart start_;
    XlsGlobals globals_;
    RecordStrings strings_;
    bool has_font_ = false;
};

} // namespace

XlsGlobals read_globals(std::string_view stream) {
    RecordStream records(stream, 0);
    if (!records.next()) throw Error::damaged("the workbook stream", "it is empty");
    const std::optional<SubstreamStart> start = read_bof(records.record());
    if (!start) refuse_record(records.record(), "it does not begin with a BOF record");
    return GlobalsReader(stream, *start).run();
}

} // namespace workbook
