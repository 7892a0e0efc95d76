// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/com/excel_application.h"

#include <cstdint>
#include <exception>
#include <mutex>
#include <utility>

#include "foundation/never_destroyed.h"
#include "spreadsheet/com/late_bound_call.h"

namespace spreadsheet {
namespace {

using foundation::automation::ComPtr;
using foundation::automation::is_true;
using foundation::automation::Variant;

std::mutex& application_mutex() {
    static foundation::NeverDestroyed<std::mutex> instance;
    return instance.get();
}

/// An object's owner.
std::shared_ptr<IDispatch> make_owner(IDispatch* object) {
    return {object, [](IDispatch* owned) {
                if (owned != nullptr) owned->Release();
            }};
}

/// Starts an application; null and the reason in `result` when that fails.
IDispatch* start_application(HRESULT& result) {
    CLSID class_id{};
    result = CLSIDFromProgID(OLESTR("Excel.Application"), &class_id);
    if (FAILED(result)) return nullptr;
    // The thread keeps the initialisation that was its first.
    result = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (result == S_FALSE) CoUninitialize();
    if (FAILED(result)) return nullptr;
    void* application = nullptr;
    result = CoCreateInstance(class_id, nullptr, CLSCTX_LOCAL_SERVER, IID_IDispatch, &application);
    return FAILED(result) ? nullptr : static_cast<IDispatch*>(application);
}

} // namespace

std::size_t excel_application::PointerHash::operator()(IDispatch* object) const {
    auto address = reinterpret_cast<std::uintptr_t>(object);
    std::uint64_t hash = 0xcbf29ce484222325;
    for (std::size_t i = 0; i < sizeof address; ++i, address >>= 8)
        hash = (hash ^ (address & 0xFF)) * 0x100000001b3;
    return static_cast<std::size_t>(hash);
}

IDispatch* excel_application::create_application() {
    HRESULT result = S_OK;
    return start_application(result);
}

excel_application::excel_application() {
    HRESULT result = S_OK;
    auto application = ComPtr<IDispatch>::adopt(start_application(result));
    if (!application) com::fail_start(result);
    try {
        com::put(application.get(), OLESTR("Visible"), Variant::integer(0));
        workbooks_ = com::get(application.get(), OLESTR("Workbooks"))
                         .release_object_or_fail("[COM APPLICATION MSG]:", error_id::internal);
    } catch (...) {
        // Nobody sees the application, and nobody else would end it.
        com::call(application.get(), OLESTR("Quit"));
        throw;
    }
    application_ = application.release();
}

excel_application::~excel_application() {
    try {
        shutdown();
    } catch (const std::exception&) {
        // Out of memory for a call: what is held goes without it.
    }
}

std::shared_ptr<IDispatch> excel_application::get_temp_ref(IDispatch* object) {
    return make_owner(object);
}

std::shared_ptr<IDispatch> excel_application::register_ref(IDispatch* object) {
    if (object == nullptr) return {};
    if (const auto found = ref_index_.find(object); found != ref_index_.end())
        return refs_[found->second];
    std::shared_ptr<IDispatch> owner = make_owner(object);
    refs_.push_back(owner);
    ref_index_.emplace(object, refs_.size() - 1);
    return owner;
}

std::shared_ptr<IDispatch> excel_application::adopt(IDispatch* returned) {
    const bool is_registered = ref_index_.contains(returned);
    std::shared_ptr<IDispatch> owner = register_ref(returned);
    if (is_registered) returned->Release();
    return owner;
}

void excel_application::release_unused_refs() {
    const std::scoped_lock lock(application_mutex());
    for (std::size_t index = refs_.size(); index-- > 0;)
        if (refs_[index].use_count() == 1)
            refs_.erase(refs_.begin() + static_cast<std::ptrdiff_t>(index));
    ref_index_.clear();
    for (std::size_t index = 0; index < refs_.size(); ++index)
        ref_index_.emplace(refs_[index].get(), index);
}

bool excel_application::visible() const {
    const com::CallResult result = com::get(application_, OLESTR("Visible"));
    return result && is_true(result.value.get());
}

void excel_application::shutdown() {
    if (application_ == nullptr) return;
    // Whatever fails below, the two pointers are released once.
    const std::shared_ptr<IDispatch> application = make_owner(std::exchange(application_, nullptr));
    const std::shared_ptr<IDispatch> workbooks = make_owner(std::exchange(workbooks_, nullptr));
    const com::CallResult visible = com::get(application.get(), OLESTR("Visible"));
    if (!visible || !is_true(visible.value.get())) {
        com::call(workbooks.get(), OLESTR("Close"));
        com::call(application.get(), OLESTR("Quit"));
    }
    release_unused_refs();
}

const DateFormats& excel_application::date_formats() {
    if (!date_formats_) date_formats_ = DateFormats::read_from(application_);
    return *date_formats_;
}

} // namespace spreadsheet
