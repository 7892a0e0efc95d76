// SPDX-License-Identifier: Apache-2.0
//
// Tables by the Arrow C stream interface, without a copy of the values.
#pragma once

#include <cstddef>

#include <pybind11/pybind11.h>

namespace zxpython {

/// A capsule "arrow_array_stream" with one struct array of `rows` rows. `columns` is a list of
/// dicts as `to_python` makes them; columns of booleans have `packed`, their values as bits. Mixed
/// columns have no place in it. The arrays live as long as the consumer holds what the stream gave.
pybind11::capsule arrow_stream(const pybind11::list& columns, std::size_t rows);

} // namespace zxpython
