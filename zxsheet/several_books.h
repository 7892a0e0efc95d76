// SPDX-License-Identifier: Apache-2.0
//
// One command for several books: their output one after the other, and what it says of a book that
// cannot be read while the others can.
#pragma once

#include <exception>
#include <functional>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

#include "zxsheet/command.h"

namespace zxsheet {

/// Books after BOOK; they are opened as BOOK is.
Parameter more_books_argument(std::vector<std::string>& more);

/// Calls `run` for BOOK and then for each of `more`. Of several, one that fails is noted at `out`,
/// which gets the exit code of the first failure, and the others are read; a failure of a single
/// one, and of `out` itself, leaves this function.
void for_each_book(const BookOptions& options, const std::vector<std::string>& more,
                   OutputSink& out, const std::function<void(const BookLocation& book)>& run);

/// What a line of text output is.
enum class LineKind {
    Separated, ///< fields, in quotes where they hold line ends
    Json       ///< an array or object that is not empty: the text comes after its bracket
};

/// Puts a text in front of every line that it passes on to a sink.
class LinePrefixer : private std::streambuf {
  public:
    /// `prefix` is a field, an element or a member, and the separator after it.
    LinePrefixer(OutputSink& out, LineKind kind, std::string prefix);

    std::ostream& stream() { return stream_; }
    /// What the sink has thrown; null when all is well.
    std::exception_ptr failure() const { return failure_; }

  private:
    std::streamsize xsputn(const char* text, std::streamsize count) override;
    int_type overflow(int_type character) override;
    void put(char character);

    OutputSink& out_;
    const LineKind kind_;
    const std::string prefix_;
    std::ostream stream_;
    std::string piece_;
    bool begins_line_ = true;
    bool is_quoted_ = false;
    std::exception_ptr failure_;
};

} // namespace zxsheet
