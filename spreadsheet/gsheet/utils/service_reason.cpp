// SPDX-License-Identifier: Apache-2.0
//
// Reads the error object of a failed reply: Sheets gives the reason in "details", Drive in
// "errors".
#include "spreadsheet/gsheet/utils/service_reason.h"

#include <cstddef>
#include <string>
#include <string_view>

#include "foundation/json.h"
#include "spreadsheet/gsheet/json_access.h"
#include "spreadsheet/gsheet/utils/service_log.h"

namespace gsheet {

namespace {

/// Error objects of the service have a few kilobytes.
constexpr std::size_t kMaxErrorBytes = 1u << 20;

std::string string_in(const Object& parent, std::string_view key) {
    const auto* const value = parent.if_contains(key);
    if (value == nullptr || !value->is_string()) return {};
    return without_secrets({value->get_string().data(), value->get_string().size()});
}

/// The first "reason" among the objects of a list.
std::string reason_in(const Object& error, std::string_view list) {
    const Array* const entries = array_in(error, list);
    if (entries == nullptr) return {};
    for (const auto& entry : *entries) {
        const Object* const object = entry.if_object();
        std::string reason = object != nullptr ? string_in(*object, "reason") : std::string();
        if (!reason.empty()) return reason;
    }
    return {};
}

/// The address that a detail gives: "activationUrl" of its metadata, else of its first link.
std::string help_url_in(const Object& error) {
    const Array* const details = array_in(error, "details");
    if (details == nullptr) return {};
    std::string url;
    for (const auto& entry : *details) {
        const Object* const detail = entry.if_object();
        if (detail == nullptr) continue;
        const Object* const metadata = object_in(*detail, "metadata");
        if (metadata != nullptr && url.empty()) url = string_in(*metadata, "activationUrl");
        const Object* const link = first_object_in(*detail, "links");
        if (link != nullptr && url.empty()) url = string_in(*link, "url");
    }
    return url.starts_with("https://") ? url : std::string();
}

} // namespace

spreadsheet::ServiceReason reason_of(const foundation::http::HttpResponse& response) {
    spreadsheet::ServiceReason found;
    found.http_status = static_cast<int>(response.status);
    if (response.body.size() > kMaxErrorBytes) return found;
    try {
        const foundation::json::Value body = foundation::json::parse(response.body);
        const Object* const root = body.if_object();
        const Object* const error = root != nullptr ? object_in(*root, "error") : nullptr;
        if (error == nullptr) return found;
        found.status = string_in(*error, "status");
        found.message = string_in(*error, "message");
        found.reason = reason_in(*error, "details");
        if (found.reason.empty()) found.reason = reason_in(*error, "errors");
        found.help_url = help_url_in(*error);
    } catch (const foundation::json::ParseError&) {
        // A proxy's page, say: the status is all there is.
    }
    return found;
}

} // namespace gsheet
