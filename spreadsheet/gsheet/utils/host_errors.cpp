// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/utils/host_errors.h"

namespace gsheet {

MessageIdError::MessageIdError(std::string identifier, std::string argument)
    : identifier_(std::move(identifier)),
      argument_(std::move(argument)),
      text_(argument_.empty() ? identifier_ : identifier_ + ": " + argument_) {}

MessageIdError::~MessageIdError() noexcept = default;

const boost::exception_detail::clone_base* MessageIdError::clone() const {
    return new MessageIdError(*this);
}

void MessageIdError::rethrow() const {
    throw *this;
}

} // namespace gsheet
