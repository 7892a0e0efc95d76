// SPDX-License-Identifier: Apache-2.0
#include "zxsheet/several_books.h"

#include <sstream>
#include <utility>

#include "zxsheet/command_error.h"
#include "zxsheet/library_error.h"
#include "zxsheet/streamed_book.h"

namespace zxsheet {

Parameter more_books_argument(std::vector<std::string>& more) {
    return {"MORE", "", "Further books", &more};
}

void for_each_book(const BookOptions& options, const std::vector<std::string>& more,
                   OutputSink& out, const std::function<void(const BookLocation& book)>& run) {
    if (more.empty()) return run(options.book);
    const auto run_one = [&](const BookLocation& book) {
        try {
            run(book);
        } catch (const std::exception&) {
            if (out.has_failed()) throw;
            BookOptions own = options;
            own.book = book;
            const CommandError error = as_command_error(std::current_exception(), own);
            if (error.code() == ExitCode::Usage) throw error; // the same for every book
            out.note(error.what());
            if (out.exit_code() == 0) out.set_exit_code(static_cast<int>(error.code()));
        }
    };
    run_one(options.book);
    std::istringstream nothing; // standard input is BOOK, if anything
    for (const std::string& text : more) {
        if (text == kStream)
            throw CommandError(ExitCode::Usage, "Standard input can be the first book only");
        BookLocation book = options.book;
        book.set_text(text);
        StreamedBook streamed;
        try {
            streamed.fetch(book, {}, nothing);
        } catch (const CommandError& error) {
            out.note(error.what());
            if (out.exit_code() == 0) out.set_exit_code(static_cast<int>(error.code()));
            continue;
        }
        run_one(book);
    }
}

LinePrefixer::LinePrefixer(OutputSink& out, LineKind kind, std::string prefix)
    : out_(out), kind_(kind), prefix_(std::move(prefix)), stream_(this) {}

void LinePrefixer::put(char character) {
    if (begins_line_) {
        begins_line_ = false;
        if (kind_ == LineKind::Json) return void(piece_.append(1, character).append(prefix_));
        piece_ += prefix_;
    }
    piece_ += character;
    if (kind_ == LineKind::Separated && character == '"') is_quoted_ = !is_quoted_;
    if (character == '\n' && !is_quoted_) begins_line_ = true;
}

std::streamsize LinePrefixer::xsputn(const char* text, std::streamsize count) {
    piece_.clear();
    for (std::streamsize i = 0; i < count; ++i)
        put(text[i]);
    try {
        out_.write(piece_);
    } catch (const std::exception&) {
        failure_ = std::current_exception();
        return 0;
    }
    return count;
}

LinePrefixer::int_type LinePrefixer::overflow(int_type character) {
    if (traits_type::eq_int_type(character, traits_type::eof())) return 0;
    const char one = traits_type::to_char_type(character);
    return xsputn(&one, 1) == 1 ? character : traits_type::eof();
}

} // namespace zxsheet
