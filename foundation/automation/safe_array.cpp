// SPDX-License-Identifier: Apache-2.0
//
// Arrays of VARIANTs with bounds. The entries of `rgsabound` are kept as the system keeps them, the
// last dimension first.
#include <cstdlib>
#include <cstring>
#include <limits>

#include "foundation/automation/com_types.h"

namespace {

constexpr UINT kMostDimensions = 64;

VARIANT* elements_of(const SAFEARRAY& array) {
    return static_cast<VARIANT*>(array.pvData);
}

/// The bounds of a dimension that counts from 1; null for one that is not there.
const SAFEARRAYBOUND* bound_of(const SAFEARRAY* array, UINT dimension) {
    if (array == nullptr || dimension < 1 || dimension > array->cDims) return nullptr;
    return &array->rgsabound[array->cDims - dimension];
}

/// The number of elements; nothing is allocated for more than an `int` counts.
bool count_elements(UINT dimensions, const SAFEARRAYBOUND* bounds, std::size_t& count) {
    constexpr std::uint64_t kMost = std::numeric_limits<std::int32_t>::max();
    std::uint64_t product = 1;
    for (UINT index = 0; index < dimensions; ++index) {
        product *= bounds[index].cElements;
        if (product > kMost) return false;
    }
    count = static_cast<std::size_t>(product);
    return true;
}

std::size_t element_count(const SAFEARRAY& array) {
    std::size_t count = 0;
    count_elements(array.cDims, array.rgsabound, count);
    return count;
}

VARIANT* find_element(SAFEARRAY* array, const LONG* indices) {
    if (array == nullptr || indices == nullptr) return nullptr;
    std::size_t position = 0;
    std::size_t step = 1;
    for (UINT dimension = 1; dimension <= array->cDims; ++dimension) {
        const SAFEARRAYBOUND& bound = *bound_of(array, dimension);
        const std::int64_t offset = std::int64_t{indices[dimension - 1]} - bound.lLbound;
        if (offset < 0 || offset >= bound.cElements) return nullptr;
        position += static_cast<std::size_t>(offset) * step;
        step *= bound.cElements;
    }
    return elements_of(*array) + position;
}

} // namespace

SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds) {
    std::size_t count = 0;
    if (type != VT_VARIANT || dimensions < 1 || dimensions > kMostDimensions || bounds == nullptr ||
        !count_elements(dimensions, bounds, count))
        return nullptr;
    const std::size_t size = sizeof(SAFEARRAY) + (dimensions - 1) * sizeof(SAFEARRAYBOUND);
    auto* const array = static_cast<SAFEARRAY*>(std::calloc(1, size));
    if (array == nullptr) return nullptr;
    // Zeroed memory is an empty VARIANT.
    array->pvData = std::calloc(count == 0 ? 1 : count, sizeof(VARIANT));
    if (array->pvData == nullptr) {
        std::free(array);
        return nullptr;
    }
    array->cDims = static_cast<USHORT>(dimensions);
    array->cbElements = sizeof(VARIANT);
    for (UINT index = 0; index < dimensions; ++index)
        array->rgsabound[dimensions - 1 - index] = bounds[index];
    return array;
}

HRESULT SafeArrayDestroy(SAFEARRAY* array) {
    if (array == nullptr) return S_OK;
    if (array->cLocks != 0) return DISP_E_ARRAYISLOCKED;
    const std::size_t count = element_count(*array);
    for (std::size_t index = 0; index < count; ++index)
        VariantClear(elements_of(*array) + index);
    std::free(array->pvData);
    std::free(array);
    return S_OK;
}

HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data) {
    if (array == nullptr || data == nullptr) return E_INVALIDARG;
    ++array->cLocks;
    *data = array->pvData;
    return S_OK;
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* array) {
    if (array == nullptr) return E_INVALIDARG;
    if (array->cLocks == 0) return E_UNEXPECTED;
    --array->cLocks;
    return S_OK;
}

HRESULT SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** copy) {
    if (array == nullptr || copy == nullptr) return E_INVALIDARG;
    SAFEARRAYBOUND bounds[kMostDimensions];
    for (UINT dimension = 1; dimension <= array->cDims; ++dimension)
        bounds[dimension - 1] = *bound_of(array, dimension);
    *copy = nullptr;
    SAFEARRAY* const made = SafeArrayCreate(VT_VARIANT, array->cDims, bounds);
    if (made == nullptr) return E_OUTOFMEMORY;
    const std::size_t count = element_count(*array);
    for (std::size_t index = 0; index < count; ++index) {
        const HRESULT result = VariantCopy(elements_of(*made) + index, elements_of(*array) + index);
        if (SUCCEEDED(result)) continue;
        SafeArrayDestroy(made);
        return result;
    }
    *copy = made;
    return S_OK;
}

UINT SafeArrayGetDim(SAFEARRAY* array) {
    return array == nullptr ? 0 : array->cDims;
}

HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
    if (array == nullptr || bound == nullptr) return E_INVALIDARG;
    const SAFEARRAYBOUND* const found = bound_of(array, dimension);
    if (found == nullptr) return DISP_E_BADINDEX;
    *bound = found->lLbound;
    return S_OK;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
    if (array == nullptr || bound == nullptr) return E_INVALIDARG;
    const SAFEARRAYBOUND* const found = bound_of(array, dimension);
    if (found == nullptr) return DISP_E_BADINDEX;
    *bound = static_cast<LONG>(std::int64_t{found->lLbound} + found->cElements - 1);
    return S_OK;
}

HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type) {
    if (array == nullptr || type == nullptr) return E_INVALIDARG;
    *type = VT_VARIANT;
    return S_OK;
}

HRESULT SafeArrayGetElement(SAFEARRAY* array, LONG* indices, void* value) {
    if (array == nullptr || indices == nullptr || value == nullptr) return E_INVALIDARG;
    const VARIANT* const element = find_element(array, indices);
    return element == nullptr ? DISP_E_BADINDEX
                              : VariantCopy(static_cast<VARIANT*>(value), element);
}

HRESULT SafeArrayPutElement(SAFEARRAY* array, LONG* indices, void* value) {
    if (array == nullptr || indices == nullptr || value == nullptr) return E_INVALIDARG;
    VARIANT* const element = find_element(array, indices);
    return element == nullptr ? DISP_E_BADINDEX
                              : VariantCopy(element, static_cast<const VARIANT*>(value));
}
