// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/utils/service_log.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "foundation/http/http_message.h"
#include "foundation/oauth.h"
#include "foundation/unicode.h"
#include "spreadsheet/book_factory.h"
#include "spreadsheet/gsheet/auth/credential_search.h"
#include "spreadsheet/gsheet/utils/util_gsheet.h"

namespace gsheet {

namespace {

void replace_all(std::string& text, const std::string& secret) {
    constexpr std::string_view kHidden = "***";
    if (secret.empty() || secret == kHidden) return;
    for (std::size_t at = text.find(secret); at != std::string::npos;
         at = text.find(secret, at + kHidden.size()))
        text.replace(at, secret.size(), kHidden);
}

/// A URL shows a secret percent-encoded.
void hide(std::string& text, const std::string& secret) {
    replace_all(text, secret);
    replace_all(text, foundation::http::percent_encode(secret));
}

} // namespace

std::string without_secrets(std::string_view text) {
    std::vector<std::string> secrets = foundation::oauth::stored_keys();
    for (std::string& secret : secrets_of_search())
        secrets.push_back(std::move(secret));
    for (const char* kind : {"accesstoken", "apikey"})
        secrets.push_back(foundation::unicode::to_utf8(getCredential(kind)));
    // A secret may be the beginning of another, whose rest would be left over.
    std::sort(secrets.begin(), secrets.end(),
              [](const auto& a, const auto& b) { return a.size() > b.size(); });
    std::string cleaned(text);
    for (const std::string& secret : secrets)
        hide(cleaned, secret);
    return cleaned;
}

void log_line(std::uint32_t severity, std::string_view text) {
    auto& logger = spreadsheet::getLogger();
    if (logger.enabled(severity)) logger.write(severity, without_secrets(text));
}

} // namespace gsheet
