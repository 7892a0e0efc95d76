// SPDX-License-Identifier: Apache-2.0
//
// The builder of cell arrays out of the library's own host arrays.
#include "spreadsheet/cell_exchange.h"

#include <utility>
#include <vector>

#include "spreadsheet/exception.h"

namespace spreadsheet::output {
namespace {

template <class T>
foundation::HostArrayPtr scalar(T value) {
    auto array = std::make_unique<foundation::ColumnMajorArray<T>>(1, 1);
    array->data()[0] = std::move(value);
    return array;
}

} // namespace

CellOutputBuilder::~CellOutputBuilder() = default;

CellArrayBuilder::CellArrayBuilder() = default;
CellArrayBuilder::~CellArrayBuilder() = default;

void CellArrayBuilder::begin(std::size_t rows, std::size_t columns) {
    array_ = std::make_unique<foundation::CellArray>(rows, columns);
    next_ = 0;
}

void CellArrayBuilder::add_text(const std::u16string& value) {
    put(scalar(value));
}
void CellArrayBuilder::add_number(double value) {
    put(scalar(value));
}
void CellArrayBuilder::add_date(double serial) {
    put(scalar(serial));
}
void CellArrayBuilder::add_boolean(bool value) {
    put(scalar(value));
}
void CellArrayBuilder::add_empty() {
    put(nullptr);
}

std::unique_ptr<foundation::CellArray> CellArrayBuilder::take() {
    return std::move(array_);
}

void CellArrayBuilder::put(foundation::HostArrayPtr element) {
    if (!array_ || next_ >= array_->size())
        throw Exception(error_id::internal,
                        "More cells were delivered than the cell array has elements.");
    array_->data()[next_++] = std::move(element);
}

} // namespace spreadsheet::output
