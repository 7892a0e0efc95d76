// SPDX-License-Identifier: Apache-2.0
//
// The one error type inside the workbook library. Made by the named factories only; the books turn
// it into `error_message`. The text is one sentence: where, what is wrong, and what to do about it.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace workbook {

enum class ErrorKind {
    File,         ///< the file cannot be opened or read
    NotAWorkbook, ///< readable, but not a workbook of this family
    Encrypted,    ///< protected by a password
    Damaged,      ///< a container, part or record that breaks its format
    Limit,        ///< larger than the library's limits allow
    Missing,      ///< a part or sheet that does not exist
    Refused       ///< an operation that would leave a book that no application accepts
};

class Error : public std::runtime_error {
  public:
    /// The system's own reason why `path` could not be read.
    static Error file(std::string_view reason);
    static Error not_a_workbook(std::string_view what);
    static Error encrypted();
    /// `part` is a part's name or the container's; `what` says what breaks the format.
    static Error damaged(std::string_view part, std::string_view what);
    /// As above, at byte `position` of the part's text.
    static Error damaged_at(std::string_view part, std::uint64_t position, std::string_view what);
    static Error limit(std::string_view part, std::string_view what);
    static Error missing(std::string_view what);
    static Error refused(std::string_view why);

    /// This error, its text preceded by the sheet that it was met in.
    Error in_sheet(std::string_view sheet) const;

    ErrorKind kind() const noexcept { return kind_; }

  private:
    Error(ErrorKind kind, const std::string& text) : std::runtime_error(text), kind_(kind) {}
    ErrorKind kind_;
};

} // namespace workbook
