// SPDX-License-Identifier: Apache-2.0
#include "zxsheet/service_notices.h"

#include <chrono>

#include "spreadsheet/gsheet/credentials.h"

namespace zxsheet {
namespace {

namespace log = foundation::log;

std::string reason_text(const gsheet::Pause& pause) {
    switch (pause.reason) {
    case gsheet::PauseReason::rate_window:
        return "the service allows 60 requests a minute";
    case gsheet::PauseReason::too_many_requests:
        return "the service wants fewer requests (429)";
    case gsheet::PauseReason::time_out:
        return "the service did not answer in time";
    default:
        return "the service failed (" + std::to_string(pause.http_status) +
               "), and the request is sent again";
    }
}

const char* name_of(std::uint32_t severity) {
    switch (severity) {
    case log::trace:
        return "trace";
    case log::debug:
        return "debug";
    case log::info:
        return "info";
    default:
        return "error";
    }
}

std::uint32_t mask_of(const std::string& level) {
    std::uint32_t mask = 0;
    for (const std::uint32_t severity : {log::error, log::info, log::debug, log::trace}) {
        mask |= severity;
        if (level == name_of(severity)) break;
    }
    return mask;
}

class PrintingSink : public log::Sink {
  public:
    explicit PrintingSink(std::ostream& err) : err_(err) {}
    void consume(const log::Record& record) override {
        err_ << '[' << name_of(record.severity) << "] " << gsheet::hide_credentials(record.text)
             << '\n'
             << std::flush;
    }

  private:
    std::ostream& err_;
};

} // namespace

std::optional<std::string> pause_text(const gsheet::Pause& pause, bool is_terminal) {
    using namespace std::chrono_literals;
    if (pause.length <= (is_terminal ? 2s : 10s)) return {};
    const auto seconds = std::chrono::ceil<std::chrono::seconds>(pause.length);
    return "waiting " + std::to_string(seconds.count()) + " s: " + reason_text(pause);
}

PauseNotices::PauseNotices(std::ostream& err, bool is_terminal, ProgressLine& progress) {
    gsheet::set_pause_listener([&err, is_terminal, &progress](const gsheet::Pause& pause) {
        const auto text = pause_text(pause, is_terminal);
        if (text) progress.print_above(err, "zxsheet: " + *text);
    });
}

PauseNotices::~PauseNotices() {
    gsheet::set_pause_listener({});
}

LogPrinting::LogPrinting(const std::string& level, std::ostream& err) {
    if (level.empty()) return;
    sink_ = std::make_shared<PrintingSink>(err);
    auto& logger = spreadsheet::getLogger();
    mask_before_ = logger.level_mask();
    logger.set_level_mask(mask_of(level));
    logger.add_sink(sink_);
}

LogPrinting::~LogPrinting() {
    if (sink_ == nullptr) return;
    auto& logger = spreadsheet::getLogger();
    logger.remove_sink(sink_);
    logger.set_level_mask(mask_before_);
}

} // namespace zxsheet
