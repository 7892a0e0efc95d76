// SPDX-License-Identifier: Apache-2.0
//
// A line on the terminal that says what takes so long: shown after a while, kept up to date by a
// thread of its own, erased at the end.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <ostream>
#include <string>
#include <thread>

namespace zxsheet {

class ProgressLine {
  public:
    using Milliseconds = std::chrono::milliseconds;

    /// Nothing is ever shown when `terminal` is null. Until `finish`, nobody else may write to it.
    ProgressLine(std::ostream* terminal, std::string text,
                 Milliseconds delay = std::chrono::seconds(1));
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ~ProgressLine() { finish(); }

    void set_text(std::string text);
    /// Prints a line of its own to `out`, which may be the terminal; the line of progress follows.
    void print_above(std::ostream& out, const std::string& line);
    /// Erases the line for good. May be called more than once.
    void finish();

  private:
    void run(Milliseconds delay);
    void show(std::chrono::steady_clock::time_point start);
    void erase();

    std::ostream* const terminal_;
    std::string text_;
    bool finished_ = false;
    std::size_t shown_width_ = 0;
    std::mutex mutex_; ///< of everything above
    std::condition_variable wake_;
    std::thread thread_;
};

} // namespace zxsheet
