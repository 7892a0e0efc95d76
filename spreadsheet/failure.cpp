// SPDX-License-Identifier: Apache-2.0
//
// The cause inside an exception: a Boost error_info, so that it goes wherever the exception goes.
#include "spreadsheet/failure.h"

#include <memory>
#include <string_view>
#include <utility>

#include <boost/exception/get_error_info.hpp>
#include <boost/exception/info.hpp>

#include "spreadsheet/with_failure.h"

namespace spreadsheet {
namespace {

using FailureInfo = boost::error_info<struct FailureTag, std::shared_ptr<const Failure>>;

/// What an identifier alone says about the cause.
FailureKind kind_of(error_id id) {
    switch (id) {
    case error_id::sheet_not_opened:
    case error_id::sheet_not_found:
    case error_id::named_range_not_found:
        return FailureKind::Missing;
    case error_id::save_to_memory_unsupported:
    case error_id::load_from_memory_unsupported:
    case error_id::format_unsupported:
    case error_id::chart_sheet_unsupported:
    case error_id::merged_cells_unsupported:
    case error_id::google_unsupported:
    case error_id::google_sheet_type_unsupported:
    case error_id::google_only:
        return FailureKind::Unsupported;
    default:
        return FailureKind::Unknown;
    }
}

/// The exception's text; fixed messages without the tag that all of them begin with.
std::string text_of(const Exception& exception) {
    constexpr std::string_view kTag = "[spreadsheet_err]: ";
    std::string_view text = exception.what();
    if (text.starts_with(kTag)) text.remove_prefix(kTag.size());
    return std::string(text);
}

} // namespace

Exception with_failure(Exception exception, Failure failure) {
    if (failure.cause.empty()) failure.cause = text_of(exception);
    exception << FailureInfo(std::make_shared<const Failure>(std::move(failure)));
    return exception;
}

void pass_failure(const Exception& exception, const foundation::core::except::IMessageId& error) {
    error << FailureInfo(std::make_shared<const Failure>(failure_of(exception)));
}

Failure failure_of(const foundation::core::except::IMessageId& error) {
    if (const auto* const failure = boost::get_error_info<FailureInfo>(error)) return **failure;
    return {FailureKind::Unknown, error.argument(), {}, {}};
}

Failure failure_of(const Exception& exception) {
    if (const auto* const failure = boost::get_error_info<FailureInfo>(exception)) return **failure;
    return {kind_of(exception.id()), text_of(exception)};
}

} // namespace spreadsheet
