// SPDX-License-Identifier: Apache-2.0
//
// Paths and IDs of books.
#include "zxsheet/book_location.h"

#include <charconv>
#include <string_view>
#include <system_error>

#include "foundation/unicode.h"
#include "spreadsheet/exception.h"

namespace zxsheet {
namespace {

namespace unicode = foundation::unicode;
namespace book = spreadsheet::book;

constexpr std::string_view kOnlinePrefix = "gsheet:";
constexpr std::string_view kAddressPrefix = "https://docs.google.com/spreadsheets/";

/// The ID in a browser's address, ".../spreadsheets/d/ID/edit#gid=0" or
/// ".../spreadsheets/u/1/d/ID".
std::string id_in_address(std::string_view address) {
    constexpr std::string_view kMark = "/d/";
    const std::size_t mark = address.find(kMark, kAddressPrefix.size() - 1);
    if (mark == std::string_view::npos) return {};
    const std::string_view rest = address.substr(mark + kMark.size());
    return std::string(rest.substr(0, rest.find_first_of("/?#")));
}

/// The number after the last "gid=".
std::optional<std::int64_t> sheet_id_in_address(std::string_view address) {
    constexpr std::string_view kMark = "gid=";
    const std::size_t mark = address.rfind(kMark);
    if (mark == std::string_view::npos) return {};
    const std::string_view digits = address.substr(mark + kMark.size());
    std::int64_t id = 0;
    const auto [end, failure] = std::from_chars(digits.data(), digits.data() + digits.size(), id);
    return failure == std::errc() ? std::optional(id) : std::nullopt;
}

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

std::string output_name(const std::string& file) {
    return file == kStream ? "standard output" : file;
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
    file_.clear();
    output_.clear();
    is_online_ = text.starts_with(kOnlinePrefix);
    id_ = is_online_ ? text.substr(kOnlinePrefix.size()) : std::string();
    sheet_id_.reset();
    const std::string address = is_online_ ? id_ : text;
    if (!address.starts_with(kAddressPrefix)) return;
    is_online_ = true;
    id_ = id_in_address(address);
    sheet_id_ = sheet_id_in_address(address);
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
    std::string extension = lower_extension(file());
    if (extension.empty()) extension = lower_extension(output_);
    if (extension.empty()) return book::format::XLSX;
    try {
        const book::format format = book::create_format(unicode::to_utf16(extension.substr(1)));
        return format == book::format::GSHEET ? book::format::XLSX : format;
    } catch (const spreadsheet::Exception&) {
        return book::format::XLSX;
    }
}

} // namespace zxsheet
