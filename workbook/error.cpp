// SPDX-License-Identifier: Apache-2.0
//
// The sentences of the error factories.
#include "workbook/error.h"

namespace workbook {

namespace {

std::string joined(std::string_view subject, std::string_view link, std::string_view what) {
    std::string text{subject};
    text.append(link).append(what);
    return text;
}

} // namespace

Error Error::file(const foundation::files::FileError& reason, std::string_view context) {
    return {ErrorKind::File,
            context.empty() ? std::string{reason.what()} : joined(context, ": ", reason.what()),
            reason.problem()};
}

Error Error::file(std::string_view reason) {
    return {ErrorKind::File, std::string{reason}};
}

Error Error::not_a_workbook(std::string_view what) {
    return {ErrorKind::NotAWorkbook,
            joined("the file is not a workbook that can be read", ": ", what)};
}

Error Error::encrypted() {
    return {ErrorKind::Encrypted,
            "the workbook is encrypted: remove its password in a spreadsheet application first"};
}

Error Error::damaged(std::string_view part, std::string_view what) {
    return {ErrorKind::Damaged, joined(part, " is damaged: ", what)};
}

Error Error::damaged_at(std::string_view part, std::uint64_t position, std::string_view what) {
    return {ErrorKind::Damaged,
            joined(part, " is damaged at byte " + std::to_string(position) + ": ", what)};
}

Error Error::limit(std::string_view part, std::string_view what) {
    return {ErrorKind::Limit, joined(part, " is larger than allowed: ", what)};
}

Error Error::missing(std::string_view what) {
    return {ErrorKind::Missing, std::string{what}};
}

Error Error::refused(std::string_view why) {
    return {ErrorKind::Refused, std::string{why}};
}

Error Error::in_sheet(std::string_view sheet) const {
    return {kind_, joined("sheet \"", sheet, "\": ").append(what()), problem_};
}

} // namespace workbook
