// SPDX-License-Identifier: Apache-2.0
//
// Why the system has not started a spreadsheet application.
#include "foundation/automation/automation.h"

namespace foundation::automation {

std::string start_problem(HRESULT result) {
    switch (result) {
    case CO_E_CLASSSTRING:
    case REGDB_E_CLASSNOTREG:
        return "No spreadsheet application is registered on this machine as Excel.Application: "
               "install one.";
    case E_ACCESSDENIED:
        return "The system denies this user the start of the spreadsheet application.";
    case CO_E_SERVER_EXEC_FAILURE:
        return "The spreadsheet application is registered but does not start: see whether it "
               "starts by hand.";
    default:
        return "The spreadsheet application cannot be started.";
    }
}

} // namespace foundation::automation
