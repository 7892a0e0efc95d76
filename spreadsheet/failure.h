// SPDX-License-Identifier: Apache-2.0
//
// Why an operation failed, as data: an `Exception` says which operation failed, `failure_of` what
// caused it. Independent of the log, so it works without a sink.
#pragma once

#include <cstdint>
#include <string>

#include "foundation/core/message_id.h"
#include "foundation/export.h"
#include "spreadsheet/exception.h"

namespace spreadsheet {

/// What kind of cause it is. The numbers are part of the interface.
enum class FailureKind : std::uint8_t {
    Unknown = 0,         ///< nothing is known beyond the exception's identifier
    FileNotFound = 1,    ///< there is no such file
    FileNotReadable = 2, ///< the file is there, but cannot be opened or read
    NotAWorkbook = 3,    ///< readable, but not a workbook of the expected family of formats
    Encrypted = 4,       ///< protected by a password
    Damaged = 5,         ///< breaks the rules of its format
    Limit = 6,           ///< more than the library accepts; `Failure::cause` names the limit
    OutOfMemory = 7,     ///< not enough memory
    Missing = 8,         ///< a sheet, name or part that does not exist
    Refused = 9,         ///< would leave a workbook that no application accepts
    FileNotWritten = 10, ///< the file cannot be written, such as no permission or a full disk
    Service = 11,        ///< the online service refused or failed; see `Failure::service`
    NoApplication = 12,  ///< no spreadsheet application is available
    Unsupported = 13     ///< a format or operation that this back-end does not serve
};

/// What the online service replied; all empty for any other failure. Strings are UTF-8, whole, and
/// without credentials.
struct ServiceReason {
    int http_status = 0; ///< RFC 9110; 0 when there was no reply
    std::string status;  ///< the canonical code, such as "PERMISSION_DENIED"
    std::string reason;  ///< the machine-readable reason, such as "API_KEY_INVALID"
    std::string message; ///< for people
    /// The page that the service gives for help, such as the one that switches an API on.
    std::string help_url{};
};

/// The cause of a failed operation.
struct Failure {
    FailureKind kind = FailureKind::Unknown;
    /// In English, UTF-8, never empty: where, what is wrong and what to do about it. Names neither
    /// the file nor a credential.
    std::string cause{};
    /// The path of the workbook file as the caller gave it; empty where no file is concerned.
    std::u16string file{};
    ServiceReason service{};
};

/// The cause that an exception carries. Copies of the exception, made by hand or by Boost's
/// `current_exception`, carry it too.
///
///     } catch (const spreadsheet::Exception& e) {
///         const spreadsheet::Failure failure = spreadsheet::failure_of(e);
///         if (failure.kind == spreadsheet::FailureKind::FileNotFound) ask_for_another_file();
///         std::cerr << failure.cause << '\n';
///     }
ZX_API Failure failure_of(const Exception& exception);

/// The cause that an error of a function for hosts carries; its argument where nothing more is
/// known.
ZX_API Failure failure_of(const foundation::core::except::IMessageId& error);

} // namespace spreadsheet
