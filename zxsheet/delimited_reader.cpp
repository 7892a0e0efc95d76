// SPDX-License-Identifier: Apache-2.0
//
// One pass over the characters; a field is at most as long as the longest text of a cell.
#include "zxsheet/delimited_reader.h"

#include <algorithm>

#include "foundation/unicode.h"
#include "zxsheet/command_error.h"

namespace zxsheet {
namespace {

/// UTF-16 units of a cell's text, at most three bytes each in UTF-8.
constexpr std::size_t kMaxFieldBytes = 3 * 32'767;

char separator_of(std::string_view text) {
    bool quoted = false;
    bool has_semicolon = false;
    for (const char c : text) {
        if (c == '"') quoted = !quoted;
        if (quoted) continue;
        if (c == ',') return ',';
        if (c == '\n' || c == '\r') break;
        has_semicolon |= c == ';';
    }
    return has_semicolon ? ';' : ',';
}

} // namespace

DelimitedReader::DelimitedReader(TextInput& input, char separator)
    : input_(input), separator_(separator != '\0' ? separator : separator_of(input.ahead())) {}

std::optional<FieldEnd> DelimitedReader::next(std::string& field) {
    if (at_row_start_ && input_.peek() == TextInput::kEnd) return {};
    field.clear();
    field_line_ = line_;
    if (input_.peek() == '"') read_quoted(field);
    const FieldEnd end = read_plain(field);
    check_encoding(field);
    at_row_start_ = end == FieldEnd::Row;
    return end;
}

void DelimitedReader::read_quoted(std::string& field) {
    input_.next();
    while (true) {
        const int byte = input_.next();
        if (byte == TextInput::kEnd) fail("A field begins with a quote that is never closed.");
        if (byte == '"') {
            if (input_.peek() != '"') return;
            input_.next();
        }
        if (byte == '\n' || (byte == '\r' && input_.peek() != '\n')) ++line_;
        append(field, byte);
    }
}

FieldEnd DelimitedReader::read_plain(std::string& field) {
    while (true) {
        append_run(field);
        const int byte = input_.next();
        if (byte == static_cast<unsigned char>(separator_)) return FieldEnd::Separator;
        if (byte == '\r' && input_.peek() == '\n') continue;
        if (byte == '\n' || byte == '\r') ++line_;
        if (byte == '\n' || byte == '\r' || byte == TextInput::kEnd) return FieldEnd::Row;
    }
}

/// Appends all that comes before a separator or a line end, in pieces of the input.
void DelimitedReader::append_run(std::string& field) {
    for (std::string_view ahead; !(ahead = input_.ahead()).empty();) {
        const char separator = separator_;
        const auto end = std::find_if(ahead.begin(), ahead.end(), [separator](char c) {
            return c == separator || c == '\n' || c == '\r';
        });
        const auto count = static_cast<std::size_t>(end - ahead.begin());
        if (field.size() + count > kMaxFieldBytes) fail_too_long();
        field.append(ahead.substr(0, count));
        input_.skip(count);
        if (count < ahead.size()) return;
    }
}

void DelimitedReader::append(std::string& field, int byte) {
    if (field.size() >= kMaxFieldBytes) fail_too_long();
    field.push_back(static_cast<char>(byte));
}

void DelimitedReader::fail_too_long() const {
    fail("A field is longer than the 32,767 characters that a cell holds; a quote may be "
         "missing.");
}

void DelimitedReader::check_encoding(const std::string& field) const {
    namespace unicode = foundation::unicode;
    const bool is_ascii = std::all_of(field.begin(), field.end(),
                                      [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    if (is_ascii || unicode::to_generalized_utf8(unicode::to_utf16(field)) == field) return;
    fail("The text is not UTF-8; convert the file first, for example with iconv.");
}

void DelimitedReader::fail(const std::string& what) const {
    throw CommandError(ExitCode::Failed,
                       input_.name() + ": Line " + std::to_string(field_line_) + ": " + what);
}

} // namespace zxsheet
