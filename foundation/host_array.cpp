// SPDX-License-Identifier: Apache-2.0
//
// The library's own host arrays, one instantiation per element type.
#include "foundation/host_array.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <type_traits>

namespace foundation {
namespace {

template <class T>
std::unique_ptr<T[]> make_elements(std::size_t rows, std::size_t columns) {
    constexpr std::size_t most = std::numeric_limits<std::ptrdiff_t>::max() / sizeof(T);
    if (rows != 0 && columns > most / rows)
        throw std::length_error("A host array of this size does not fit into memory.");
    return std::make_unique<T[]>(rows * columns);
}

template <class T>
constexpr HostClass class_of() {
    if constexpr (std::is_same_v<T, double>) return HostClass::Double;
    if constexpr (std::is_same_v<T, bool>) return HostClass::Logical;
    if constexpr (std::is_same_v<T, std::uint8_t>) return HostClass::Uint8;
    if constexpr (std::is_same_v<T, char16_t>) return HostClass::Character;
    if constexpr (std::is_same_v<T, std::u16string>) return HostClass::String;
    return HostClass::Cell;
}

/// The elements when they are of the wanted type, else null.
template <class Wanted, class T>
const Wanted* elements_as(const T* elements) {
    if constexpr (std::is_same_v<Wanted, T>) return elements;
    return nullptr;
}

} // namespace

HostArray::~HostArray() = default;

template <class T>
ColumnMajorArray<T>::ColumnMajorArray(std::size_t rows, std::size_t columns)
    : rows_(rows), columns_(columns), values_(make_elements<T>(rows, columns)) {}

template <class T>
ColumnMajorArray<T>::ColumnMajorArray(std::size_t rows, std::size_t columns, std::vector<T> values)
    : ColumnMajorArray(rows, columns) {
    if (values.size() != rows * columns)
        throw std::invalid_argument("The number of values is not the number of elements.");
    std::move(values.begin(), values.end(), values_.get());
}

template <class T>
ColumnMajorArray<T>::~ColumnMajorArray() = default;

template <class T>
HostClass ColumnMajorArray<T>::host_class() const {
    return class_of<T>();
}

template <class T>
const double* ColumnMajorArray<T>::doubles() const {
    return elements_as<double>(values_.get());
}

template <class T>
const bool* ColumnMajorArray<T>::logicals() const {
    return elements_as<bool>(values_.get());
}

template <class T>
const std::uint8_t* ColumnMajorArray<T>::uint8s() const {
    return elements_as<std::uint8_t>(values_.get());
}

template <class T>
const char16_t* ColumnMajorArray<T>::characters() const {
    return elements_as<char16_t>(values_.get());
}

template <class T>
const std::u16string* ColumnMajorArray<T>::strings() const {
    return elements_as<std::u16string>(values_.get());
}

template <class T>
const HostArray* ColumnMajorArray<T>::cell(std::size_t index) const {
    if constexpr (std::is_same_v<T, HostArrayPtr>)
        return index < size() ? values_[index].get() : nullptr;
    return nullptr;
}

template class ColumnMajorArray<double>;
template class ColumnMajorArray<bool>;
template class ColumnMajorArray<std::uint8_t>;
template class ColumnMajorArray<char16_t>;
template class ColumnMajorArray<std::u16string>;
template class ColumnMajorArray<HostArrayPtr>;

} // namespace foundation
