// SPDX-License-Identifier: Apache-2.0
//
// Boost.JSON's parser for handlers of one's own.
#pragma once

// The order matters, see there.
// clang-format off
#include "foundation/boost_json.h"

#include <boost/json/basic_parser_impl.hpp>
// clang-format on
