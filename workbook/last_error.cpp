// SPDX-License-Identifier: Apache-2.0
//
// Turns what was thrown inside the library into a kind and a text.
#include "workbook/last_error.h"

#include <new>
#include <utility>

#include "workbook/error.h"

namespace workbook {

void LastError::set(ErrorKind kind, std::string message) {
    kind_ = kind;
    message_ = std::move(message);
    problem_.reset();
}

void LastError::set(const std::exception& thrown) {
    if (const auto* error = dynamic_cast<const Error*>(&thrown)) {
        set(error->kind(), error->what());
        problem_ = error->file_problem();
    } else if (const auto* failed = dynamic_cast<const foundation::files::FileError*>(&thrown)) {
        set(ErrorKind::File, failed->what());
        problem_ = failed->problem();
    } else if (dynamic_cast<const std::bad_alloc*>(&thrown) != nullptr) {
        set(ErrorKind::Memory, "out of memory"); // short enough to need no allocation
    } else {
        set(ErrorKind::Damaged, thrown.what());
    }
}

} // namespace workbook
