// SPDX-License-Identifier: Apache-2.0
//
// SUPBOOK records come before EXTERNSHEET, which numbers them; each has its EXTERNNAME records
// after it.
#include "workbook/xls/reading/formula_context_reader.h"

#include <algorithm>
#include <string>
#include <utility>

#include "foundation/unicode.h"
#include "workbook/error.h"
#include "workbook/xls/reading/continued_record.h"
#include "workbook/xls/reading/record_strings.h"
#include "workbook/xls/record_ids.h"
#include "workbook/xls/xls_limits.h"

namespace workbook {

namespace {

using biff::SupportingBook;

/// All books together; more are left without names.
constexpr std::size_t kMaxLinkedNames = 1'000'000;

/// What is left of an encoded path (MS-XLS 2.5.277 VirtualPath) after its last folder. Numbers
/// below 9 stand for drives and folders.
std::string file_name(const std::string& path) {
    const auto is_separator = [](char c) {
        return (c >= 0 && c <= 8) || c == '\\' || c == '/' || c == ':';
    };
    const auto last = std::find_if(path.rbegin(), path.rend(), is_separator);
    return {last.base(), path.end()};
}

class ContextReader {
  public:
    ContextReader(std::string_view stream, const XlsGlobals& globals)
        : records_(stream, 0), strings_(BiffVersion::Biff8, byte_text_) {
        for (const XlsSheetEntry& sheet : globals.sheets)
            context_.sheets.push_back(foundation::unicode::to_utf8(sheet.name));
        for (const XlsName& name : globals.names.names()) {
            biff::FormulaName known{foundation::unicode::to_utf8(name.name), {}};
            if (name.scope) known.scope = static_cast<std::size_t>(*name.scope);
            context_.names.push_back(std::move(known));
        }
    }

    biff::FormulaContext run() {
        records_.next(); // BOF
        for (int depth = 1; depth > 0 && records_.next();) {
            const Record& record = records_.record();
            if (record.id == record::kEof)
                --depth;
            else if (record::is_bof(record.id))
                enter(depth, record);
            else if (depth == 1)
                read_record(record);
        }
        return std::move(context_);
    }

  private:
    static void enter(int& depth, const Record& record) {
        if (++depth > kMaxSubstreamDepth) refuse_record(record, "substreams are nested too deeply");
    }

    void read_record(const Record& record) {
        if (record.id == record::kExternSheet) {
            std::string body(record.data);
            while (records_.next_id() == record::kContinue && records_.next())
                body += records_.record().data;
            context_.entries = biff::ExternSheets(body, 0);
        } else if (record.id == record::kSupBook) {
            context_.books.emplace_back();
            try {
                read_book(record, context_.books.back());
            } catch (const Error&) {
                context_.books.back() = {};
            }
        } else if (record.id == record::kExternName && !context_.books.empty() && is_room()) {
            context_.books.back().names.push_back(extern_name(record));
        }
    }

    bool is_room() { return ++linked_names_ <= kMaxLinkedNames; }

    void read_book(const Record& first, SupportingBook& book) {
        constexpr std::size_t kShortBytes = 4;
        constexpr std::uint16_t kOwn = 0x0401, kAddIn = 0x3A01;
        if (first.size() < kShortBytes) return;
        const std::size_t sheet_count = first.u16(0);
        const std::uint16_t length = first.u16(2);
        if (first.size() == kShortBytes && (length == kOwn || length == kAddIn)) {
            book.kind = length == kOwn ? SupportingBook::Kind::Own : SupportingBook::Kind::AddIn;
            return;
        }
        if (sheet_count == 0) return; // a link to another program
        ContinuedRecord record(records_);
        record.advance(kShortBytes);
        book.file = file_name(strings_.read_unicode(record, length));
        while (book.sheets.size() < sheet_count && !record.at_end() && is_room())
            book.sheets.push_back(strings_.read(record, LengthField::TwoBytes));
        book.kind = SupportingBook::Kind::Other;
    }

    /// Of a function of an add-in or a name of another book; empty for links to other programs.
    std::string extern_name(const Record& first) {
        constexpr std::size_t kNameAt = 6;
        constexpr std::uint16_t kIsLink = 0x0002 | 0x0010;
        if (first.size() <= kNameAt || (first.u16(0) & kIsLink) != 0) return {};
        try {
            ContinuedRecord record(records_);
            record.advance(kNameAt);
            return strings_.read(record, LengthField::OneByte);
        } catch (const Error&) {
            return {};
        }
    }

    ByteText byte_text_;
    RecordStream records_;
    RecordStrings strings_;
    biff::FormulaContext context_;
    std::size_t linked_names_ = 0;
};

} // namespace

biff::FormulaContext read_formula_context(std::string_view stream, const XlsGlobals& globals) {
    return ContextReader(stream, globals).run();
}

} // namespace workbook
