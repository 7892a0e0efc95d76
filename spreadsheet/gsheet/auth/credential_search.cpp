// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/auth/credential_search.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

#include "foundation/environment.h"
#include "foundation/files.h"
#include "foundation/log.h"
#include "foundation/never_destroyed.h"
#include "foundation/process.h"
#include "foundation/unicode.h"
#include "foundation/user_files.h"
#include "spreadsheet/exception.h"
#include "spreadsheet/gsheet/auth/credential_file.h"
#include "spreadsheet/gsheet/auth/sign_in_failure.h"
#include "spreadsheet/gsheet/auth/token_exchange.h"
#include "spreadsheet/gsheet/json_access.h"
#include "spreadsheet/gsheet/utils/service_log.h"
#include "spreadsheet/gsheet/utils/util_gsheet.h"
#include "spreadsheet/with_failure.h"

namespace gsheet {

namespace {

using foundation::environment_variable;
using foundation::unicode::to_utf8;

constexpr std::chrono::milliseconds kMargin{60'000}; ///< a token is not used up to its end
constexpr std::size_t kMaxTokenBytes = 1u << 16;
constexpr std::size_t kMaxSecrets = 256; ///< of former ones the latest

enum class SourceKind : std::uint8_t { none, variable, function, command, file };

/// The source that the environment names now.
struct Source {
    SourceKind kind = SourceKind::none;
    std::u16string where; ///< command line or path
};

struct State {
    std::mutex mutex; ///< held while a token is requested: others wait for the same one
    bool is_on = false;
    TokenFunction function;
    std::u16string file_path; ///< of `file`
    std::optional<CredentialFile> file;
    std::map<std::pair<std::u16string, Scope>, AccessToken> tokens;

    std::mutex secrets_mutex; ///< of the next; never held while something else is done
    std::vector<std::string> secrets;
};

State& state() {
    static foundation::NeverDestroyed<State> instance;
    return instance.get();
}

void remember_secret(const std::string& secret) {
    State& now = state();
    const std::scoped_lock lock(now.secrets_mutex);
    if (secret.empty() ||
        std::find(now.secrets.begin(), now.secrets.end(), secret) != now.secrets.end())
        return;
    if (now.secrets.size() >= kMaxSecrets) now.secrets.erase(now.secrets.begin());
    now.secrets.push_back(secret);
}

/// Each line of a key in PEM is secret, however lines are put together. Its first and last are not,
/// and the few characters that may end it are in too many words.
void remember_lines(const std::string& key) {
    for (std::size_t begin = 0; begin < key.size();) {
        const std::size_t end = std::min(key.find_first_of("\r\n", begin), key.size());
        if (key[begin] != '-' && end - begin > 8) remember_secret(key.substr(begin, end - begin));
        begin = end + 1;
    }
}

bool is_there(const std::u16string& path) {
    try {
        foundation::files::open_for_reading(path);
        return true;
    } catch (const foundation::files::FileError& failure) {
        return failure.problem() != foundation::files::FileProblem::NotFound;
    }
}

/// Where the vendor's command-line tool keeps the default credentials of applications.
std::u16string well_known_path() {
    constexpr const char16_t* kName = u"/application_default_credentials.json";
    const std::u16string named = environment_variable("CLOUDSDK_CONFIG");
    if (!named.empty()) return named + kName;
    const std::u16string settings = foundation::files::user_settings_folder();
    return settings.empty() ? settings : settings + u"/gcloud" + kName;
}

Source find_source(const State& now) {
    if (now.function) return {SourceKind::function, {}};
    if (!now.is_on || !getCredential("accesstoken").empty()) return {SourceKind::variable, {}};
    if (std::u16string command = environment_variable("ZX_TOKEN_COMMAND"); !command.empty())
        return {SourceKind::command, std::move(command)};
    if (std::u16string path = environment_variable("GOOGLE_APPLICATION_CREDENTIALS"); !path.empty())
        return {SourceKind::file, std::move(path)};
    if (std::u16string path = well_known_path(); !path.empty() && is_there(path))
        return {SourceKind::file, std::move(path)};
    return {};
}

const CredentialFile& file_at(State& now, const std::u16string& path) {
    if (now.file && now.file_path == path) return *now.file;
    now.file.reset();
    now.file = read_credential_file(path);
    now.file_path = path;
    remember_secret(now.file->refresh_token);
    remember_secret(now.file->client_secret);
    remember_lines(now.file->private_key);
    if (now.file->is_open_to_others)
        log_line(foundation::log::info,
                 "The key file " + to_utf8(path) + " can be read by other users of this machine.");
    return *now.file;
}

std::string trimmed(const std::string& text) {
    constexpr const char* kBlanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

AccessToken token_of_command(const std::u16string& command) {
    const auto output = foundation::output_of_command(command, kMaxTokenBytes);
    if (!output)
        throw_sign_in_failure("The command in ZX_TOKEN_COMMAND failed; it has to print an access "
                              "token and end with code 0.");
    AccessToken token{trimmed(*output), {}};
    remember_secret(token.value);
    const bool is_token =
        !token.value.empty() && token.value.find_first_of(" \t\r\n") == std::string::npos;
    if (!is_token)
        throw_sign_in_failure("The command in ZX_TOKEN_COMMAND printed something other than an "
                              "access token.");
    return token;
}

AccessToken new_token(State& now, const Source& source, Scope scope) {
    if (source.kind == SourceKind::command) return token_of_command(source.where);
    return request_token(file_at(now, source.where), scope, remember_secret);
}

/// A signed-in user's token has the scopes of the sign-in, and a command knows none.
Scope scope_for_cache(State& now, const Source& source, Scope scope) {
    if (source.kind == SourceKind::command) return Scope::sheets;
    const bool is_user = file_at(now, source.where).kind == CredentialFile::Kind::authorized_user;
    return is_user ? Scope::sheets : scope;
}

bool is_fresh(const AccessToken& token) {
    return !token.end || foundation::Clock::later(foundation::clock().now(), kMargin) < *token.end;
}

std::string call(const TokenFunction& function, bool renew) {
    std::string token = function(renew);
    remember_secret(token);
    return token;
}

/// The kept token unless it is old or equals `refused`.
std::string kept_or_new(State& now, const Source& source, Scope scope, const std::string& refused) {
    const std::pair key{source.where, scope_for_cache(now, source, scope)};
    const auto kept = now.tokens.find(key);
    if (kept != now.tokens.end() && is_fresh(kept->second) && kept->second.value != refused)
        return kept->second.value;
    AccessToken token = new_token(now, source, scope);
    return (now.tokens[key] = std::move(token)).value;
}

} // namespace

void set_token_function(TokenFunction function) {
    State& now = state();
    const std::scoped_lock lock(now.mutex);
    now.function = std::move(function);
}

void use_credential_search(bool on) {
    State& now = state();
    const std::scoped_lock lock(now.mutex);
    now.is_on = on;
    now.file.reset(); // read anew, and tokens with it
    now.tokens.clear();
}

std::string bearer_token(Scope scope) {
    State& now = state();
    std::unique_lock lock(now.mutex);
    const Source source = find_source(now);
    switch (source.kind) {
    case SourceKind::none:
        return {};
    case SourceKind::variable:
        return to_utf8(getCredential("accesstoken"));
    case SourceKind::function: {
        const TokenFunction function = now.function;
        lock.unlock(); // the host's function may take its time
        return call(function, false);
    }
    default:
        return kept_or_new(now, source, scope, {});
    }
}

std::string renewed_token(Scope scope, const std::string& refused) {
    State& now = state();
    std::unique_lock lock(now.mutex);
    const Source source = find_source(now);
    if (source.kind == SourceKind::none || source.kind == SourceKind::variable) return {};
    if (source.kind == SourceKind::function) {
        const TokenFunction function = now.function;
        lock.unlock();
        return call(function, true);
    }
    return kept_or_new(now, source, scope, refused);
}

bool can_renew_tokens() {
    State& now = state();
    const std::scoped_lock lock(now.mutex);
    const SourceKind kind = find_source(now).kind;
    return kind != SourceKind::none && kind != SourceKind::variable;
}

bool is_search_on() {
    State& now = state();
    const std::scoped_lock lock(now.mutex);
    return now.is_on;
}

std::string quota_project() {
    State& now = state();
    const std::scoped_lock lock(now.mutex);
    if (!now.is_on) return {};
    const std::u16string named = environment_variable("GOOGLE_CLOUD_QUOTA_PROJECT");
    if (!named.empty()) return to_utf8(named);
    const Source source = find_source(now);
    return source.kind == SourceKind::file ? file_at(now, source.where).quota_project
                                           : std::string();
}

CredentialOwner credential_owner() {
    State& now = state();
    const std::scoped_lock lock(now.mutex);
    const Source source = find_source(now);
    switch (source.kind) {
    case SourceKind::function:
        return {"the host", {}};
    case SourceKind::command:
        return {"ZX_TOKEN_COMMAND", {}};
    case SourceKind::file:
        return {to_utf8(source.where), file_at(now, source.where).client_email};
    case SourceKind::variable:
        if (!getCredential("accesstoken").empty()) return {"ZX_ACCESS_TOKEN", {}};
        [[fallthrough]];
    default:
        return {getCredential("apikey").empty() ? "" : "ZX_API_KEY", {}};
    }
}

std::vector<std::string> secrets_of_search() {
    State& now = state();
    const std::scoped_lock lock(now.secrets_mutex);
    return now.secrets;
}

CredentialDescription describe_credential() {
    const std::string token = bearer_token(Scope::sheets);
    const CredentialOwner owner = credential_owner();
    CredentialDescription description;
    description.source = owner.source;
    description.account = owner.account;
    description.quota_project = quota_project();
    if (token.empty() && owner.source.empty())
        throw_sign_in_failure(
            "There is no credential; set ZX_ACCESS_TOKEN, ZX_TOKEN_COMMAND or "
            "GOOGLE_APPLICATION_CREDENTIALS, or ZX_API_KEY for reading what is public.");
    if (token.empty()) return description;
    const foundation::json::Object told = describe_token(token);
    if (description.account.empty()) description.account = to_utf8(text_in(told, "email"));
    const std::string scopes = to_utf8(text_in(told, "scope"));
    for (std::size_t begin = 0; begin < scopes.size();) {
        const std::size_t end = std::min(scopes.find(' ', begin), scopes.size());
        if (end > begin) description.scopes.push_back(scopes.substr(begin, end - begin));
        begin = end + 1;
    }
    // The service gives the number as text.
    const std::string seconds = to_utf8(text_in(told, "expires_in"));
    std::int64_t count = 0;
    const auto [end, problem] =
        std::from_chars(seconds.data(), seconds.data() + seconds.size(), count);
    if (problem == std::errc() && end != seconds.data())
        description.remaining = std::chrono::seconds(count);
    else if (const auto number = integer_in(told, "expires_in"))
        description.remaining = std::chrono::seconds(*number);
    State& now = state();
    const std::scoped_lock lock(now.mutex);
    const Source source = find_source(now);
    if (source.kind == SourceKind::file && file_at(now, source.where).is_open_to_others)
        description.note = "Other users of this machine can read the file; take the permission "
                           "away (chmod 600, on Windows icacls).";
    return description;
}

std::string hide_credentials(std::string_view text) {
    return without_secrets(text);
}

void throw_sign_in_failure(const std::string& cause, spreadsheet::ServiceReason reason) {
    using spreadsheet::error_id;
    log_line(foundation::log::error, "[SIGN IN]: " + cause + ' ' + reason.message);
    reason.message = without_secrets(reason.message);
    throw spreadsheet::with_failure(
        spreadsheet::Exception(error_id::google_identity_required),
        {spreadsheet::FailureKind::Service, without_secrets(cause), {}, std::move(reason)});
}

} // namespace gsheet
