// SPDX-License-Identifier: Apache-2.0
//
// The one exception of the public interface and the table of its identifiers.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "foundation/core/except.h"
#include "foundation/export.h"

namespace spreadsheet {

/// What went wrong. The numbers are part of the interface; `error_id_message` has the texts.
enum class error_id : std::uint8_t {
    book_not_created = 0,
    book_not_opened = 1,
    sheet_not_created = 2,
    sheet_not_opened = 3,
    book_not_saved = 4,
    book_not_saved_as = 5,
    sheet_not_found = 6,
    sheet_not_copied = 7,
    old_sheet_not_deleted = 8,
    book_not_loaded = 9,
    range_not_cleared = 10,
    named_range_not_deleted = 11,
    types_size_mismatch = 12,
    error_cells_not_writeable = 13,
    save_to_memory_unsupported = 14,
    load_from_memory_unsupported = 15,
    sheet_not_deleted = 16,
    sheet_type_unknown = 17,
    internal = 18,
    hidden_state_not_set = 19,
    file_name_incompatible = 20,
    trailing_characters = 21,
    range_not_parsed = 22,
    named_range_not_found = 23,
    range_too_large = 24,
    cell_out_of_bounds = 25,
    sheet_name_invalid = 26,
    merge_not_removed = 27,
    write_failed = 28,
    format_invalid = 29,
    format_unsupported = 30,
    chart_sheet_unsupported = 31,
    iterator_out_of_bounds = 32,
    iterator_rows_odd = 33,
    iterator_rows_overlap = 34,
    iterator_rows_empty = 35,
    iterator_columns_repeat = 36,
    active_filter = 37,
    merged_columns = 38,
    merged_rows = 39,
    merged_cells_unsupported = 40,
    google_sheet_name_invalid = 41,
    google_sheet_not_found = 42,
    google_unsupported = 43,
    google_sheet_type_unsupported = 44,
    google_identity_required = 45,
    google_last_sheet = 46,
    google_unavailable = 47,
    google_unavailable_again = 48,
    google_too_many_requests = 49,
    google_timed_out = 50,
    google_only = 51,
    google_range_too_large = 52,
    google_range_invalid = 53,
    google_cell_out_of_bounds = 54,
    google_rows_too_many = 56
};

/// The English message of an identifier; the internal-error text for 18, 32 to 36 and any value
/// without a text of its own. Static text; never fails, never allocates.
ZX_API const char* error_id_message(error_id id) noexcept;

/// A failure of the library.
///
///     try {
///         auto book = spreadsheet::load_book_from_file(u"data.xlsx",
///         spreadsheet::book::interactive::file);
///     } catch (const spreadsheet::Exception& e) {
///         std::cerr << e.what() << '\n';   // e.id() == error_id::book_not_loaded
///     }
///
/// Travels through boost::current_exception and boost::rethrow_exception without slicing.
class ZX_API Exception
    : public foundation::core::except::Exception<foundation::core::except::IInternalException,
                                                 std::exception> {
  public:
    explicit Exception(error_id id);
    Exception(error_id id, std::string detail);
    Exception(const Exception&);
    Exception& operator=(const Exception&);
    ~Exception() noexcept override;

    error_id id() const noexcept { return id_; }

    /// The detail text, or the message of the identifier when the detail is empty. Lives as long as
    /// the exception is not changed.
    const char* what() const noexcept override;

    /// A copy on the heap; the caller owns it.
    const boost::exception_detail::clone_base* clone() const override;

    /// Throws a copy, with `Exception` as its dynamic type.
    [[noreturn]] void rethrow() const override;

  private:
    error_id id_;
    std::string detail_;
};

} // namespace spreadsheet
