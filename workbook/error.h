// SPDX-License-Identifier: Apache-2.0
//
// The one error type inside the workbook library. Made by the named factories only; the books turn
// it into `error_message`. The text is one sentence: where, what is wrong, and what to do about it.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "foundation/files.h"
#include "workbook/error_kind.h"

namespace workbook {

class Error : public std::runtime_error {
  public:
    /// The platform's own reason why the file cannot be used, after `context` if there is one
    /// ("the file cannot be opened again").
    static Error file(const foundation::files::FileError& reason, std::string_view context = {});
    /// A file that the platform can use but the library cannot, such as one that has changed.
    static Error file(std::string_view reason);
    static Error not_a_workbook(std::string_view what);
    static Error encrypted();
    /// `part` is a part's name or the container's; `what` says what breaks the format.
    static Error damaged(std::string_view part, std::string_view what);
    /// As above, at byte `position` of the part's text.
    static Error damaged_at(std::string_view part, std::uint64_t position, std::string_view what);
    /// `what` names the limit: "more than 65,535 sheets".
    static Error limit(std::string_view part, std::string_view what);
    static Error missing(std::string_view what);
    static Error refused(std::string_view why);

    /// This error, its text preceded by the sheet that it was met in.
    Error in_sheet(std::string_view sheet) const;

    ErrorKind kind() const noexcept { return kind_; }
    /// The platform's problem, where it was one.
    std::optional<foundation::files::FileProblem> file_problem() const noexcept { return problem_; }

  private:
    using Problem = std::optional<foundation::files::FileProblem>;

    Error(ErrorKind kind, const std::string& text, Problem problem = std::nullopt)
        : std::runtime_error(text), kind_(kind), problem_(problem) {}

    ErrorKind kind_;
    Problem problem_;
};

} // namespace workbook
