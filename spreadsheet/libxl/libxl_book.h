// SPDX-License-Identifier: Apache-2.0
//
// A workbook file, served by the workbook library. Made empty by the factory, which then calls one
// of the `init_` operations. Sheets hold plain handles into the book and must not outlive it.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "spreadsheet/book.h"
#include "spreadsheet/book_extras.h"
#include "spreadsheet/exception.h"
#include "spreadsheet/libxl/library_failure.h"
#include "spreadsheet/libxl/libxl_sheet.h"
#include "workbook/library.h"

namespace spreadsheet {

/// How library books are made: one creator for XLS, one for the Open XML formats. Either may
/// return null.
struct LibraryCreators {
    using Creator = std::function<std::unique_ptr<workbook::Book>()>;
    Creator binary = workbook::xlCreateBookW;
    Creator xml = workbook::xlCreateXMLBookW;
};

/// Failures of the library are logged as one line that begins with a bracketed tag and ends with
/// the library's reason, then thrown as `Exception`. A load of a part of a workbook that fails
/// becomes a load of the whole.
class LibXLBook : public IBook, public IBookExtras {
  public:
    explicit LibXLBook(LibraryCreators creators = {});
    LibXLBook(const LibXLBook&) = delete;
    LibXLBook& operator=(const LibXLBook&) = delete;

    bool is_interactive() const override;
    book::format format() const override;
    bool are_dates_1904() const override;
    std::size_t num_sheets() const override;
    std::shared_ptr<ISheet> sheet(const std::u16string& name) const override;
    std::shared_ptr<ISheet> sheet(std::size_t index) const override;
    std::optional<std::u16string> get_sheet_name(const int index) const override;
    std::shared_ptr<ISheet> add_sheet(std::size_t index, const std::u16string& name,
                                      const std::u16string& second_name) override;
    void remove_sheet(std::size_t index) override;
    sheet::type sheet_type(std::size_t index) const override;
    const std::u16string get_file_name(bool) override;
    void init_from_file(const std::u16string& name, book::format format) override;
    void init_from_file_with_sheet(const std::u16string& name, book::format format,
                                   std::size_t sheet_index) override;
    void init_from_file_with_range(const std::u16string& name, book::format format,
                                   std::size_t sheet_index, std::size_t first_row,
                                   std::size_t last_row) override;
    void init_from_file_only_sheetNames(const std::u16string& name, book::format format) override;
    bool is_loaded() const override;
    bool is_sheet_loaded() const override;
    bool sheet_names_only_required() const override;
    std::vector<std::u16string> get_sheet_names() const override;
    ~LibXLBook() override;
    void init_new(std::size_t count, book::format format, const std::u16string& base_name) override;
    void init_from_memory(const void* bytes, std::size_t size, book::format format) override;
    void save(const std::u16string& name) override;
    void save_to_memory(std::vector<unsigned char>& bytes) override;

    /// Takes the date system over from the workbook and finds the format that dates are written
    /// with.
    virtual void set_date_system(book::format format);
    /// Loads the whole file into the library book made before. `Exception` 9 when it cannot be
    /// loaded.
    virtual void init_from_file_common(const std::u16string& name, book::format format);

    void reorder_sheet(std::size_t from, std::size_t to) override;
    std::optional<SheetSummary> summarize_sheet(std::size_t index) override;
    std::optional<std::vector<NamedRange>> named_ranges() override;
    SaveSummary last_save() const override;
    std::optional<Failure> take_unreported_failure() override;

    /// Inserts a copy of a sheet of this book, under its own name, at `new_index`, deletes the
    /// sheet two places after the original, and returns the sheet then at `new_index`. `Exception`
    /// 6 for a sheet that is not this book's, 7 when it cannot be copied, 8 when nothing can be
    /// deleted. A library that holds names to be unique refuses the copy; `reorder_sheet` moves.
    std::shared_ptr<ISheet> move_sheet(const std::shared_ptr<ISheet>& sheet, std::size_t new_index);

  private:
    void create_library_book(book::format format);
    void find_date_format(book::format format);
    /// Ends a failed load of a part: logs why and loads the whole file.
    void fall_back(std::string_view tag, const std::u16string& name, book::format format);
    void finish_partial_load(book::format format, std::size_t sheet_index);
    /// `Exception` 2 when the library refuses.
    workbook::Sheet* insert_sheet(std::size_t index, const std::u16string& name,
                                  const workbook::Sheet* source);
    /// `Exception` `id` when the library refuses; the sheet's object is detached.
    void delete_sheet(int index, std::string_view tag, error_id id);
    /// Throws `Exception` 30 when the list of sheets could not be rebuilt after a change, because
    /// the library does not know the kind of a sheet other than `removed`.
    void check_kinds(int removed = -1) const;
    void clear_sheets();
    void init_sheets();
    void set_sheets_in_book(int index);
    using SheetsByHandle = std::unordered_map<workbook::Sheet*, std::shared_ptr<ISheet>>;
    static workbook::Sheet* handle_of(const ISheet& sheet);
    /// Appends the sheet at the library's `index` to the cache, the object in `known` if it is
    /// there; a missing sheet is logged with `tag`.
    void cache_sheet(int index, std::string_view tag, const SheetsByHandle& known);
    /// The cached object of a sheet of the library; null when there is none.
    std::shared_ptr<ISheet> cached(const workbook::Sheet* handle) const;
    LibXLSheet::Common common();
    void append_sheet(std::shared_ptr<ISheet> sheet, int index);
    std::u16string cached_sheet_name(std::size_t position) const;

    const LibraryCreators creators_;
    std::u16string file_name_;
    std::unique_ptr<workbook::Book> book_;           ///< null until a load has begun
    std::optional<libxl::FailureReporter> reporter_; ///< as long as `book_`
    book::format format_ = book::format::XLS;
    std::vector<std::shared_ptr<ISheet>> sheets_;
    std::vector<int> library_indices_; ///< of the sheets in `sheets_`
    workbook::Format* date_format_ = nullptr;
    bool dates_1904_ = false;
    bool sheet_loaded_ = false;
    bool sheet_names_only_ = false;
    std::vector<std::u16string> sheet_names_;
};

} // namespace spreadsheet
