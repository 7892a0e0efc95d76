// SPDX-License-Identifier: Apache-2.0
//
// Content types of main parts (ECMA-376 part 1, 12.3.23; MS-OFFMACRO2 for those with macros;
// MS-XLSB).
#include "workbook/xlsx/reading/workbook_locator.h"

#include <algorithm>

#include "workbook/error.h"

namespace workbook {

namespace {

constexpr std::string_view kUsualName = "xl/workbook.xml";
constexpr std::string_view kBinaryName = "xl/workbook.bin";

/// XLSX, XLTX, XLSM, XLTM and add-ins, in lower case as `ContentTypes` gives them.
bool is_workbook_type(std::string_view type) {
    return type == "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml" ||
           type ==
               "application/vnd.openxmlformats-officedocument.spreadsheetml.template.main+xml" ||
           type == "application/vnd.ms-excel.sheet.macroenabled.main+xml" ||
           type == "application/vnd.ms-excel.template.macroenabled.main+xml" ||
           type == "application/vnd.ms-excel.addin.macroenabled.main+xml";
}

void refuse_other_documents(std::string_view type, std::string_view part) {
    const auto holds = [type](std::string_view text) {
        return type.find(text) != std::string_view::npos;
    };
    if (part.ends_with(".bin") || type == "application/vnd.ms-excel.sheet.binary.macroenabled.main")
        throw Error::not_a_workbook("it is a binary XLSB workbook");
    if (holds("wordprocessingml") || holds("ms-word"))
        throw Error::not_a_workbook("it is a text document (DOCX)");
    if (holds("presentationml") || holds("ms-powerpoint"))
        throw Error::not_a_workbook("it is a presentation (PPTX)");
}

/// What an OpenDocument container is by its "mimetype" entry.
void refuse_open_document(OpcPackage& package) {
    if (!package.has_part("mimetype")) return;
    char text[64];
    const std::unique_ptr<ByteSource> source = package.open_part("mimetype");
    const std::string_view type{text, source->read(text, sizeof text)};
    if (type.starts_with("application/vnd.oasis.opendocument.spreadsheet"))
        throw Error::not_a_workbook("it is an OpenDocument spreadsheet (ODS)");
    if (type.starts_with("application/vnd.oasis.opendocument."))
        throw Error::not_a_workbook("it is an OpenDocument file");
}

std::string related_part(OpcPackage& package) {
    std::string missing;
    for (const Relationship& relationship : package.relationships("")) {
        if (relationship.type != "officeDocument" || relationship.is_external) continue;
        if (package.has_part(relationship.target)) return relationship.target;
        if (missing.empty()) missing = relationship.target;
    }
    return missing;
}

} // namespace

std::string locate_workbook(OpcPackage& package) {
    std::string part = related_part(package);
    if (!package.has_part(part)) {
        const std::string by_type = package.content_types().find_part(is_workbook_type);
        if (package.has_part(by_type)) part = by_type;
    }
    if (!package.has_part(part))
        for (const std::string_view usual : {kUsualName, kBinaryName})
            if (package.has_part(usual)) part = usual;
    if (!package.has_part(part)) {
        refuse_open_document(package);
        if (part.empty()) throw Error::not_a_workbook("the container holds no workbook part");
        throw Error::missing("the package's workbook part \"" + part + "\" is missing");
    }
    refuse_other_documents(package.content_types().of(part), part);
    return part;
}

} // namespace workbook
