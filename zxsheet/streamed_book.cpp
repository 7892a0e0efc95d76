// SPDX-License-Identifier: Apache-2.0
//
// Copying between streams and files.
#include "zxsheet/streamed_book.h"

#include <algorithm>
#include <fstream>
#include <random>
#include <string_view>
#include <vector>

#include "zxsheet/command_error.h"
#include "zxsheet/input_file.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kPieceBytes = 1 << 16;

std::string utf8_path(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

bool is_pipe(const BookLocation& location) {
    std::error_code ignored;
    const fs::file_status status = fs::status(location.path(), ignored);
    return fs::is_fifo(status) || fs::is_character_file(status);
}

/// A name for the copy. Its ending is that of the file's family; what else the book is, macros or a
/// template, decides the ending of `output`: a copy without one is saved as what that says.
std::string name_for(std::string_view first_bytes, const std::string& output) {
    if (container_of(first_bytes) == Container::CompoundFile) return "book.xls";
    const std::string ending = lower_extension(output);
    const bool decides =
        ending == ".xlsx" || ending == ".xlsm" || ending == ".xltx" || ending == ".xltm";
    return decides ? "book" : "book.xlsx";
}

} // namespace

TemporaryFolder::TemporaryFolder() {
    constexpr int kTries = 16;
    std::error_code failure;
    const fs::path parent = fs::temp_directory_path(failure);
    if (failure)
        throw CommandError(ExitCode::NotWritten,
                           "There is no folder for temporary files; TMPDIR has to name one");
    std::random_device random;
    for (int i = 0; i < kTries && !failure; ++i) {
        path_ = parent / ("zxsheet-" + std::to_string(random()) + std::to_string(random()));
        // Whoever makes a folder of this name first has it; ours is for us alone.
        if (!fs::create_directory(path_, failure)) continue;
        fs::permissions(path_, fs::perms::owner_all, failure);
        removed_.add(path_);
        if (!failure) return;
    }
    throw CommandError(ExitCode::NotWritten,
                       "There is no room for temporary files in '" + utf8_path(parent) + "'");
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::string TemporaryFolder::file(const std::string& name) {
    removed_.add(path_ / name);
    return utf8_path(path_ / name);
}

void StreamedBook::fetch(BookLocation& location, const std::string& output, std::istream& in,
                         std::uint64_t max_bytes) {
    const bool is_input = location.text() == kStream;
    if (location.is_online() || (!is_input && !is_pipe(location))) return;
    std::ifstream pipe;
    if (!is_input) pipe = open_input_file(location.text());
    std::istream& source = is_input ? in : pipe;
    const std::string name = is_input ? "standard input" : location.text();
    folder_.emplace();
    std::vector<char> piece(kPieceBytes);
    std::ofstream file;
    std::uint64_t bytes = 0;
    do {
        source.read(piece.data(), static_cast<std::streamsize>(piece.size()));
        const std::string_view read(piece.data(), static_cast<std::size_t>(source.gcount()));
        if (!file.is_open()) {
            location.set_file(folder_->file(name_for(read, output)), name, output);
            file.open(location.path(), std::ios::binary | std::ios::trunc);
        }
        bytes += read.size();
        if (bytes > max_bytes)
            throw CommandError(ExitCode::Failed,
                               name + ": It has more than " + grouped(max_bytes >> 20) +
                                   " MiB, which is larger than allowed for a book from a stream.");
        file.write(read.data(), static_cast<std::streamsize>(read.size()));
    } while (source && file);
    if (source.bad()) throw CommandError(ExitCode::NotReadable, name + ": It cannot be read.");
    file.close();
    if (!file)
        throw CommandError(ExitCode::NotWritten, name + ": There is no room for a copy; the disk "
                                                        "may be full.");
}

void send_file(const std::string& path, std::ostream& out) {
    std::ifstream file = open_input_file(path);
    std::vector<char> piece(kPieceBytes);
    do {
        file.read(piece.data(), static_cast<std::streamsize>(piece.size()));
        out.write(piece.data(), file.gcount());
    } while (file && out);
    out.flush();
    if (!out) throw CommandError(ExitCode::NotWritten, "standard output: It cannot be written.");
}

} // namespace zxsheet
