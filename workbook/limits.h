// SPDX-License-Identifier: Apache-2.0
//
// What the library accepts at most. Sizes claimed by a file are checked against these before they
// reach an allocation, an index or a loop.
#pragma once

#include <cstddef>
#include <cstdint>

namespace workbook {

/// A part may unpack to this many times its packed size once it is larger than `kRatioFreeBytes`.
/// Plain worksheets reach about 40; deflate itself ends at 1032.
inline constexpr std::uint64_t kMaxInflateRatio = 250;
inline constexpr std::uint64_t kRatioFreeBytes = 1u << 20;

/// The same for all that one load unpacks against the size of the file: entries may overlap, and a
/// part may be read twice.
inline constexpr std::uint64_t kMaxTotalInflateRatio = 2 * kMaxInflateRatio;

/// Unpacked bytes of one part, and of all parts that one load reads.
inline constexpr std::uint64_t kMaxPartBytes = std::uint64_t{16} << 30;
inline constexpr std::uint64_t kMaxTotalBytes = std::uint64_t{64} << 30;

/// Parts that are held as a tree (workbook, styles, relationships, content types).
inline constexpr std::uint64_t kMaxTreePartBytes = 64u << 20;

/// Bytes of all targets of one relationships part: a long folder name counts for each of them.
inline constexpr std::size_t kMaxTargetBytes = 64u << 20;

/// Entries of a container, sheets of a book, cell formats, defined names.
inline constexpr std::size_t kMaxEntries = 200'000;
inline constexpr std::size_t kMaxSheets = 65'535;
inline constexpr std::size_t kMaxCellFormats = 1'000'000;
inline constexpr std::size_t kMaxDefinedNames = 1'000'000;

/// Depth of elements within a part.
inline constexpr int kMaxElementDepth = 256;

/// Attributes of one element; those of worksheets have about 20.
inline constexpr std::size_t kMaxAttributes = 10'000;

/// One tag or run of text without tags, and the string of a cell, which may consist of
/// several; the longest that applications write has 32,767 units.
inline constexpr std::size_t kMaxTokenBytes = 16u << 20;

/// Merged regions of one sheet.
inline constexpr std::size_t kMaxMergedRegions = 2'000'000;

/// Formulas of several cells that a changed sheet may have, and the bytes of those that a change
/// takes apart.
inline constexpr std::size_t kMaxFormulaGroups = 1'000'000;
inline constexpr std::size_t kMaxFormulaGroupBytes = 64u << 20;

} // namespace workbook
