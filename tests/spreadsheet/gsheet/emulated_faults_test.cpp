// SPDX-License-Identifier: Apache-2.0
//
// Every way in which the service or the way to it can fail: the error of it, and book, sheets and
// the service's state as they were.
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/spreadsheet/gsheet/emulated_service.h"
#include "tests/spreadsheet/thrown_id.h"

namespace spreadsheet {
namespace {

using foundation::http::HttpRequestException;
using foundation::http::HttpRequestTimeoutException;
using test::Object;
using test::Value;

constexpr const char* kId = "sample-sheet-kinds";
constexpr int kBroken = 1000;   ///< no whole reply
constexpr int kTimedOut = 1001; ///< of it, because of the time

/// The number of the exception that an action ends with, -1 without one.
int outcome_of(const std::function<void()>& action) {
    try {
        return thrown_id(action);
    } catch (const HttpRequestTimeoutException&) {
        return kTimedOut;
    } catch (const HttpRequestException&) {
        return kBroken;
    }
}

/// An order of a fault, for every request until it is taken back unless "times" is there.
Object fault(const char* name, Object parameters = {}) {
    parameters["fault"] = name;
    parameters.emplace("times", 0);
    return parameters;
}

class EmulatedFaults : public test::EmulatedService {
  protected:
    static void write_one(ISheet& sheet, bool preserve_format) {
        const cell_type text = cell_type::text;
        const CellProvider provider{nullptr, [](void*) { return std::u16string(u"new"); },
                                    nullptr, nullptr,
                                    nullptr, nullptr};
        sheet.write({0, 0, 0, 0}, &text, provider, preserve_format);
    }
    void clear_faults() const { service.control(foundation::http::HttpMethod::Delete, "faults"); }
};

TEST_F(EmulatedFaults, EndInTheirErrorsAndLeaveEverythingAsItWas) {
    const struct {
        Object order;
        int outcome;
    } cases[] = {
        {fault("status", {{"status", 401}}), 45},
        {fault("status", {{"status", 503}}), 48},
        {fault("status", {{"status", 204}}), 47},
        {fault("html-page"), 47},
        {fault("malformed-json"), 18},
        {fault("deep-nesting"), 18},
        {fault("plain-rate-limit"), 49},
        {fault("length-too-large"), kBroken},
        {fault("cut-before-reply"), kBroken},
        {fault("cut-in-body"), kBroken},
    };
    const auto book = open(kId);
    const auto sheet = book->sheet(std::size_t{0});
    double value = 0;
    sheet->read({0, 0, 0, 0}, &value);
    const Value before = state(kId);
    const auto names = book->get_sheet_names();
    const std::function<void()> actions[] = {
        [&] { open(kId); },
        [&] {
            sheet->prefetch({0, 0, 1, 1}, nullptr);
        },
        [&] { sheet->used_range(); },
        [&] {
            sheet->is_range_writeable({0, 0, 0, 0});
        },
        [&] { book->add_sheet(0, u"New", u""); },
        [&] { book->add_sheet(0, u"New", u"Grid"); },
        [&] { book->remove_sheet(0); },
        [&] { sheet->name(u"New"); },
        [&] { sheet->set_protected(true); },
        [&] { write_one(*sheet, false); },
        [&] { write_one(*sheet, true); },
        [&] {
            sheet->clear(Range{0, 0, 0, 0});
        },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(foundation::json::to_text(c.order));
        service.order_fault(c.order);
        for (std::size_t index = 0; index < std::size(actions); ++index)
            EXPECT_EQ(outcome_of(actions[index]), c.outcome) << "action " << index;
        clear_faults();
        EXPECT_EQ(state(kId), before);
        EXPECT_EQ(book->get_sheet_names(), names);
        EXPECT_EQ(book->sheet(std::size_t{0}), sheet);
        EXPECT_FALSE(sheet->is_protected());
    }
    sheet->read({1, 1, 1, 1}, &value);
    EXPECT_EQ(value, 4);
}

TEST_F(EmulatedFaults, TimeOutsEndAWaitThatIsTooLong) {
    const auto book = open(kId);
    const auto sheet = book->sheet(std::size_t{0});
    lose_patience();
    service.order_fault(fault("slow-first-byte", {{"seconds", 60.0}, {"method", "POST"}}));
    EXPECT_EQ(outcome_of([&] { book->remove_sheet(6); }), kTimedOut);
    EXPECT_EQ(book->num_sheets(), 7u) << "nobody knows, so the list stays";
    clear_faults();
    service.order_fault(fault("slow-trickle", {{"seconds", 0.2}, {"steps", 1000}, {"times", 1}}));
    cell_type type{};
    sheet->prefetch({0, 0, 0, 0}, &type); // the second attempt succeeds
    EXPECT_EQ(type, cell_type::number);
}

TEST_F(EmulatedFaults, AGetIsTriedAgain) {
    service.order_fault(fault("status", {{"status", 503}, {"times", 3}, {"path", "ranges="}}));
    const auto sheet = open(kId)->sheet(std::size_t{0});
    const std::size_t sleeps = clock.sleeps.size();
    cell_type type{};
    sheet->prefetch({0, 0, 0, 0}, &type);
    EXPECT_EQ(type, cell_type::number);
    EXPECT_EQ(clock.sleeps.size() - sleeps, 3u);
}

TEST_F(EmulatedFaults, AWriteThatWasTakenIsWrittenOnce) {
    const auto book = open(kId);
    service.order_fault(
        {{"fault", "taken-then-status"}, {"status", 503}, {"method", "POST"}, {"times", 1}});
    write_one(*book->sheet(std::size_t{0}), false);
    double unused = 0;
    book->sheet(std::size_t{0})->read({0, 0, 0, 0}, &unused);
    EXPECT_EQ(book->sheet(std::size_t{0})->cell_types(Range{0, 0, 0, 0}),
              (std::vector<cell_type>{cell_type::text}));
    service.order_fault(
        {{"fault", "taken-then-status"}, {"status", 503}, {"path", "copyTo"}, {"times", 1}});
    book->add_sheet(0, u"Copy", u"Grid");
    EXPECT_EQ(open(kId)->num_sheets(), 8u) << "one copy, although two were made";
    service.order_fault({{"fault", "taken-then-cut"}, {"method", "POST"}, {"times", 1}});
    EXPECT_EQ(outcome_of([&] { book->add_sheet(0, u"New", u""); }), kBroken);
    EXPECT_EQ(book->num_sheets(), 8u);
    EXPECT_EQ(open(kId)->num_sheets(), 9u);
}

} // namespace
} // namespace spreadsheet
