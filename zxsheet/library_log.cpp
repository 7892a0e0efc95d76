// SPDX-License-Identifier: Apache-2.0
#include "zxsheet/library_log.h"

#include <algorithm>

#include "spreadsheet/spreadsheet.h"

namespace zxsheet {

LibraryLog::LibraryLog() : sink_(std::make_shared<foundation::log::CollectingSink>()) {
    spreadsheet::initialize();
    spreadsheet::getLogger().add_sink(sink_);
}

LibraryLog::~LibraryLog() {
    spreadsheet::getLogger().remove_sink(sink_);
    spreadsheet::release();
}

std::string LibraryLog::cause() const {
    const auto records = sink_->records();
    // A book logs its end, too, which says nothing new.
    const auto found = std::find_if(records.rbegin(), records.rend(), [](const auto& record) {
        return record.severity == foundation::log::error &&
               record.text.find(" DTOR ") == std::string::npos;
    });
    if (found == records.rend()) return {};
    const std::size_t tag_end = found->text.find("]:");
    if (tag_end == std::string::npos) return found->text;
    const std::size_t begin = found->text.find_first_not_of(' ', tag_end + 2);
    return begin == std::string::npos ? std::string() : found->text.substr(begin);
}

} // namespace zxsheet
