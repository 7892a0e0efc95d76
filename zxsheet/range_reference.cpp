// SPDX-License-Identifier: Apache-2.0
//
// Sheets, corners and names in the text of a range.
#include "zxsheet/range_reference.h"

#include <algorithm>

#include "foundation/unicode.h"

namespace zxsheet {
namespace {

namespace unicode = foundation::unicode;
using namespace spreadsheet;

/// The sheet's name in quotes at the beginning; nullopt unless a '!' follows.
std::optional<RangeReference> split_quoted(const std::string& text) {
    std::string name;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] != '\'') {
            name.push_back(text[i]);
        } else if (text.compare(i, 2, "''") == 0) {
            name.push_back('\'');
            ++i;
        } else {
            if (text.compare(i, 2, "'!") != 0) return std::nullopt;
            return RangeReference{name, text.substr(i + 2)};
        }
    }
    return std::nullopt;
}

RangeReference split(const std::string& text) {
    if (text.starts_with('\''))
        if (auto quoted = split_quoted(text)) return *quoted;
    const std::size_t mark = text.rfind('!');
    if (mark == std::string::npos || mark == 0) return {std::nullopt, text};
    return {text.substr(0, mark), text.substr(mark + 1)};
}

} // namespace

RangeReference split_reference(const std::string& text) {
    RangeReference reference = split(text);
    // No name has a dollar sign.
    std::erase(reference.cells, '$');
    return reference;
}

std::optional<CellsText> parse_cells(const std::string& text, book::format format) {
    const std::u16string units = unicode::to_utf16(text);
    CellsText cells;
    try {
        cells.range = parse_range(units.data(), units.size(), format, {0, 0, -1, -1}, false,
                                  &cells.type, nullptr);
        return cells;
    } catch (const Exception&) {
        return std::nullopt;
    }
}

std::optional<NamedRange> find_named_range(const std::shared_ptr<IBook>& book,
                                           const std::string& name,
                                           std::optional<std::size_t> sheet) {
    const auto named = named_ranges(book);
    if (!named) return std::nullopt;
    const std::u16string units = unicode::to_utf16(name);
    const auto rank = [&](const NamedRange& range) {
        if (!unicode::equal_ignoring_case(range.name, units)) return 0;
        if (sheet && range.sheet != *sheet) return 0;
        if (sheet && range.scope == *sheet) return 3;
        return range.scope ? 1 : 2;
    };
    const auto best =
        std::max_element(named->begin(), named->end(),
                         [&](const auto& a, const auto& b) { return rank(a) < rank(b); });
    if (best == named->end() || rank(*best) == 0) return std::nullopt;
    return *best;
}

} // namespace zxsheet
