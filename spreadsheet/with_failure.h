// SPDX-License-Identifier: Apache-2.0
//
// How a cause enters an exception. Each back-end calls this in one place, where its own errors
// become exceptions. Not for installation.
#pragma once

#include "spreadsheet/exception.h"
#include "spreadsheet/failure.h"

namespace spreadsheet {

/// `exception` carrying `failure`, which `failure_of` returns. An empty cause becomes the
/// exception's text.
Exception with_failure(Exception exception, Failure failure);

/// Lets the host's `error` carry the cause that `exception` carries.
void pass_failure(const Exception& exception, const foundation::core::except::IMessageId& error);

} // namespace spreadsheet
