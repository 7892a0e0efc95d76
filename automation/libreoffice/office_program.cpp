// SPDX-License-Identifier: Apache-2.0
#include "automation/libreoffice/office_program.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <system_error>

#include "automation/libreoffice/start_problem.h"
#include "foundation/environment.h"
#include "foundation/unicode.h"

namespace office {
namespace {

constexpr const char* kProgramVariable = "ZX_SOFFICE";

/// Folders of installations that have put no program in the search path.
constexpr const char* kUsualFolders[] = {
    "/usr/lib/libreoffice/program", "/usr/lib64/libreoffice/program", "/opt/libreoffice/program"};

/// `buildid=40(Build:2)` in the file beside the program.
std::string read_build(const std::string& folder) {
    constexpr std::string_view kKey = "buildid=";
    std::ifstream file(folder + "/versionrc");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with(kKey)) return line.substr(kKey.size());
    return {};
}

/// The installation that a program belongs to, which may be a link to a script beside the program
/// proper.
std::optional<OfficeProgram> installation_of(const std::filesystem::path& program) {
    std::error_code failure;
    const std::filesystem::path real = std::filesystem::canonical(program, failure);
    if (failure || !std::filesystem::is_regular_file(real, failure)) return std::nullopt;
    const std::filesystem::path proper = real.parent_path() / "soffice.bin";
    const bool has_proper = std::filesystem::is_regular_file(proper, failure);
    const std::string folder = real.parent_path().string();
    return OfficeProgram{(has_proper ? proper : real).string(), folder, read_build(folder)};
}

std::optional<OfficeProgram> find_installed() {
    std::istringstream search_path(
        foundation::unicode::to_utf8(foundation::environment_variable("PATH")));
    for (std::string folder; std::getline(search_path, folder, ':');)
        for (const char* name : {"/soffice", "/libreoffice"})
            if (auto found = installation_of(folder + name)) return found;
    for (const char* folder : kUsualFolders)
        if (auto found = installation_of(std::string(folder) + "/soffice.bin")) return found;
    return std::nullopt;
}

} // namespace

OfficeProgram find_office() {
    const std::string named =
        foundation::unicode::to_utf8(foundation::environment_variable(kProgramVariable));
    if (named.empty()) {
        if (auto found = find_installed()) return *found;
        throw StartProblem("Interactive mode needs LibreOffice Calc: install the package "
                           "libreoffice-calc, or name "
                           "the program soffice in ZX_SOFFICE.");
    }
    if (auto found = installation_of(named)) return *found;
    throw StartProblem("Interactive mode needs LibreOffice Calc: ZX_SOFFICE names " + named +
                       ", which does not exist; correct it, or install the package "
                       "libreoffice-calc.");
}

} // namespace office
