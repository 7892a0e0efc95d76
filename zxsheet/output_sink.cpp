// SPDX-License-Identifier: Apache-2.0
//
// Collecting output and handing it on.
#include "zxsheet/output_sink.h"

#include <filesystem>
#include <utility>

#include "zxsheet/book_location.h"
#include "zxsheet/command_error.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

constexpr std::size_t kPieceBytes = 1 << 16;

/// Lines are long, and a search passes over them many bytes at a time.
std::uint64_t count_lines(std::string_view text) {
    std::uint64_t lines = 0;
    for (std::size_t end; (end = text.find('\n')) != text.npos; ++lines)
        text.remove_prefix(end + 1);
    return lines;
}

} // namespace

OutputSink::OutputSink(std::ostream& out, std::string file, std::function<void()> before_first)
    : out_(out),
      file_name_(file == kStream ? std::string() : std::move(file)),
      before_first_(std::move(before_first)) {}

void OutputSink::write(std::string_view text) {
    buffer_ += text;
    if (buffer_.size() >= kPieceBytes) flush();
}

void OutputSink::finish() {
    flush();
    if (file_.is_open())
        file_.close();
    else
        out_.flush();
    if (!file_ || !out_) fail();
}

std::string OutputSink::break_off_text() const {
    if (sent_bytes_ == 0) return {};
    return " The output breaks off after " + counted(sent_lines_, "whole line") + " (" +
           counted(sent_bytes_, "byte") + ").";
}

void OutputSink::flush() {
    if (before_first_) std::exchange(before_first_, nullptr)();
    if (!file_name_.empty() && !file_.is_open()) open_file();
    std::ostream& target = file_.is_open() ? file_ : out_;
    target.write(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
    sent_bytes_ += buffer_.size();
    sent_lines_ += count_lines(buffer_);
    buffer_.clear();
    if (!target) fail();
}

void OutputSink::open_file() {
    namespace fs = std::filesystem;
    const fs::path path = native_path(file_name_);
    file_.open(path, std::ios::binary | std::ios::trunc);
    if (file_) return;
    has_failed_ = true;
    std::error_code ignored;
    const char* const reason =
        fs::is_directory(path, ignored) ? "It is a folder, not a file."
        : path.has_parent_path() && !fs::is_directory(path.parent_path(), ignored)
            ? "There is no such folder."
            : "The file cannot be written; check the permissions of the file and its folder.";
    throw CommandError(ExitCode::NotWritten, file_name_ + ": " + reason);
}

void OutputSink::fail() {
    has_failed_ = true;
    sent_bytes_ = 0;
    throw CommandError(ExitCode::NotWritten,
                       output_name(file_name_.empty() ? kStream : file_name_) +
                           ": It cannot be written; the disk may be full.");
}

} // namespace zxsheet
