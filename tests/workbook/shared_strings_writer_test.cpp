// SPDX-License-Identifier: Apache-2.0
//
// Texts of every kind come back as they were written, old items stay as they stand.
#include <random>
#include <string>
#include <unordered_set>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/unicode.h"
#include "tests/workbook/memory_source.h"
#include "tests/workbook/string_sink.h"
#include "workbook/error.h"
#include "workbook/xlsx/reading/shared_strings.h"
#include "workbook/xlsx/writing/shared_strings_writer.h"
#include "workbook/xml/xml_tree.h"

namespace workbook {
namespace {

using test::MemorySource;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

std::vector<std::string> items_of(const std::string& part) {
    MemorySource source(part);
    StringPool pool;
    read_shared_strings(source, ~std::uint64_t{0}, pool);
    std::vector<std::string> items;
    for (std::size_t i = 0; i < pool.size(); ++i)
        items.emplace_back(pool[i]);
    return items;
}

StringSet set_of(const std::vector<std::string>& texts) {
    StringSet set;
    for (const std::string& text : texts)
        set.add(text);
    return set;
}

/// The part with the strings added; `part` in steps of some bytes.
std::string with(const std::string& part, const StringSet& added, SharedStringPlan& plan,
                 std::size_t step = std::string::npos) {
    MemorySource first(part, step), second(part, step);
    plan = plan_shared_strings(&first, added);
    test::StringSink out;
    write_shared_strings(&second, added, plan, out);
    return out.text;
}

std::string new_part(const StringSet& added) {
    test::StringSink out;
    write_shared_strings(nullptr, added, plan_shared_strings(nullptr, added), out);
    return out.text;
}

void expect_well_formed(const std::string& part) {
    MemorySource source(part);
    EXPECT_NO_THROW(read_tree(source)) << part.substr(0, 500);
}

const char* const kNamespace =
    "xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\"";

TEST(StringSet, KeepsEachTextOnce) {
    StringSet set;
    EXPECT_FALSE(set.find(""));
    std::unordered_map<std::string, std::uint32_t> expected;
    std::mt19937 random(5);
    for (int i = 0; i < 200'000; ++i) {
        std::string text(random() % 20, 'x');
        for (char& c : text)
            c = static_cast<char>('a' + random() % 2);
        const auto [known, is_new] = expected.emplace(text, expected.size());
        ASSERT_EQ(set.add(text), known->second);
    }
    ASSERT_EQ(set.size(), expected.size());
    for (const auto& [text, index] : expected) {
        ASSERT_EQ(set.find(text), index);
        ASSERT_EQ(set[index], text);
    }
    EXPECT_FALSE(set.find("c"));
    EXPECT_EQ(set.add(std::string_view()), *set.find(""));
}

TEST(EscapedText, IsWrittenSoThatXmlCanHoldIt) {
    const struct {
        std::string text, written;
    } cases[] = {
        {"", ""},
        {"plain \xC3\xA4 \xF0\x9F\x98\x80", "plain \xC3\xA4 \xF0\x9F\x98\x80"},
        {"a<b>&\"c'", "a&lt;b&gt;&amp;\"c'"},
        {"tab\tline\n", "tab\tline\n"},
        {"a\rb", "a_x000D_b"},
        {std::string("\0", 1), "_x0000_"},
        {"\x1F\x7F", "_x001F_\x7F"},
        {"\xED\xA0\xBD", "_xD83D_"},
        {"\xED\xBF\xBF!", "_xDFFF_!"},
        {"\xED\x9F\xBF", "\xED\x9F\xBF"},
        {"\xEF\xBF\xBE\xEF\xBF\xBF\xEF\xBF\xBD", "_xFFFE__xFFFF_\xEF\xBF\xBD"},
        {"_x000A_", "_x005F_x000A_"},
        {"_xaBcD_", "_x005F_xaBcD_"},
        {"__x0041_", "__x005F_x0041_"},
        {"_x0041_x0042_", "_x005F_x0041_x005F_x0042_"},
        {"_x0041\r", "_x005F_x0041_x000D_"},
        {"_x0041", "_x0041"},
        {"_X0041_", "_X0041_"},
        {"_x004_", "_x004_"},
        {"_x00G1_", "_x00G1_"},
        {"snake_case_x", "snake_case_x"},
    };
    for (const auto& c : cases) {
        std::string out;
        append_escaped_text(out, c.text);
        EXPECT_EQ(out, c.written);
    }
}

TEST(EscapedText, ComesBackWhateverItIs) {
    // Pieces that are dangerous beside one another.
    const std::u16string pieces[] = {u"_",      u"x",      u"0041",   u"x0041_", u"\r",  u"\n",
                                     u"\xD83D", u"\xDE00", u"\xFFFE", u" ",      u"&",   u"<",
                                     u"]]>",    u"\t",     u"\x01",   u"_x005F", u"é",   u"",
                                     u"00",     u"D83D_",  u"_xDE00", u"\u20AC", u"a\0b"};
    std::mt19937 random(11);
    StringSet set;
    for (int i = 0; i < 30'000; ++i) {
        std::u16string text;
        for (unsigned count = random() % 8; count > 0; --count)
            text += pieces[random() % std::size(pieces)];
        set.add(foundation::unicode::to_generalized_utf8(text));
    }
    const std::string part = new_part(set);
    expect_well_formed(part);
    const std::vector<std::string> items = items_of(part);
    ASSERT_EQ(items.size(), set.size());
    for (std::size_t i = 0; i < items.size(); ++i)
        ASSERT_EQ(items[i], set[i]) << i;
}

TEST(EscapedText, AsksToPreserveWhiteSpace) {
    const struct {
        const char* text;
        bool expected;
    } cases[] = {{"", false},  {"a", false},   {"a b c", false}, {" a", true},
                 {"a ", true}, {"a  b", true}, {"a\nb", true},   {"\n", true},
                 {" ", true},  {"a\tb", true}, {"\ta", true}};
    for (const auto& c : cases)
        EXPECT_EQ(needs_space_preserved(c.text), c.expected) << c.text;
}

TEST(SharedStringsWriter, PutsNewItemsBehindOldOnes) {
    const std::string ns = kNamespace;
    const struct {
        const char* what;
        std::string before, after;
    } cases[] = {
        {"counts", "<sst " + ns + " count=\"7\" uniqueCount=\"1\"><si><t>a</t></si></sst>",
         "<sst " + ns + " uniqueCount=\"2\"><si><t>a</t></si><si><t>new</t></si></sst>"},
        {"no counts", "<sst><si><t>a</t></si></sst>",
         "<sst uniqueCount=\"2\"><si><t>a</t></si><si><t>new</t></si></sst>"},
        {"empty root", "<sst " + ns + "/>",
         "<sst " + ns + " uniqueCount=\"1\"><si><t>new</t></si></sst>"},
        {"empty root, space", "<sst count='0' />",
         "<sst uniqueCount=\"1\"><si><t>new</t></si></sst>"},
        {"prefix", "<x:sst xmlns:x=\"urn:x\"><x:si><x:t>a</x:t></x:si></x:sst>",
         "<x:sst xmlns:x=\"urn:x\" uniqueCount=\"2\"><x:si><x:t>a</x:t></x:si>"
         "<x:si><x:t>new</x:t></x:si></x:sst>"},
        {"rich, white space, odd spelling",
         "<sst>\n <si ><r><rPr><b/></rPr><t>new</t></r></si>\n<si/><si><t\n>&#97;</t></si>\n</sst "
         ">",
         "<sst uniqueCount=\"4\">\n <si ><r><rPr><b/></rPr><t>new</t></r></si>\n<si/><si><t\n"
         ">&#97;</t></si>\n<si><t>new</t></si></sst >"},
        {"comments, CDATA and instructions with tags in them",
         "<!-- <sst> --><sst><!-- </sst> --><si><t><![CDATA[</sst>]]></t></si><?p "
         "</sst>?></sst><!-- e -->\n",
         "<!-- <sst> --><sst uniqueCount=\"2\"><!-- </sst> --><si><t><![CDATA[</sst>]]></t></si>"
         "<?p </sst>?><si><t>new</t></si></sst><!-- e -->\n"},
        {"extensions", "<sst><si><t>a</t></si><extLst><ext uri=\"u\"/></extLst></sst>",
         "<sst uniqueCount=\"2\"><si><t>a</t></si><si><t>new</t></si>"
         "<extLst><ext uri=\"u\"/></extLst></sst>"},
        {"quoted angle bracket", "<sst a=\">\" b='\"'><si><t>a</t></si></sst>",
         "<sst a=\">\" b='\"' uniqueCount=\"2\"><si><t>a</t></si><si><t>new</t></si></sst>"},
    };
    const std::string declaration =
        "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";
    const StringSet added = set_of({"new"});
    for (const auto& c : cases)
        for (const std::size_t step : {std::string::npos, std::size_t{1}, std::size_t{7}})
            for (const std::string& head :
                 {std::string(), "<?xml version=\"1.0\"?>\r\n" + std::string()}) {
                SharedStringPlan plan;
                EXPECT_EQ(with(head + c.before, added, plan, step), declaration + c.after)
                    << c.what;
                EXPECT_EQ(plan.index_of[0], plan.kept) << c.what;
            }
}

TEST(SharedStringsWriter, ReusesPlainItems) {
    const std::string part =
        "<sst><si><t>one</t></si><si><r><t>rich</t></r></si><si><t>two</t></si>"
        "<si><t>two</t></si><si><t>_x0041_</t></si><si><t>p</t><rPh sb=\"0\" "
        "eb=\"1\"><t>q</t></rPh></si><si><t/></si></sst>";
    SharedStringPlan plan;
    const std::string after = with(part, set_of({"two", "rich", "A", "p", "one", ""}), plan);
    EXPECT_THAT(plan.index_of, ElementsAre(2, 7, 4, 8, 0, 6));
    EXPECT_EQ(plan.kept, 7u);
    EXPECT_EQ(plan.total, 9u);
    EXPECT_TRUE(plan.changes_part());
    EXPECT_THAT(items_of(after),
                ElementsAre("one", "rich", "two", "two", "A", "p", "", "rich", "p"));
    with(part, set_of({"one"}), plan);
    EXPECT_FALSE(plan.changes_part());
}

TEST(SharedStringsWriter, TurnsOtherEncodingsIntoUtf8) {
    const std::string narrow =
        "<?xml version=\"1.0\" encoding=\"UTF-16\"?><sst><si><t>\xE9</t></si></sst>";
    std::string wide = "\xFF\xFE";
    for (const char c : narrow)
        wide.append({c, '\0'});
    SharedStringPlan plan;
    const std::string after = with(wide, set_of({"new"}), plan);
    EXPECT_THAT(items_of(after), ElementsAre("\xC3\xA9", "new"));
    EXPECT_THAT(after, Not(HasSubstr("UTF-16")));
    expect_well_formed(after);
}

TEST(SharedStringsWriter, CopiesLargeParts) {
    std::string part = "<sst uniqueCount=\"1\">";
    for (int i = 0; i < 50'000; ++i)
        part += "<si><t xml:space=\"preserve\"> item " + std::to_string(i) + " </t></si>";
    const std::string body = part.substr(part.find("<si>"));
    SharedStringPlan plan;
    const std::string after =
        with(part + "</sst>", set_of({std::string(100'000, 'x'), " item 7 "}), plan, 5000);
    EXPECT_THAT(plan.index_of, ElementsAre(50'000, 7));
    EXPECT_NE(after.find(body), std::string::npos);
    EXPECT_EQ(items_of(after).size(), 50'001u);
}

TEST(SharedStringsWriter, RefusesDamagedParts) {
    for (const std::string part :
         {"", "<sst><si><t>a</t></si>", "<sst", "<sst a='", "<!-- ", "<sst><!-- </sst>"}) {
        MemorySource source(part);
        test::StringSink out;
        SharedStringPlan plan;
        EXPECT_THROW(write_shared_strings(&source, StringSet(), plan, out), Error) << part;
    }
}

} // namespace
} // namespace workbook
