// SPDX-License-Identifier: Apache-2.0
//
// Strings are counted as they come: the counts of the record are not believed.
#include "workbook/xls/reading/shared_strings.h"

#include "workbook/xls/reading/record_strings.h"

namespace workbook {

void read_shared_strings(std::string_view stream, std::size_t position, std::uint64_t wanted,
                         StringPool& strings) {
    RecordStream records(stream, position);
    if (!records.next()) return;
    ContinuedRecord record(records);
    // The counts of all and of different strings; what is there counts.
    if (!record.skip(8)) return;
    ByteText unused;
    RecordStrings reader(BiffVersion::Biff8, unused);
    while (strings.size() < wanted && !record.at_end())
        strings.add(reader.read(record, LengthField::TwoBytes));
}

} // namespace workbook
