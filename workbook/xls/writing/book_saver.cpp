// SPDX-License-Identifier: Apache-2.0
#include "workbook/xls/writing/book_saver.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>
#include <vector>

#include "foundation/files.h"
#include "foundation/large_block.h"
#include "workbook/cfb/compound_writer.h"
#include "workbook/error.h"
#include "workbook/xls/record_ids.h"
#include "workbook/xls/record_stream.h"
#include "workbook/xls/writing/blank_workbook.h"
#include "workbook/xls/writing/byte_encoder.h"
#include "workbook/xls/writing/drawing_group.h"
#include "workbook/xls/writing/globals_rewriter.h"
#include "workbook/xls/writing/record_writer.h"
#include "workbook/xls/writing/shared_strings_writer.h"
#include "workbook/xls/writing/sheet_copy.h"
#include "workbook/xls/writing/sheet_name_changes.h"
#include "workbook/xls/writing/sheet_references.h"
#include "workbook/xls/writing/sheet_rewriter.h"
#include "workbook/xls/xls_limits.h"
#include "workbook/xls/xls_sheet.h"

namespace workbook {

namespace {

constexpr const char* kStreamName = "the workbook stream";

/// One past the last byte of the substream at `position`; the stream's end when it is cut.
std::size_t end_of_substream(std::string_view stream, std::size_t position) {
    RecordStream records(stream, position);
    int depth = 0;
    while (records.next()) {
        const Record& record = records.record();
        if (record::is_bof(record.id)) ++depth;
        if (record.id == record::kEof && --depth <= 0)
            return record.position + RecordStream::kHeaderBytes;
    }
    return stream.size();
}

std::vector<PlannedSheet> planned_sheets(const XlsContents& book) {
    std::vector<PlannedSheet> sheets;
    for (const auto& entry : book.entries) {
        const auto original = entry->original;
        const bool is_renamed = original && entry->name != book.globals.sheets[*original].name;
        sheets.push_back({entry->name, entry->state, original, entry->copy_of, is_renamed});
    }
    return sheets;
}

class StreamWriter {
  public:
    explicit StreamWriter(const XlsContents& book)
        : book_(book),
          old_(book.source.bytes),
          byte_encoder_(book.globals.byte_text),
          sheets_(planned_sheets(book)),
          references_(old_, sheets_, book.globals.sheets.size()),
          drawings_(std::string()) {}

    std::string run() {
        if (sheets_.empty()) throw Error::refused("a workbook needs at least one sheet");
        if (!has_changes()) return std::string(old_);
        check_version();
        prepare_strings();
        if (version() < BiffVersion::Biff5) return rewritten(0, old_, book_.entries[0]->position);
        find_new_names();
        make_copies();
        write_globals();
        for (std::size_t i = 0; i < sheets_.size(); ++i)
            append_sheet(i);
        return std::move(written_.bytes);
    }

  private:
    BiffVersion version() const { return book_.globals.version; }

    const XlsSheet* sheet(std::size_t i) const { return book_.sheets[i].get(); }

    bool has_changed_cells() const {
        return std::any_of(book_.sheets.begin(), book_.sheets.end(), [](const auto& one) {
            return one != nullptr && one->has_changed_cells();
        });
    }

    bool has_changed_list() const {
        if (sheets_.size() != book_.globals.sheets.size()) return true;
        for (std::size_t i = 0; i < sheets_.size(); ++i) {
            const bool is_same = sheets_[i].original == i && !sheets_[i].is_renamed &&
                                 sheets_[i].state == book_.globals.sheets[i].state;
            if (!is_same) return true;
        }
        return false;
    }

    bool has_changes() const {
        const bool has_changed_sheet =
            std::any_of(book_.sheets.begin(), book_.sheets.end(),
                        [](const auto& one) { return one != nullptr && one->is_changed(); });
        return has_changed_sheet || has_changed_list() || book_.is_new ||
               book_.date_1904 != book_.globals.date_1904;
    }

    std::size_t known_formats() const { return book_.globals.formats.cell_formats().size(); }

    /// Throws `Error` for changes that the book's version cannot hold.
    void check_version() const {
        const bool has_new_formats = book_.used_formats_end > known_formats();
        if (has_new_formats && book_.used_formats_end > kMaxSavedFormats)
            throw Error::limit(kStreamName,
                               "it would have more than 4,050 cell formats, which no application "
                               "opens; save the workbook as XLSX");
        if (version() >= BiffVersion::Biff8) return;
        constexpr const char* kAdvice =
            " cannot be changed in a workbook of this age; save it as XLSX first";
        if (has_changed_list()) throw Error::refused(std::string("the list of sheets") + kAdvice);
        if (version() >= BiffVersion::Biff5) return;
        if (has_new_formats) throw Error::refused(std::string("cell formats") + kAdvice);
        if (book_.entries.size() > 1)
            throw Error::refused("a workspace of several sheets cannot be changed; save it as "
                                 "XLSX first");
    }

    void prepare_strings() {
        if (version() < BiffVersion::Biff8) {
            strings_.bytes = [this](std::uint64_t index) {
                return byte_encoder_.encode(book_.added_strings[index]);
            };
        } else if (book_.globals.shared_strings) {
            strings_.first_index = shared_string_count(old_, *book_.globals.shared_strings);
        }
    }

    std::uint64_t added_uses() const {
        std::uint64_t uses = 0;
        for (const auto& one : book_.sheets)
            if (one != nullptr && one->uses_added_strings()) uses += one->added_string_cells();
        return uses;
    }

    void find_new_names() {
        for (const PlannedSheet& sheet : sheets_)
            if (sheet.original) names_.set(book_.globals.sheets[*sheet.original].name, sheet.name);
    }

    // Before the globals, which say what drawings the book has.
    void make_copies() {
        copies_.resize(sheets_.size());
        const bool has_copies = std::any_of(sheets_.begin(), sheets_.end(),
                                            [](const auto& sheet) { return sheet.copy_of; });
        if (has_copies) drawings_ = DrawingGroup::of_book(old_);
        for (std::size_t i = 0; i < sheets_.size(); ++i) {
            if (!sheets_[i].copy_of) continue;
            SheetNameChanges names = names_;
            names.set(book_.globals.sheets[*sheets_[i].copy_of].name, sheets_[i].name);
            copies_[i] = copied_sheet(old_, book_.entries[i]->position,
                                      references_.changes_for_copy(i), names, drawings_);
        }
    }

    void write_globals() {
        const bool has_added_strings =
            std::any_of(book_.sheets.begin(), book_.sheets.end(), [](const auto& one) {
                return one != nullptr && one->uses_added_strings();
            });
        static const StringPool kNone;
        std::optional<bool> date_1904;
        if (book_.date_1904 != book_.globals.date_1904) date_1904 = book_.date_1904;
        written_ = rewrite_globals(
            {.stream = old_,
             .version = version(),
             .sheets = sheets_,
             .references = references_,
             .names = names_,
             .drawings = drawings_,
             .formats = book_.cell_formats,
             .first_new_format = known_formats(),
             .formats_end = std::max(book_.used_formats_end, known_formats()),
             .old_strings = book_.globals.shared_strings,
             .added_strings = has_added_strings ? book_.added_strings.pool() : kNone,
             .added_uses = has_added_strings ? added_uses() : 0,
             .date_1904 = date_1904,
             .has_changed_cells = has_changed_cells()});
    }

    void append_sheet(std::size_t i) {
        const std::size_t begin = written_.bytes.size();
        if (begin > kMaxXlsStreamBytes)
            throw Error::limit(kStreamName, "it would be larger than 2 GiB");
        RecordWriter(written_.bytes)
            .set_u32(written_.sheet_positions[i], static_cast<std::uint32_t>(begin));
        auto moved = static_cast<std::int64_t>(begin);
        std::string substream;
        if (sheets_[i].original)
            substream = kept(i, moved);
        else
            substream = added(i);
        if (moved != 0) move_index(substream, version(), moved);
        if (begin + substream.size() > written_.bytes.capacity())
            foundation::reserve_to_fill(written_.bytes, 2 * begin + substream.size());
        written_.bytes += substream;
    }

    /// A sheet of the loaded book. Positions in it have moved by so much, if it is as it was.
    std::string kept(std::size_t i, std::int64_t& moved) const {
        const std::size_t position = book_.entries[i]->position;
        const bool is_changed = sheet(i) != nullptr && sheet(i)->is_changed();
        const std::string renamed =
            names_.empty() ? std::string() : sheet_with_names(old_, position, names_);
        if (!renamed.empty()) return rewritten(i, renamed, 0);
        if (is_changed) return rewritten(i, old_, position);
        moved -= static_cast<std::int64_t>(position);
        return std::string(old_.substr(position, end_of_substream(old_, position) - position));
    }

    std::string added(std::size_t i) {
        if (!sheets_[i].copy_of) return rewritten(i, blank_sheet(book_.is_new && i == 0), 0);
        return rewritten(i, std::exchange(copies_[i], {}), 0);
    }

    std::string rewritten(std::size_t i, std::string_view stream, std::size_t position) const {
        if (sheet(i) != nullptr) return sheet(i)->write(stream, position, strings_);
        const CellStore no_cells(kXlsLimits.columns);
        const SheetChanges no_changes;
        return rewrite_sheet({.stream = stream,
                              .position = position,
                              .version = version(),
                              .cells = no_cells,
                              .changes = no_changes,
                              .strings = strings_});
    }

    const XlsContents& book_;
    const std::string_view old_;
    ByteEncoder byte_encoder_;
    const std::vector<PlannedSheet> sheets_;
    SheetReferences references_;
    DrawingGroup drawings_;
    SheetNameChanges names_;
    std::vector<std::string> copies_; ///< what copies of sheets begin with, by index
    AddedStrings strings_;
    WrittenGlobals written_;
};

} // namespace

std::string changed_workbook_stream(const XlsContents& book) {
    return StreamWriter(book).run();
}

namespace {

/// MS-XLS 2.1.2: the class of the root storage.
constexpr std::array<char, 16> kWorkbookClass = {0x20,   0x08, 0x02, 0, 0, 0, 0, 0,
                                                 '\xC0', 0,    0,    0, 0, 0, 0, 0x46};

/// The container is open while this lives, and closed again if it was closed before.
class OpenContainer {
  public:
    explicit OpenContainer(XlsContents& book)
        : container_(book.source.container.get()),
          opens_(container_ != nullptr && !container_->is_open()) {
        if (!opens_) return;
        try {
            container_->reopen(foundation::files::open_for_reading(book.source_path));
        } catch (const foundation::files::FileError& error) {
            throw Error::file(error, "the file that was loaded cannot be opened again");
        }
    }
    ~OpenContainer() { close(); }
    OpenContainer(const OpenContainer&) = delete;
    OpenContainer& operator=(const OpenContainer&) = delete;

    /// Does nothing the second time.
    void close() {
        if (std::exchange(opens_, false)) container_->close_file();
    }

  private:
    CompoundFile* const container_;
    bool opens_;
};

/// Another program's changes must not be undone unseen, nor streams be copied from another version.
void verify_source(const XlsContents& book, bool is_over_source) {
    if (book.is_new) return;
    if (book.source.container != nullptr)
        verify_same_stream(book.source, nullptr);
    else if (is_over_source)
        verify_same_stream(book.source, foundation::files::open_for_reading(book.source_path));
}

/// The workbook stream as the file will have it.
struct SavedStream {
    std::string bytes;
    bool is_in_file = false; ///< that was loaded
};

SavedStream stream_to_save(XlsContents& book) {
    SavedStream stream;
    stream.bytes = changed_workbook_stream(book);
    stream.is_in_file =
        !book.is_new && !book.source.saved_hash && stream.bytes == book.source.bytes;
    if (book.source.encryption) encrypt_workbook_stream(stream.bytes, *book.source.encryption);
    return stream;
}

/// Writes the file without committing it.
SaveCounts write_file(const XlsContents& book, const SavedStream& stream,
                      foundation::files::OutputFile& out) {
    if (!book.is_new && book.source.container == nullptr) {
        out.append(stream.bytes.data(), stream.bytes.size());
        return stream.is_in_file ? SaveCounts{1, 0, 0} : SaveCounts{0, 1, 0};
    }
    CompoundChanges changes;
    changes.class_id = kWorkbookClass;
    if (!stream.is_in_file)
        changes.written.push_back(
            {book.source.name, [&stream](ByteSink& sink) { sink.append(stream.bytes); }});
    const CompoundCounts counts = write_compound_file(book.source.container.get(), changes, out);
    return {counts.copied, counts.written, counts.dropped};
}

/// The saved file is the one that later saves copy from. Nothing is lost when it cannot be opened:
/// such a save says so.
void continue_with(XlsContents& book, std::u16string_view path, std::size_t saved_hash) {
    book.source.saved_hash = saved_hash;
    if (book.source.container == nullptr) return;
    try {
        auto saved = std::make_unique<CompoundFile>(foundation::files::open_for_reading(path));
        saved->close_file();
        book.source.container = std::move(saved);
    } catch (const std::exception&) {
        return;
    }
}

} // namespace

SaveCounts save_book(XlsContents& book, std::u16string_view path) {
    OpenContainer container(book);
    const bool is_over_source =
        !book.source_path.empty() && foundation::files::is_same_file(path, book.source_path);
    // From here on it notices when others change the file.
    const auto out = foundation::files::replace_file(path);
    verify_source(book, is_over_source);
    const SavedStream stream = stream_to_save(book);
    const SaveCounts counts = write_file(book, stream, *out);
    container.close(); // some systems do not let a file take the place of one that is open
    out->commit();
    if (is_over_source) continue_with(book, path, hash_of_stream(stream.bytes));
    return counts;
}

SaveCounts save_book(XlsContents& book, foundation::files::OutputFile& out) {
    OpenContainer container(book);
    verify_source(book, false);
    const SaveCounts counts = write_file(book, stream_to_save(book), out);
    out.commit();
    return counts;
}

} // namespace workbook
