// SPDX-License-Identifier: Apache-2.0
//
// The versions of the record format, and how a substream begins.
#pragma once

#include <optional>

#include "workbook/xls/record_stream.h"

namespace workbook {

enum class BiffVersion {
    Biff2 = 2, ///< up to here to BIFF4: one sheet a file, byte strings, no container
    Biff3 = 3,
    Biff4 = 4,
    Biff5 = 5, ///< also called BIFF7: workbooks with globals, still byte strings
    Biff8 = 8  ///< MS-XLS: Unicode, shared strings
};

enum class SubstreamKind { Globals, Sheet, Chart, Macros, Module, Workspace, Unknown };

/// What a BOF record says (MS-XLS 2.4.21).
struct SubstreamStart {
    BiffVersion version;
    SubstreamKind kind;
};

/// Nullopt for a record that is not a BOF record.
std::optional<SubstreamStart> read_bof(const Record& record);

} // namespace workbook
