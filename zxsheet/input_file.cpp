// SPDX-License-Identifier: Apache-2.0
//
// Opening files, and why they cannot be opened.
#include "zxsheet/input_file.h"

#include <filesystem>

#include "zxsheet/book_location.h"
#include "zxsheet/command_error.h"

namespace zxsheet {

Container container_of(std::string_view first_bytes) {
    if (first_bytes.starts_with("PK\x03\x04")) return Container::Zip;
    return first_bytes.starts_with("\xD0\xCF\x11\xE0") ? Container::CompoundFile : Container::None;
}

std::ifstream open_input_file(const std::string& name) {
    const std::filesystem::path path = native_path(name);
    std::ifstream file(path, std::ios::binary);
    std::error_code ignored;
    if (file && !std::filesystem::is_directory(path, ignored)) return file;
    const char* const reason =
        std::filesystem::is_directory(path, ignored) ? "It is a folder, not a file."
        : std::filesystem::exists(path, ignored) ? "The file cannot be read; check the permissions."
                                                 : "There is no such file.";
    throw CommandError(ExitCode::NotReadable, name + ": " + reason);
}

Container container_of_file(const std::string& name) {
    char first_bytes[4] = {};
    open_input_file(name).read(first_bytes, sizeof first_bytes);
    return container_of({first_bytes, sizeof first_bytes});
}

} // namespace zxsheet
