// SPDX-License-Identifier: Apache-2.0
//
// Replies of Google Sheets with cells and values: taken exactly when the text is a JSON object, and
// every cell can be asked for.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "foundation/json.h"
#include "spreadsheet/gsheet/cell_reply.h"

namespace {

bool is_json_object(std::string_view text) {
    try {
        return foundation::json::parse(text).is_object();
    } catch (const foundation::json::ParseError&) {
        return false;
    }
}

template <class Read>
bool is_taken(Read read) {
    try {
        read();
        return true;
    } catch (const foundation::json::ParseError&) {
        return false;
    }
}

void read_cells(std::string_view text) {
    const spreadsheet::Range range{2, 1, 9, 4};
    const gsheet::CellCache cells = gsheet::parse_cells(text, range);
    std::size_t bytes = 0;
    for (int row = 0; row < 12; ++row)
        for (int column = 0; column < 7; ++column)
            for (const char byte : cells.text(cells.at(row, column)))
                bytes += static_cast<unsigned char>(byte) != 0;
    if (bytes > text.size()) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const bool is_object = is_json_object(text);
    if (is_taken([&] { read_cells(text); }) != is_object) std::abort();
    if (is_taken([&] { gsheet::count_values(text); }) != is_object) std::abort();
    return 0;
}
