// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/com/automation_failure.h"

#include <array>
#include <charconv>
#include <utility>

#include "foundation/unicode.h"
#include "spreadsheet/book_factory.h"
#include "spreadsheet/with_failure.h"

namespace spreadsheet::com {
namespace {

/// What a call returns after the application's process has ended, or while it ends (MS-ERREF 2.2).
constexpr HRESULT kServerUnavailable = static_cast<HRESULT>(0x800706ba);
constexpr HRESULT kServerCallFailed = static_cast<HRESULT>(0x800706be);
/// The application's own error for most operations that it does not carry out.
constexpr HRESULT kNotCarriedOut = static_cast<HRESULT>(0x800a03ec);

/// What the application returns most often, in words; empty for any other result.
std::string_view meaning_of(HRESULT result) {
    if (says_application_ended(result)) return "the application has ended";
    switch (result) {
    case DISP_E_EXCEPTION:
    case kNotCarriedOut:
        return "the application refused the operation";
    case DISP_E_UNKNOWNNAME:
    case DISP_E_MEMBERNOTFOUND:
        return "the application does not have it";
    case E_ACCESSDENIED:
        return "the workbook is read-only";
    case E_NOTIMPL:
        return "the application cannot do that";
    case DISP_E_BADINDEX:
        return "there is no such element";
    case RPC_E_CALL_REJECTED:
    case RPC_E_SERVERCALL_RETRYLATER:
        return "the application is busy, perhaps with a dialog";
    case E_OUTOFMEMORY:
        return "memory ran out";
    default:
        return {};
    }
}

FailureKind kind_of(HRESULT result) {
    if (says_application_ended(result)) return FailureKind::NoApplication;
    return result == E_OUTOFMEMORY ? FailureKind::OutOfMemory : FailureKind::Unknown;
}

std::string hexadecimal(HRESULT result) {
    std::array<char, 8> digits{};
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), static_cast<ULONG>(result), 16);
    return "0x" + std::string(digits.data(), end.ptr);
}

} // namespace

bool says_application_ended(HRESULT result) {
    switch (result) {
    case RPC_E_DISCONNECTED:
    case RPC_E_SERVER_DIED:
    case RPC_E_SERVER_DIED_DNE:
    case kServerUnavailable:
    case kServerCallFailed:
        return true;
    default:
        return false;
    }
}

Failure cause_of(const OLECHAR* member, HRESULT result) {
    std::string text = "The application's member " +
                       foundation::unicode::to_utf8(reinterpret_cast<const char16_t*>(member));
    if (SUCCEEDED(result)) {
        text += " returned a value of an unexpected type";
    } else {
        text += " failed with " + hexadecimal(result);
        if (const std::string_view meaning = meaning_of(result); !meaning.empty())
            text.append(": ").append(meaning);
    }
    return {kind_of(result), text + "."};
}

void log_line(std::string_view tag, std::string_view text) {
    auto& logger = getLogger();
    if (logger.enabled(foundation::log::error))
        logger.write(foundation::log::error, std::string(tag).append(" ").append(text));
}

void fail(std::string_view tag, error_id id, Failure failure) {
    log_line(tag, failure.cause);
    throw with_failure(Exception(id), std::move(failure));
}

void fail_call(std::string_view tag, error_id id, const OLECHAR* member, HRESULT result) {
    fail(tag, id, cause_of(member, result));
}

void fail_start(HRESULT result) {
    Failure failure;
    failure.kind = FailureKind::NoApplication;
    failure.cause = result == RPC_E_CHANGED_MODE
                        ? "The thread is in a multithreaded apartment: use interactive mode on a "
                          "thread that is initialised as a single-threaded one, or not at all."
                        : foundation::automation::start_problem(result);
    fail("[COM APPLICATION MSG]:", error_id::internal, std::move(failure));
}

} // namespace spreadsheet::com
