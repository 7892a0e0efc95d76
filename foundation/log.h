// SPDX-License-Identifier: Apache-2.0
//
// The diagnostic logger: records with a channel, a severity and a text, filtered by a level mask
// before anything is formatted, delivered to the sinks that the host adds. With no sink a record
// goes nowhere.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/export.h"

namespace foundation::log {

/// Severities are single bits, so that a mask can select any set of them.
enum severity : std::uint32_t {
    trace = 0x040,
    debug = 0x080,
    info = 0x100,
    error = 0x200, ///< failures of a back-end, logged just before they are thrown
};

/// Every severity but `trace` and `debug`.
inline constexpr std::uint32_t default_mask = ~std::uint32_t{trace | debug};

/// One record as a sink sees it.
struct Record {
    std::string channel;
    std::uint32_t severity;
    std::string text; ///< UTF-8, one line
};

/// Receives records. Called under the logger's lock, on the thread that logs; must not log itself.
class ZX_API Sink {
  public:
    virtual ~Sink();
    virtual void consume(const Record& record) = 0;
};

/// Keeps every record; for tests and for programs that show the cause of a failure.
class ZX_API CollectingSink : public Sink {
  public:
    ~CollectingSink() override;
    void consume(const Record& record) override;
    /// A copy of the records received so far, in order.
    std::vector<Record> records() const;
    void clear();

  private:
    mutable std::mutex mutex_;
    std::vector<Record> records_;
};

template <class Char>
class basic_diagnostic_logger;

/// Logger of one channel. Thread-safe.
///
///     auto& logger = spreadsheet::getLogger();
///     if (logger.enabled(foundation::log::error)) logger.write(foundation::log::error, "[TAG]:
///     cause");
template <>
class ZX_API basic_diagnostic_logger<char> {
  public:
    explicit basic_diagnostic_logger(std::string channel);
    ~basic_diagnostic_logger();
    basic_diagnostic_logger(const basic_diagnostic_logger&) = delete;
    basic_diagnostic_logger& operator=(const basic_diagnostic_logger&) = delete;

    const std::string& channel() const noexcept;

    std::uint32_t level_mask() const noexcept;
    void set_level_mask(std::uint32_t mask) noexcept;

    /// True when the mask has the severity's bit and at least one sink is there to receive the
    /// record. False while the process destroys its static objects.
    bool enabled(std::uint32_t severity) const noexcept;

    /// Delivers one record; does nothing when the severity is not enabled.
    void write(std::uint32_t severity, std::string_view text);

    void add_sink(const std::shared_ptr<Sink>& sink);
    void remove_sink(const std::shared_ptr<Sink>& sink);

  private:
    struct State;
    std::unique_ptr<State> state_;
};

/// Logs the entry into a scope and the way out of it at severity `trace`: source unit, function
/// signature, line.
class ZX_API ScopedTrace {
  public:
    ScopedTrace(basic_diagnostic_logger<char>& logger, const char* unit, const char* function,
                int line);
    ~ScopedTrace();
    ScopedTrace(const ScopedTrace&) = delete;
    ScopedTrace& operator=(const ScopedTrace&) = delete;

  private:
    basic_diagnostic_logger<char>& logger_;
    std::string text_; ///< empty when tracing was off at the entry
};

} // namespace foundation::log
