// SPDX-License-Identifier: Apache-2.0
//
// Errors that the host environment shows by their message identifier; the texts come from its
// message catalogue. One class for each identifier, so that a host can catch what it knows.
#pragma once

#include <exception>
#include <string>
#include <utility>

#include "foundation/core/except.h"
#include "foundation/export.h"

namespace gsheet {

/// What all of them have: an identifier such as "Zentra:spreadsheet:gsheet:NotFound" and at most one
/// argument for the host's text.
class ZX_API MessageIdError
    : public foundation::core::except::Exception<foundation::core::except::IException,
                                                 std::exception> {
  public:
    MessageIdError(std::string identifier, std::string argument = {});
    ~MessageIdError() noexcept override;

    const std::string& identifier() const noexcept { return identifier_; }
    /// Empty when the identifier takes none.
    const std::string& argument() const noexcept { return argument_; }
    /// The identifier, and the argument behind a colon and a blank. Lives as long as the error.
    const char* what() const noexcept override { return text_.c_str(); }

    const boost::exception_detail::clone_base* clone() const override;
    [[noreturn]] void rethrow() const override;

  private:
    std::string identifier_, argument_, text_;
};

} // namespace gsheet
