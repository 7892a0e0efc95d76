// SPDX-License-Identifier: Apache-2.0
#include "foundation/process.h"

#include <array>
#include <cstdio>

#include "foundation/unicode.h"

namespace foundation {

namespace {

#ifdef _WIN32
std::FILE* open_pipe(const std::u16string& command) {
    const std::wstring wide(command.begin(), command.end());
    return _wpopen(wide.c_str(), L"rb");
}
int close_pipe(std::FILE* pipe) {
    return _pclose(pipe);
}
#else
std::FILE* open_pipe(const std::u16string& command) {
    return popen(unicode::to_utf8(command).c_str(), "r");
}
int close_pipe(std::FILE* pipe) {
    return pclose(pipe);
}
#endif

} // namespace

std::optional<std::string> output_of_command(const std::u16string& command, std::size_t max_bytes) {
    std::FILE* const pipe = open_pipe(command);
    if (pipe == nullptr) return {};
    std::string output;
    std::array<char, 4096> block{};
    std::size_t count = 0;
    while (output.size() <= max_bytes &&
           (count = std::fread(block.data(), 1, block.size(), pipe)) > 0)
        output.append(block.data(), count);
    const int code = close_pipe(pipe);
    if (code != 0 || output.size() > max_bytes) return {};
    return output;
}

} // namespace foundation
