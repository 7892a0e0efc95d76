// SPDX-License-Identifier: Apache-2.0
//
// Gathers the changed parts of sheets, strings and styles beside what the editor changes.
#include "workbook/xlsx/writing/book_saver.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/ascii_case.h"
#include "foundation/files.h"
#include "foundation/unicode.h"
#include "workbook/error.h"
#include "workbook/io/text_source.h"
#include "workbook/opc/package_writer.h"
#include "workbook/xlsx/structure/workbook_editor.h"
#include "workbook/xlsx/writing/shared_strings_writer.h"
#include "workbook/xlsx/writing/styles_writer.h"
#include "workbook/xlsx/xlsx_sheet.h"

namespace workbook {

namespace {

/// The type that a name's extension means; nullopt for any other.
std::optional<DocumentType> type_of(std::u16string_view extension) {
    constexpr std::pair<std::u16string_view, DocumentType> kEndings[] = {
        {u"xlsx", DocumentType::Workbook},
        {u"xlsm", DocumentType::MacroWorkbook},
        {u"xltx", DocumentType::Template},
        {u"xltm", DocumentType::MacroTemplate},
    };
    for (const auto& [ending, type] : kEndings)
        if (foundation::unicode::equal_ignoring_ascii_case(extension, ending)) return type;
    return {};
}

/// Gathers the parts of one save. Header cells that it writes are as before when it ends, unless
/// the save has succeeded.
class Saver {
  public:
    explicit Saver(BookContents& book) : book_(book), editor_(book.editor()) {}

    ~Saver() {
        if (has_kept_headers_) return;
        for (const auto& sheet : book_.sheets)
            if (sheet != nullptr) sheet->restore_header_cells();
    }

    PackageChanges gather(std::u16string_view extension) {
        // Under the extension that it had, a file goes on claiming what it claimed.
        const auto type = type_of(extension);
        const bool is_same_type =
            !book_.is_new &&
            (extension.empty() || type_of(foundation::files::extension(book_.source_path)) == type);
        editor_.set_document_type(is_same_type ? std::nullopt : type);
        editor_.begin_save();
        name_columns();
        prepare_for_changed_cells();
        std::vector<PartChange> parts;
        gather_strings(parts);
        gather_styles(parts);
        gather_sheets(parts);
        PackageChanges changes = editor_.changes(); // after all calls of the editor above
        for (PartChange& part : parts)
            enter(changes, std::move(part));
        return changes;
    }

    /// The save has succeeded: the book has what the file has.
    void keep_header_texts() {
        has_kept_headers_ = true;
        for (const auto& sheet : book_.sheets)
            if (sheet != nullptr) sheet->keep_header_cells();
    }

  private:
    void name_columns() {
        for (const auto& sheet : book_.sheets) {
            if (sheet == nullptr || !sheet->has_changed_cells()) continue;
            for (const TableHeader& table : editor_.table_headers(sheet->entry()))
                editor_.name_columns(table, sheet->header_names(table));
        }
    }

    void prepare_for_changed_cells() {
        bool any = false, over_old_cells = false;
        for (const auto& sheet : book_.sheets) {
            if (sheet == nullptr || !sheet->has_changed_cells()) continue;
            any = true;
            uses_added_strings_ |= sheet->uses_added_strings();
            over_old_cells |= !sheet->is_new();
        }
        if (any) editor_.recalculate_on_load();
        // A formula may have been overwritten, and the chain must not name a cell without one.
        if (over_old_cells) editor_.drop_calculation_chain();
    }

    void gather_strings(std::vector<PartChange>& parts) {
        if (!uses_added_strings_) return;
        const StringSet& added = book_.added_strings;
        const std::string part = editor_.need_shared_strings_part();
        const bool is_new = !book_.package->has_part(part);
        strings_ = plan_shared_strings(is_new ? nullptr : open(part).get(), added);
        if (!is_new && !strings_.changes_part()) return;
        parts.push_back({part, [this, part, is_new, &added](ByteSink& out) {
                             write_shared_strings(is_new ? nullptr : open(part).get(), added,
                                                  strings_, out);
                         }});
    }

    void gather_styles(std::vector<PartChange>& parts) {
        const std::size_t known = book_.formats_in_file;
        const std::size_t end = book_.used_formats_end;
        if (end <= known) return;
        const std::string part = editor_.need_styles_part();
        std::string text;
        if (book_.package->has_part(part)) {
            text = append_cell_formats(*open(part), book_.cell_formats, known, end);
        } else {
            TextSource source(part, default_styles_part());
            text = append_cell_formats(source, book_.cell_formats, std::max<std::size_t>(known, 1),
                                       end);
        }
        parts.push_back({part, [text](ByteSink& out) { out.append(text); }});
    }

    void gather_sheets(std::vector<PartChange>& parts) {
        for (const auto& sheet : book_.sheets) {
            if (sheet == nullptr || !sheet->is_changed()) continue;
            const XlsxSheet& changed = *sheet;
            parts.push_back({changed.entry().part,
                             [this, &changed](ByteSink& out) {
                                 changed.write_part(
                                     [&] { return editor_.open_sheet(changed.entry()); },
                                     strings_.index_of, out);
                             },
                             changed.expected_bytes()});
        }
    }

    static void enter(PackageChanges& changes, PartChange part) {
        const auto known =
            std::find_if(changes.written.begin(), changes.written.end(),
                         [&part](const PartChange& other) { return other.part == part.part; });
        if (known == changes.written.end())
            changes.written.push_back(std::move(part));
        else
            *known = std::move(part);
    }

    std::unique_ptr<ByteSource> open(const std::string& part) {
        return book_.package->open_part(part);
    }

    BookContents& book_;
    WorkbookEditor& editor_;
    SharedStringPlan strings_;
    bool uses_added_strings_ = false;
    bool has_kept_headers_ = false;
};

void commit(BookContents& book, foundation::files::OutputFile& out, std::u16string_view path) {
    const bool over_source =
        !book.source_path.empty() && foundation::files::is_same_file(path, book.source_path);
    if (!over_source) {
        out.commit();
        return;
    }
    // Some systems do not let a file take the place of one that is open.
    book.package->close_file();
    out.commit();
    book.continue_with_saved_file(out.size());
    try {
        book.open_package();
    } catch (const std::exception&) {
        // The save has succeeded. Whatever needs the file next tries again and says why it cannot.
    }
}

SaveCounts counts_of(const BookContents& book, const PackageCounts& counts) {
    // What a new book begins as is new in the file.
    if (book.is_new) return {0, counts.copied + counts.written, 0};
    return {counts.copied, counts.written, counts.dropped};
}

void require_saveable(BookContents& book) {
    if (book.workbook.sheets.empty())
        throw Error::refused("a workbook needs at least one sheet: add one first");
    book.open_package();
    book.package->verify_unchanged();
}

} // namespace

SaveCounts save_book(BookContents& book, std::u16string_view path) {
    // From here on it notices when others change the file.
    const std::unique_ptr<foundation::files::OutputFile> out =
        foundation::files::replace_file(path);
    require_saveable(book);
    Saver saver(book);
    const PackageChanges changes = saver.gather(foundation::files::extension(path));
    const PackageCounts counts = write_package(*book.package, changes, *out);
    commit(book, *out, path);
    saver.keep_header_texts();
    book.close_package();
    return counts_of(book, counts);
}

SaveCounts save_book(BookContents& book, foundation::files::OutputFile& out,
                     std::u16string_view extension) {
    require_saveable(book);
    Saver saver(book);
    const PackageChanges changes = saver.gather(extension);
    const PackageCounts counts = write_package(*book.package, changes, out);
    out.commit();
    saver.keep_header_texts();
    book.close_package();
    return counts_of(book, counts);
}

} // namespace workbook
