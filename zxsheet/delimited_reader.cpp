// SPDX-License-Identifier: Apache-2.0
//
// One pass over the characters; a field is at most as long as the longest text of a cell.
#include "zxsheet/delimited_reader.h"

#include "foundation/unicode.h"
#include "zxsheet/command_error.h"

#if defined(__SSE2__)
#include <bit>

#include <emmintrin.h>
#endif

namespace zxsheet {
namespace {

/// UTF-16 units of a cell's text, at most three bytes each in UTF-8.
constexpr std::size_t kMaxFieldBytes = std::size_t{3} * 32'767;

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

bool is_ascii(char byte) {
    return static_cast<unsigned char>(byte) < 0x80;
}

struct PlainRun {
    std::size_t size = 0;
    bool is_ascii = true;
};

/// What comes before a separator or a line end. Fields are short and many: to look at each of their
/// bytes would cost more than all else that is done with them.
PlainRun find_plain_run(std::string_view text, char separator) {
    PlainRun run;
#if defined(__SSE2__)
    const __m128i separators = _mm_set1_epi8(separator);
    const __m128i line_feeds = _mm_set1_epi8('\n');
    const __m128i returns = _mm_set1_epi8('\r');
    for (; text.size() - run.size >= 16; run.size += 16) {
        const __m128i bytes =
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + run.size));
        const __m128i ends = _mm_or_si128(
            _mm_cmpeq_epi8(bytes, separators),
            _mm_or_si128(_mm_cmpeq_epi8(bytes, line_feeds), _mm_cmpeq_epi8(bytes, returns)));
        const auto end_bits = static_cast<unsigned>(_mm_movemask_epi8(ends));
        const auto other_bits = static_cast<unsigned>(_mm_movemask_epi8(bytes));
        // The bits below the first end; all of them without one.
        const unsigned before_end = (end_bits & -end_bits) - 1;
        run.is_ascii &= (other_bits & before_end) == 0;
        if (end_bits != 0) {
            run.size += static_cast<std::size_t>(std::countr_zero(end_bits));
            return run;
        }
    }
#endif
    for (; run.size < text.size(); ++run.size) {
        const char byte = text[run.size];
        if (byte == separator || byte == '\n' || byte == '\r') break;
        run.is_ascii &= is_ascii(byte);
    }
    return run;
}

} // namespace

DelimitedReader::DelimitedReader(TextInput& input, char separator)
    : input_(input), separator_(separator != '\0' ? separator : separator_of(input.ahead())) {}

std::optional<FieldEnd> DelimitedReader::next(std::string& field) {
    const int first = input_.peek();
    if (at_row_start_ && first == TextInput::kEnd) return {};
    field.clear();
    field_line_ = line_;
    is_ascii_ = true;
    if (first == '"') read_quoted(field);
    const FieldEnd end = read_plain(field);
    if (!is_ascii_) check_encoding(field);
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
        const auto character = static_cast<char>(byte);
        append(field, {&character, 1}, is_ascii(character));
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
        const PlainRun run = find_plain_run(ahead, separator_);
        append(field, ahead.substr(0, run.size), run.is_ascii);
        input_.skip(run.size);
        if (run.size < ahead.size()) return;
    }
}

void DelimitedReader::append(std::string& field, std::string_view text, bool is_ascii) {
    if (field.size() + text.size() > kMaxFieldBytes)
        fail("A field is longer than the 32,767 characters that a cell holds; a quote may be "
             "missing.");
    field += text;
    is_ascii_ &= is_ascii;
}

void DelimitedReader::check_encoding(const std::string& field) const {
    namespace unicode = foundation::unicode;
    if (unicode::to_generalized_utf8(unicode::to_utf16(field)) == field) return;
    fail("The text is not UTF-8; convert the file first, for example with iconv.");
}

void DelimitedReader::fail(const std::string& what) const {
    throw CommandError(ExitCode::Failed,
                       input_.name() + ": Line " + std::to_string(field_line_) + ": " + what);
}

} // namespace zxsheet
