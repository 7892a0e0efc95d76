// SPDX-License-Identifier: Apache-2.0
//
// Reads the index (CSV) and the expectations (gzipped JSON) of the corpus.
#include "tests/corpus/oracle.h"

#include <array>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>

#include <nlohmann/json.hpp>
#include <zlib.h>

namespace corpus {
namespace {

using Json = nlohmann::json;

constexpr const char* kNameOfOnlySheet = "Sheet1";

Verdict parse_verdict(const std::string& text) {
    if (text == "conflict") return Verdict::Conflict;
    if (text == "one-reader-only") return Verdict::OneReader;
    if (text.rfind("unreadable", 0) == 0) return Verdict::Unreadable;
    return Verdict::Agree;
}

std::string gunzip(const std::string& path) {
    const std::unique_ptr<gzFile_s, int (*)(gzFile)> file(gzopen(path.c_str(), "rb"), gzclose);
    if (!file) throw std::runtime_error("cannot open " + path);
    std::string text;
    std::array<char, 65536> buffer;
    int count = 0;
    while ((count = gzread(file.get(), buffer.data(), static_cast<unsigned>(buffer.size()))) > 0)
        text.append(buffer.data(), static_cast<std::size_t>(count));
    if (count < 0) throw std::runtime_error("cannot read " + path);
    return text;
}

Answer parse_answer(const Json& kind, const Json& value) {
    Answer answer;
    answer.kind = kind.get<std::string>().at(0);
    if (value.is_boolean())
        answer.number = value.get<bool>() ? 1.0 : 0.0;
    else if (value.is_number())
        answer.number = value.get<double>();
    else if (value.is_string())
        answer.text = value.get<std::string>();
    return answer;
}

Expectation parse_expectation(const Json& cell) {
    Expectation expectation;
    expectation.answer = parse_answer(cell.at(2), cell.at(3));
    if (cell.size() > 4 && cell[4].contains("alt"))
        for (const Json& other : cell[4]["alt"])
            expectation.others.push_back(other.is_null() ? Answer{}
                                                         : parse_answer(other.at(0), other.at(1)));
    return expectation;
}

ExpectedSheet parse_sheet(const Json& json) {
    ExpectedSheet sheet;
    sheet.name = json.at("name").get<std::string>();
    sheet.visibility = json.at("visibility").get<int>();
    sheet.has_all_cells = !json.at("sampled").get<bool>();
    for (const Json& region : json.at("merged"))
        sheet.merged.push_back({region.at(0), region.at(1), region.at(2), region.at(3)});
    for (const Json& cell : json.at("cells"))
        sheet.cells.emplace(cell_key(cell.at(0), cell.at(1)), parse_expectation(cell));
    return sheet;
}

} // namespace

std::vector<File> list_files(const std::string& folder) {
    std::vector<File> files;
    std::ifstream index(folder + "/oracle_index.csv");
    std::string line;
    std::getline(index, line);
    while (std::getline(index, line)) {
        std::istringstream fields(line);
        std::string name, format, verdict;
        std::getline(fields, name, ',');
        std::getline(fields, format, ',');
        std::getline(fields, verdict, ',');
        files.push_back({name, parse_verdict(verdict)});
    }
    return files;
}

Oracle load_oracle(const std::string& folder, const std::string& file_name) {
    const Json json = Json::parse(gunzip(folder + "/oracle/" + file_name + ".json.gz"));
    Oracle oracle;
    oracle.dates_1904 = json.value("date1904", false);
    for (const Json& place : json.at("structure"))
        oracle.places.push_back({place.at(0), place.at(2).get<std::string>() == "chartsheet"});
    for (const Json& sheet : json.at("sheets"))
        oracle.sheets.push_back(parse_sheet(sheet));
    // A stream without a container has one sheet, whose name each reader makes up.
    if (oracle.places.empty() && oracle.sheets.size() == 1) {
        oracle.sheets.front().name = kNameOfOnlySheet;
        oracle.places.push_back({kNameOfOnlySheet, false});
    }
    return oracle;
}

} // namespace corpus
