// SPDX-License-Identifier: Apache-2.0
//
// Fields of CSV and TSV text (RFC 4180), one after the other, with what real files have besides:
// lines that end with LF or CR, text after a closing quote, rows of different lengths, no line
// end after the last row.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "zxsheet/text_input.h"

namespace zxsheet {

/// What follows a field.
enum class FieldEnd { Separator, Row };

class DelimitedReader {
  public:
    /// With `separator` 0 it is a comma, or a semicolon if the first line has semicolons and no
    /// comma outside quotes.
    DelimitedReader(TextInput& input, char separator);

    /// Puts the next field into `field`; no value at the end of the text, which is never within a
    /// row. An empty line is a row of one empty field. Throws `CommandError` that names the line
    /// for a quote that is not closed, text that is not UTF-8 and a field longer than a cell can
    /// hold.
    std::optional<FieldEnd> next(std::string& field);

  private:
    void read_quoted(std::string& field);
    FieldEnd read_plain(std::string& field);
    void append_run(std::string& field);
    void append(std::string& field, std::string_view text, bool is_ascii);
    void check_encoding(const std::string& field) const;
    [[noreturn]] void fail(const std::string& what) const;

    TextInput& input_;
    char separator_;
    bool at_row_start_ = true;
    bool is_ascii_ = true;       ///< the field so far
    std::size_t line_ = 1;       ///< of the text that comes next
    std::size_t field_line_ = 1; ///< where the field begins
};

} // namespace zxsheet
