// SPDX-License-Identifier: Apache-2.0
//
// One instance of the spreadsheet application: a process, its collection of workbooks, and the
// objects of it that are held. Used on the thread that started it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "foundation/automation/automation.h"
#include "spreadsheet/com/date_formats.h"

namespace spreadsheet {

/// Every shared owner of an object releases one reference when its last copy goes.
///
///     const auto application = excel_application::acquire(u"C:\\data.xlsx");
///     const auto workbook = application->adopt(pointer_that_a_call_returned);
class excel_application {
  public:
    /// Starts a hidden application and initialises automation for the calling thread. `Exception`
    /// 18 when it does not start, has no workbooks, or the thread is in a multithreaded apartment.
    excel_application();
    excel_application(const excel_application&) = delete;
    excel_application& operator=(const excel_application&) = delete;
    ~excel_application();

    /// Starts an application; null when that fails. The caller owns the reference.
    static IDispatch* create_application();

    /// An instance for a book: for a new one (null) the first that is registered, for a file one
    /// without open workbooks; else a new instance, which is registered while the library is
    /// started. Instances whose applications have ended are passed over, and leave the list once
    /// no book holds them. `Exception` 18 when none starts. Not on two threads at once.
    static std::shared_ptr<excel_application> acquire(const char16_t* file_name);

    /// An owner of the reference that a call has returned; of a null pointer an empty one.
    static std::shared_ptr<IDispatch> get_temp_ref(IDispatch* object);

    /// The instance's owner of an object. The first call for a pointer takes the reference over;
    /// later ones take none and return another owner of the same entry.
    std::shared_ptr<IDispatch> register_ref(IDispatch* object);

    /// Registers what a call has returned with a reference of its own: where the object is
    /// registered already, the reference is given back.
    std::shared_ptr<IDispatch> adopt(IDispatch* returned);

    /// Drops the entries of objects that nobody else owns. Thread-safe.
    void release_unused_refs();

    /// Whether the application is visible to the user.
    bool visible() const;

    /// Closes the workbooks and ends the application, unless it is visible, and releases it. Run by
    /// the destructor; a second call does nothing.
    void shutdown();

    /// Null after `shutdown`.
    IDispatch* application() const { return application_; }
    IDispatch* workbooks() const { return workbooks_; }

    /// The user's date formats, read once. `Exception` 18 when they cannot be read.
    const DateFormats& date_formats();

  private:
    /// 64-bit FNV-1a over the bytes of the pointer.
    struct PointerHash {
        std::size_t operator()(IDispatch* object) const;
    };

    IDispatch* application_ = nullptr;
    IDispatch* workbooks_ = nullptr;
    std::unordered_map<IDispatch*, std::size_t, PointerHash> ref_index_{8};
    std::vector<std::shared_ptr<IDispatch>> refs_;
    std::optional<DateFormats> date_formats_;
};

} // namespace spreadsheet
