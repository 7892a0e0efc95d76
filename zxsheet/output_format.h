// SPDX-License-Identifier: Apache-2.0
//
// The formats that cells are printed in: one interface, a class for each in a source of its own.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "zxsheet/byte_set.h"
#include "zxsheet/cell_grid.h"
#include "zxsheet/cell_text.h"
#include "zxsheet/output_sink.h"
#include "zxsheet/parameter.h"

namespace zxsheet {

/// How cells are printed, whatever the format.
struct PrintStyle {
    TextStyle text;
    MergedRules merged;
};

class OutputFormat {
  public:
    virtual ~OutputFormat() = default;
    /// Prints all cells of the selection.
    virtual void write(const Selection& selection, OutputSink& out) const = 0;
};

struct SeparatedOptions {
    char separator = ',';
    bool has_mark = false;            ///< a byte order mark at the beginning
    bool has_carriage_return = false; ///< lines end with CR LF
};

/// One line a row, fields between separators, quoted where they need it (RFC 4180).
std::unique_ptr<OutputFormat> separated_format(const PrintStyle& style,
                                               const SeparatedOptions& options);

/// One JSON object with the sheet's name, the range, the types and, if wanted, the values.
std::unique_ptr<OutputFormat> json_format(const PrintStyle& style, Content content);

/// One JSON array a row and line.
std::unique_ptr<OutputFormat> json_lines_format(const PrintStyle& style);

/// JSON objects, whose names are the first row, in an array or one a line.
enum class RecordLayout { Array, Lines };
std::unique_ptr<OutputFormat> records_format(const PrintStyle& style, RecordLayout layout);

/// One line for each cell that is there, with its address, type and value: as TSV or as JSON
/// objects. Costs what the cells cost, however far apart they are.
enum class CellLayout { Tsv, JsonLines };
std::unique_ptr<OutputFormat> cells_format(const PrintStyle& style, CellLayout layout,
                                           Bounds bounds);

/// Aligned columns under their letters, rows after their numbers, for people. Lines are cut to
/// `width` characters; 0 for no cut at all, nullopt for that of the terminal, if there is one.
std::unique_ptr<OutputFormat> table_format(const PrintStyle& style,
                                           std::optional<std::size_t> width);

enum class TextFormat { Csv, Tsv, Json, JsonLines, Records, Cells, CellsJson, Table };

/// A format with all that can be asked of it.
struct TextOptions {
    TextFormat format = TextFormat::Csv;
    PrintStyle style{};
    SeparatedOptions separated{};
    std::optional<char> delimiter{};    ///< of CSV
    std::optional<std::size_t> width{}; ///< of a table
    bool has_header = false;            ///< records in place of arrays
    Bounds bounds = Bounds::Filled;     ///< of single cells
};
std::unique_ptr<OutputFormat> text_format(const TextOptions& options);

Parameter text_format_option(std::optional<TextFormat>& format);
/// The format that the end of a file's name says; no value for any other end.
std::optional<TextFormat> text_format_of_name(const std::string& file);
/// Throws `CommandError` when the file to write is the book itself, or has the name of a book.
void check_text_file(const BookLocation& book, const std::string& file);
/// What the name of a file in the format ends with, without a dot.
std::string ending_of(TextFormat format);

/// What a field of text between separators cannot have outside quotes.
ByteSet special_bytes(char separator);
/// Appends the field, in quotes where it has one of the `special` bytes.
void append_field(std::string& out, std::string_view field, const ByteSet& special);

} // namespace zxsheet
