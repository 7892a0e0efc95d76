// SPDX-License-Identifier: Apache-2.0
#include "workbook/detecting_book.h"

#include <utility>

#include "foundation/files.h"
#include "workbook/detect/file_kind.h"
#include "workbook/xls/xls_book.h"
#include "workbook/xlsx/xlsx_book.h"

namespace workbook {

namespace {

std::unique_ptr<Book> make_engine(BookFamily family) {
    if (family == BookFamily::Xls) return std::make_unique<XlsBook>();
    return std::make_unique<XlsxBook>();
}

BookFamily family_of(foundation::files::RandomAccessFile& file, BookFamily otherwise) {
    switch (detect_file_kind(file)) {
    case FileKind::CompoundFile:
    case FileKind::RecordStream:
        return BookFamily::Xls;
    case FileKind::ZipContainer:
        return BookFamily::OpenXml;
    default:
        return otherwise;
    }
}

} // namespace

DetectingBook::DetectingBook(BookFamily family)
    : first_family_(family), family_(family), engine_(make_engine(family)) {}

DetectingBook::~DetectingBook() = default;

Book& DetectingBook::engine_for(BookSource& source) {
    BookFamily family = first_family_;
    try {
        if (source.file == nullptr) source.file = foundation::files::open_for_reading(source.path);
        family = family_of(*source.file, first_family_);
    } catch (const foundation::files::FileError&) {
        // The engine's load meets the same and reports it.
    }
    if (family != family_) engine_ = make_engine(family);
    family_ = family;
    return *engine_;
}

bool DetectingBook::load(BookSource source) {
    Book& engine = engine_for(source);
    return engine.load(std::move(source));
}

bool DetectingBook::load_sheet(BookSource source, int sheet_index) {
    Book& engine = engine_for(source);
    return engine.load_sheet(std::move(source), sheet_index);
}

bool DetectingBook::load_partially(BookSource source, int sheet_index, int first_row,
                                   int last_row) {
    Book& engine = engine_for(source);
    return engine.load_partially(std::move(source), sheet_index, first_row, last_row);
}

bool DetectingBook::load_info(BookSource source) {
    Book& engine = engine_for(source);
    return engine.load_info(std::move(source));
}

} // namespace workbook
