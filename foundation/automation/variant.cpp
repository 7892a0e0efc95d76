// SPDX-License-Identifier: Apache-2.0
//
// What a VARIANT owns, freed and copied.
#include <cstring>

#include "foundation/automation/com_types.h"

namespace {

/// Types whose value is in the VARIANT itself.
bool is_plain(VARTYPE type) {
    switch (type) {
    case VT_EMPTY:
    case VT_NULL:
    case VT_I2:
    case VT_I4:
    case VT_R4:
    case VT_R8:
    case VT_CY:
    case VT_DATE:
    case VT_ERROR:
    case VT_BOOL:
    case VT_UI1:
    case VT_I8:
        return true;
    default:
        return (type & VT_BYREF) != 0; // points to what somebody else owns
    }
}

} // namespace

void VariantInit(VARIANT* value) {
    std::memset(value, 0, sizeof *value);
}

HRESULT VariantClear(VARIANT* value) {
    switch (value->vt) {
    case VT_BSTR:
        SysFreeString(value->bstrVal);
        break;
    case VT_DISPATCH:
    case VT_UNKNOWN:
        // An IDispatch is an IUnknown at the same place.
        if (value->punkVal != nullptr) value->punkVal->Release();
        break;
    case VT_ARRAY | VT_VARIANT:
        if (value->parray == nullptr) break;
        if (const HRESULT result = SafeArrayDestroy(value->parray); FAILED(result)) return result;
        break;
    default:
        if (!is_plain(value->vt)) return DISP_E_BADVARTYPE;
    }
    VariantInit(value);
    return S_OK;
}

HRESULT VariantCopy(VARIANT* target, const VARIANT* source) {
    if (target == source) return S_OK;
    VARIANT copy = *source;
    switch (source->vt) {
    case VT_BSTR:
        if (source->bstrVal == nullptr) break;
        copy.bstrVal = SysAllocStringLen(source->bstrVal, SysStringLen(source->bstrVal));
        if (copy.bstrVal == nullptr) return E_OUTOFMEMORY;
        break;
    case VT_DISPATCH:
    case VT_UNKNOWN:
        if (copy.punkVal != nullptr) copy.punkVal->AddRef();
        break;
    case VT_ARRAY | VT_VARIANT:
        if (source->parray == nullptr) break;
        if (const HRESULT result = SafeArrayCopy(source->parray, &copy.parray); FAILED(result))
            return result;
        break;
    default:
        if (!is_plain(source->vt)) return DISP_E_BADVARTYPE;
    }
    if (const HRESULT result = VariantClear(target); FAILED(result)) {
        VariantClear(&copy);
        return result;
    }
    *target = copy;
    return S_OK;
}
