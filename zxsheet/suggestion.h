// SPDX-License-Identifier: Apache-2.0
//
// What somebody may have meant by a word that is not known.
#pragma once

#include <string>
#include <vector>

namespace zxsheet {

/// "; did you mean 'Readings'?" for the candidate that is most like `word`, ignoring case; empty
/// when none is like it. UTF-8.
std::string suggestion(const std::string& word, const std::vector<std::string>& candidates);

} // namespace zxsheet
