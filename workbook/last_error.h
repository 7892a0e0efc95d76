// SPDX-License-Identifier: Apache-2.0
//
// What a book remembers of its last failure, until the next one. Shared by the book and its sheets.
#pragma once

#include <exception>
#include <optional>
#include <string>

#include "foundation/files.h"
#include "workbook/error_kind.h"

namespace workbook {

class LastError {
  public:
    ErrorKind kind() const { return kind_; }
    /// "ok" before the first failure.
    const std::string& message() const { return message_; }
    /// The platform's problem where the kind is `File`; nullopt otherwise.
    std::optional<foundation::files::FileProblem> file_problem() const { return problem_; }

    void set(ErrorKind kind, std::string message);
    /// Takes the kind and the text from what was thrown: an `Error`, a `FileError`, an allocation
    /// that failed; anything else counts as `Damaged`, since only input gets parsers to throw.
    void set(const std::exception& thrown);

  private:
    ErrorKind kind_ = ErrorKind::None;
    std::string message_ = "ok";
    std::optional<foundation::files::FileProblem> problem_;
};

} // namespace workbook
