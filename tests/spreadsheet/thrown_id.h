// SPDX-License-Identifier: Apache-2.0
//
// The number of the `Exception` that an action throws, -1 when it throws none.
#pragma once

#include "spreadsheet/exception.h"
#include "spreadsheet/failure.h"

namespace spreadsheet {

template <class Action>
int thrown_id(Action action) {
    try {
        action();
    } catch (const Exception& e) {
        return static_cast<int>(e.id());
    }
    return -1;
}

/// The cause that the `Exception` carries; kind `Unknown` when there is no exception.
template <class Action>
Failure failure_of_thrown(Action action) {
    try {
        action();
    } catch (const Exception& e) {
        return failure_of(e);
    }
    return {};
}

} // namespace spreadsheet
