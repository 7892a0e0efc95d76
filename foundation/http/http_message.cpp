// SPDX-License-Identifier: Apache-2.0
#include "foundation/http/http_message.h"

#include <algorithm>
#include <stdexcept>

#include "foundation/ascii_case.h"

namespace foundation::http {

namespace {

constexpr std::string_view kSecretParameter = "key";
constexpr std::string_view kHidden = "***";

bool is_unreserved(char c, std::string_view kept) {
    const bool is_alphanumeric =
        (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
    return is_alphanumeric || kept.find(c) != std::string_view::npos;
}

bool is_control(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

/// Replaces the value of "key" in a query that is part of the URL already.
std::string without_key(const std::string& url) {
    std::string text;
    const std::size_t query = std::min(url.find('?'), url.size());
    text.assign(url, 0, query);
    for (std::size_t at = query; at < url.size();) {
        const std::size_t end = std::min(url.find('&', at + 1), url.size());
        const std::string_view pair = std::string_view(url).substr(at + 1, end - at - 1);
        text += url[at];
        if (pair.substr(0, pair.find('=')) == kSecretParameter)
            text.append(kSecretParameter).append("=").append(kHidden);
        else
            text.append(pair);
        at = end;
    }
    return text;
}

} // namespace

const char* to_string(HttpMethod method) noexcept {
    switch (method) {
    case HttpMethod::Get:
        return "GET";
    case HttpMethod::Post:
        return "POST";
    case HttpMethod::Delete:
        return "DELETE";
    case HttpMethod::Put:
        return "PUT";
    }
    return "";
}

HttpRequest::HttpRequest(HttpMethod method, std::string url, const HttpHeaders& headers)
    : method_(method), url_(std::move(url)) {
    for (const auto& [name, value] : headers)
        setHeader(name, value);
}

void HttpRequest::setHeader(std::string_view name, std::string_view value) {
    const auto is_bad = [](std::string_view text) {
        return std::any_of(text.begin(), text.end(), is_control);
    };
    // The text is not shown: it may be a credential with a line end behind it.
    if (name.empty() || is_bad(name) || is_bad(value))
        throw std::invalid_argument("a header of a request holds a control character");
    const auto known = std::find_if(headers_.begin(), headers_.end(), [name](const auto& header) {
        return unicode::equal_ignoring_ascii_case(header.first, name);
    });
    if (known == headers_.end())
        headers_.emplace_back(name, value);
    else
        known->second = value;
}

void HttpRequest::setQueryParameters(QueryParameters parameters) {
    parameters_ = std::move(parameters);
}

void HttpRequest::setRequestBody(std::string body) {
    body_ = std::move(body);
}

std::string HttpRequest::fullUrl() const {
    std::string url = url_;
    char separator = url.find('?') == std::string::npos ? '?' : '&';
    for (const auto& [name, value] : parameters_) {
        url += separator;
        url.append(percent_encode(name)).append("=").append(percent_encode(value));
        separator = '&';
    }
    return url;
}

std::string HttpRequest::printableUrl() const {
    return without_key(fullUrl());
}

std::string percent_encode(std::string_view text, std::string_view kept) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string encoded;
    encoded.reserve(text.size());
    for (const char c : text) {
        if (is_unreserved(c, kept)) {
            encoded += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        encoded += '%';
        encoded += kDigits[byte >> 4];
        encoded += kDigits[byte & 0xF];
    }
    return encoded;
}

} // namespace foundation::http
