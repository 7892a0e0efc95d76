// SPDX-License-Identifier: Apache-2.0
//
// Runs the program inside the test's process, on books that are made on the spot.
#pragma once

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/workbook/zip_builder.h"
#include "zxsheet/run.h"

namespace zxsheet::test {

struct Outcome {
    int code;
    std::string out;
    std::string err;
};

inline Outcome run_program(const std::vector<std::string>& arguments,
                           const std::string& input = {}) {
    std::istringstream in(input);
    std::ostringstream out;
    std::ostringstream err;
    const int code = run(arguments, in, out, err);
    return {code, out.str(), err.str()};
}

/// A path in the folder for temporary files, another one in each process; the file is removed at
/// the end.
class TemporaryPath {
  public:
    explicit TemporaryPath(const std::string& name)
        : path_(std::filesystem::path(testing::TempDir()) /
                (std::to_string(std::random_device{}()) + name)) {}
    TemporaryPath(const TemporaryPath&) = delete;
    TemporaryPath& operator=(const TemporaryPath&) = delete;
    ~TemporaryPath() { std::filesystem::remove_all(path_); }

    std::string text() const { return path_.generic_string(); }
    void fill(const std::string& bytes) const { std::ofstream(path_, std::ios::binary) << bytes; }
    bool exists() const { return std::filesystem::exists(path_); }
    std::string bytes() const {
        std::ostringstream content;
        content << std::ifstream(path_, std::ios::binary).rdbuf();
        return content.str();
    }

  private:
    std::filesystem::path path_;
};

/// One sheet of a made book: its name, further attributes of its entry, its part.
struct MadeSheet {
    std::string name;
    std::string attributes;
    std::string part;
    bool is_chart = false;
    std::string table{}; ///< attributes of the one on the sheet; empty for none
};

/// Bytes of an XLSX file. Formats 1 to 3 of the cells are a date, a time of day and an elapsed
/// time, `after` follows the list of sheets.
inline std::string make_book(const std::vector<MadeSheet>& sheets, const std::string& after = {}) {
    const std::string office =
        "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
    const std::string main = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";
    const std::string package = "http://schemas.openxmlformats.org/package/2006";
    const std::string types = "application/vnd.openxmlformats-officedocument.spreadsheetml.";
    std::string overrides, entries, relations;
    std::vector<workbook::test::ZipItem> items;
    for (std::size_t i = 0; i < sheets.size(); ++i) {
        const std::string id = std::to_string(i + 1);
        const std::string kind = sheets[i].is_chart ? "chartsheet" : "worksheet";
        const std::string part = "xl/s" + id + ".xml";
        overrides += "<Override PartName='/" + part + "' ContentType='" + types + kind + "+xml'/>";
        entries += "<sheet name='" + sheets[i].name + "' sheetId='" + id + "' r:id='r" + id + "' " +
                   sheets[i].attributes + "/>";
        relations += "<Relationship Id='r" + id + "' Type='" + office + "/" + kind + "' Target='s" +
                     id + ".xml'/>";
        if (!sheets[i].table.empty()) {
            items.push_back({"xl/_rels/s" + id + ".xml.rels",
                             "<Relationships xmlns='" + package +
                                 "/relationships'><Relationship Id='t' Type='" + office +
                                 "/table' Target='t" + id + ".xml'/></Relationships>"});
            items.push_back({"xl/t" + id + ".xml",
                             "<table xmlns='" + main + "' id='1' " + sheets[i].table + "/>"});
        }
        items.push_back(
            {part, "<" + kind + " xmlns='" + main + "'>" + sheets[i].part + "</" + kind + ">"});
    }
    relations += "<Relationship Id='rs' Type='" + office + "/styles' Target='styles.xml'/>";
    items.push_back(
        {"[Content_Types].xml", "<Types xmlns='" + package +
                                    "/content-types'>"
                                    "<Override PartName='/xl/workbook.xml' ContentType='" +
                                    types +
                                    "sheet.main+xml'/>"
                                    "<Override PartName='/xl/styles.xml' ContentType='" +
                                    types + "styles+xml'/>" + overrides + "</Types>"});
    items.push_back({"_rels/.rels", "<Relationships xmlns='" + package +
                                        "/relationships'>"
                                        "<Relationship Id='r' Type='" +
                                        office +
                                        "/officeDocument' Target='xl/workbook.xml'/>"
                                        "</Relationships>"});
    items.push_back({"xl/workbook.xml", "<workbook xmlns='" + main + "' xmlns:r='" + office +
                                            "'>"
                                            "<sheets>" +
                                            entries + "</sheets>" + after + "</workbook>"});
    items.push_back(
        {"xl/_rels/workbook.xml.rels",
         "<Relationships xmlns='" + package + "/relationships'>" + relations + "</Relationships>"});
    items.push_back(
        {"xl/styles.xml", "<styleSheet xmlns='" + main +
                              "'><cellXfs><xf/><xf numFmtId='14' applyNumberFormat='1'/>"
                              "<xf numFmtId='20' applyNumberFormat='1'/>"
                              "<xf numFmtId='46' applyNumberFormat='1'/></cellXfs></styleSheet>"});
    return workbook::test::build_zip(items);
}

} // namespace zxsheet::test
