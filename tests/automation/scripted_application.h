// SPDX-License-Identifier: Apache-2.0
//
// A spreadsheet application for tests: the members that the library calls, over a model that the
// test fills and inspects. It is strict: a call that a real application would take by luck, such as
// a name in other letters, another locale, a missing argument or a reference too many, is noted as
// a violation. Any call can be made to fail.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/automation/owners.h"
#include "spreadsheet/range.h"

namespace scripted {

using foundation::automation::Variant;

/// What an application says when it refuses an operation.
inline constexpr HRESULT kRefused = static_cast<HRESULT>(0x800a03ec);

struct CellModel {
    Variant value;
    std::u16string format = u"General";
    bool locked = true;
};

struct FilterModel {
    struct Criteria {
        LONG combination = 0;
        Variant first;
        Variant second;
    };
    spreadsheet::Range area;
    std::map<LONG, Criteria> columns; ///< by one-based place
};

struct SheetModel {
    std::u16string name;
    LONG visible = -1;
    LONG type = -4167;
    bool is_protected = false;
    bool deleted = false;
    std::map<std::pair<int, int>, CellModel> cells; ///< by (row, column), zero-based
    std::optional<FilterModel> filter;
    std::map<std::u16string, std::u16string> names; ///< addresses; may have commas
    std::vector<std::string> done;                  ///< "Clear A1:B2" and so on
    std::optional<spreadsheet::Range> used;         ///< in place of the bounds of the cells
    std::weak_ptr<struct WorkbookModel> workbook;

    CellModel& at(int row, int column) { return cells[{row, column}]; }
};

struct WorkbookModel {
    std::u16string path;
    LONG file_format = 51;
    int busy_reads = 0; ///< so many reads of FileFormat fail first
    bool date_1904 = false;
    bool saved = false;
    bool closed = false;
    std::function<void()> on_open;
    std::vector<std::shared_ptr<SheetModel>> sheets;
    std::shared_ptr<SheetModel> active;
    std::map<std::u16string, std::pair<std::u16string, std::u16string>> names; ///< sheet, address

    std::shared_ptr<SheetModel> add_sheet(std::u16string name, std::size_t place);
};

struct ApplicationModel {
    bool visible = true;
    bool alerts = true;
    bool quit = false;
    bool dead = false; ///< every call fails as after the end of the process
    LONG default_save_format = 50;
    std::vector<std::shared_ptr<WorkbookModel>> workbooks;
};

/// The world of one test: what applications do, what they were asked, and who is still held.
class Script {
  public:
    Script();
    ~Script();
    Script(const Script&) = delete;
    Script& operator=(const Script&) = delete;

    // --- What applications do
    /// Files that can be opened, by path; opening copies nothing, the test goes on to look inside.
    std::map<std::u16string, std::shared_ptr<WorkbookModel>> files;
    int sheets_in_new_workbook = 1;
    bool starts_visible = false; ///< in spite of the put of Visible
    bool starts = true;
    std::vector<std::u16string> international;
    /// Fails the call `number` (zero-based, counting all calls) and those after it if `from_then`.
    int fail_at = -1;
    bool from_then = false;
    HRESULT fail_with = kRefused;
    /// Members that always fail, such as "Workbook.SaveAs", and with what.
    std::map<std::string, HRESULT> refused;
    /// The call of this number ends the application.
    int die_at = -1;
    /// Called with the name of each call before it is answered.
    std::function<void(const std::string& call)> before_call;
    /// Calls come from another process, which asks for details of failures by itself.
    bool is_remote = false;

    // --- What they were asked
    std::vector<std::shared_ptr<ApplicationModel>> applications;
    std::vector<std::string> calls; ///< "Range.Value get", "Workbooks.Open call", ...
    std::vector<std::string> violations;
    /// References to objects that the client holds; 0 at the end of a test.
    long held() const;
    int count(const std::string& call) const;

    /// Makes a workbook with a sheet of each name that can be opened.
    std::shared_ptr<WorkbookModel> add_file(const std::u16string& path,
                                            const std::vector<std::u16string>& sheets);

    /// A new application with one reference, null when it does not start.
    IDispatch* start_application();
    void note(std::string violation) { violations.push_back(std::move(violation)); }

    class Object;
    /// Keeps an object until the script goes, so that a use after its end is noticed.
    template <class Made, class... Arguments>
    Made* keep(Arguments&&... arguments) {
        auto made = std::make_unique<Made>(std::forward<Arguments>(arguments)...);
        Made* const object = made.get();
        objects_.push_back(std::move(made));
        return object;
    }
    /// The object that an application has for a node of the model; it stays the same.
    IDispatch*& known(const ApplicationModel& application, const void* node) {
        return known_[{&application, node}];
    }

  private:
    std::vector<std::unique_ptr<Object>> objects_;
    std::map<std::pair<const void*, const void*>, IDispatch*> known_;
};

/// Counts the references of the client.
class Script::Object {
  public:
    virtual ~Object() = default;
    long references = 0;
};

/// Registers a script's applications under "Excel.Application" in this process while it lives. One
/// at a time.
class Registration {
  public:
    explicit Registration(Script& script);
    ~Registration();
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

  private:
    DWORD cookie_ = 0;
};

#ifdef _WIN32
/// Enters a program as the local server of "Excel.Application" into the registry; it is started
/// with `folder` as its first argument.
void register_local_server(const std::wstring& program, const std::wstring& folder);
void unregister_local_server();
#endif

} // namespace scripted
