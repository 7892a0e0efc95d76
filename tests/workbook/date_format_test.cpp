// SPDX-License-Identifier: Apache-2.0
//
// Format codes that show dates or times, and codes that only look so.
#include <gtest/gtest.h>

#include "tests/workbook/memory_source.h"
#include "workbook/number_format/date_format.h"
#include "workbook/xlsx/reading/styles_reader.h"

namespace workbook {
namespace {

TEST(IsDateFormat, TellsDatesAndTimes) {
    for (const char* code : {"yyyy-mm-dd",
                             "DD/MM/YYYY",
                             "m/d/yy\\ h:mm;@",
                             "h:mm",
                             "mm:ss.0",
                             "mmss.0",
                             "[h]:mm:ss;@",
                             "[hh]:mm",
                             "[mm]:ss",
                             "[SS]",
                             "[$-409]d\\-mmm;@",
                             "[$-F800]dddd\\,\\ mmmm\\ dd\\,\\ yyyy",
                             "[$-409]h:mm\\ AM/PM;@",
                             "[$-411]e",
                             "[$-411]ge.m.d",
                             "g/e/m",
                             "[$-411]ggge\"年\"m\"月\"d\"日\"",
                             "yyyy\"年\"m\"月\"",
                             "[Red]d.m.yy",
                             "[DBNum1][$-804]yyyy",
                             "b1dd",
                             "aaaa",
                             "A/P",
                             "am/pm",
                             "[<1]h:mm;0.00",
                             "\"General \"d",
                             "#,##0 d",
                             "_-d",
                             "*-yy",
                             "s",
                             "yyyy;@;0.0"})
        EXPECT_TRUE(is_date_format(code)) << code;
}

TEST(IsDateFormat, TellsNumbersAndText) {
    for (const char* code : {"",
                             "General",
                             "GENERAL",
                             "G/標準",
                             "[Red]G/通用格式",
                             "@",
                             "0.00",
                             "#,##0.00 \"€\"",
                             "0.0000E+00",
                             "##0.0e-0",
                             "0%",
                             "# ?/?",
                             "#\\ ??\?/16",
                             "00000\\-0000",
                             "[<=9999999]###\\-####;\\(###\\)\\ ###\\-####",
                             "_(\"$\"* #,##0.00_);_(* \"-\"??_);_(@_)",
                             "#,##0\\ _\"руб\";[Red]\\-#,##0\\ _р\"уб\"",
                             "[$¥-411]#,##0.00",
                             "_([$ANG]\\ * #,##0.0_)",
                             "[Red]0;[Blue]0",
                             "[Magenta]0",
                             "\"days\" 0",
                             "0\\d",
                             "0_d",
                             "0*h",
                             "0;d",
                             ";;;",
                             "0.00_)[$﷼-429]_ ",
                             "[h",
                             "[hm]0",
                             "[]0",
                             "\"yyyy",
                             "0\\",
                             "_",
                             "General;[Red]\\-General",
                             "0.0\\ _₽"})
        EXPECT_FALSE(is_date_format(code)) << code;
}

TEST(CellFormats, LooksUpFormatsOfCells) {
    test::MemorySource part(R"(<x:styleSheet xmlns:x="m"><x:numFmts count="99">
<x:numFmt numFmtId="164" formatCode="d&quot;x&quot;"/><x:numFmt numFmtId="165" formatCode="0&quot;d&quot;"/>
<x:numFmt numFmtId="14" formatCode="0.0"/><x:numFmt numFmtId="58" formatCode="m/d"/></x:numFmts>
<x:cellStyleXfs><x:xf numFmtId="15"/></x:cellStyleXfs>
<x:cellXfs count="1"><x:xf numFmtId="0"/><x:xf numFmtId="164" applyNumberFormat="0"/><x:xf numFmtId="165"/>
<x:xf numFmtId="14"/><x:xf numFmtId="22"><x:protection locked="0"/></x:xf><x:xf numFmtId="58"/>
<x:xf numFmtId="30"/><x:xf numFmtId="47"/><x:xf numFmtId="999"/><x:xf/><x:xf numFmtId="-1"/></x:cellXfs></x:styleSheet>)");
    CellFormats styles = read_styles(part);
    const bool dates[] = {false, true, false, false, true, true, false, true, false, false, false};
    ASSERT_EQ(styles.size(), std::size(dates));
    for (std::size_t i = 0; i < std::size(dates); ++i)
        EXPECT_EQ(styles.is_date(i), dates[i]) << i;
    EXPECT_FALSE(styles.is_date(1000));
    EXPECT_EQ(styles[4].num_format, 22u);
    EXPECT_FALSE(styles[4].locked);
    EXPECT_TRUE(styles[0].locked);

    const std::size_t added = styles.add();
    EXPECT_FALSE(styles.is_date(added));
    styles.set_num_format(added, 22);
    EXPECT_TRUE(styles.is_date(added));
}

} // namespace
} // namespace workbook
