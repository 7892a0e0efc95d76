# SPDX-License-Identifier: Apache-2.0
#
# Fixtures about what stands in cells: texts, numbers, dates, errors, places.
from fixture_writer import Book


def texts():
    yield "shared_strings_rich_and_phonetic.xlsx", Book().sheet(
        "Data", "".join(f'<row r="{i + 1}"><c r="A{i + 1}" t="s"><v>{i}</v></c></row>'
                        for i in range(8))).strings(
        "<t>plain</t>",
        "<r><rPr><b/></rPr><t>bold</t></r><r><t xml:space=\"preserve\"> and not</t></r>",
        "<t>&#26481;&#20140;</t><rPh sb=\"0\" eb=\"2\"><t>&#12488;&#12454;</t></rPh>"
        "<phoneticPr fontId=\"1\"/>",
        None,
        "<t xml:space=\"preserve\">  kept blanks </t>",
        "<t>a &amp; b &lt; c &#x1F600; &quot;q&quot; &apos;s&apos; &#65;</t>",
        "<t>line one\nline two\ttab</t>",
        "<r><t>one</t></r><rPh sb=\"0\" eb=\"1\"><t>no</t></rPh><r><t>two</t></r>",
        attributes='count="8" uniqueCount="8"').bytes(), r"""
        sheet worksheet visible Data
        A1 text plain
        A2 text bold and not
        A3 text \u6771\u4eac
        A4 text
        A5 text \u0020 kept blanks\u0020
        A6 text a & b < c \ud83d\ude00 "q" 's' A
        A7 text line one\nline two\ttab
        A8 text onetwo"""
    yield "inline_strings.xlsx", Book().sheet("Data", """
        <row r="1"><c r="A1" t="inlineStr"><is><t>simple</t></is></c>
        <c r="B1" t="inlineStr"><is><r><t>two </t></r><r><rPr><i/></rPr><t>runs</t></r></is></c>
        <c r="C1" t="inlineStr"><is><t>base</t><rPh sb="0" eb="1"><t>ruby</t></rPh></is></c>
        <c r="D1" t="inlineStr"><is><t></t></is></c>
        <c r="E1" t="inlineStr"><is><t>1.5</t></is></c></row>""").bytes(), r"""
        sheet worksheet visible Data
        A1 text simple
        B1 text two runs
        C1 text base
        D1 text
        E1 text 1.5"""
    escapes = ["_x0041_", "a_x000D__x000A_b", "_x005F_x0041_", "_xD83D__xDE00_", "_xD83D_",
               "_x00e9_", "_x00", "_xGGGG_", "_X0041_", "__x0041__"]
    yield "x_escapes.xlsx", Book().sheet("_x0041_ stays", "".join(
        f'<row r="{i + 1}"><c r="A{i + 1}" t="s"><v>{i}</v></c>'
        f'<c r="B{i + 1}" t="inlineStr"><is><t>{text}</t></is></c></row>'
        for i, text in enumerate(escapes))).strings(*[f"<t>{t}</t>" for t in escapes]).bytes(), (
        "sheet worksheet visible _x0041_ stays\n" + "\n".join(
            f"A{i + 1} text {text}\nB{i + 1} text {text}" for i, text in enumerate(
                ["A", r"a\r\nb", "_x0041_", r"\ud83d\ude00", r"\ud83d", r"\u00e9", "_x00",
                 "_xGGGG_", "_X0041_", "_A_"])))
    yield "comments_and_cdata.xlsx", Book().sheet("Data", """
        <!-- <row r="1"><c r="A1"><v>99</v></c></row> -->
        <row r="1"><!-- c --><c r="A1"><!-- v --><v>1<!-- inside -->5</v></c><?pi data?>
        <c r="B1" t="inlineStr"><is><t><![CDATA[a < b & "c"]]></t></is></c>
        <c r="C1" t="inlineStr"><is><t>x<![CDATA[]]>y<!-- z --><![CDATA[]]]]><![CDATA[>]]></t></is></c>
        <c r="D1" t="s"><v>0</v></c><!--<c r="E1"><v>5</v></c>--></row>""").strings(
            "<!-- <t>no</t> --><t>yes<![CDATA[ & so]]></t>").bytes(), r"""
        sheet worksheet visible Data
        A1 number 15
        B1 text a < b & "c"
        C1 text xy]]>
        D1 text yes & so"""


def values():
    yield "numbers.xlsx", Book().sheet("Data", '<row r="1">' + "".join(
        f'<c r="{c}1"><v>{v}</v></c>' for c, v in zip("ABCDEFGHIJKL", [
            "0", "-0.5", "1E3", "1.7976931348623157E+308", "5e-324", "0.1", "123456789012345680",
            "9007199254740993", "-1", "1e-7", " 42 ", "3.0000000000000004"])) + "</row>"
        '<row r="2"><c r="A2" t="n"><v>7</v></c></row>').bytes(), """
        sheet worksheet visible Data
        A1 number 0
        B1 number -0.5
        C1 number 1000
        D1 number 1.7976931348623157e308
        E1 number 5e-324
        F1 number 0.1
        G1 number 123456789012345680
        H1 number 9007199254740992
        I1 number -1
        J1 number 1e-7
        K1 number 42
        L1 number 3.0000000000000004
        A2 number 7"""
    yield "booleans_errors_formulas.xlsx", Book().sheet("Data", """
        <row r="1"><c r="A1" t="b"><v>1</v></c><c r="B1" t="b"><v>0</v></c></row>
        <row r="2"><c r="A2" t="e"><v>#DIV/0!</v></c><c r="B2" t="e"><v>#N/A</v></c>
        <c r="C2" t="e"><v>#NAME?</v></c><c r="D2" t="e"><f>NULL!</f><v>#NULL!</v></c></row>
        <row r="3"><c r="A3"><f>1+1</f><v>2</v></c><c r="B3" t="str"><f>"a"&amp;"b"</f><v>ab</v></c>
        <c r="C3" t="b"><f>TRUE</f><v>1</v></c><c r="D3" t="e"><f>1/0</f><v>#DIV/0!</v></c>
        <c r="E3"><f t="shared" ref="E3:E4" si="0">A3*2</f><v>4</v></c>
        <c r="F3" t="str"><f>IF(1,"")</f><v></v></c></row>
        <row r="4"><c r="E4"><f t="shared" si="0"/><v>6</v></c>
        <c r="F4" t="str"><v xml:space="preserve"> padded </v></c></row>""").bytes(), r"""
        sheet worksheet visible Data
        A1 bool true
        B1 bool false
        A2 error #DIV/0!
        B2 error #N/A
        C2 error #NAME?
        D2 error #NULL!
        A3 number 2
        B3 text ab
        C3 bool true
        D3 error #DIV/0!
        E3 number 4
        F3 text
        E4 number 6
        F4 text \u0020padded\u0020"""
    iso = """<row r="1"><c r="A1" t="d"><v>2024-03-01</v></c>
        <c r="B1" t="d"><v>2024-03-01T12:00:00</v></c>
        <c r="C1" t="d"><v>2024-03-01T06:00:00.000Z</v></c>
        <c r="D1" t="d"><v>12:00:00</v></c><c r="E1" t="d"><v>1900-01-01</v></c></row>"""
    yield "strict_dates.xlsx", Book(strict=True).sheet("Data", iso).bytes(), """
        sheet worksheet visible Data
        A1 strictdate 45352
        B1 strictdate 45352.5
        C1 strictdate 45352.25
        D1 strictdate 0.5
        E1 strictdate 1"""
    book = Book().sheet("Data", '<row r="1"><c r="A1" s="1"><v>0</v></c><c r="B1" s="1">'
                        '<v>43890.5</v></c><c r="C1" t="d"><v>2024-03-01</v></c></row>')
    book.properties = 'date1904="1"'
    yield "dates_1904.xlsx", book.styles([0, 14]).bytes(), """
        date1904
        sheet worksheet visible Data
        A1 date 0
        B1 date 43890.5
        C1 strictdate 43890"""


def number_formats():
    codes = [(164, "yyyy-mm-dd"), (165, '0.00 "days"'), (166, "[h]:mm:ss"), (167, "[$-411]ge.m.d;@"),
             (168, "[Red][>=100]0.0;0"), (169, "0\\d"), (170, "_-m;_-m"), (171, "0.0E+00"),
             (172, "d\"\u65e5\""), (173, "General;d"), (58, "m\"\u6708\"d\"\u65e5\"")]
    formats = [0, 14, 22, 45, 47, 9, 49, 164, 165, 166, 167, 168, 169, 170, 171, 172, 173, 58, 59, 2]
    dates = {14, 22, 45, 47, 164, 166, 167, 170, 172, 58}
    cells = "".join(f'<row r="{i + 1}"><c r="A{i + 1}" s="{i}"><v>{i + 1}.5</v></c></row>'
                    for i in range(len(formats) + 1))
    facts = [f"A{i + 1} {'date' if f in dates else 'number'} {i + 1}.5"
             for i, f in enumerate(formats + [0])]
    yield "number_formats.xlsx", Book().sheet("Data", cells).styles(formats, codes).bytes(), (
        "sheet worksheet visible Data\n" + "\n".join(facts))
    yield "no_styles.xlsx", Book().sheet(
        "Data", '<row r="1"><c r="A1" s="14"><v>45000</v></c></row>').bytes(), """
        sheet worksheet visible Data
        A1 number 45000"""
    yield "formatted_blanks.xlsx", Book().sheet("Data", """
        <row r="2"><c r="B2" s="1"/><c r="C2" s="1"></c></row>
        <row r="4"><c r="D4"><v>1</v></c></row><row r="9" s="1" customFormat="1"/>""").styles(
            [0, 14]).bytes(), """
        sheet worksheet visible Data
        bounds B2:D4
        filled D4:D4
        B2 blank
        C2 blank
        D4 number 1"""


def places():
    yield "no_references.xlsx", Book().sheet("Data", """
        <row><c><v>1</v></c><c><v>2</v></c></row><row/><row><c t="b"><v>1</v></c></row>
        <row r="7"><c><v>3</v></c><c r="D7"><v>4</v></c><c><v>5</v></c></row>
        <row><c><v>6</v></c></row>""").bytes(), """
        sheet worksheet visible Data
        A1 number 1
        B1 number 2
        A3 bool true
        A7 number 3
        D7 number 4
        E7 number 5
        A8 number 6"""
    yield "wrong_dimension_and_counts.xlsx", Book().sheet(
        "Data", '<row r="1" spans="9:9"><c r="A1" t="s"><v>1</v></c></row>'
        '<row r="3"><c r="B3"><v>2</v></c></row>', tail='<mergeCells count="77"><mergeCell ref="A1:B1"/>'
        "</mergeCells>", head='<dimension ref="A1:XFD1048576"/>').strings(
            "<t>first</t>", "<t>second</t>", attributes='count="0" uniqueCount="1"').bytes(), """
        sheet worksheet visible Data
        bounds A1:B3
        merge A1:B1
        A1 text second
        B3 number 2"""
    yield "far_cell.xlsx", Book().sheet(
        "Data", '<row r="1"><c r="A1"><v>1</v></c></row>'
        '<row r="1048576"><c r="XFD1048576"><v>2</v></c></row>').bytes(), """
        sheet worksheet visible Data
        bounds A1:XFD1048576
        A1 number 1
        XFD1048576 number 2"""
    yield "rows_out_of_order.xlsx", Book().sheet("Data", """
        <row r="5"><c r="C5"><v>1</v></c><c r="A5"><v>2</v></c></row>
        <row r="2"><c r="B2"><v>3</v></c></row>
        <row r="5"><c r="B5"><v>4</v></c><c r="C5"><v>5</v></c></row>""").bytes(), """
        sheet worksheet visible Data
        unordered
        B2 number 3
        A5 number 2
        B5 number 4
        C5 number 5"""
    rows = "".join(f'<row r="{r}"><c r="A{r}"><v>{r}</v></c><c r="B{r}" t="s"><v>{r % 7}</v></c></row>'
                   for r in range(1, 301))
    yield "many_rows.xlsx", Book().sheet(
        "Data", rows, tail='<sheetProtection sheet="1"/><mergeCells><mergeCell ref="D2:E3"/></mergeCells>'
    ).strings(*[f"<t>day {i}</t>" for i in range(7)]).bytes(), (
        "sheet worksheet visible Data\nprotected\nmerge D2:E3\n" + "\n".join(
            f"A{r} number {r}\nB{r} text day {r % 7}" for r in range(1, 301)))


def fixtures():
    for group in (texts, values, number_formats, places):
        yield from group()
