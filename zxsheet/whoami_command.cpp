// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet google whoami`: which credential requests to Google use.
#include "spreadsheet/gsheet/credentials.h"
#include "zxsheet/command_table.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

void run_whoami(const BookOptions&, OutputSink& out) {
    const gsheet::CredentialDescription credential = gsheet::describe_credential();
    const auto line = [&out](const char* name, const std::string& value) {
        if (!value.empty()) out.write(std::string(name) + value + '\n');
    };
    line("source:        ", credential.source);
    line("account:       ", credential.account);
    for (const std::string& scope : credential.scopes)
        line("scope:         ", scope);
    if (credential.remaining)
        line("ends in:       ",
             counted(static_cast<std::uint64_t>(credential.remaining->count()), "second"));
    line("quota project: ", credential.quota_project);
    line("note:          ", credential.note);
}

} // namespace

Command whoami_command() {
    const auto options = std::make_shared<BookOptions>();
    options->book = BookLocation::online("google");
    Command command{"google", "whoami", "Which credential is used, for whom, and for how long",
                    {},       {},       options};
    command.read = [options](OutputSink& out) { run_whoami(*options, out); };
    return command;
}

} // namespace zxsheet
