// SPDX-License-Identifier: Apache-2.0
#include "automation/libreoffice/open_document.h"

#include <algorithm>
#include <chrono>

#include <com/sun/star/container/XIndexAccess.hpp>
#include <com/sun/star/container/XNamed.hpp>
#include <com/sun/star/frame/XModel.hpp>
#include <com/sun/star/frame/XStorable.hpp>
#include <com/sun/star/sheet/XCellRangeAddressable.hpp>
#include <com/sun/star/sheet/XSheetCellRanges.hpp>
#include <com/sun/star/sheet/XSpreadsheets.hpp>
#include <com/sun/star/sheet/XUniqueCellFormatRangesSupplier.hpp>
#include <com/sun/star/util/Date.hpp>

#include "automation/libreoffice/office_object.h"

namespace office {

Reference<css::table::XCellRange> DocumentCells::object(const CellArea& part) const {
    return sheet->cells->getCellRangeByPosition(part.first_column, part.first_row, part.last_column,
                                                part.last_row);
}

OpenDocument::OpenDocument(const Reference<css::uno::XInterface>& document)
    : document_(document, css::uno::UNO_QUERY_THROW), formats_(document) {
    const auto count = as<css::container::XIndexAccess>(document_->getSheets())->getCount();
    for (int place = 0; place < count; ++place)
        sheets_.push_back(make_sheet(place));
    for (const css::beans::PropertyValue& argument : as<css::frame::XModel>(document_)->getArgs()) {
        OUString filter;
        if (argument.Name == "FilterName" && (argument.Value >>= filter))
            loses_booleans_ = filter.startsWith("MS Excel");
    }
}

// --- Dates

double OpenDocument::first_day() {
    using namespace std::chrono;
    if (!first_day_) {
        const auto date = property<css::util::Date>(document_, "NullDate");
        const sys_days day = year(date.Year) / month(date.Month) / date.Day;
        const sys_days zero = year(1899) / December / 30;
        first_day_ = static_cast<double>((day - zero).count());
    }
    return *first_day_;
}

bool OpenDocument::counts_from_1904() {
    constexpr double kFirstOf1904 = 1462.0;
    return first_day() == kFirstOf1904;
}

// --- Sheets

bool OpenDocument::is_read_only() const {
    return as<css::frame::XStorable>(document_)->isReadonly();
}

std::shared_ptr<DocumentSheet> OpenDocument::make_sheet(int place) const {
    auto sheet = std::make_shared<DocumentSheet>();
    const auto sheets = as<css::container::XIndexAccess>(document_->getSheets());
    sheet->cells.set(sheets->getByIndex(place), css::uno::UNO_QUERY_THROW);
    sheet->name = view_of(as<css::container::XNamed>(sheet->cells)->getName());
    return sheet;
}

int OpenDocument::place_of(const DocumentSheet& sheet) const {
    const auto found = std::find_if(sheets_.begin(), sheets_.end(), [&](const auto& candidate) {
        return candidate.get() == &sheet;
    });
    if (found == sheets_.end()) throw Refusal{DISP_E_EXCEPTION};
    return static_cast<int>(found - sheets_.begin());
}

std::u16string OpenDocument::unused_name() const {
    for (std::size_t number = sheets_.size() + 1;; ++number) {
        const std::string digits = std::to_string(number);
        const std::u16string name = u"Sheet" + std::u16string(digits.begin(), digits.end());
        if (!document_->getSheets()->hasByName(to_uno(name))) return name;
    }
}

std::shared_ptr<DocumentSheet> OpenDocument::insert_sheet(int place) {
    document_->getSheets()->insertNewByName(to_uno(unused_name()), static_cast<sal_Int16>(place));
    return *sheets_.insert(sheets_.begin() + place, make_sheet(place));
}

void OpenDocument::remove_sheet(const DocumentSheet& sheet) {
    const int place = place_of(sheet);
    if (sheets_.size() == 1) throw Refusal{DISP_E_EXCEPTION};
    document_->getSheets()->removeByName(to_uno(sheet.name));
    sheets_.erase(sheets_.begin() + place);
    forget_errors();
}

void OpenDocument::move_sheet(const DocumentSheet& sheet, const DocumentSheet& next) {
    const int from = place_of(sheet);
    const int to = place_of(next);
    document_->getSheets()->moveByName(to_uno(sheet.name), static_cast<sal_Int16>(to));
    const auto begin = sheets_.begin();
    if (from < to)
        std::rotate(begin + from, begin + from + 1, begin + to);
    else
        std::rotate(begin + to, begin + from, begin + from + 1);
}

Reference<css::sheet::XSpreadsheetView> OpenDocument::view() const {
    return as<css::sheet::XSpreadsheetView>(
        as<css::frame::XModel>(document_)->getCurrentController());
}

std::shared_ptr<DocumentSheet> OpenDocument::active_sheet() const {
    const auto active = view()->getActiveSheet();
    const auto place = as<css::sheet::XCellRangeAddressable>(active)->getRangeAddress().Sheet;
    return sheets_.at(static_cast<std::size_t>(place));
}

css::table::CellRangeAddress OpenDocument::address_of(const DocumentCells& cells) const {
    return {static_cast<sal_Int16>(place_of(*cells.sheet)), cells.area.first_column,
            cells.area.first_row, cells.area.last_column, cells.area.last_row};
}

// --- Errors and formats

std::int32_t OpenDocument::error_of(const DocumentSheet& sheet, int row, int column) {
    const auto [entry, is_new] = errors_.try_emplace({&sheet, row, column}, 0);
    if (is_new) entry->second = sheet.cells->getCellByPosition(column, row)->getError();
    return entry->second;
}

const FormatMap& OpenDocument::formats_of(const DocumentCells& cells) {
    std::optional<FormatMap>& known = cells.sheet->formats;
    if (known && known->area().contains(cells.area)) return *known;
    const auto groups = as<css::container::XIndexAccess>(
        as<css::sheet::XUniqueCellFormatRangesSupplier>(cells.object())
            ->getUniqueCellFormatRanges());
    std::vector<FormatMap::Part> parts;
    const int count = groups->getCount();
    for (int index = 0; index < count; ++index) {
        const Reference<css::sheet::XSheetCellRanges> group(groups->getByIndex(index),
                                                            css::uno::UNO_QUERY_THROW);
        const auto key = property<FormatKey>(group, "NumberFormat");
        for (const css::table::CellRangeAddress& address : group->getRangeAddresses())
            parts.push_back(
                {{address.StartRow, address.StartColumn, address.EndRow, address.EndColumn}, key});
    }
    known.emplace(cells.area, parts);
    return *known;
}

} // namespace office
