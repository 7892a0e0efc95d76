// SPDX-License-Identifier: Apache-2.0
//
// Which processes of LibreOffice run.
#pragma once

#include <string>
#include <vector>

#include <unistd.h>

namespace spreadsheet {

/// The numbers of a process's children that run soffice; of this process's without an argument.
std::vector<int> office_processes(int parent = getpid());

/// The sockets with a name in the file system that a process has open, as paths.
std::vector<std::string> office_sockets(int office);

} // namespace spreadsheet
