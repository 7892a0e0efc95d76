// SPDX-License-Identifier: Apache-2.0
//
// The list of instances, and which of them a book gets.
#include "spreadsheet/com/application_registry.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "spreadsheet/com/late_bound_call.h"

namespace spreadsheet {
namespace {

using foundation::automation::integer_in;
using foundation::automation::text_in;
using foundation::automation::Variant;
using Instance = std::shared_ptr<excel_application>;

/// Owned from `start_applications` to `stop_applications`; plain, so that loading the library makes
/// nothing.
constinit ApplicationSlots* slots = nullptr;

/// The number of open workbooks; nullopt when it cannot be read.
std::optional<LONG> count_workbooks(const excel_application& instance) {
    const com::CallResult count = com::get(instance.workbooks(), OLESTR("Count"));
    return count ? integer_in(count.value.get()) : std::nullopt;
}

bool has_ended(const excel_application& instance) {
    const com::CallResult count = com::get(instance.workbooks(), OLESTR("Count"));
    return com::says_application_ended(count.status);
}

/// Empties the slot of an application that does not answer, unless its books still hold it.
void drop_if_unused(Instance& slot) {
    if (slot.use_count() == 1) slot.reset();
}

/// The full names of the open workbooks; nullopt when one cannot be read.
std::optional<std::vector<std::u16string>> list_workbooks(const excel_application& instance,
                                                          LONG count) {
    std::vector<std::u16string> names;
    for (LONG number = 1; number <= count; ++number) {
        const auto workbook =
            com::get(instance.workbooks(), OLESTR("Item"), {Variant::integer(number).get()})
                .object();
        const com::CallResult name = com::get(workbook.get(), OLESTR("FullName"));
        const auto text = text_in(name.value.get());
        if (!name || !text) return std::nullopt;
        names.emplace_back(*text);
    }
    return names;
}

/// The required comparison of the position at which the name occurs with the length: no name can
/// satisfy it, so an instance with open workbooks is left alone.
bool is_free_for(std::u16string_view file_name, const std::vector<std::u16string>& names) {
    return std::all_of(names.begin(), names.end(), [&](const std::u16string& name) {
        return name.find(file_name) == name.size();
    });
}

Instance find_first(ApplicationSlots& registered) {
    for (Instance& slot : registered) {
        if (!slot) continue;
        if (has_ended(*slot)) {
            drop_if_unused(slot);
            continue;
        }
        if (slot.use_count() == 1) slot->release_unused_refs();
        return slot;
    }
    return nullptr;
}

Instance find_for_file(ApplicationSlots& registered, std::u16string_view file_name) {
    for (const Instance& slot : registered) {
        if (!slot || count_workbooks(*slot) != 0) continue;
        slot->release_unused_refs();
        return slot;
    }
    for (Instance& slot : registered) {
        if (!slot) continue;
        const auto count = count_workbooks(*slot);
        if (!count) {
            drop_if_unused(slot);
            continue;
        }
        const auto names = list_workbooks(*slot, *count);
        if (names && is_free_for(file_name, *names)) return slot;
    }
    return nullptr;
}

void add(ApplicationSlots& registered, const Instance& instance) {
    const auto empty =
        std::find_if(registered.begin(), registered.end(), [](const auto& slot) { return !slot; });
    if (empty == registered.end())
        registered.push_back(instance);
    else
        *empty = instance;
}

} // namespace

ApplicationSlots* application_registry() {
    return slots;
}

void start_applications() {
    if (slots != nullptr) return;
    slots = std::make_unique<ApplicationSlots>().release();
    // A thread in another apartment is refused when its first book starts an application.
    if (CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED) == S_FALSE) CoUninitialize();
}

void stop_applications() {
    const std::unique_ptr<ApplicationSlots> owned(std::exchange(slots, nullptr));
}

Instance excel_application::acquire(const char16_t* file_name) {
    ApplicationSlots* const registered = application_registry();
    if (registered != nullptr)
        if (Instance found = file_name == nullptr ? find_first(*registered)
                                                  : find_for_file(*registered, file_name))
            return found;
    auto made = std::make_shared<excel_application>();
    if (registered != nullptr) add(*registered, made);
    return made;
}

} // namespace spreadsheet
