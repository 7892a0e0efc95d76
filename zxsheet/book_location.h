// SPDX-License-Identifier: Apache-2.0
//
// What BOOK on the command line names: a file, a file that the spreadsheet application opens, or a
// spreadsheet online. Parsed once; whatever depends on it asks this value.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "spreadsheet/book_format.h"

namespace zxsheet {

/// What stands for standard input or output on the command line.
inline constexpr const char* kStream = "-";

/// A UTF-8 path in the platform's own form.
std::filesystem::path native_path(const std::string& path);

/// The extension of a UTF-8 path with its dot, in lower case; empty when there is none.
std::string lower_extension(const std::string& path);

/// How messages name a file that is written.
std::string output_name(const std::string& file);

class BookLocation {
  public:
    enum class Kind { File, Application, Online };

    BookLocation() = default;
    /// "gsheet:ID" is a spreadsheet online, and so is its address in a browser, alone or after
    /// "gsheet:"; anything else is a UTF-8 path.
    explicit BookLocation(const std::string& text) { set_text(text); }
    /// What is online under this ID, or is about to be, whatever `text` looks like.
    static BookLocation online(const std::string& text);

    void set_text(const std::string& text);
    /// Opens the file as `other` is opened.
    void use_mode_of(const BookLocation& other) { wants_application_ = other.wants_application_; }
    /// A copy of the book is in this file; messages call it `name`. For a path without an extension
    /// that of `output` says the format.
    void set_file(const std::string& path, const std::string& name, const std::string& output) {
        text_ = name;
        file_ = path;
        output_ = output;
    }
    /// Lets the spreadsheet application open the file; has no effect on a spreadsheet online.
    void use_application() { wants_application_ = true; }

    Kind kind() const;
    bool is_file() const { return kind() == Kind::File; }
    bool is_online() const { return kind() == Kind::Online; }

    /// As it was given; messages name the book by it.
    const std::string& text() const { return text_; }
    /// The path in the platform's form; of a spreadsheet online something that is not a file.
    std::filesystem::path path() const { return native_path(file()); }
    /// The path as UTF-8.
    const std::string& file() const { return file_.empty() ? text_ : file_; }
    /// The ID of a spreadsheet online; empty for a file.
    const std::string& id() const { return id_; }
    /// The sheet that a browser's address names by its number ("gid").
    const std::optional<std::int64_t>& sheet_id() const { return sheet_id_; }

    /// What the library takes as path, mode and format. The format is the one that the extension
    /// names, XLSX for an unknown extension, since the content decides anyway.
    std::u16string library_path() const;
    spreadsheet::book::interactive mode() const;
    spreadsheet::book::format format() const;

  private:
    std::string text_;
    std::string file_;   ///< where a copy is; empty for none
    std::string output_; ///< of the copy
    std::string id_;
    std::optional<std::int64_t> sheet_id_;
    bool is_online_ = false;
    bool wants_application_ = false;
};

} // namespace zxsheet
