// SPDX-License-Identifier: Apache-2.0
//
// Where data goes: standard output or a file, collected in large pieces. A file is made with the
// first piece, so that a command which fails before leaves an old file alone.
#pragma once

#include <cstdint>
#include <fstream>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace zxsheet {

class OutputSink {
  public:
    /// Writes to `out` unless `file` (a UTF-8 path) names a file; `kStream` does not. Calls
    /// `before_first` before the first piece goes out.
    OutputSink(std::ostream& out, std::string file, std::function<void()> before_first = {});

    void write(std::string_view text);
    void write(char character) { write(std::string_view(&character, 1)); }

    /// Says something beside the data: one sentence, for standard error, once all data is written.
    void note(const std::string& sentence) { notes_.push_back(sentence); }
    const std::vector<std::string>& notes() const { return notes_; }

    /// What the program ends with when all goes well; 0 at first.
    void set_exit_code(int code) { exit_code_ = code; }
    int exit_code() const { return exit_code_; }

    /// Characters of a line of the terminal that the data goes to; 0 when it goes elsewhere.
    std::size_t terminal_width() const { return file_name_.empty() ? terminal_width_ : 0; }
    void set_terminal_width(std::size_t width) { terminal_width_ = width; }

    /// Whether nothing has been written.
    bool is_empty() const { return sent_bytes_ == 0 && buffer_.empty(); }
    /// Whether the file or stream has refused something.
    bool has_failed() const { return has_failed_; }

    /// Writes what is left. Throws `CommandError` when the file or stream does not take it.
    void finish();

    /// Says where the output ends when a failure cuts it off; empty when nothing has gone out, and
    /// when the output itself has failed: then nobody knows how much of it arrived.
    std::string break_off_text() const;

  private:
    void flush();
    void open_file();
    [[noreturn]] void fail();

    std::ostream& out_;
    std::string file_name_;
    std::ofstream file_;
    std::function<void()> before_first_; ///< empty once called
    std::string buffer_;
    std::uint64_t sent_bytes_ = 0;
    std::uint64_t sent_lines_ = 0;
    std::vector<std::string> notes_;
    std::size_t terminal_width_ = 0;
    int exit_code_ = 0;
    bool has_failed_ = false;
};

} // namespace zxsheet
