// SPDX-License-Identifier: Apache-2.0
//
// The list of back-ends: the only source that knows every one of them.
#include "spreadsheet/back_ends.h"

#include <iterator>
#include <string>

#include "spreadsheet/book_factory.h"
#include "spreadsheet/gsheet/gsheet_book.h"
#include "spreadsheet/gsheet/utils/shared_client.h"
#include "spreadsheet/libxl/libxl_book.h"

namespace spreadsheet {
namespace {

template <class Book>
std::shared_ptr<IBook> make() {
    return std::make_shared<Book>();
}

void nothing() {}

struct BackEnd {
    book::interactive mode;
    std::shared_ptr<IBook> (*make_book)();
    void (*start)();
    void (*stop)();
};

constexpr BackEnd kBackEnds[] = {
    {book::interactive::file, make<LibXLBook>, nothing, nothing},
    {book::interactive::google, make<GSheetWorkbook>, gsheet::start_service, gsheet::stop_service},
};

void log_unavailable(book::interactive mode) {
    auto& logger = getLogger();
    if (mode != book::interactive::application || !logger.enabled(foundation::log::error)) return;
    logger.write(foundation::log::error,
                 "[BOOK FACTORY MSG]: this version does not serve spreadsheet applications");
}

/// Stops the first `count` back-ends, the last of them first.
void stop_first(std::size_t count) {
    while (count > 0)
        kBackEnds[--count].stop();
}

} // namespace

std::shared_ptr<IBook> make_book(book::interactive mode) {
    for (const BackEnd& back_end : kBackEnds)
        if (back_end.mode == mode) return back_end.make_book();
    log_unavailable(mode);
    return nullptr;
}

void start_back_ends() {
    for (std::size_t index = 0; index < std::size(kBackEnds); ++index) {
        try {
            kBackEnds[index].start();
        } catch (...) {
            stop_first(index);
            throw;
        }
    }
}

void stop_back_ends() {
    stop_first(std::size(kBackEnds));
}

} // namespace spreadsheet
