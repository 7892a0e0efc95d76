// SPDX-License-Identifier: Apache-2.0
//
// Uploads of two parts: what the file is, and its bytes (RFC 2387).
#pragma once

#include <string>
#include <string_view>

namespace gsheet {

/// The header "Content-Type" of such a body.
std::string multipart_content_type();

/// Metadata is JSON; `type` is the file's own.
std::string multipart_body(std::string_view metadata, std::string_view type,
                           std::string_view contents);

/// The MIME type that a workbook file's extension stands for.
std::string mime_type_of_path(const std::u16string& path);

/// A whole file of at most 1 GiB; throws std::runtime_error, whose text names it.
std::string contents_of(const std::u16string& path);

} // namespace gsheet
