// SPDX-License-Identifier: Apache-2.0
//
// Functions that a host environment calls with its own arrays to work with Google Sheets and Google
// Drive directly. Each takes the number of outputs asked for, the outputs to fill (owned by the
// caller), the number of inputs and the inputs (which stay the caller's). Texts are a string scalar
// or a character vector. Outputs are filled only when the call succeeds.
//
// In this order, each throws `MessageIdError` (utils/host_errors.h): ...gsheet:FeatureFlag while the
// switch "GOOGLESHEETS" is off; the host's errors for too many outputs, too many and too few inputs
// ("Zentra:builtins:TooManyOutputs", "...:TooManyInputs", "...:TooFewInputs");
// "Zentra:string:MustBeStringScalarOrCharacterVector" and "...:MissingNotSupported" for texts; then
// what the service's failure stands for.
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

/// Input: a file identifier. Output: the bytes that it takes of the owner's quota (double), below
/// 2 GiB.
ZX_API void fileAttributesForGoogleSheet(int nlhs, HostArrayPtr plhs[], int nrhs,
                                         const HostArray* prhs[]);

/// Input: a file identifier. Output: its MIME type, always that of a native spreadsheet; any other
/// throws ...gsheet:UnknownMimeType with the type.
ZX_API void mimeTypeForGoogleSheet(int nlhs, HostArrayPtr plhs[], int nrhs, const HostArray* prhs[]);

/// Inputs: spreadsheet identifier, sheet name, range, and up to two logical scalars, which change
/// nothing. Output: the values column by column as the service's JSON, a character array.
ZX_API void readGoogleSheet(int nlhs, HostArrayPtr plhs[], int nrhs, const HostArray* prhs[]);

/// Inputs: spreadsheet identifier, range, data. Writes 345 to A17, whatever the data. Output: the
/// service's reply, a character array.
ZX_API void writeToGoogleSheet(int nlhs, HostArrayPtr plhs[], int nrhs, const HostArray* prhs[]);

/// Uploads a workbook file to the Drive. Input: its path. Output: the service's description of the
/// new file, a character array.
ZX_API void uploadSheetToGdrive(int nlhs, HostArrayPtr plhs[], int nrhs, const HostArray* prhs[]);

} // namespace gsheet
