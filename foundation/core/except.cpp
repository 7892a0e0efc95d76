// SPDX-License-Identifier: Apache-2.0
//
// The destructors of the exception interfaces: one place for their virtual tables, so that every
// module of a process agrees on the types it catches.
#include "foundation/core/except.h"

namespace foundation::core::except {

IException::~IException() noexcept = default;
IInternalException::~IInternalException() noexcept = default;

} // namespace foundation::core::except
