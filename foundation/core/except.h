// SPDX-License-Identifier: Apache-2.0
//
// The roots of every exception of the library: an interface that travels through Boost's exception
// copying (`clone`, `rethrow`) and the template that joins it with a standard exception class.
#pragma once

#include <boost/exception/exception.hpp>

#include "foundation/export.h"

namespace foundation::core::except {

/// Root of the hierarchy: an exception that can be copied and thrown again without knowing its
/// type. The base is virtual as it is in the wrappers that Boost derives from a thrown class.
class ZX_API IException : public virtual boost::exception_detail::clone_base,
                          public boost::exception {
  public:
    IException() = default;
    IException(const IException&) = default;
    IException& operator=(const IException&) = default;
    ~IException() noexcept override = 0;
};

/// An exception raised inside the library, as opposed to one that a host raises through it.
class ZX_API IInternalException : public IException {
  public:
    IInternalException() = default;
    IInternalException(const IInternalException&) = default;
    IInternalException& operator=(const IInternalException&) = default;
    ~IInternalException() noexcept override = 0;
};

/// Joins one of the interfaces above with a class of the standard library, so that the result can
/// be caught as either.
template <class Interface, class Standard>
class Exception : public Interface, public Standard {
  public:
    Exception() = default;
    Exception(const Exception&) = default;
    Exception& operator=(const Exception&) = default;
    ~Exception() noexcept override = default;
};

} // namespace foundation::core::except
