// SPDX-License-Identifier: Apache-2.0
//
// The library's unchanged code against an application in another process (Windows), which is
// registered while this program runs.
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "foundation/automation/automation.h"
#include "spreadsheet/book_factory.h"
#include "spreadsheet/failure.h"
#include "spreadsheet/sheet.h"
#include "tests/automation/scripted_application.h"
#include "tests/spreadsheet/thrown_id.h"

namespace spreadsheet {
namespace {

namespace fs = std::filesystem;

class RegisteredServer : public ::testing::Environment {
  public:
    void SetUp() override {
        scripted::register_local_server(fs::absolute(ZX_SCRIPTED_SERVER).wstring(),
                                        fs::absolute(ZX_SERVER_FOLDER).wstring());
    }
    void TearDown() override { scripted::unregister_local_server(); }
};

const auto* const kServer = ::testing::AddGlobalTestEnvironment(new RegisteredServer);

class LocalServer : public ::testing::Test {
  protected:
    LocalServer() { initialize(); }

    static std::shared_ptr<IBook> open(const char16_t* name) {
        return load_book_from_file(std::u16string(u"C:\\") + name, book::format::XLSX,
                                   book::interactive::application);
    }

    /// Ends the library and returns what the servers wrote that ended since the last call, after
    /// waiting for `count` of them.
    static std::string take_logs(int count) {
        release();
        std::string text;
        int found = 0;
        for (int wait = 0; wait < 100 && found < count; ++wait) {
            for (const auto& entry : fs::directory_iterator(ZX_SERVER_FOLDER)) {
                if (entry.path().extension() != ".log") continue;
                std::ifstream in(entry.path());
                const std::string log((std::istreambuf_iterator<char>(in)), {});
                if (log.find("end\n") == std::string::npos) continue;
                in.close();
                text += log;
                fs::remove(entry.path());
                ++found;
            }
            if (found < count) Sleep(50);
        }
        initialize();
        EXPECT_EQ(found, count) << "servers that ended";
        EXPECT_EQ(text.find("violation"), std::string::npos) << text;
        return text;
    }

    ~LocalServer() override { release(); }
};

TEST_F(LocalServer, ServesReadingWritingAndSaving) {
    {
        const auto book = open(u"filtered.xlsx");
        const auto sheet = book->sheet(u"data");
        EXPECT_EQ(range_string(sheet->used_range()), u"A1:E200");
        const Range range{0, 1, 3, 1};
        const auto types = sheet->cell_types(range);
        using enum cell_type;
        EXPECT_EQ(types, (std::vector<cell_type>{text, boolean, date, number}));
        double values[4];
        sheet->read(range, values);
        EXPECT_EQ(values[3], 3.1);
        std::u16string first;
        sheet->read(Range{0, 1, 0, 1}, StringBuilder{&first, [](void* to, const std::u16string& s) {
                                                         *static_cast<std::u16string*>(to) = s;
                                                     }});
        EXPECT_EQ(first, u"caf\u00e9");
        double next = 7.0;
        const CellProvider provider{&next,
                                    [](void*) { return std::u16string(u"'007"); },
                                    [](void* at) { return (*static_cast<double*>(at))++; },
                                    [](void*) { return SerialDatenum{1.0}; },
                                    [](void*) { return true; },
                                    [](void*) {}};
        const cell_type wanted[] = {number, number, number, number};
        sheet->write(range, wanted, provider, true);
        sheet->read(range, values);
        EXPECT_EQ(values[3], 10.0);
        add_sheet(book, 1, u"Added", u"");
        book->remove_sheet(2);
        EXPECT_EQ(book->num_sheets(), 2u);
        save_book(book, u"C:\\saved.xlsx");
    }
    take_logs(1);
}

TEST_F(LocalServer, StartsAnotherApplicationForASecondFile) {
    {
        const auto first = open(u"plain.xlsx");
        const auto second = open(u"busy.xlsx");
        EXPECT_EQ(second->num_sheets(), 2u);
    }
    take_logs(2);
}

TEST_F(LocalServer, FailsWithTheErrorOfTheStep) {
    EXPECT_EQ(thrown_id([] { open(u"none.xlsx"); }), 9);
    EXPECT_EQ(thrown_id([] { save_book(open(u"rejects.xlsx"), u"C:\\saved.xlsx"); }), 4);
    take_logs(1);
}

TEST_F(LocalServer, FailsWhenTheApplicationDiesInACall) {
    {
        const auto book = open(u"dies.xlsx");
        EXPECT_EQ(thrown_id([&] { book->sheet(0)->cell_types(Range{}); }), 18);
        EXPECT_EQ(thrown_id([&] { save_book(book, u"C:\\saved.xlsx"); }), 4);
    }
    EXPECT_EQ(open(u"plain.xlsx")->num_sheets(), 2u) << "another one is started";
    take_logs(1);
}

TEST_F(LocalServer, LeavesAVisibleApplicationToItsUser) {
    open(u"shown.xlsx");
    EXPECT_NE(take_logs(1).find("left by its user"), std::string::npos) << "it was ended";
}

} // namespace
} // namespace spreadsheet
