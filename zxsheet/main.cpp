// SPDX-License-Identifier: Apache-2.0
//
// The entry into the program; arguments become UTF-8 on every platform.
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include "foundation/terminal.h"
#include "zxsheet/run.h"

namespace {

int run_on_standard_streams(const std::vector<std::string>& arguments) {
    std::cerr.tie(nullptr);
    return zxsheet::run(arguments, std::cin, std::cout, std::cerr,
                        {foundation::error_is_terminal(), foundation::output_terminal_width()});
}

} // namespace

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include "foundation/unicode.h"

namespace {

/// Lets the console show UTF-8 while the program runs; the setting belongs to the console and would
/// outlive the program.
class Utf8Console {
  public:
    Utf8Console() : before_(::GetConsoleOutputCP()) { ::SetConsoleOutputCP(CP_UTF8); }
    Utf8Console(const Utf8Console&) = delete;
    Utf8Console& operator=(const Utf8Console&) = delete;
    ~Utf8Console() {
        if (before_ != 0) ::SetConsoleOutputCP(before_);
    }

  private:
    UINT before_; ///< 0 without a console
};

} // namespace

int wmain(int argc, wchar_t** argv) {
    const Utf8Console console;
    // The same bytes as in files and as on every other platform.
    ::_setmode(::_fileno(stdin), _O_BINARY);
    ::_setmode(::_fileno(stdout), _O_BINARY);
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i) {
        const std::wstring_view wide = argv[i];
        const std::u16string text(wide.begin(), wide.end());
        arguments.push_back(foundation::unicode::to_generalized_utf8(text));
    }
    return run_on_standard_streams(arguments);
}
#else
int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    return run_on_standard_streams({argv + 1, argv + argc});
}
#endif
