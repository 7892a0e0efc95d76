// SPDX-License-Identifier: Apache-2.0
#include "tests/automation/libreoffice/office_processes.h"

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
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

std::vector<std::string> office_sockets(int office) {
    const std::string process = "/proc/" + std::to_string(office);
    std::set<std::string> inodes;
    std::error_code failure;
    for (std::filesystem::directory_iterator entry(process + "/fd", failure), end;
         !failure && entry != end; entry.increment(failure)) {
        std::error_code gone;
        const std::string target = std::filesystem::read_symlink(entry->path(), gone).string();
        if (target.starts_with("socket:[")) inodes.insert(target.substr(8, target.size() - 9));
    }
    // Num RefCount Protocol Flags Type St Inode Path
    std::vector<std::string> paths;
    std::ifstream table(process + "/net/unix");
    for (std::string line; std::getline(table, line);) {
        std::istringstream fields(line);
        std::string skipped;
        std::string inode;
        std::string path;
        fields >> skipped >> skipped >> skipped >> skipped >> skipped >> skipped >> inode >> path;
        if (path.starts_with('/') && inodes.contains(inode)) paths.push_back(path);
    }
    return paths;
}

} // namespace spreadsheet
