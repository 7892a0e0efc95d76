// SPDX-License-Identifier: Apache-2.0
#include "foundation/terminal.h"

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#include <io.h>
#include <windows.h>
#else
#include <sys/ioctl.h>
#include <unistd.h>
#endif

namespace foundation {

bool error_is_terminal() {
    constexpr int kStandardError = 2; // on every platform
#ifdef _WIN32
    return ::_isatty(kStandardError) != 0;
#else
    return ::isatty(kStandardError) != 0;
#endif
}

std::size_t output_terminal_width() {
#ifdef _WIN32
    CONSOLE_SCREEN_BUFFER_INFO info;
    if (::GetConsoleScreenBufferInfo(::GetStdHandle(STD_OUTPUT_HANDLE), &info) == 0) return 0;
    return static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1);
#else
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0) return 0;
    return size.ws_col;
#endif
}

} // namespace foundation
