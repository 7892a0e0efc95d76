// SPDX-License-Identifier: Apache-2.0
//
// Errors that a host environment shows by their message identifier, "component:mnemonic"; the texts
// come from its message catalogue. Each identifier has a class of its own, and what is thrown is
// `Exception<ThatClass, std::exception>`.
#pragma once

#include <concepts>
#include <exception>
#include <string>
#include <utility>

#include "foundation/core/except.h"
#include "foundation/export.h"

namespace foundation::core::except {

/// What the classes of all identifiers have in common.
///
///     try {
///         gsheet::readGoogleSheet(1, outputs, 3, inputs);
///     } catch (const foundation::core::except::IMessageId& error) {
///         show(catalogue[error.identifier()], error.argument());
///     }
class ZX_API IMessageId : public IException {
  public:
    IMessageId(const IMessageId&) = default;
    IMessageId& operator=(const IMessageId&) = default;
    ~IMessageId() noexcept override = 0;

    /// Such as "Zentra:spreadsheet:gsheet:NotFound".
    const std::string& identifier() const noexcept { return identifier_; }
    /// What the host's text shows in its place, UTF-8; empty when the identifier takes nothing.
    const std::string& argument() const noexcept { return argument_; }

  protected:
    IMessageId(const char* identifier, std::string argument);
    /// The identifier, and the argument behind a colon and a blank.
    const char* text() const noexcept { return text_.c_str(); }

  private:
    std::string identifier_;
    std::string argument_;
    std::string text_;
};

/// The thrown form of an error with a message identifier.
template <class Class>
requires std::derived_from<Class, IMessageId>
class Exception<Class, std::exception> : public Class, public std::exception {
  public:
    Exception() = default;
    explicit Exception(std::string argument) : Class(std::move(argument)) {}
    ~Exception() noexcept override = default;

    /// Identifier and argument; for logs. Lives as long as the error.
    const char* what() const noexcept override { return Class::text(); }
    const boost::exception_detail::clone_base* clone() const override {
        return new Exception(*this);
    }
    [[noreturn]] void rethrow() const override { throw *this; }
};

} // namespace foundation::core::except
