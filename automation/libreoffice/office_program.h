// SPDX-License-Identifier: Apache-2.0
//
// Where LibreOffice is installed.
#pragma once

#include <string>

namespace office {

/// An installation: the program that runs without starting others, and its folder.
struct OfficeProgram {
    std::string path;   ///< .../program/soffice.bin
    std::string folder; ///< .../program
    std::string build;  ///< what its profiles say that made them; empty when it is not known
};

/// The program that the environment variable ZX_SOFFICE names, or else the one that is installed.
/// Throws StartProblem when there is none.
OfficeProgram find_office();

} // namespace office
