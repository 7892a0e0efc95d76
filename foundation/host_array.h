// SPDX-License-Identifier: Apache-2.0
//
// Arrays of the host environment: two dimensions, column after column. `HostArray` is what the
// library is given; the classes below it are arrays of the library's own for hosts and tests that
// have none.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "foundation/export.h"

namespace foundation {

/// The class of a host array's elements.
enum class HostClass : std::uint8_t { Double, Logical, Uint8, Character, String, Cell, Other };

/// How the elements lie in memory. Only `Plain` arrays have a data pointer.
enum class HostStorage : std::uint8_t { Plain, Sparse, Complex };

/// A two-dimensional array owned by the host, elements column after column.
class ZX_API HostArray {
  public:
    virtual ~HostArray();

    virtual HostClass host_class() const = 0;
    virtual HostStorage storage() const { return HostStorage::Plain; }
    virtual std::size_t rows() const = 0;
    virtual std::size_t columns() const = 0;
    std::size_t size() const { return rows() * columns(); }

    /// The elements of a plain array of the class asked for, null for any other class or storage.
    /// The pointer lives as long as the array is not changed.
    virtual const double* doubles() const { return nullptr; }
    virtual const bool* logicals() const { return nullptr; }
    virtual const std::uint8_t* uint8s() const { return nullptr; }
    virtual const char16_t* characters() const { return nullptr; }
    virtual const std::u16string* strings() const { return nullptr; }
    /// Element `index` of a cell array (zero-based, column-major), null for an empty element.
    virtual const HostArray* cell(std::size_t /*index*/) const { return nullptr; }
    /// Whether element `index` of a string array is the host's missing value, which is not the
    /// empty string; the text in `strings()` then means nothing.
    virtual bool is_missing(std::size_t /*index*/) const { return false; }
};

using HostArrayPtr = std::unique_ptr<HostArray>;

/// A column-major array of one element type, owned by the library. `T` is double, bool,
/// std::uint8_t, char16_t, std::u16string or HostArrayPtr (a cell array).
template <class T>
class ZX_API ColumnMajorArray : public HostArray {
  public:
    /// `rows` x `columns` elements, zero-initialised. Throws std::length_error when the product
    /// overflows.
    ColumnMajorArray(std::size_t rows, std::size_t columns);
    /// Takes `values` (column-major) over. Throws std::invalid_argument when their number is not
    /// rows x columns.
    ColumnMajorArray(std::size_t rows, std::size_t columns, std::vector<T> values);
    ~ColumnMajorArray() override;

    HostClass host_class() const override;
    std::size_t rows() const override { return rows_; }
    std::size_t columns() const override { return columns_; }
    const double* doubles() const override;
    const bool* logicals() const override;
    const std::uint8_t* uint8s() const override;
    const char16_t* characters() const override;
    const std::u16string* strings() const override;
    const HostArray* cell(std::size_t index) const override;

    /// The elements, column after column.
    T* data() noexcept { return values_.get(); }
    const T* data() const noexcept { return values_.get(); }

  private:
    std::size_t rows_;
    std::size_t columns_;
    std::unique_ptr<T[]> values_;
};

extern template class ColumnMajorArray<double>;
extern template class ColumnMajorArray<bool>;
extern template class ColumnMajorArray<std::uint8_t>;
extern template class ColumnMajorArray<char16_t>;
extern template class ColumnMajorArray<std::u16string>;
extern template class ColumnMajorArray<HostArrayPtr>;

using DoubleArray = ColumnMajorArray<double>;
using LogicalArray = ColumnMajorArray<bool>;
using Uint8Array = ColumnMajorArray<std::uint8_t>;
using CharacterArray = ColumnMajorArray<char16_t>;
using StringArray = ColumnMajorArray<std::u16string>;
using CellArray = ColumnMajorArray<HostArrayPtr>;

} // namespace foundation
