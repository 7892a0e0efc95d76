// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/drive.h"

#include <charconv>
#include <system_error>
#include <utility>

#include "foundation/files.h"
#include "foundation/json.h"
#include "foundation/unicode.h"
#include "spreadsheet/gsheet/json_access.h"
#include "spreadsheet/gsheet/utils/endpoints.h"
#include "spreadsheet/gsheet/utils/multipart.h"
#include "spreadsheet/gsheet/utils/util_gsheet.h"

namespace gsheet {

namespace {

namespace http = foundation::http;
namespace json = foundation::json;
using foundation::unicode::to_utf16;
using foundation::unicode::to_utf8;

constexpr const char* kFileFields = "id,name,mimeType,quotaBytesUsed";

std::u16string files_url(const std::u16string& suffix = u"") {
    return endpoints().drive + u"/drive/v3/files" + suffix;
}

std::u16string file_url(const std::u16string& id) {
    return files_url(u"/" + to_utf16(http::percent_encode(to_utf8(id))));
}

DriveFile parse_file(const json::Object& reply) {
    DriveFile file;
    file.id = text_in(reply, "id");
    file.name = text_in(reply, "name");
    file.mime_type = to_utf8(text_in(reply, "mimeType"));
    const std::string bytes = to_utf8(text_in(reply, "quotaBytesUsed"));
    std::int64_t count = 0;
    const auto [end, problem] = std::from_chars(bytes.data(), bytes.data() + bytes.size(), count);
    if (problem == std::errc() && end == bytes.data() + bytes.size()) file.quota_bytes = count;
    return file;
}

/// A string of the language of searches.
std::string quoted(const std::string& text) {
    std::string result = "'";
    for (const char character : text) {
        if (character == '\'' || character == '\\') result += '\\';
        result += character;
    }
    return result + '\'';
}

std::u16string without_extension(const std::u16string& name) {
    const std::size_t dot = name.rfind(u'.');
    return dot == std::u16string::npos || dot == 0 ? name : name.substr(0, dot);
}

} // namespace

DriveFile drive_file(const std::u16string& id) {
    return parse_file(executeRequestAndParseJsonResponse(
        createAuthorizedRequest(http::HttpMethod::Get, file_url(id),
                                {{"fields", kFileFields}, {"supportsAllDrives", "true"}})));
}

void delete_drive_file(const std::u16string& id) {
    http::HttpRequest request = createAuthorizedRequest(http::HttpMethod::Delete, file_url(id),
                                                        {{"supportsAllDrives", "true"}});
    RefusedRequest about;
    about.method = http::HttpMethod::Delete;
    about.is_drive = true;
    about.has_token = true;
    const http::HttpResponse response = send_request(std::move(request));
    // The service answers 204, No Content.
    if (response.status < 200 || response.status > 299) throwForHttpStatus(response, about);
}

std::vector<DriveFile> find_spreadsheets(const std::u16string& name) {
    const std::string query = "name = " + quoted(to_utf8(name)) + " and mimeType = '" +
                              kSpreadsheetMimeType + "' and trashed = false";
    const json::Object reply = executeRequestAndParseJsonResponse(
        createAuthorizedRequest(http::HttpMethod::Get, files_url(),
                                {{"q", query},
                                 {"fields", std::string("files(") + kFileFields + ")"},
                                 {"orderBy", "modifiedTime desc"},
                                 {"corpora", "allDrives"},
                                 {"includeItemsFromAllDrives", "true"},
                                 {"supportsAllDrives", "true"}}));
    std::vector<DriveFile> found;
    if (const Array* const files = array_in(reply, "files"))
        for (const auto& file : *files)
            if (file.is_object()) found.push_back(parse_file(file.get_object()));
    return found;
}

DriveFile upload_to_drive(const std::u16string& path, const UploadOptions& options) {
    const std::u16string name = foundation::files::file_name(path);
    const std::string type = mime_type_of_path(path);
    json::Object metadata;
    metadata["name"] = to_utf8(options.convert ? without_extension(name) : name);
    metadata["mimeType"] = options.convert ? kSpreadsheetMimeType : type.c_str();
    if (!options.folder_id.empty())
        metadata["parents"] = json::Array{json::Value(to_utf8(options.folder_id))};
    http::HttpRequest request = createAuthorizedRequest(
        http::HttpMethod::Post, endpoints().upload + u"/upload/drive/v3/files",
        {{"uploadType", "multipart"}, {"fields", kFileFields}, {"supportsAllDrives", "true"}});
    request.setHeader("Content-Type", multipart_content_type());
    request.setRequestBody(multipart_body(json::to_text(metadata), type, contents_of(path)));
    return parse_file(executeRequestAndParseJsonResponse(std::move(request)));
}

} // namespace gsheet
