// SPDX-License-Identifier: Apache-2.0
//
// The destructors of the exception interfaces: one place for their virtual tables, so that every
// module of a process agrees on the types it catches.
#include "foundation/core/except.h"

#include "foundation/core/message_id.h"

namespace foundation::core::except {

IException::~IException() noexcept = default;
IInternalException::~IInternalException() noexcept = default;

IMessageId::IMessageId(const char* identifier, std::string argument)
    : identifier_(identifier),
      argument_(std::move(argument)),
      text_(argument_.empty() ? identifier_ : identifier_ + ": " + argument_) {}

IMessageId::~IMessageId() noexcept = default;

} // namespace foundation::core::except
