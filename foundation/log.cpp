// SPDX-License-Identifier: Apache-2.0
//
// The diagnostic logger over Boost.Log. Boost's core is touched only while the host has a sink
// here: then one Boost sink stands for all of them and takes the records of its own logger alone,
// so that records of the host's other loggers do not come here, and ours are never printed by
// Boost's default sink.
#include "foundation/log.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include <boost/log/attributes/constant.hpp>
#include <boost/log/attributes/value_extraction.hpp>
#include <boost/log/core.hpp>
#include <boost/log/expressions/message.hpp>
#include <boost/log/keywords/channel.hpp>
#include <boost/log/sinks/basic_sink_backend.hpp>
#include <boost/log/sinks/unlocked_frontend.hpp>
#include <boost/log/sources/record_ostream.hpp>
#include <boost/log/sources/severity_channel_logger.hpp>
#include <boost/make_shared.hpp>
#ifdef _WIN32
#include <boost/thread/detail/tss_hooks.hpp>
#endif

namespace foundation::log {
namespace {

namespace bl = boost::log;

using BoostLogger = bl::sources::severity_channel_logger_mt<std::uint32_t, std::string>;

/// Attribute of a record that tells which logger object it comes from.
constexpr const char* kOwnerAttribute = "DiagnosticLogger";

/// Set when the static objects of the process begin to go. Boost.Log's own are among them, so that
/// it must not be called any more.
std::atomic<bool> process_ends{false};

/// A static object of this type, made after Boost's, goes before them.
struct EndWatch {
    ~EndWatch() { process_ends = true; }
};

/// A static object of this type, made before Boost's, goes after them and gives back what
/// Boost.Thread keeps of the system for the thread that unloads the library. In a static library on
/// Windows it would do so only when the thread ends, and then its code is gone.
struct ThreadDataEnd {
#ifdef _WIN32
    ~ThreadDataEnd() {
        boost::on_thread_exit();
        boost::on_process_exit();
    }
#endif
};

boost::shared_ptr<bl::core> boost_core() {
    [[maybe_unused]] static const ThreadDataEnd end;
    return bl::core::get();
}

/// The sinks of one logger, called one record at a time.
class SinkList {
  public:
    /// Returns the number of sinks.
    std::size_t add(const std::shared_ptr<Sink>& sink) {
        const std::lock_guard lock(mutex_);
        if (std::find(sinks_.begin(), sinks_.end(), sink) == sinks_.end()) sinks_.push_back(sink);
        return sinks_.size();
    }

    std::size_t remove(const std::shared_ptr<Sink>& sink) {
        const std::lock_guard lock(mutex_);
        sinks_.erase(std::remove(sinks_.begin(), sinks_.end(), sink), sinks_.end());
        return sinks_.size();
    }

    void deliver(const Record& record) {
        const std::lock_guard lock(mutex_);
        for (const auto& sink : sinks_)
            sink->consume(record);
    }

  private:
    std::mutex mutex_;
    std::vector<std::shared_ptr<Sink>> sinks_;
};

/// Takes records out of Boost's core and hands them to the sinks of a logger.
class Backend : public bl::sinks::basic_sink_backend<bl::sinks::concurrent_feeding> {
  public:
    explicit Backend(std::shared_ptr<SinkList> sinks) : sinks_(std::move(sinks)) {}

    void consume(const bl::record_view& view) {
        Record record;
        record.channel = bl::extract_or_default<std::string>("Channel", view, std::string());
        record.severity = bl::extract_or_default<std::uint32_t>("Severity", view, 0u);
        record.text = bl::extract_or_default<std::string>("Message", view, std::string());
        sinks_->deliver(record);
    }

  private:
    std::shared_ptr<SinkList> sinks_;
};

using Frontend = bl::sinks::unlocked_sink<Backend>;

/// The logger's side of Boost.Log; exists while there are sinks.
class BoostSide {
  public:
    BoostSide(const std::string& channel, const std::shared_ptr<SinkList>& sinks)
        : core_(boost_core()),
          logger_(bl::keywords::channel = channel),
          frontend_(boost::make_shared<Frontend>(boost::make_shared<Backend>(sinks))) {
        const void* const owner = this;
        logger_.add_attribute(kOwnerAttribute, bl::attributes::constant<const void*>(owner));
        frontend_->set_filter([owner](const bl::attribute_value_set& values) {
            return bl::extract_or_default<const void*>(kOwnerAttribute, values, nullptr) == owner;
        });
        core_->add_sink(frontend_);
        static const EndWatch watch;
    }
    BoostSide(const BoostSide&) = delete;
    BoostSide& operator=(const BoostSide&) = delete;
    ~BoostSide() { core_->remove_sink(frontend_); }

    void write(std::uint32_t severity, const std::string& line) {
        BOOST_LOG_SEV(logger_, severity) << line;
        static const EndWatch watch; // the first record makes further static objects of Boost's
    }

  private:
    boost::shared_ptr<bl::core> core_;
    BoostLogger logger_;
    boost::shared_ptr<Frontend> frontend_;
};

std::string one_line(std::string_view text) {
    std::string line(text);
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return line;
}

} // namespace

Sink::~Sink() = default;

CollectingSink::~CollectingSink() = default;

void CollectingSink::consume(const Record& record) {
    const std::lock_guard lock(mutex_);
    records_.push_back(record);
}

std::vector<Record> CollectingSink::records() const {
    const std::lock_guard lock(mutex_);
    return records_;
}

void CollectingSink::clear() {
    const std::lock_guard lock(mutex_);
    records_.clear();
}

struct basic_diagnostic_logger<char>::State {
    explicit State(std::string name) : channel(std::move(name)) {}

    const std::string channel;
    std::atomic<std::uint32_t> mask{default_mask};
    std::atomic<bool> has_sinks{false};
    std::shared_ptr<SinkList> sinks = std::make_shared<SinkList>();
    std::mutex registration; ///< guards `boost_side`; never held while a record travels
    std::shared_ptr<BoostSide> boost_side;
};

basic_diagnostic_logger<char>::basic_diagnostic_logger(std::string channel)
    : state_(std::make_unique<State>(std::move(channel))) {}

basic_diagnostic_logger<char>::~basic_diagnostic_logger() = default;

const std::string& basic_diagnostic_logger<char>::channel() const noexcept {
    return state_->channel;
}

std::uint32_t basic_diagnostic_logger<char>::level_mask() const noexcept {
    return state_->mask;
}

void basic_diagnostic_logger<char>::set_level_mask(std::uint32_t mask) noexcept {
    state_->mask = mask;
}

bool basic_diagnostic_logger<char>::enabled(std::uint32_t severity) const noexcept {
    return state_->has_sinks && !process_ends && (state_->mask & severity) != 0;
}

void basic_diagnostic_logger<char>::write(std::uint32_t severity, std::string_view text) {
    if (!enabled(severity)) return;
    std::shared_ptr<BoostSide> boost_side;
    {
        const std::lock_guard lock(state_->registration);
        boost_side = state_->boost_side;
    }
    if (boost_side) boost_side->write(severity, one_line(text));
}

void basic_diagnostic_logger<char>::add_sink(const std::shared_ptr<Sink>& sink) {
    if (!sink) return;
    const std::lock_guard lock(state_->registration);
    if (!state_->boost_side)
        state_->boost_side = std::make_shared<BoostSide>(state_->channel, state_->sinks);
    state_->sinks->add(sink);
    state_->has_sinks = true;
}

void basic_diagnostic_logger<char>::remove_sink(const std::shared_ptr<Sink>& sink) {
    const std::lock_guard lock(state_->registration);
    if (state_->sinks->remove(sink) != 0) return;
    state_->has_sinks = false;
    state_->boost_side.reset();
}

ScopedTrace::ScopedTrace(basic_diagnostic_logger<char>& logger, const char* unit,
                         const char* function, int line)
    : logger_(logger) {
    if (!logger_.enabled(trace)) return;
    text_ = std::string(unit) + ": " + function + ", line " + std::to_string(line);
    logger_.write(trace, "enter " + text_);
}

ScopedTrace::~ScopedTrace() {
    if (text_.empty()) return;
    try {
        logger_.write(trace, "leave " + text_);
    } catch (...) {
        // Often runs while another exception is on its way; that one is worth more than this
        // record.
    }
}

} // namespace foundation::log
