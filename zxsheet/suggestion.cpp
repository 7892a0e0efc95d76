// SPDX-License-Identifier: Apache-2.0
//
// Counts the characters to insert, remove, replace or exchange (optimal string alignment).
#include "zxsheet/suggestion.h"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "foundation/unicode.h"

namespace zxsheet {
namespace {

/// Longer words are not compared: the work grows with the square of their lengths.
constexpr std::size_t kMaxLength = 64;

std::u16string lower(const std::string& word) {
    std::u16string units = foundation::unicode::to_utf16(word);
    for (char16_t& unit : units)
        if (unit >= u'A' && unit <= u'Z') unit = static_cast<char16_t>(unit + (u'a' - u'A'));
    return units;
}

std::size_t distance(const std::u16string& a, const std::u16string& b) {
    std::vector<std::size_t> before_last(b.size() + 1), last(b.size() + 1), row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        last[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] != b[j - 1])});
            const bool is_exchange = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
            if (is_exchange) row[j] = std::min(row[j], before_last[j - 2] + 1);
        }
        before_last.swap(last);
        last.swap(row);
    }
    return last[b.size()];
}

} // namespace

std::string suggestion(const std::string& word, const std::vector<std::string>& candidates) {
    const std::u16string wanted = lower(word);
    if (wanted.size() < 2 || wanted.size() > kMaxLength) return {};
    std::size_t least = std::numeric_limits<std::size_t>::max();
    std::string best;
    for (const std::string& candidate : candidates) {
        const std::u16string known = lower(candidate);
        if (known.size() > kMaxLength) continue;
        const std::size_t changes = distance(wanted, known);
        // A third of the word may be wrong.
        if (changes >= least || changes > std::max<std::size_t>(1, known.size() / 3)) continue;
        least = changes;
        best = candidate;
    }
    return best.empty() ? std::string() : "; did you mean '" + best + "'?";
}

} // namespace zxsheet
