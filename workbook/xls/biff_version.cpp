// SPDX-License-Identifier: Apache-2.0
//
// BOF records of every version.
#include "workbook/xls/biff_version.h"

#include "workbook/xls/record_ids.h"

namespace workbook {

namespace {

SubstreamKind kind_of(std::uint16_t type) {
    switch (type) {
    case 0x0005:
        return SubstreamKind::Globals;
    case 0x0006:
        return SubstreamKind::Module;
    case 0x0010:
        return SubstreamKind::Sheet;
    case 0x0020:
        return SubstreamKind::Chart;
    case 0x0040:
        return SubstreamKind::Macros;
    case 0x0100:
        return SubstreamKind::Workspace;
    default:
        return SubstreamKind::Unknown;
    }
}

// Some writers leave the version field empty or wrong; the record of BIFF8 is the longer one then.
BiffVersion shared_bof_version(const Record& record) {
    constexpr std::uint16_t kVersion5 = 0x0500, kVersion8 = 0x0600;
    constexpr std::size_t kBiff8Bytes = 16;
    const std::uint16_t version = record.u16(0);
    if (version == kVersion8) return BiffVersion::Biff8;
    if (version == kVersion5) return BiffVersion::Biff5;
    return record.size() >= kBiff8Bytes ? BiffVersion::Biff8 : BiffVersion::Biff5;
}

} // namespace

std::optional<SubstreamStart> read_bof(const Record& record) {
    constexpr std::size_t kLeastBytes = 4;
    if (record.size() < kLeastBytes) return std::nullopt;
    const SubstreamKind kind = kind_of(record.u16(2));
    switch (record.id) {
    case record::kBof2:
        return SubstreamStart{BiffVersion::Biff2, kind};
    case record::kBof3:
        return SubstreamStart{BiffVersion::Biff3, kind};
    case record::kBof4:
        // In BIFF4 type 0x0100 is a workbook: globals with several sheets after them.
        return SubstreamStart{BiffVersion::Biff4,
                              kind == SubstreamKind::Workspace ? SubstreamKind::Globals : kind};
    case record::kBof:
        return SubstreamStart{shared_bof_version(record), kind};
    default:
        return std::nullopt;
    }
}

} // namespace workbook
