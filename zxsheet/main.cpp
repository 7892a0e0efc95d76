// SPDX-License-Identifier: Apache-2.0
//
// The entry into the program; arguments become UTF-8 on every platform.
#include <iostream>
#include <string>
#include <vector>

#include "foundation/terminal.h"
#include "zxsheet/run.h"

namespace {

int run_on_standard_streams(const std::vector<std::string>& arguments) {
    std::cerr.tie(nullptr);
    return zxsheet::run(arguments, std::cout, std::cerr, foundation::error_is_terminal());
}

} // namespace

#ifdef _WIN32
#include "foundation/unicode.h"

int wmain(int argc, wchar_t** argv) {
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i) {
        const std::wstring_view wide = argv[i];
        arguments.push_back(foundation::unicode::to_utf8(std::u16string(wide.begin(), wide.end())));
    }
    return run_on_standard_streams(arguments);
}
#else
int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    return run_on_standard_streams({argv + 1, argv + argc});
}
#endif
