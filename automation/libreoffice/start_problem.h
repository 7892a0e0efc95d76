// SPDX-License-Identifier: Apache-2.0
//
// Why an application did not start.
#pragma once

#include <stdexcept>

namespace office {

/// One English sentence that says what to do about it.
class StartProblem : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

} // namespace office
