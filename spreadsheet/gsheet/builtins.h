// SPDX-License-Identifier: Apache-2.0
//
// Functions that a host environment calls with its own arrays to work with Google Sheets and Google
// Drive directly. Each takes the number of outputs asked for (at most 1), room for them (one even
// when none is asked for), the number of inputs and the inputs, which stay the caller's. Texts are
// a string scalar or a character vector. The output is set only when the call succeeds.
//
// Failures are message-ID errors (utils/host_errors.h, foundation::core::except::IMessageId),
// looked for in this order: ...gsheet:FeatureFlag while the switch "GOOGLESHEETS"
// (foundation/features.h) is off; "Zentra:builtins:TooManyOutputs", "...:TooManyInputs",
// "...:TooFewInputs"; "Zentra:string:MustBeStringScalarOrCharacterVector" and
// "...:MissingNotSupported" for texts; then what the service's failure stands for,
// "Zentra:spreadsheet:book:internalError" for the network's.
#pragma once

#include "foundation/export.h"
#include "foundation/host_array.h"

namespace gsheet {

using foundation::HostArray;
using foundation::HostArrayPtr;

/// Creates a spreadsheet. Inputs: title; sheet names (a text, or an array of texts). Both may be
/// left out. Output: the service's description of it, JSON in a character array.
ZX_API void createGoogleWorkbookBuiltin(int nlhs, HostArrayPtr plhs[], int nrhs,
                                        const HostArray* prhs[]);

/// Deletes a file of the Drive. Input: its identifier. Output: whether it was deleted (logical); a
/// failure is not thrown.
ZX_API void deleteGoogleSpreadsheet(int nlhs, HostArrayPtr plhs[], int nrhs,
                                    const HostArray* prhs[]);

/// Input: a file identifier. Output: the bytes that it takes of the owner's quota (double).
/// ...gsheet:NotFound with the identifier for a file that is not there, ...gsheet:InternalError for
/// one of 2 GiB and more.
ZX_API void fileAttributesForGoogleSheet(int nlhs, HostArrayPtr plhs[], int nrhs,
                                         const HostArray* prhs[]);

/// Input: a file identifier. Output: its MIME type, always that of a native spreadsheet; any other
/// throws ...gsheet:UnknownMimeType with the type.
ZX_API void mimeTypeForGoogleSheet(int nlhs, HostArrayPtr plhs[], int nrhs,
                                   const HostArray* prhs[]);

/// Inputs: spreadsheet identifier, sheet name, range, and up to two logical scalars, which change
/// nothing ("Zentra:builtins:MustBeLogicalScalar" for anything else). Takes the API key that is
/// stored for "gsheets-readtable" (foundation/oauth_keys.h), or ZX_API_KEY; no access token.
/// Output: the values column by column as the service's JSON, a character array.
ZX_API void readGoogleSheet(int nlhs, HostArrayPtr plhs[], int nrhs, const HostArray* prhs[]);

/// Inputs: spreadsheet identifier, range, data. Writes 345 to A17, whatever the data. Output: the
/// service's reply, a character array.
ZX_API void writeToGoogleSheet(int nlhs, HostArrayPtr plhs[], int nrhs, const HostArray* prhs[]);

/// Uploads a workbook file, at most 1 GiB, to the Drive as it is. Input: its path. Output: the
/// service's description of the new file, a character array.
ZX_API void uploadSheetToGdrive(int nlhs, HostArrayPtr plhs[], int nrhs, const HostArray* prhs[]);

} // namespace gsheet
