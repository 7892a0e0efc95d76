// SPDX-License-Identifier: Apache-2.0
//
// Which processes of LibreOffice run.
#pragma once

#include <vector>

#include <unistd.h>

namespace spreadsheet {

/// The numbers of a process's children that run soffice; of this process's without an argument.
std::vector<int> office_processes(int parent = getpid());

} // namespace spreadsheet
