// SPDX-License-Identifier: Apache-2.0
//
// The diagnostic logger, alone and beside a host that uses Boost.Log itself.
#include <thread>

#include <boost/log/sources/logger.hpp>
#include <boost/log/sources/record_ostream.hpp>
#include <gtest/gtest.h>

#include "foundation/log.h"

namespace foundation::log {
namespace {

using Logger = basic_diagnostic_logger<char>;

TEST(DiagnosticLogger, FiltersByMaskAndSinks) {
    Logger logger("channel one");
    EXPECT_FALSE(logger.enabled(error)) << "nobody listens";
    logger.write(error, "lost");

    const auto sink = std::make_shared<CollectingSink>();
    logger.add_sink(sink);
    logger.add_sink(sink);
    EXPECT_TRUE(logger.enabled(error));
    EXPECT_FALSE(logger.enabled(trace));
    logger.write(trace, "masked");
    logger.write(error, "first\r\nsecond \xC3\xA9");
    logger.set_level_mask(trace);
    logger.write(error, "masked");
    logger.write(trace, "traced");
    logger.remove_sink(sink);
    EXPECT_FALSE(logger.enabled(trace));
    logger.write(trace, "lost");

    const std::vector<Record> records = sink->records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].channel, "channel one");
    EXPECT_EQ(records[0].severity, std::uint32_t{error});
    EXPECT_EQ(records[0].text, "first  second \xC3\xA9");
    EXPECT_EQ(records[1].severity, std::uint32_t{trace});
}

TEST(DiagnosticLogger, KeepsToItsOwnRecords) {
    Logger logger("same name");
    Logger other("same name");
    const auto sink = std::make_shared<CollectingSink>();
    const auto other_sink = std::make_shared<CollectingSink>();
    logger.add_sink(sink);
    other.add_sink(other_sink);
    boost::log::sources::logger hosts_own;
    BOOST_LOG(hosts_own) << "the host's";
    logger.write(info, "ours");
    ASSERT_EQ(sink->records().size(), 1u);
    EXPECT_EQ(sink->records()[0].text, "ours");
    EXPECT_TRUE(other_sink->records().empty());
}

TEST(DiagnosticLogger, PrintsNothing) {
    Logger logger("quiet");
    const auto sink = std::make_shared<CollectingSink>();
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    logger.write(error, "without a sink");
    logger.add_sink(sink);
    logger.write(error, "with a sink");
    logger.remove_sink(sink);
    logger.write(error, "without a sink again");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(DiagnosticLogger, ServesSeveralThreads) {
    Logger logger("threads");
    const auto sink = std::make_shared<CollectingSink>();
    const auto passing_by = std::make_shared<CollectingSink>();
    logger.add_sink(sink);
    const auto log_many = [&logger] {
        for (int i = 0; i < 200; ++i)
            logger.write(info, std::to_string(i));
    };
    std::thread first(log_many);
    std::thread second(log_many);
    for (int i = 0; i < 50; ++i) {
        logger.add_sink(passing_by);
        logger.remove_sink(passing_by);
    }
    first.join();
    second.join();
    EXPECT_EQ(sink->records().size(), 400u);
}

TEST(ScopedTrace, LogsEntryAndExitWhenTracing) {
    Logger logger("traces");
    const auto sink = std::make_shared<CollectingSink>();
    logger.add_sink(sink);
    { const ScopedTrace off(logger, "unit.cpp", "void f()", 1); }
    logger.set_level_mask(trace);
    { const ScopedTrace on(logger, "unit.cpp", "void g(int)", 42); }
    const std::vector<Record> records = sink->records();
    ASSERT_EQ(records.size(), 2u);
    for (const Record& record : records) {
        EXPECT_NE(record.text.find("unit.cpp"), std::string::npos);
        EXPECT_NE(record.text.find("void g(int)"), std::string::npos);
        EXPECT_NE(record.text.find("42"), std::string::npos);
    }
    EXPECT_NE(records[0].text, records[1].text);
}

} // namespace
} // namespace foundation::log
