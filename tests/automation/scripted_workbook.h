// SPDX-License-Identifier: Apache-2.0
//
// The scripted application's objects above the cells.
#pragma once

#include "tests/automation/scripted_object.h"

namespace scripted {

class ScriptedApplication : public ScriptedObject<ScriptedApplication> {
  public:
    static constexpr const char* kName = "Application";
    using ScriptedObject::ScriptedObject;
    static std::span<const DispatchMember<ScriptedApplication>> members();

  private:
    HRESULT visible(const DispatchCall& call);
    HRESULT display_alerts(const DispatchCall& call);
    HRESULT default_save_format(const DispatchCall& call);
    HRESULT international(const DispatchCall& call);
    HRESULT workbooks(const DispatchCall& call);
    HRESULT quit(const DispatchCall& call);
};

class ScriptedWorkbooks : public ScriptedObject<ScriptedWorkbooks> {
  public:
    static constexpr const char* kName = "Workbooks";
    ScriptedWorkbooks(Script& script, std::shared_ptr<ApplicationModel> application,
                      const std::shared_ptr<ApplicationModel>&)
        : ScriptedObject(script, std::move(application)) {}
    static std::span<const DispatchMember<ScriptedWorkbooks>> members();

  private:
    HRESULT count(const DispatchCall& call);
    HRESULT item(const DispatchCall& call);
    HRESULT open(const DispatchCall& call);
    HRESULT add(const DispatchCall& call);
    HRESULT close(const DispatchCall& call);
};

/// An object over a node of the model.
template <class Made, class Node>
class NodeObject : public ScriptedObject<Made> {
  public:
    NodeObject(Script& script, std::shared_ptr<ApplicationModel> application,
               std::shared_ptr<Node> node)
        : ScriptedObject<Made>(script, std::move(application)), node_(std::move(node)) {}

  protected:
    std::shared_ptr<Node> node_;
};

class ScriptedWorkbook : public NodeObject<ScriptedWorkbook, WorkbookModel> {
  public:
    static constexpr const char* kName = "Workbook";
    using NodeObject::NodeObject;
    static std::span<const DispatchMember<ScriptedWorkbook>> members();

  private:
    HRESULT full_name(const DispatchCall& call);
    HRESULT file_format(const DispatchCall& call);
    HRESULT date_1904(const DispatchCall& call);
    HRESULT worksheets(const DispatchCall& call);
    HRESULT active_sheet(const DispatchCall& call);
    HRESULT names(const DispatchCall& call);
    HRESULT saved(const DispatchCall& call);
    HRESULT save_as(const DispatchCall& call);
    HRESULT close(const DispatchCall& call);
};

class ScriptedWorksheets : public NodeObject<ScriptedWorksheets, WorkbookModel> {
  public:
    static constexpr const char* kName = "Worksheets";
    using NodeObject::NodeObject;
    static std::span<const DispatchMember<ScriptedWorksheets>> members();

  private:
    HRESULT count(const DispatchCall& call);
    HRESULT item(const DispatchCall& call);
    HRESULT add(const DispatchCall& call);
};

class ScriptedWorksheet : public NodeObject<ScriptedWorksheet, SheetModel> {
  public:
    static constexpr const char* kName = "Worksheet";
    using NodeObject::NodeObject;
    static std::span<const DispatchMember<ScriptedWorksheet>> members();
    const std::shared_ptr<SheetModel>& model() const { return node_; }

  private:
    HRESULT name(const DispatchCall& call);
    HRESULT visible(const DispatchCall& call);
    HRESULT type(const DispatchCall& call);
    HRESULT remove(const DispatchCall& call);
    HRESULT move(const DispatchCall& call);
    HRESULT activate(const DispatchCall& call);
    HRESULT parent(const DispatchCall& call);
    HRESULT used_range(const DispatchCall& call);
    HRESULT range(const DispatchCall& call);
    HRESULT cells(const DispatchCall& call);
    HRESULT names(const DispatchCall& call);
    HRESULT protect_contents(const DispatchCall& call);
    HRESULT auto_filter_mode(const DispatchCall& call);
    HRESULT auto_filter(const DispatchCall& call);
};

/// Gives a range of a sheet, or the area of a name; refuses what is not an address.
HRESULT give_range(Script& script, const std::shared_ptr<ApplicationModel>& application,
                   const DispatchCall& call, const std::shared_ptr<SheetModel>& sheet,
                   std::u16string address);
/// Gives the filter of a sheet.
HRESULT give_filter(Script& script, const std::shared_ptr<ApplicationModel>& application,
                    const DispatchCall& call, const std::shared_ptr<SheetModel>& sheet);
/// Gives the names of a sheet (null: of the workbook).
HRESULT give_names(Script& script, const std::shared_ptr<ApplicationModel>& application,
                   const DispatchCall& call, const std::shared_ptr<WorkbookModel>& workbook,
                   const std::shared_ptr<SheetModel>& sheet);

} // namespace scripted
