// SPDX-License-Identifier: Apache-2.0
//
// The one place where a failure of the workbook library becomes a log line, a `Failure` and an
// `Exception`. The exception keeps the fixed message of its identifier and carries the cause.
#pragma once

#include <algorithm>
#include <cstddef>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include <climits>

#include "spreadsheet/exception.h"
#include "spreadsheet/failure.h"
#include "workbook/library.h"

namespace spreadsheet::libxl {

/// Reports the failures of one library book, which it must not outlive. Log lines are `tag` (with
/// its colon), a blank and the library's reason, at severity `error`; nothing is formatted when
/// that severity is filtered out.
class FailureReporter {
  public:
    /// `file` is the path that the book was made from; both references are kept.
    FailureReporter(const workbook::Book& library, const std::u16string& file)
        : library_(library), file_(file) {}

    /// Logs the library's last reason.
    void log(std::string_view tag) const;
    /// Logs what the last load did without, at severity `info`.
    void log_load_warnings() const;
    /// Logs it and throws `Exception` `id` carrying it.
    [[noreturn]] void fail(std::string_view tag, error_id id) const { fail(tag, id, file_); }
    /// As above for an operation on another file.
    [[noreturn]] void fail(std::string_view tag, error_id id, const std::u16string& file) const;
    /// Runs an operation of the library; memory that runs out becomes `Exception` `id`.
    template <class Operation>
    auto run(std::string_view tag, error_id id, Operation operation) const {
        try {
            return operation();
        } catch (const std::bad_alloc&) {
            fail_without_memory(tag, id);
        }
    }

    /// Logs the reason of an operation whose interface reports no failure, and keeps the first for
    /// `take_unreported`.
    void note(std::string_view tag);
    /// The failure kept since the last call.
    std::optional<Failure> take_unreported();

  private:
    Failure last_failure(error_id id, const std::u16string& file) const;
    [[noreturn]] void fail_without_memory(std::string_view tag, error_id id) const;

    const workbook::Book& library_;
    const std::u16string& file_;
    std::optional<Failure> unreported_;
};

/// The library counts in `int`; an index beyond that is beyond every sheet too.
inline int library_index(std::size_t value) {
    return static_cast<int>(std::min<std::size_t>(value, INT_MAX));
}

} // namespace spreadsheet::libxl
