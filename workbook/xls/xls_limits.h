// SPDX-License-Identifier: Apache-2.0
//
// What the XLS engine accepts at most. Sizes claimed by a file are checked against these, or
// against the bytes that are there, before they reach an allocation, an index or a loop.
#pragma once

#include <cstddef>
#include <cstdint>

#include "workbook/cells/sheet_limits.h"

namespace workbook {

/// MS-XLS 2.5.167 Rw, 2.5.37 ColU8. BIFF2 to BIFF5 have 16,384 rows, but nothing is gained by
/// refusing more when they are read.
inline constexpr SheetLimits kXlsLimits{65'536, 256};

/// Bytes of the workbook stream: record positions have 32 bits (MS-XLS 2.4.28 BoundSheet8), and all
/// of the stream is held in memory.
inline constexpr std::uint64_t kMaxXlsStreamBytes = std::uint64_t{2} << 30;

/// Nested substreams: a sheet, a chart in it, and some for safety.
inline constexpr int kMaxSubstreamDepth = 8;

/// How often the bytes of the stream may be read as those of a sheet. Sheets have no byte in
/// common, but one whose end is missing goes on to the end of the stream.
inline constexpr std::uint64_t kMaxSheetOverlap = 8;

/// Sheets of a book: their numbers have 16 bits (MS-XLS 2.5.142 ITab).
inline constexpr std::size_t kMaxXlsSheets = 65'535;

/// Cell formats of a saved book: applications refuse files with more.
inline constexpr std::size_t kMaxSavedFormats = 4'050;

/// Cell formats in memory: their numbers have 16 bits in cells (MS-XLS 2.5.155 IXFCell).
inline constexpr std::size_t kMaxXlsFormats = 65'535;

} // namespace workbook
