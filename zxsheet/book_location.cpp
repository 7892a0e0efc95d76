// SPDX-License-Identifier: Apache-2.0
//
// Paths and IDs of books.
#include "zxsheet/book_location.h"

#include <string_view>

#include "foundation/unicode.h"
#include "spreadsheet/exception.h"

namespace zxsheet {
namespace {

namespace unicode = foundation::unicode;
namespace book = spreadsheet::book;

constexpr std::string_view kOnlinePrefix = "gsheet:";

} // namespace

std::filesystem::path native_path(const std::string& path) {
    return std::filesystem::path(std::u8string(path.begin(), path.end()));
}

std::string lower_extension(const std::string& path) {
    const std::u8string extension = native_path(path).extension().u8string();
    std::string text(extension.begin(), extension.end());
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + ('a' - 'A'));
    return text;
}

BookLocation BookLocation::online(const std::string& text) {
    BookLocation location;
    location.text_ = text;
    location.id_ = text;
    location.is_online_ = true;
    return location;
}

void BookLocation::set_text(const std::string& text) {
    text_ = text;
    is_online_ = text.starts_with(kOnlinePrefix);
    id_ = is_online_ ? text.substr(kOnlinePrefix.size()) : std::string();
}

BookLocation::Kind BookLocation::kind() const {
    if (is_online_) return Kind::Online;
    return wants_application_ ? Kind::Application : Kind::File;
}

std::u16string BookLocation::library_path() const {
    return unicode::to_utf16(is_online_ ? id_ : file());
}

book::interactive BookLocation::mode() const {
    switch (kind()) {
    case Kind::Online:
        return book::interactive::google;
    case Kind::Application:
        return book::interactive::application;
    default:
        return book::interactive::file;
    }
}

book::format BookLocation::format() const {
    if (is_online_) return book::format::GSHEET;
    const std::u8string extension = path().extension().u8string();
    const std::u16string dotted =
        unicode::to_utf16(std::string(extension.begin(), extension.end()));
    if (dotted.empty()) return book::format::XLSX;
    try {
        const book::format format = book::create_format(dotted.substr(1));
        return format == book::format::GSHEET ? book::format::XLSX : format;
    } catch (const spreadsheet::Exception&) {
        return book::format::XLSX;
    }
}

} // namespace zxsheet
