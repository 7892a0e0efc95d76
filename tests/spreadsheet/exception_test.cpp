// SPDX-License-Identifier: Apache-2.0
//
// The message table and the travels of an exception.
#include <functional>
#include <set>
#include <string>

#include <boost/exception_ptr.hpp>
#include <boost/throw_exception.hpp>
#include <gtest/gtest.h>

#include "spreadsheet/exception.h"
#include "spreadsheet/with_failure.h"

namespace spreadsheet {
namespace {

std::string message(int id) {
    return error_id_message(static_cast<error_id>(id));
}

TEST(ErrorIdMessage, HasATextOfItsOwnWhereTheTableSaysSo) {
    const std::string internal = message(18);
    EXPECT_EQ(internal, "[spreadsheet_err]: An internal error occurred. Please provide more "
                        "information about how you encountered this issue.");
    std::set<std::string> seen;
    for (int id = 0; id < 256; ++id) {
        const bool own = id <= 54 && id != 18 && (id < 32 || id > 36);
        EXPECT_EQ(message(id) != internal, own) << id;
        EXPECT_EQ(message(id).rfind("[spreadsheet_err]: ", 0), 0u) << id;
        const bool unique = seen.insert(message(id)).second;
        EXPECT_TRUE(unique || !own || id == 5) << id;
    }
    EXPECT_EQ(message(4), message(5));
}

// One text per decade pins the table's order down; the others differ in ways that a reader
// overlooks.
TEST(ErrorIdMessage, KeepsItsWording) {
    const struct {
        int id;
        const char* text;
    } cases[] = {
        {0, "Could not create or initialize a Book."},
        {9,
         "Could not load the Book. Please make sure you have read access, and enough free memory."},
        {15, "Loading from memory is not yet a supported operation."},
        {21, "The range string had trailing characters that were not whitespace."},
        {22,
         "Could not parse a valid range from the given string. A valid range is of the form 'A1' "
         "(cell), 'A:B' (column-select), '1:5' (row-select) or 'A1:B5' (rectangle-select)."},
        {26,
         R"(Invalid sheet name. Name must have 1-31 characters, excluding :, \, /, ?, *, [, and ].)"},
        {29, "Invalid format. Must be XLS, XLSX, XLSM, XLSB, XLTX, XLTM, or ODS."},
        {31, "Chart Sheets are currently not supported."},
        {39, "Merged rows found in sheet. Set MergedCellRowRule to any value other than 'error'."},
        {47, "Google Sheets service is currently unavailable."},
        {48, "Google Sheets service is currently unavailable"},
        {54,
         "The cell is beyond the bounds of the Google Spreadsheet or is a named range that does "
         "not exist in this Google Spreadsheet."},
    };
    for (const auto& c : cases)
        EXPECT_EQ(message(c.id), std::string("[spreadsheet_err]: ") + c.text);
}

TEST(Exception, SaysItsDetailOrElseItsMessage) {
    EXPECT_EQ(Exception(error_id::trailing_characters).what(), message(21));
    EXPECT_STREQ(Exception(error_id::trailing_characters, "x").what(), "x");
    EXPECT_EQ(Exception(error_id::trailing_characters, "").what(), message(21));
}

boost::exception_ptr carry(const std::function<void()>& action) {
    try {
        action();
    } catch (...) {
        return boost::current_exception();
    }
    return {};
}

TEST(Exception, TravelsThroughBoostWithoutSlicing) {
    const Exception original = with_failure(Exception(error_id::merged_rows, "detail"),
                                            {FailureKind::Service, "", u"f", {403, "S", "r", "m"}});
    const struct {
        const char* what;
        boost::exception_ptr carried;
    } cases[] = {
        {"thrown", carry([&] { throw Exception(original); })},
        {"rethrown", carry([&] { original.rethrow(); })},
        {"thrown by Boost", carry([&] { boost::throw_exception(original); })},
        {"never thrown", boost::copy_exception(original)},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.what);
        try {
            boost::rethrow_exception(test.carried);
            FAIL();
        } catch (const foundation::core::except::IInternalException& e) {
            const auto& same = dynamic_cast<const Exception&>(e);
            EXPECT_EQ(same.id(), error_id::merged_rows);
            EXPECT_STREQ(same.what(), "detail");
            const Failure failure = failure_of(same);
            EXPECT_EQ(failure.kind, FailureKind::Service);
            EXPECT_EQ(failure.cause, "detail");
            EXPECT_EQ(failure.file, u"f");
            EXPECT_EQ(failure.service.http_status, 403);
            EXPECT_EQ(failure.service.message, "m");
        }
        EXPECT_THROW(boost::rethrow_exception(test.carried), std::exception);
    }
    EXPECT_THROW(original.rethrow(), Exception);
}

TEST(FailureOf, FallsBackOnTheIdentifier) {
    const struct {
        error_id id;
        FailureKind kind;
    } cases[] = {{error_id::sheet_not_opened, FailureKind::Missing},
                 {error_id::chart_sheet_unsupported, FailureKind::Unsupported},
                 {error_id::book_not_loaded, FailureKind::Unknown}};
    for (const auto& c : cases) {
        const Failure failure = failure_of(Exception(c.id));
        EXPECT_EQ(failure.kind, c.kind);
        EXPECT_EQ("[spreadsheet_err]: " + failure.cause, error_id_message(c.id));
    }
}

TEST(FailureOf, IsNotSharedByCopies) {
    Exception original = with_failure(Exception(error_id::internal), {FailureKind::Damaged, "a"});
    const Exception copy = original;
    Exception assigned(error_id::internal);
    assigned = original;
    original = with_failure(std::move(original), {FailureKind::Limit, "b"});
    EXPECT_EQ(failure_of(copy).cause, "a");
    EXPECT_EQ(failure_of(assigned).cause, "a");
    EXPECT_EQ(failure_of(original).cause, "b");
}

} // namespace
} // namespace spreadsheet
