// SPDX-License-Identifier: Apache-2.0
//
// The message-ID errors of the host's functions for Google Sheets, one class for each identifier,
// named like it. A class is caught as it is, by foundation::core::except::IMessageId, or as
// std::exception.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include "foundation/core/message_id.h"

namespace gsheet {

/// An identifier as an argument of a template.
template <std::size_t Size>
struct Identifier {
    consteval Identifier(const char (&literal)[Size]) { std::copy_n(literal, Size, text); }
    char text[Size];
};

/// An error whose text takes no argument.
template <Identifier Id>
class Message : public foundation::core::except::IMessageId {
  public:
    Message() : IMessageId(Id.text, {}) {}
};

/// An error whose text takes one.
template <Identifier Id>
class MessageWithText : public foundation::core::except::IMessageId {
  public:
    explicit MessageWithText(std::string argument) : IMessageId(Id.text, std::move(argument)) {}
};

} // namespace gsheet

namespace Zentra::spreadsheet::gsheet {

using ::gsheet::Message;
using ::gsheet::MessageWithText;

/// Argument: the item.
struct NotFound : MessageWithText<"Zentra:spreadsheet:gsheet:NotFound"> {
    using MessageWithText::MessageWithText;
};
/// Argument: the MIME type.
struct UnknownMimeType : MessageWithText<"Zentra:spreadsheet:gsheet:UnknownMimeType"> {
    using MessageWithText::MessageWithText;
};
/// Argument: what went wrong.
struct InternalError : MessageWithText<"Zentra:spreadsheet:gsheet:InternalError"> {
    using MessageWithText::MessageWithText;
};
struct ServiceUnavailable : MessageWithText<"Zentra:spreadsheet:gsheet:ServiceUnavailable"> {
    using MessageWithText::MessageWithText;
};
struct FeatureFlag : Message<"Zentra:spreadsheet:gsheet:FeatureFlag"> {};
struct AccessForbidden : Message<"Zentra:spreadsheet:gsheet:AccessForbidden"> {};
struct OperationNotSupported : Message<"Zentra:spreadsheet:gsheet:OperationNotSupported"> {};
struct TypeNotSupported : Message<"Zentra:spreadsheet:gsheet:TypeNotSupported"> {};
struct TooManyRequests : Message<"Zentra:spreadsheet:gsheet:TooManyRequests"> {};
struct RequestTimedOut : Message<"Zentra:spreadsheet:gsheet:RequestTimedOut"> {};

} // namespace Zentra::spreadsheet::gsheet

namespace Zentra::spreadsheet::book {

/// A failure that no other identifier stands for: the network, a file of the host's. Argument: what
/// went wrong.
struct internalError : ::gsheet::MessageWithText<"Zentra:spreadsheet:book:internalError"> {
    using MessageWithText::MessageWithText;
};

} // namespace Zentra::spreadsheet::book

namespace Zentra::string {

struct MissingNotSupported : gsheet::Message<"Zentra:string:MissingNotSupported"> {};
struct MustBeStringScalarOrCharacterVector
    : gsheet::Message<"Zentra:string:MustBeStringScalarOrCharacterVector"> {};

} // namespace Zentra::string

/// The host's own errors for wrong calls.
namespace Zentra::builtins {

struct TooManyOutputs : gsheet::Message<"Zentra:builtins:TooManyOutputs"> {};
struct TooManyInputs : gsheet::Message<"Zentra:builtins:TooManyInputs"> {};
struct TooFewInputs : gsheet::Message<"Zentra:builtins:TooFewInputs"> {};
struct MustBeLogicalScalar : gsheet::Message<"Zentra:builtins:MustBeLogicalScalar"> {};

} // namespace Zentra::builtins

namespace gsheet {

/// Throws an error of class `Class` in the form that can be caught as std::exception, too.
template <class Class, class... Argument>
[[noreturn]] void throw_host_error(Argument&&... argument) {
    throw foundation::core::except::Exception<Class, std::exception>(
        std::forward<Argument>(argument)...);
}

} // namespace gsheet
