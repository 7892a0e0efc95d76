// SPDX-License-Identifier: Apache-2.0
//
// The messages of `error_id`, one entry per identifier in the order of their numbers. Texts that
// look alike or uneven are kept letter for letter: programs compare them.
#include <array>

#include "spreadsheet/exception.h"

namespace spreadsheet {
namespace {

#define ZX_MESSAGE(text) "[spreadsheet_err]: " text

constexpr const char* kInternal =
    ZX_MESSAGE("An internal error occurred. Please provide more information about how you "
               "encountered this issue.");

constexpr const char* kNotSaved =
    ZX_MESSAGE("Could not save the Book. Please make sure you have write access to where you are "
               "trying to save and there is sufficient disk space.");

constexpr std::array<const char*, 55> kMessages{
    // 0
    ZX_MESSAGE("Could not create or initialize a Book."),
    // 1
    ZX_MESSAGE("Could not open a Book. Check the filename or access permissions."),
    // 2
    ZX_MESSAGE("Could not create or initialize a Sheet."),
    // 3
    ZX_MESSAGE("Could not open a Sheet. Check that the Sheet name or index you requested "
               "is valid."),
    kNotSaved, // 4
    kNotSaved, // 5
    // 6
    ZX_MESSAGE("Could not find Sheet by index, pointer or name. Please ensure your inputs "
               "are valid."),
    // 7
    ZX_MESSAGE("Could not copy Sheet while moving."),
    // 8
    ZX_MESSAGE("Could not delete old Sheet while moving."),
    // 9
    ZX_MESSAGE("Could not load the Book. Please make sure you have read access, and enough "
               "free memory."),
    // 10
    ZX_MESSAGE("Could not clear the cells in the given range."),
    // 11
    ZX_MESSAGE("Could not delete the named range."),
    // 12
    ZX_MESSAGE("Mismatch in the size of the range and the types vector given as input."),
    // 13
    ZX_MESSAGE("Writing error cells is not supported."),
    // 14
    ZX_MESSAGE("Saving to memory is not a supported operation."),
    // 15
    ZX_MESSAGE("Loading from memory is not yet a supported operation."),
    // 16
    ZX_MESSAGE("Could not delete Sheet."),
    // 17
    ZX_MESSAGE("Could not determine Sheet type."),
    kInternal, // 18
    // 19
    ZX_MESSAGE("Could not set the hidden state."),
    // 20
    ZX_MESSAGE("The file name specified is incompatible with the book's format."),
    // 21
    ZX_MESSAGE("The range string had trailing characters that were not whitespace."),
    // 22
    ZX_MESSAGE("Could not parse a valid range from the given string. A valid range is of "
               "the form 'A1' (cell), 'A:B' (column-select), '1:5' (row-select) or 'A1:B5' "
               "(rectangle-select)."),
    // 23
    ZX_MESSAGE("The named range was not found."),
    // 24
    ZX_MESSAGE("The range was too large for a workbook in this format."),
    // 25
    ZX_MESSAGE("The cell is beyond the bounds of a workbook in this format or is a named "
               "range that does not exist in this sheet."),
    // 26
    ZX_MESSAGE("Invalid sheet name. Name must have 1-31 characters, excluding :, \\, /, "
               "?, *, [, and ]."),
    // 27
    ZX_MESSAGE("Error removing merged cells."),
    // 28
    ZX_MESSAGE("Failed to write. The data is too large for a cell, the range or sheet is "
               "protected, or the workbook is marked as final."),
    // 29
    ZX_MESSAGE("Invalid format. Must be XLS, XLSX, XLSM, XLSB, XLTX, XLTM, or ODS."),
    // 30
    ZX_MESSAGE("Invalid format. The specified format is not supported with this plug-in."),
    // 31
    ZX_MESSAGE("Chart Sheets are currently not supported."),
    kInternal, // 32
    kInternal, // 33
    kInternal, // 34
    kInternal, // 35
    kInternal, // 36
    // 37
    ZX_MESSAGE("The specified file contains unsupported active filters. To write to the "
               "file, clear all active filters."),
    // 38
    ZX_MESSAGE("Merged columns found in sheet. Set MergedCellColumnRule to any value other "
               "than 'error'."),
    // 39
    ZX_MESSAGE("Merged rows found in sheet. Set MergedCellRowRule to any value other than "
               "'error'."),
    // 40
    ZX_MESSAGE("Merged cells feature is not supported in UseExcel mode."),
    // 41
    ZX_MESSAGE("Invalid sheet name. Name must have 1-100 characters."),
    // 42
    ZX_MESSAGE("Google Sheet not found."),
    // 43
    ZX_MESSAGE("Operation not supported for Google Sheets."),
    // 44
    ZX_MESSAGE("Sheet type not supported for reading and writing Google Sheets."),
    // 45
    ZX_MESSAGE("API Key or other form of API consumer identity required to read or write "
               "from Google Sheets."),
    // 46
    ZX_MESSAGE("Cannot delete sheet. Google Spreadsheet must contain at least one sheet."),
    // 47
    ZX_MESSAGE("Google Sheets service is currently unavailable."),
    // 48
    ZX_MESSAGE("Google Sheets service is currently unavailable"),
    // 49
    ZX_MESSAGE("Too many requests made to Google Sheets service."),
    // 50
    ZX_MESSAGE("Request to Google Sheets server timed out."),
    // 51
    ZX_MESSAGE("This feature is only supported for Google Sheets."),
    // 52
    ZX_MESSAGE("The range was too large for a Google Sheet."),
    // 53
    ZX_MESSAGE("The range is invalid for a Google Sheet."),
    // 54
    ZX_MESSAGE("The cell is beyond the bounds of the Google Spreadsheet or is a named "
               "range that does not exist in this Google Spreadsheet."),
};

#undef ZX_MESSAGE

} // namespace

const char* error_id_message(error_id id) noexcept {
    const auto index = static_cast<std::size_t>(id);
    return index < kMessages.size() ? kMessages[index] : kInternal;
}

} // namespace spreadsheet
