// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/auth/credential_file.h"

#include <cstdint>
#include <stdexcept>
#include <utility>

#include "foundation/files.h"
#include "foundation/json.h"
#include "foundation/unicode.h"
#include "foundation/user_files.h"
#include "spreadsheet/gsheet/auth/sign_in_failure.h"
#include "spreadsheet/gsheet/json_access.h"
#include "spreadsheet/gsheet/utils/endpoints.h"

namespace gsheet {

namespace {

namespace files = foundation::files;
using foundation::unicode::to_utf8;

constexpr std::uint64_t kMaxBytes = 1u << 20;

/// Refusals name the file, never what is in it.
class FileReader {
  public:
    explicit FileReader(const std::u16string& path) : path_(path) {
        try {
            const auto file = files::open_for_reading(path);
            if (file->size() > kMaxBytes) fail("is too large for a key file");
            std::string text(static_cast<std::size_t>(file->size()), '\0');
            text.resize(file->read_at(0, text.data(), text.size()));
            foundation::json::Value value = foundation::json::parse(text);
            if (!value.is_object()) fail("is not a key file");
            root_ = std::move(value.get_object());
        } catch (const files::FileError& failure) {
            throw_sign_in_failure("The key file " + to_utf8(path_) +
                                  " cannot be read: " + failure.what());
        } catch (const foundation::json::ParseError&) {
            fail("is not a key file: it is not JSON");
        }
    }

    std::string text(std::string_view key) const { return to_utf8(text_in(root_, key)); }
    std::string needed(std::string_view key) const {
        std::string value = text(key);
        if (value.empty()) fail("lacks \"" + std::string(key) + "\"");
        return value;
    }
    [[noreturn]] void fail(const std::string& what) const {
        throw_sign_in_failure("The file " + to_utf8(path_) + ' ' + what + '.');
    }

  private:
    std::u16string path_;
    Object root_;
};

} // namespace

CredentialFile read_credential_file(const std::u16string& path) {
    const FileReader reader(path);
    CredentialFile file;
    file.is_open_to_others = files::is_open_to_others(path);
    file.quota_project = reader.text("quota_project_id");
    file.token_uri = reader.text("token_uri");
    const std::string type = reader.needed("type");
    if (type == "service_account") {
        file.kind = CredentialFile::Kind::service_account;
        file.client_email = reader.needed("client_email");
        file.private_key = reader.needed("private_key");
        file.private_key_id = reader.text("private_key_id");
    } else if (type == "authorized_user") {
        file.kind = CredentialFile::Kind::authorized_user;
        file.client_id = reader.needed("client_id");
        file.client_secret = reader.needed("client_secret");
        file.refresh_token = reader.needed("refresh_token");
    } else {
        reader.fail("is of type \"" + type +
                    "\", which is not supported; use the key of a service account, or sign in "
                    "with the vendor's command-line tool");
    }
    if (file.token_uri.empty()) file.token_uri = to_utf8(endpoints().token + u"/token");
    if (!is_safe_address(foundation::unicode::to_utf16(file.token_uri)))
        reader.fail("has a \"token_uri\" that is neither https nor on this machine");
    return file;
}

} // namespace gsheet
