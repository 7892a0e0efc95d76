// SPDX-License-Identifier: Apache-2.0
//
// What all fuzz targets share: input as text, and the one kind of failure that is allowed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "tests/workbook/memory_source.h"
#include "workbook/error.h"

namespace workbook::fuzz {

/// Calls `parse(text)`; any exception but `Error` goes on to the fuzzer.
template <class Parse>
int run(const std::uint8_t* data, std::size_t size, const Parse& parse) {
    try {
        parse(std::string(reinterpret_cast<const char*>(data), size));
    } catch (const Error&) {
    }
    return 0;
}

} // namespace workbook::fuzz
