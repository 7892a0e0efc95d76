// SPDX-License-Identifier: Apache-2.0
//
// A book of whatever family its file turns out to be: each load looks at the content and picks the
// engine. Before the first load, and for a file of no family, it is the engine that it began with.
#pragma once

#include <memory>

#include "workbook/library.h"

namespace workbook {

enum class BookFamily { Xls, OpenXml };

class DetectingBook final : public Book {
  public:
    explicit DetectingBook(BookFamily family);
    ~DetectingBook() override;

    bool load(BookSource source) override;
    bool load_sheet(BookSource source, int sheet_index) override;
    bool load_partially(BookSource source, int sheet_index, int first_row, int last_row) override;
    bool load_info(BookSource source) override;
    std::vector<std::string> load_warnings() const override { return engine_->load_warnings(); }

    int sheet_count() const override { return engine_->sheet_count(); }
    Sheet* get_sheet(int index) override { return engine_->get_sheet(index); }
    std::u16string_view get_sheet_name(int index) const override {
        return engine_->get_sheet_name(index);
    }
    SheetKind sheet_type(int index) const override { return engine_->sheet_type(index); }

    std::optional<SheetScan> scan_sheet(int index) override { return engine_->scan_sheet(index); }
    std::vector<NamedCells> named_cells() override { return engine_->named_cells(); }

    int format_size() const override { return engine_->format_size(); }
    Format* format(int index) override { return engine_->format(index); }
    Format* add_format() override { return engine_->add_format(); }

    bool is_date_1904() const override { return engine_->is_date_1904(); }
    bool set_date_1904(bool on) override { return engine_->set_date_1904(on); }

    Sheet* insert_sheet(int index, std::u16string_view name, const Sheet* source) override {
        return engine_->insert_sheet(index, name, source);
    }
    bool delete_sheet(int index) override { return engine_->delete_sheet(index); }
    bool move_sheet(int from, int to) override { return engine_->move_sheet(from, to); }
    bool save(std::u16string_view path) override { return engine_->save(path); }
    bool save(foundation::files::OutputFile& out, std::u16string_view extension) override {
        return engine_->save(out, extension);
    }
    SaveCounts last_save() const override { return engine_->last_save(); }

    ErrorKind error_kind() const override { return engine_->error_kind(); }
    std::optional<foundation::files::FileProblem> file_problem() const override {
        return engine_->file_problem();
    }
    const char* error_message() const override { return engine_->error_message(); }

  private:
    /// The engine for a source, whose file is open afterwards if it can be opened.
    Book& engine_for(BookSource& source);

    const BookFamily first_family_;
    BookFamily family_;
    std::unique_ptr<Book> engine_;
};

} // namespace workbook
