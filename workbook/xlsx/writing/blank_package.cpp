// SPDX-License-Identifier: Apache-2.0
//
// Zips the parts of a new book into memory.
#include "workbook/xlsx/writing/blank_package.h"

#include <cstdio>
#include <string>
#include <utility>

#include "foundation/output_file.h"
#include "workbook/zip/zip_writer.h"

namespace workbook {

namespace {

constexpr std::string_view kCoreProperties =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
    "<cp:coreProperties"
    R"( xmlns:cp="http://schemas.openxmlformats.org/package/2006/metadata/core-properties")"
    R"( xmlns:dc="http://purl.org/dc/elements/1.1/")"
    R"( xmlns:dcterms="http://purl.org/dc/terms/")"
    R"( xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance">)"
    "<dc:creator>zxspreadsheet</dc:creator>";

/// The form of W3CDTF, in UTC.
std::string date_and_time(std::chrono::system_clock::time_point now) {
    using namespace std::chrono;
    const auto day = floor<days>(now);
    const year_month_day date(day);
    const hh_mm_ss time(floor<seconds>(now - day));
    char text[48];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02dZ",
                  static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
                  static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return text;
}

std::string core_properties(std::chrono::system_clock::time_point now) {
    const std::string time = date_and_time(now);
    std::string text{kCoreProperties};
    for (const std::string element : {"dcterms:created", "dcterms:modified"})
        text += "<" + element + " xsi:type=\"dcterms:W3CDTF\">" + time + "</" + element + ">";
    return text + "</cp:coreProperties>";
}

void add_part(ZipWriter& zip, std::string_view name, std::string_view text) {
    zip.begin_entry(name).append(text);
    zip.end_entry();
}

} // namespace

std::unique_ptr<OpcPackage> make_blank_package(std::chrono::system_clock::time_point now) {
    std::string bytes;
    const auto out = foundation::files::memory_output(bytes);
    ZipWriter zip(*out);
    for (const BlankPart& part : blank_parts())
        add_part(zip, part.name, part.text);
    add_part(zip, "docProps/core.xml", core_properties(now));
    zip.finish();
    return std::make_unique<OpcPackage>(foundation::files::memory_file(std::move(bytes)));
}

} // namespace workbook
