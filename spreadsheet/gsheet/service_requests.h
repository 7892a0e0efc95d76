// SPDX-License-Identifier: Apache-2.0
//
// The requests of books and sheets in their common shapes. Every reply is read as JSON, so that one
// that is none is found whatever was asked; failures are those of utils/util_gsheet.h.
#pragma once

#include <string>

#include "spreadsheet/gsheet/json_access.h"
#include "spreadsheet/gsheet/utils/util_gsheet.h"
#include "spreadsheet/range.h"

namespace gsheet {

using foundation::http::QueryParameters;

/// GET of the spreadsheet's URL.
foundation::http::HttpRequest spreadsheet_get(const std::u16string& id, QueryParameters parameters);
Object get_spreadsheet(const std::u16string& id, QueryParameters parameters);

/// POST of `body` to the spreadsheet's URL and `suffix`.
Object post_to_spreadsheet(const std::u16string& id, const std::u16string& suffix,
                           std::string body);

/// POST to ":batchUpdate" of requests that each have one member, their name. The service does all
/// of them or none.
Object batch_update(const std::u16string& id, Array requests);
Object batch_update(const std::u16string& id, std::string_view name, Object request);
/// The URL that batches go to, for the log.
std::u16string batch_update_url(const std::u16string& id);

/// The first element of "replies" as the result of the request of that name; null when it has none.
const Object* first_reply(const Object& reply, std::string_view name);

/// A range of a sheet with its title before it: as a plain text, and as a part of a path.
std::u16string qualified_range(const std::u16string& title, const spreadsheet::Range& range);
std::u16string encoded_range(const std::u16string& title, const spreadsheet::Range& range);

} // namespace gsheet
