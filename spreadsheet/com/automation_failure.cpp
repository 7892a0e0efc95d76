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

/// What the application says most often; empty for any other result.
std::string_view meaning_of(HRESULT result) {
    switch (result) {
    case S_OK:
        return "a result of an unexpected type";
    case DISP_E_EXCEPTION:
        return "the application refused the operation";
    case DISP_E_UNKNOWNNAME:
    case DISP_E_MEMBERNOTFOUND:
        return "the application does not have it";
    case E_NOTIMPL:
        return "the application cannot do that";
    case DISP_E_BADINDEX:
        return "there is no such element";
    case RPC_E_CALL_REJECTED:
        return "the application is busy, perhaps with a dialog";
    case RPC_E_DISCONNECTED:
        return "the application has ended";
    case E_OUTOFMEMORY:
        return "memory ran out";
    default:
        return {};
    }
}

std::string hexadecimal(HRESULT result) {
    std::array<char, 8> digits{};
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), static_cast<ULONG>(result), 16);
    return "0x" + std::string(digits.data(), end.ptr);
}

} // namespace

std::string describe_call(const OLECHAR* member, HRESULT result) {
    std::string text = "The application's member " +
                       foundation::unicode::to_utf8(reinterpret_cast<const char16_t*>(member)) +
                       " failed with " + hexadecimal(result);
    if (const std::string_view meaning = meaning_of(result); !meaning.empty())
        text.append(": ").append(meaning);
    return text + ".";
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
    Failure failure;
    if (result == E_OUTOFMEMORY) failure.kind = FailureKind::OutOfMemory;
    if (result == RPC_E_DISCONNECTED) failure.kind = FailureKind::NoApplication;
    failure.cause = describe_call(member, result);
    fail(tag, id, std::move(failure));
}

void fail_start(HRESULT result) {
    Failure failure;
    failure.kind = FailureKind::NoApplication;
    failure.cause = foundation::automation::start_problem(result);
    fail("[COM APPLICATION MSG]:", error_id::internal, std::move(failure));
}

} // namespace spreadsheet::com
