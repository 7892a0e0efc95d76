// SPDX-License-Identifier: Apache-2.0
//
// The names of Windows' automation interfaces for other systems, with the meaning that they have
// there (MS-OAUT 2.2, MS-DTYP 2). Include foundation/automation/automation.h instead.
//
// Ownership: what a call returns through an out-pointer is allocated by the callee and freed by the
// caller; arguments stay the caller's. An interface pointer that is returned carries a reference of
// its own. Allocation is by malloc, so that values may cross between modules.
#pragma once

#include <cstddef>
#include <cstdint>

// --- Numbers, text, identifiers

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using SHORT = std::int16_t;
using USHORT = std::uint16_t;
using INT = int;
using UINT = unsigned int;
using BOOL = int;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using LONGLONG = std::int64_t;
using HRESULT = std::int32_t;
using SCODE = std::int32_t;
using LCID = DWORD;
using DISPID = LONG;
using DATE = double; ///< days since 30 December 1899
using VARTYPE = std::uint16_t;
using VARIANT_BOOL = std::int16_t;
using OLECHAR = char16_t;
using LPOLESTR = OLECHAR*;
using LPCOLESTR = const OLECHAR*;
/// Text with its length before it and a null unit after it; a null pointer is the empty text.
using BSTR = OLECHAR*;

#define OLESTR(text) u##text
#define STDMETHODCALLTYPE

struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];
    bool operator==(const GUID&) const = default;
};
using IID = GUID;
using CLSID = GUID;
using REFGUID = const GUID&;
using REFIID = const IID&;
using REFCLSID = const CLSID&;

inline constexpr GUID GUID_NULL{};
inline constexpr IID IID_NULL{};
inline constexpr IID IID_IUnknown = {0, 0, 0, {0xc0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IClassFactory = {1, 0, 0, {0xc0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IDispatch = {0x20400, 0, 0, {0xc0, 0, 0, 0, 0, 0, 0, 0x46}};

// --- Results (MS-ERREF 2.1)

constexpr bool SUCCEEDED(HRESULT result) {
    return result >= 0;
}
constexpr bool FAILED(HRESULT result) {
    return result < 0;
}

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);
inline constexpr HRESULT E_UNEXPECTED = static_cast<HRESULT>(0x8000ffff);
inline constexpr HRESULT E_ACCESSDENIED = static_cast<HRESULT>(0x80070005);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000e);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057);
inline constexpr HRESULT RPC_E_CALL_REJECTED = static_cast<HRESULT>(0x80010001);
inline constexpr HRESULT RPC_E_SERVER_DIED = static_cast<HRESULT>(0x80010007);
inline constexpr HRESULT RPC_E_SERVER_DIED_DNE = static_cast<HRESULT>(0x80010012);
inline constexpr HRESULT RPC_E_CHANGED_MODE = static_cast<HRESULT>(0x80010106);
inline constexpr HRESULT RPC_E_DISCONNECTED = static_cast<HRESULT>(0x80010108);
inline constexpr HRESULT RPC_E_SERVERCALL_RETRYLATER = static_cast<HRESULT>(0x8001010a);
inline constexpr HRESULT DISP_E_UNKNOWNINTERFACE = static_cast<HRESULT>(0x80020001);
inline constexpr HRESULT DISP_E_MEMBERNOTFOUND = static_cast<HRESULT>(0x80020003);
inline constexpr HRESULT DISP_E_PARAMNOTFOUND = static_cast<HRESULT>(0x80020004);
inline constexpr HRESULT DISP_E_TYPEMISMATCH = static_cast<HRESULT>(0x80020005);
inline constexpr HRESULT DISP_E_UNKNOWNNAME = static_cast<HRESULT>(0x80020006);
inline constexpr HRESULT DISP_E_BADVARTYPE = static_cast<HRESULT>(0x80020008);
inline constexpr HRESULT DISP_E_EXCEPTION = static_cast<HRESULT>(0x80020009);
inline constexpr HRESULT DISP_E_BADINDEX = static_cast<HRESULT>(0x8002000b);
inline constexpr HRESULT DISP_E_ARRAYISLOCKED = static_cast<HRESULT>(0x8002000d);
inline constexpr HRESULT DISP_E_BADPARAMCOUNT = static_cast<HRESULT>(0x8002000e);
inline constexpr HRESULT CLASS_E_NOAGGREGATION = static_cast<HRESULT>(0x80040110);
inline constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = static_cast<HRESULT>(0x80040111);
inline constexpr HRESULT REGDB_E_CLASSNOTREG = static_cast<HRESULT>(0x80040154);
inline constexpr HRESULT CO_E_NOTINITIALIZED = static_cast<HRESULT>(0x800401f0);
inline constexpr HRESULT CO_E_CLASSSTRING = static_cast<HRESULT>(0x800401f3);
inline constexpr HRESULT CO_E_SERVER_EXEC_FAILURE = static_cast<HRESULT>(0x80080005);

// --- Text (foundation/automation/bstr.cpp)

/// The number of units, not of bytes; null where memory runs out. A null `text` gives a null BSTR
/// in the first, units of 0 in the second.
BSTR SysAllocString(const OLECHAR* text);
BSTR SysAllocStringLen(const OLECHAR* text, UINT length);
/// Units of a text without the null after it; 0 for a null pointer.
UINT SysStringLen(BSTR text);
UINT SysStringByteLen(BSTR text);
void SysFreeString(BSTR text);

// --- Values (foundation/automation/variant.cpp)

struct IUnknown;
struct IDispatch;
struct SAFEARRAY;

enum : VARTYPE {
    VT_EMPTY = 0,
    VT_NULL = 1,
    VT_I2 = 2,
    VT_I4 = 3,
    VT_R4 = 4,
    VT_R8 = 5,
    VT_CY = 6,
    VT_DATE = 7,
    VT_BSTR = 8,
    VT_DISPATCH = 9,
    VT_ERROR = 10,
    VT_BOOL = 11,
    VT_VARIANT = 12,
    VT_UNKNOWN = 13,
    VT_UI1 = 17,
    VT_I8 = 20,
    VT_ARRAY = 0x2000,
    VT_BYREF = 0x4000
};

inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;

/// An amount of money in ten-thousandths.
struct CY {
    LONGLONG int64;
};

/// A value and its type. Owns a BSTR, a reference to an object or an array; `VariantClear` frees.
struct VARIANT {
    VARTYPE vt;
    WORD wReserved1;
    WORD wReserved2;
    WORD wReserved3;
    union {
        LONGLONG llVal;
        LONG lVal;
        BYTE bVal;
        SHORT iVal;
        float fltVal;
        double dblVal;
        VARIANT_BOOL boolVal;
        SCODE scode;
        CY cyVal;
        DATE date;
        BSTR bstrVal;
        IUnknown* punkVal;
        IDispatch* pdispVal;
        SAFEARRAY* parray;
        VARIANT* pvarVal; ///< with VT_BYREF | VT_VARIANT; not owned
    };
};
using VARIANTARG = VARIANT;

/// Makes memory without a value an empty VARIANT.
void VariantInit(VARIANT* value);
/// Frees what the value owns and makes it empty. `DISP_E_BADVARTYPE` for a type that is not above,
/// `DISP_E_ARRAYISLOCKED` for an array in use.
HRESULT VariantClear(VARIANT* value);
/// Clears `target`, then makes it a copy: text and arrays are copied, objects get one more
/// reference to an object.
HRESULT VariantCopy(VARIANT* target, const VARIANT* source);

// --- Arrays (foundation/automation/safe_array.cpp)

struct SAFEARRAYBOUND {
    ULONG cElements;
    LONG lLbound;
};

/// An array that knows its bounds. The first dimension, a block's rows, varies fastest in memory:
/// a block is in memory column after column.
struct SAFEARRAY {
    USHORT cDims;
    USHORT fFeatures;
    ULONG cbElements;
    ULONG cLocks;
    void* pvData;
    SAFEARRAYBOUND rgsabound[1]; ///< one for each dimension, the last dimension first
};

/// An array of empty values; `bounds` has one entry for each dimension, the first first. Null for
/// another type than VT_VARIANT, for no dimension, and where memory runs out.
SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds);
/// Frees the array and its values; `DISP_E_ARRAYISLOCKED` between the two calls below.
HRESULT SafeArrayDestroy(SAFEARRAY* array);
HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data);
HRESULT SafeArrayUnaccessData(SAFEARRAY* array);
HRESULT SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** copy);
UINT SafeArrayGetDim(SAFEARRAY* array);
/// Bounds of a dimension, which counts from 1; both are inclusive. `DISP_E_BADINDEX` for another.
HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound);
HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound);
HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type);
/// Copies one element out of or into the array; `indices` has one for each dimension, the first
/// first. `DISP_E_BADINDEX` for one that is out of bounds.
HRESULT SafeArrayGetElement(SAFEARRAY* array, LONG* indices, void* value);
HRESULT SafeArrayPutElement(SAFEARRAY* array, LONG* indices, void* value);

// --- Objects

/// What every object has. `QueryInterface` adds a reference to what it returns; all pointers to one
/// object give the same pointer when asked for `IID_IUnknown`. The object goes with its last
/// reference.
struct IUnknown {
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID interface_id, void** object) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;

  protected:
    ~IUnknown() = default;
};

struct IClassFactory : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID interface_id,
                                                     void** object) = 0;
    virtual HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) = 0;

  protected:
    ~IClassFactory() = default;
};

/// The arguments of a call, the last one first; of those, `cNamedArgs` at the beginning are named.
struct DISPPARAMS {
    VARIANTARG* rgvarg;
    DISPID* rgdispidNamedArgs;
    UINT cArgs;
    UINT cNamedArgs;
};

struct EXCEPINFO;
struct ITypeInfo;

inline constexpr DISPID DISPID_UNKNOWN = -1;
inline constexpr DISPID DISPID_PROPERTYPUT = -3;
inline constexpr WORD DISPATCH_METHOD = 1;
inline constexpr WORD DISPATCH_PROPERTYGET = 2;
inline constexpr WORD DISPATCH_PROPERTYPUT = 4;

/// An object whose members are looked up by name.
struct IDispatch : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) = 0;
    /// The identifiers of names, compared without regard to case. `interface_id` is `IID_NULL`.
    virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID interface_id, LPOLESTR* names,
                                                    UINT count, LCID locale, DISPID* ids) = 0;
    /// Calls a method (flag 1), gets (2) or puts a property (4; its value is the argument named
    /// `DISPID_PROPERTYPUT`). `result` is initialised by the caller and may be null.
    virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID interface_id, LCID locale,
                                             WORD flags, DISPPARAMS* parameters, VARIANT* result,
                                             EXCEPINFO* exception, UINT* bad_argument) = 0;

  protected:
    ~IDispatch() = default;
};

// --- Apartments and classes (foundation/automation/class_table.cpp)

inline constexpr DWORD COINIT_MULTITHREADED = 0;
inline constexpr DWORD COINIT_APARTMENTTHREADED = 2;
inline constexpr DWORD CLSCTX_INPROC_SERVER = 1;
inline constexpr DWORD CLSCTX_LOCAL_SERVER = 4;
inline constexpr DWORD REGCLS_MULTIPLEUSE = 1;

/// Counts one more initialisation of the calling thread: `S_OK` for the first, `S_FALSE` for the
/// others, `RPC_E_CHANGED_MODE` (not counted) for another mode than the first had. Each counted
/// call is balanced by a `CoUninitialize`.
HRESULT CoInitializeEx(void* reserved, DWORD mode);
void CoUninitialize();

/// The class of a programmatic identifier, compared without regard to case; `CO_E_CLASSSTRING` for
/// one that is not known. Known is "Excel.Application".
HRESULT CLSIDFromProgID(LPCOLESTR program_id, CLSID* class_id);

/// Makes an object of a class: by the class object registered in this process, or else by the
/// run-time module. `REGDB_E_CLASSNOTREG` without either, `CO_E_NOTINITIALIZED` on a thread that is
/// not initialised.
HRESULT CoCreateInstance(REFCLSID class_id, IUnknown* outer, DWORD context, REFIID interface_id,
                         void** object);

/// Registers a class object for this process; it is held until it is revoked by the cookie. `flags`
/// is `REGCLS_MULTIPLEUSE`.
HRESULT CoRegisterClassObject(REFCLSID class_id, IUnknown* class_object, DWORD context, DWORD flags,
                              DWORD* cookie);
HRESULT CoRevokeClassObject(DWORD cookie);
