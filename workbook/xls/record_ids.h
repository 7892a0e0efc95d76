// SPDX-License-Identifier: Apache-2.0
//
// Record numbers (MS-XLS 2.3.2). Where BIFF versions number one record differently, the suffix says
// which; without a suffix, the number is that of BIFF8.
#pragma once

#include <cstdint>

namespace workbook::record {

using Id = std::uint16_t;

// Structure of the stream.
inline constexpr Id kBof2 = 0x0009, kBof3 = 0x0209, kBof4 = 0x0409, kBof = 0x0809;
inline constexpr Id kEof = 0x000A;

/// Whether a record begins a substream.
constexpr bool is_bof(Id id) {
    return id == kBof || id == kBof4 || id == kBof3 || id == kBof2;
}

inline constexpr Id kContinue = 0x003C;
inline constexpr Id kFilePass = 0x002F;

// Globals.
inline constexpr Id kBoundSheet = 0x0085;
inline constexpr Id kSheetHeader4 = 0x008F; ///< before each sheet of a BIFF4 workbook
inline constexpr Id kCodePage = 0x0042;
inline constexpr Id kDate1904 = 0x0022;
inline constexpr Id kFont2 = 0x0031, kFont3 = 0x0231;
inline constexpr Id kFormat2 = 0x001E, kFormat = 0x041E;
inline constexpr Id kXf2 = 0x0043, kXf3 = 0x0243, kXf4 = 0x0443, kXf = 0x00E0;
inline constexpr Id kName2 = 0x0018, kName3 = 0x0218, kName = 0x0018;
inline constexpr Id kExternSheet = 0x0017;
inline constexpr Id kSupBook = 0x01AE, kExternName = 0x0023;
inline constexpr Id kSst = 0x00FC;

// Cells.
inline constexpr Id kBlank2 = 0x0001, kBlank = 0x0201;
inline constexpr Id kInteger2 = 0x0002;
inline constexpr Id kNumber2 = 0x0003, kNumber = 0x0203;
inline constexpr Id kLabel2 = 0x0004, kLabel = 0x0204;
inline constexpr Id kBoolErr2 = 0x0005, kBoolErr = 0x0205;
inline constexpr Id kFormula = 0x0006, kFormula3 = 0x0206, kFormula4 = 0x0406;
inline constexpr Id kString2 = 0x0007, kString = 0x0207;
inline constexpr Id kRk = 0x027E;
inline constexpr Id kMulRk = 0x00BD;
inline constexpr Id kMulBlank = 0x00BE;
inline constexpr Id kRString = 0x00D6;
inline constexpr Id kLabelSst = 0x00FD;
inline constexpr Id kArray2 = 0x0021, kArray = 0x0221;
inline constexpr Id kShrFmla = 0x04BC;
inline constexpr Id kTable2 = 0x0036, kTable = 0x0236;
inline constexpr Id kIxfe2 = 0x0044; ///< the next cell's format, where its own field is too small

// Around the cells.
inline constexpr Id kRow2 = 0x0008, kRow = 0x0208;
inline constexpr Id kColWidth2 = 0x0024;
inline constexpr Id kColInfo = 0x007D;
inline constexpr Id kDefColWidth = 0x0055;
inline constexpr Id kStandardWidth = 0x0099;
inline constexpr Id kProtect = 0x0012;
inline constexpr Id kMergeCells = 0x00E5;

// Looked at when a book is written.
inline constexpr Id kIndex2 = 0x000B, kIndex = 0x020B;
inline constexpr Id kDbCell = 0x00D7;
inline constexpr Id kDimensions2 = 0x0000, kDimensions = 0x0200;
inline constexpr Id kUncalced = 0x005E;
inline constexpr Id kWindow1 = 0x003D, kWindow2 = 0x023E;
inline constexpr Id kObjectProtect = 0x0063, kScenarioProtect = 0x00DD, kPassword = 0x0013;
inline constexpr Id kTabId = 0x013D;
inline constexpr Id kExtSst = 0x00FF;
inline constexpr Id kXfCrc = 0x087C;
inline constexpr Id kRecalcId = 0x01C1;
inline constexpr Id kFont = 0x0031;
inline constexpr Id kStyle = 0x0293;
inline constexpr Id kPrecision = 0x000E;
inline constexpr Id kDefaultRowHeight = 0x0225;
inline constexpr Id kSheetOptions = 0x0081;
inline constexpr Id kDrawing = 0x00EC, kDrawingSelection = 0x00ED;
inline constexpr Id kObject = 0x005D, kTextObject = 0x01B6, kNote = 0x001C;
inline constexpr Id kHeaderPicture = 0x0866, kPicture = 0x007F;
inline constexpr Id kCodeName = 0x01BA;

// Changed when sheets are copied or renamed.
inline constexpr Id kDrawingGroup = 0x00EB;
inline constexpr Id kNameComment = 0x0894, kNameGroup = 0x0898, kNamePublished = 0x0893;
inline constexpr Id kConditionalFormat = 0x01B1, kConditionalFormat12 = 0x087A;
inline constexpr Id kValidation = 0x01BE;
inline constexpr Id kChartReference = 0x1051; ///< BRAI
inline constexpr Id kHyperlink = 0x01B8;
inline constexpr Id kSourceArea = 0x0051, kSourceName = 0x0052; ///< DCONREF, DCONNAME
inline constexpr Id kCustomViewBegin = 0x01AA, kCustomViewEnd = 0x01AB;
inline constexpr Id kTables = 0x0871, kTable11 = 0x0872, kTable12 = 0x0878; ///< lists of cells
inline constexpr Id kTableContinue11 = 0x0875, kTableSettings = 0x0877;
inline constexpr Id kAutoFilter12 = 0x087E, kSortData = 0x0895, kContinue12 = 0x087F;
inline constexpr Id kPivotChartLink = 0x0858, kPivotChartOptions = 0x0859;
inline constexpr Id kWebPublishing = 0x0801;

} // namespace workbook::record
