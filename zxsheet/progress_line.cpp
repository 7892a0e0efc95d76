// SPDX-License-Identifier: Apache-2.0
//
// The thread that shows the line, and erasing it.
#include "zxsheet/progress_line.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace zxsheet {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kPeriod = std::chrono::milliseconds(500);
/// Must fit on one line: only there can it be erased.
constexpr std::size_t kMaxTextBytes = 64;

} // namespace

ProgressLine::ProgressLine(std::ostream* terminal, std::string text, Milliseconds delay)
    : terminal_(terminal), text_(std::move(text)) {
    if (terminal_ == nullptr) return;
    try {
        thread_ = std::thread([this, delay] { run(delay); });
    } catch (const std::system_error&) {
        // The work goes on without the line.
    }
}

void ProgressLine::set_text(std::string text) {
    const std::lock_guard lock(mutex_);
    text_ = std::move(text);
}

void ProgressLine::print_above(std::ostream& out, const std::string& line) {
    const std::lock_guard lock(mutex_);
    erase();
    out << line << '\n' << std::flush;
}

void ProgressLine::finish() {
    if (!thread_.joinable()) return;
    {
        const std::lock_guard lock(mutex_);
        finished_ = true;
    }
    wake_.notify_one();
    thread_.join();
}

void ProgressLine::run(Milliseconds delay) {
    const Clock::time_point start = Clock::now();
    std::unique_lock lock(mutex_);
    const auto is_finished = [this] { return finished_; };
    for (auto wait = delay; !wake_.wait_for(lock, wait, is_finished); wait = kPeriod)
        show(start);
    erase();
}

void ProgressLine::show(Clock::time_point start) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - start);
    std::string line = text_;
    if (line.size() > kMaxTextBytes) {
        std::size_t cut = kMaxTextBytes;
        while (cut > 0 && (static_cast<unsigned char>(line[cut]) & 0xC0) == 0x80)
            --cut; // not within a character
        line = line.substr(0, cut) + "...";
    }
    line += ", " + std::to_string(seconds.count()) + " s";
    erase();
    *terminal_ << line << std::flush;
    shown_width_ = line.size();
}

void ProgressLine::erase() {
    if (shown_width_ == 0) return;
    *terminal_ << '\r' << std::string(shown_width_, ' ') << '\r' << std::flush;
    shown_width_ = 0;
}

} // namespace zxsheet
