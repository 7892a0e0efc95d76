// SPDX-License-Identifier: Apache-2.0
//
// The entry into the program; arguments become UTF-8 on every platform.
#include <iostream>
#include <string>
#include <vector>

#include "zxsheet/run.h"

#ifdef _WIN32
#include "foundation/unicode.h"

int wmain(int argc, wchar_t** argv) {
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i) {
        const std::wstring_view wide = argv[i];
        arguments.push_back(foundation::unicode::to_utf8(std::u16string(wide.begin(), wide.end())));
    }
    return zxsheet::run(arguments, std::cout, std::cerr);
}
#else
int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    return zxsheet::run({argv + 1, argv + argc}, std::cout, std::cerr);
}
#endif
