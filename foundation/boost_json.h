// SPDX-License-Identifier: Apache-2.0
//
// Boost.JSON without code that runs while the library is loaded. A header on the way
// to it, boost/container/uses_allocator_fwd.hpp, makes an object from a run-time value in every
// source that sees it; these declarations stand in for that header, with a constant in its place.
#pragma once

#include <memory>

#ifndef BOOST_CONTAINER_USES_ALLOCATOR_FWD_HPP
#define BOOST_CONTAINER_USES_ALLOCATOR_FWD_HPP

namespace boost::container {

using allocator_arg_t = const std::allocator_arg_t&;
[[maybe_unused]] static constexpr allocator_arg_t allocator_arg = std::allocator_arg;
struct erased_type {};
template <class T>
struct constructible_with_allocator_suffix;
template <class T>
struct constructible_with_allocator_prefix;
template <class T, class Allocator>
struct uses_allocator;

} // namespace boost::container

#endif

#include <boost/json.hpp>
