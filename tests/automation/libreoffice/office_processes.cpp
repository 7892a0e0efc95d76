// SPDX-License-Identifier: Apache-2.0
#include "tests/automation/libreoffice/office_processes.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

namespace spreadsheet {

std::vector<int> office_processes(int parent) {
    std::vector<int> found;
    std::error_code failure;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", failure)) {
        std::ifstream file(entry.path() / "stat");
        int id = 0;
        int its_parent = 0;
        std::string name;
        char state = 0;
        if (file >> id >> name >> state >> its_parent && its_parent == parent &&
            name == "(soffice.bin)" && state != 'Z')
            found.push_back(id);
    }
    return found;
}

} // namespace spreadsheet
