// SPDX-License-Identifier: Apache-2.0
//
// The host's function that uploads a workbook file: one request of two parts, what the file is and
// its bytes (RFC 2387).
#include <string>
#include <utility>

#include "foundation/files.h"
#include "foundation/json.h"
#include "foundation/unicode.h"
#include "spreadsheet/gsheet/arguments.h"
#include "spreadsheet/gsheet/auth/credential_search.h"
#include "spreadsheet/gsheet/builtins.h"
#include "spreadsheet/gsheet/utils/endpoints.h"
#include "spreadsheet/gsheet/utils/multipart.h"
#include "spreadsheet/gsheet/utils/util_gsheet.h"

namespace gsheet {

namespace {

namespace files = foundation::files;
namespace http = foundation::http;
using foundation::unicode::to_utf8;

/// A text as it stands between the quotes of JSON.
std::string escaped(const std::string& text) {
    const std::string quoted = foundation::json::to_text(foundation::json::Value(text));
    return quoted.substr(1, quoted.size() - 2);
}

std::string metadata_of(const std::u16string& path, const std::string& mime_type) {
    return "{\n\"name\": \"" + escaped(to_utf8(files::file_name(path))) + "\",\n\"mimeType\": \"" +
           mime_type + "\"\n}";
}

std::string upload(const std::u16string& path) {
    const std::u16string url = endpoints().upload + u"/upload/drive/v3/files?uploadType=multipart";
    http::HttpRequest request(http::HttpMethod::Post, to_utf8(url),
                              {{"Content-Type", multipart_content_type()}});
    set_bearer(request, bearer_token(Scope::drive));
    const std::string type = mime_type_of_path(path);
    request.setRequestBody(multipart_body(metadata_of(path, type), type, contents_of(path)));
    return executeRequestWithToken(std::move(request));
}

} // namespace

void uploadSheetToGdrive(int nlhs, HostArrayPtr plhs[], int nrhs, const HostArray* prhs[]) {
    run_builtin({nlhs, plhs, nrhs, prhs}, {1, 1},
                [&] { return character_array(upload(text_of(prhs[0]))); });
}

} // namespace gsheet
