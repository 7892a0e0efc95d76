// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/online.h"

namespace spreadsheet {

OnlineBook* online_book(const std::shared_ptr<IBook>& book) {
    return dynamic_cast<OnlineBook*>(book.get());
}

OnlineSheet* online_sheet(const std::shared_ptr<ISheet>& sheet) {
    return dynamic_cast<OnlineSheet*>(sheet.get());
}

} // namespace spreadsheet
