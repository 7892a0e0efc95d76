// SPDX-License-Identifier: Apache-2.0
//
// The choice of a back-end, the loaders over a file, the checks on what callers pass.
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/unicode.h"
#include "spreadsheet/book_factory.h"
#include "tests/spreadsheet/log_lines.h"
#include "tests/spreadsheet/thrown_id.h"

namespace spreadsheet {
namespace {

/// Has a format and keeps what reaches `add_sheet` and `save`.
class RecordingBook : public IBook {
  public:
    explicit RecordingBook(book::format format) : format_(format) {}
    std::u16string received;

    book::format format() const override { return format_; }
    std::shared_ptr<ISheet> add_sheet(std::size_t index, const std::u16string& name,
                                      const std::u16string& second_name) override {
        received = std::u16string(index, u'.') + name + u"|" + second_name;
        return nullptr;
    }
    void save(const std::u16string& path) override { received = path; }

    bool is_interactive() const override { return false; }
    bool are_dates_1904() const override { return false; }
    std::size_t num_sheets() const override { return 0; }
    std::shared_ptr<ISheet> sheet(const std::u16string&) const override { return nullptr; }
    std::shared_ptr<ISheet> sheet(std::size_t) const override { return nullptr; }
    std::optional<std::u16string> get_sheet_name(const int) const override { return {}; }
    void remove_sheet(std::size_t) override {}
    sheet::type sheet_type(std::size_t) const override { return sheet::type::worksheet; }
    void init_from_file(const std::u16string&, book::format) override {}
    void init_from_file_with_sheet(const std::u16string&, book::format, std::size_t) override {}
    void init_from_file_with_range(const std::u16string&, book::format, std::size_t, std::size_t,
                                   std::size_t) override {}
    void init_from_file_only_sheetNames(const std::u16string&, book::format) override {}
    bool is_loaded() const override { return true; }
    bool is_sheet_loaded() const override { return false; }
    bool sheet_names_only_required() const override { return false; }
    std::vector<std::u16string> get_sheet_names() const override { return {}; }
    void init_new(std::size_t, book::format, const std::u16string&) override {}
    void init_from_memory(const void*, std::size_t, book::format) override {}
    void save_to_memory(std::vector<unsigned char>&) override {}

  private:
    book::format format_;
};

TEST(BookFactory, ReportsWhyThereIsNoBook) {
    const auto file = book::interactive::file;
    const auto application = book::interactive::application;
    const auto none = static_cast<book::interactive>(3);
    const auto xlsx = book::format::XLSX;
    const auto gsheet = book::format::GSHEET;
    const std::u16string missing = u"no such folder/no such file.xlsx";
    const struct {
        const char* what;
        std::function<void()> action;
        int id;
    } cases[] = {
        {"unknown extension", [&] { load_book_from_file(u"data.txt", file); }, 29},
        {"no extension", [&] { load_book_from_file(u"folder.xlsx/data", file); }, 29},
        {"extension, rows", [&] { load_book_from_file_with_range(u"data.txt", file, 0, 0, 0); },
         29},
        {"extension, name", [&] { load_book_from_file_with_sheet_name(u"data.txt", file, u"n"); },
         29},
        {"no back-end", [&] { load_book_from_file(missing, xlsx, none); }, 9},
        {"no back-end, new", [&] { create_new_book(1, xlsx, none, u""); }, 0},
        {"application", [&] { load_book_from_file(missing, xlsx, application); }, 9},
        {"application, new", [&] { create_new_book(1, xlsx, application, u""); }, 0},
        {"application, name",
         [&] { load_book_from_file_with_sheet_name(missing, xlsx, application, u"n"); }, 9},
        {"Google without a client", [&] { load_book_from_file_with_sheetNames(u"id", gsheet); },
         48},
        {"Google as a whole", [&] { load_book_from_file(u"id", xlsx, book::interactive::google); },
         43},
        {"missing file", [&] { load_book_from_file(missing, file); }, 9},
        {"missing file, sheet",
         [&] { load_book_from_file_with_sheet_index(missing, xlsx, file, 0); }, 9},
        {"missing file, rows", [&] { load_book_from_file_with_range(missing, file, 0, 0, 9); }, 9},
        {"missing file, names", [&] { load_book_from_file_with_sheetNames(missing, xlsx); }, 9},
        {"missing file, name",
         [&] { load_book_from_file_with_sheet_name(missing, xlsx, file, u"n"); }, 9},
        {"XLSB", [&] { load_book_from_file(u"data.xlsb", file); }, 30},
        {"ODS", [&] { load_book_from_file(u"data.ods", file); }, 30},
        {"CSV", [&] { load_book_from_file_with_sheetNames(u"data", book::format::CSV); }, 30},
        {"Google as a file", [&] { load_book_from_file(u"id", gsheet, file); }, 30},
    };
    for (const auto& test : cases)
        EXPECT_EQ(thrown_id(test.action), test.id) << test.what;
}

std::u16string fixture(const char* name) {
    return foundation::unicode::to_utf16(std::string(ZX_TEST_DATA "/") + name);
}

TEST(BookFactory, LoadsTheOnlySheetWhateverTheIndex) {
    const auto single = load_book_from_file_with_range(
        fixture("many_rows.xlsx"), book::format::XLSX, book::interactive::file, 5, 0, 0);
    EXPECT_TRUE(single->is_sheet_loaded());
    EXPECT_EQ(single->sheet(std::size_t{0})->used_range().last_row, 0);
}

TEST(BookFactory, CarriesTheCause) {
    const auto file = book::interactive::file;
    const std::u16string missing = u"no such folder/no such file.xlsx";
    const Failure no_file = failure_of_thrown([&] { load_book_from_file(missing, file); });
    EXPECT_EQ(no_file.kind, FailureKind::FileNotFound);
    EXPECT_EQ(no_file.cause, "There is no such file.");
    EXPECT_EQ(no_file.file, missing);
    const Failure no_sheet = failure_of_thrown([&] {
        load_book_from_file_with_sheet_name(fixture("hidden_and_very_hidden.xlsx"), file, u"Rain");
    });
    EXPECT_EQ(no_sheet.kind, FailureKind::Missing);
    EXPECT_EQ(no_sheet.cause, "The workbook has no sheet named \"Rain\".");
}

TEST(BookFactory, LogsWhichBackEndIsMissing) {
    LogLines log;
    const Failure failure =
        failure_of_thrown([] { load_book_from_file(u"f.xlsx", book::interactive::application); });
    EXPECT_EQ(failure.kind, FailureKind::NoApplication);
    EXPECT_EQ(log.take(),
              (std::vector<std::string>{
                  "[BOOK FACTORY MSG]: this version does not serve spreadsheet applications"}));
}

TEST(BookFactory, LoadsTheSheetAskedFor) {
    const std::u16string path =
        std::filesystem::path(ZX_TEST_DATA "/merged_regions.xlsx").u16string();
    const auto file = book::interactive::file;
    const auto xlsx = book::format::XLSX;
    using Load = std::function<std::shared_ptr<IBook>()>;
    const struct {
        const char* what;
        Load load;
        std::vector<std::u16string> sheets; ///< handed out
    } cases[] = {
        {"whole",
         [&] { return load_book_from_file(path, file); },
         {u"Open", u"Locked", u"Not locked"}},
        {"name",
         [&] { return load_book_from_file_with_sheet_name(path, file, u"LOCKED"); },
         {u"Locked"}},
        {"index",
         [&] { return load_book_from_file_with_sheet_index(path, xlsx, file, 2); },
         {u"Not locked"}},
        {"rows", [&] { return load_book_from_file_with_range(path, file, 1, 0, 3); }, {u"Locked"}},
        {"names", [&] { return load_book_from_file_with_sheetNames(path, xlsx); }, {}},
        {"an index that does not exist loads the whole",
         [&] { return load_book_from_file_with_sheet_index(path, xlsx, file, 3); },
         {u"Open", u"Locked", u"Not locked"}},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.what);
        const std::shared_ptr<IBook> book = test.load();
        EXPECT_EQ(book->num_sheets(), 3u);
        EXPECT_EQ(book->is_sheet_loaded(), test.sheets.size() == 1);
        EXPECT_EQ(book->sheet(test.sheets.size()), nullptr);
        for (std::size_t i = 0; i < test.sheets.size(); ++i)
            EXPECT_EQ(book->sheet(i)->name(), test.sheets[i]);
    }
    for (const char16_t* name : {u"other", u"", u"Locked "})
        EXPECT_EQ(thrown_id([&] { load_book_from_file_with_sheet_name(path, file, name); }), 3);
}

TEST(AddSheet, ChecksNamesAgainstTheFormat) {
    const std::u16string n31(31, u'n');
    const std::u16string n32(32, u'n');
    const std::u16string n100(100, u'n');
    const std::u16string n101(101, u'n');
    const struct {
        int format;
        std::u16string name, second;
        int id;
    } cases[] = {
        {1, u"n", u"", -1},    {1, n31, n31, -1},    {1, n32, u"", 26},    {1, u"n", n32, 26},
        {1, u"", u"", 26},     {1, u"a/b", u"", 26}, {1, u":", u"", 26},   {1, u"\\", u"", 26},
        {1, u"?", u"", 26},    {1, u"*", u"", 26},   {1, u"[", u"", 26},   {1, u"]", u"", 26},
        {1, u"n", u"a*b", 26}, {0, u"", u"", 26},    {7, u"'n'", u"", -1}, {9, u"a/b", u"", 26},
        {8, n100, n100, -1},   {8, n101, u"", 41},   {8, u"n", n101, 41},  {8, u"", u"", 41},
        {8, u"a/b", u"", -1},
    };
    for (const auto& test : cases) {
        const auto book = std::make_shared<RecordingBook>(static_cast<book::format>(test.format));
        EXPECT_EQ(thrown_id([&] { add_sheet(book, 2, test.name, test.second); }), test.id)
            << test.format << ' ' << test.name.size() << ' ' << test.second.size();
        const std::u16string forwarded = u".." + test.name + u"|" + test.second;
        EXPECT_EQ(book->received, test.id < 0 ? forwarded : u"");
    }
}

#ifdef _WIN32
constexpr bool kIsWindows = true;
#else
constexpr bool kIsWindows = false;
#endif

TEST(SaveBook, ChecksThePathAgainstTheFormat) {
    const struct {
        int format;
        std::u16string path;
        bool accepted;
    } cases[] = {
        {0, u"a.xls", true},
        {0, u".xls", false},
        {0, u"xls", false},
        {0, u"a.xlsx", false},
        {1, u"out.XLSX", true},
        {1, u"a.XlSx", true},
        {1, u"out.xls", false},
        {1, u".xlsx", false},
        {1, u"dir.d/.xlsx", false},
        {1, u"dir/a.xlsx", true},
        {1, u"a.xlsx/", false},
        {1, u"", false},
        {1, u"axlsx", false},
        {2, u"a.xlsm", true},
        {3, u"a.xlsb", true},
        {4, u"a.xltx", true},
        {5, u"a.xltm", true},
        {5, u"a.xltx", false},
        {6, u"a.ods", true},
        {6, u".ods", false},
        {7, u"a.csv", true},
        {7, u".csv", false},
        {8, u"12345678", true},
        {8, u"1234567", false},
        {9, u"a.xlsx", false},
        {1, u"C:\\dir.d\\a.xlsx", true},
        {1, u"\\\\server\\share\\a.xlsx", true},
        {1, u"C:a.xlsx", true},
        {1, u"\\\\?\\C:\\b\u00FCch.XLSX", true},
        // Folders and drives without a name on Windows; names elsewhere.
        {1, u"C:\\dir\\.xlsx", !kIsWindows},
        {1, u"\\\\server\\share\\.xlsx", !kIsWindows},
        {1, u"C:.xlsx", !kIsWindows},
    };
    for (const auto& test : cases) {
        const auto book = std::make_shared<RecordingBook>(static_cast<book::format>(test.format));
        EXPECT_EQ(thrown_id([&] { save_book(book, test.path); }), test.accepted ? -1 : 20)
            << test.format << ' ' << std::string(test.path.begin(), test.path.end());
        EXPECT_EQ(book->received, test.accepted ? test.path : u"");
    }
}

} // namespace
} // namespace spreadsheet
