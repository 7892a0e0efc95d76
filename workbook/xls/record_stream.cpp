// SPDX-License-Identifier: Apache-2.0
//
// The errors of a walk over records; the walk itself is inline.
#include "workbook/xls/record_stream.h"

#include <string>

#include "workbook/error.h"

namespace workbook {

namespace {

constexpr const char* kPart = "the workbook stream";

} // namespace

void RecordStream::refuse_cut_record() const {
    throw Error::damaged_at(kPart, next_, "it ends within a record; the file may be incomplete");
}

void require_size(const Record& record, std::size_t size, const char* what) {
    if (record.size() >= size) return;
    throw Error::damaged_at(kPart, record.position,
                            std::string(what) + " has " + std::to_string(record.size()) +
                                " bytes instead of " + std::to_string(size));
}

void refuse_record(const Record& record, const char* what) {
    throw Error::damaged_at(kPart, record.position, what);
}

} // namespace workbook
