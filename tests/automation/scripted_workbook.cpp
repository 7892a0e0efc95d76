// SPDX-License-Identifier: Apache-2.0
#include "tests/automation/scripted_workbook.h"

#include <algorithm>

namespace scripted {
namespace {

constexpr LONG kPlainText = -4158;

bool is_bad_name(std::u16string_view name) {
    return name.empty() || name.size() > 31 || name.find_first_of(u":\\/?*[]") != name.npos;
}

} // namespace

// --- Application

std::span<const DispatchMember<ScriptedApplication>> ScriptedApplication::members() {
    static constexpr DispatchMember<ScriptedApplication> kMembers[] = {
        {u"Visible", kGet | kPut, &ScriptedApplication::visible},
        {u"DisplayAlerts", kGet | kPut, &ScriptedApplication::display_alerts},
        {u"DefaultSaveFormat", kGet | kPut, &ScriptedApplication::default_save_format},
        {u"International", kGet, &ScriptedApplication::international},
        {u"Workbooks", kGet, &ScriptedApplication::workbooks},
        {u"Quit", kCall, &ScriptedApplication::quit},
    };
    return kMembers;
}

HRESULT ScriptedApplication::visible(const DispatchCall& call) {
    if (!call.is_put()) return call.give(application_->visible);
    expect(call.value().vt == VT_I4, "is made visible with another type");
    application_->visible = is_true(call.value()) || script_.starts_visible;
    return S_OK;
}

HRESULT ScriptedApplication::display_alerts(const DispatchCall& call) {
    if (!call.is_put()) return call.give(application_->alerts);
    expect(call.value().vt == VT_BOOL, "gets its alerts with another type");
    application_->alerts = is_true(call.value());
    return S_OK;
}

HRESULT ScriptedApplication::default_save_format(const DispatchCall& call) {
    if (!call.is_put()) return call.give(application_->default_save_format);
    expect(call.value().vt == VT_I4, "gets its save format with another type");
    application_->default_save_format = integer_in(call.value()).value_or(0);
    return S_OK;
}

HRESULT ScriptedApplication::international(const DispatchCall& call) {
    SAFEARRAYBOUND bound{static_cast<ULONG>(script_.international.size()), 1};
    VARIANT array;
    VariantInit(&array);
    array.vt = VT_ARRAY | VT_VARIANT;
    array.parray = SafeArrayCreate(VT_VARIANT, 1, &bound);
    Variant owner = Variant::adopt(array);
    for (LONG index = 1; index <= static_cast<LONG>(bound.cElements); ++index) {
        Variant text = Variant::text(script_.international[static_cast<std::size_t>(index) - 1]);
        SafeArrayPutElement(array.parray, &index, const_cast<VARIANT*>(&text.get()));
    }
    return call.give(std::move(owner));
}

HRESULT ScriptedApplication::workbooks(const DispatchCall& call) {
    return give_known<ScriptedWorkbooks>(call, application_);
}

HRESULT ScriptedApplication::quit(const DispatchCall&) {
    expect(!application_->visible, "quits while the user sees it");
    application_->quit = true;
    return S_OK;
}

// --- Workbooks

std::span<const DispatchMember<ScriptedWorkbooks>> ScriptedWorkbooks::members() {
    static constexpr DispatchMember<ScriptedWorkbooks> kMembers[] = {
        {u"Count", kGet, &ScriptedWorkbooks::count},  {u"Item", kGet, &ScriptedWorkbooks::item},
        {u"Open", kCall, &ScriptedWorkbooks::open},   {u"Add", kCall, &ScriptedWorkbooks::add},
        {u"Close", kCall, &ScriptedWorkbooks::close},
    };
    return kMembers;
}

HRESULT ScriptedWorkbooks::count(const DispatchCall& call) {
    return call.give(static_cast<LONG>(application_->workbooks.size()));
}

HRESULT ScriptedWorkbooks::item(const DispatchCall& call) {
    const auto number = integer_in(call.argument(0));
    if (call.count() != 1 || call.argument(0).vt != VT_I4) return wrong_arguments("Item");
    if (*number < 1 || static_cast<std::size_t>(*number) > application_->workbooks.size())
        return DISP_E_BADINDEX;
    return give_known<ScriptedWorkbook>(
        call, application_->workbooks[static_cast<std::size_t>(*number) - 1]);
}

HRESULT ScriptedWorkbooks::open(const DispatchCall& call) {
    const auto path = text_in(call.argument(0));
    if (call.count() != 1 || !path) return wrong_arguments("Open");
    expect(!application_->alerts, "opens a file with alerts on");
    const auto file = script_.files.find(std::u16string(*path));
    if (file == script_.files.end()) return DISP_E_EXCEPTION;
    application_->workbooks.push_back(file->second);
    file->second->closed = false;
    if (file->second->on_open) file->second->on_open();
    return give_known<ScriptedWorkbook>(call, file->second);
}

HRESULT ScriptedWorkbooks::add(const DispatchCall& call) {
    if (call.count() != 0) return wrong_arguments("Add");
    auto workbook = std::make_shared<WorkbookModel>();
    workbook->path =
        u"Book" + foundation::unicode::to_utf16(std::to_string(application_->workbooks.size() + 1));
    workbook->file_format = application_->default_save_format;
    for (int number = 1; number <= script_.sheets_in_new_workbook; ++number)
        workbook
            ->add_sheet(u"Sheet" + foundation::unicode::to_utf16(std::to_string(number)),
                        workbook->sheets.size())
            ->workbook = workbook;
    application_->workbooks.push_back(workbook);
    return give_known<ScriptedWorkbook>(call, workbook);
}

HRESULT ScriptedWorkbooks::close(const DispatchCall& call) {
    if (call.count() != 0) return wrong_arguments("Close");
    for (const auto& workbook : application_->workbooks)
        workbook->closed = true;
    application_->workbooks.clear();
    return S_OK;
}

// --- Workbook

std::span<const DispatchMember<ScriptedWorkbook>> ScriptedWorkbook::members() {
    static constexpr DispatchMember<ScriptedWorkbook> kMembers[] = {
        {u"FullName", kGet, &ScriptedWorkbook::full_name},
        {u"FileFormat", kGet, &ScriptedWorkbook::file_format},
        {u"Date1904", kGet, &ScriptedWorkbook::date_1904},
        {u"Worksheets", kGet, &ScriptedWorkbook::worksheets},
        {u"ActiveSheet", kGet, &ScriptedWorkbook::active_sheet},
        {u"Names", kGet, &ScriptedWorkbook::names},
        {u"Saved", kPut, &ScriptedWorkbook::saved},
        {u"SaveAs", kCall, &ScriptedWorkbook::save_as},
        {u"Close", kCall, &ScriptedWorkbook::close},
    };
    return kMembers;
}

HRESULT ScriptedWorkbook::full_name(const DispatchCall& call) {
    return call.give(std::u16string_view(node_->path));
}

HRESULT ScriptedWorkbook::file_format(const DispatchCall& call) {
    if (node_->busy_reads > 0) {
        --node_->busy_reads;
        return RPC_E_CALL_REJECTED;
    }
    return call.give(node_->file_format);
}

HRESULT ScriptedWorkbook::date_1904(const DispatchCall& call) {
    return call.give(node_->date_1904);
}

HRESULT ScriptedWorkbook::worksheets(const DispatchCall& call) {
    // A collection is an object beside the workbook: its node is the list.
    IDispatch*& object = script_.known(*application_, &node_->sheets);
    if (object == nullptr) object = script_.keep<ScriptedWorksheets>(script_, application_, node_);
    return call.give(object);
}

HRESULT ScriptedWorkbook::active_sheet(const DispatchCall& call) {
    return give_known<ScriptedWorksheet>(call, node_->active);
}

HRESULT ScriptedWorkbook::names(const DispatchCall& call) {
    return give_names(script_, application_, call, node_, nullptr);
}

HRESULT ScriptedWorkbook::saved(const DispatchCall& call) {
    expect(call.value().vt == VT_I4, "is marked as saved with another type");
    node_->saved = is_true(call.value());
    return S_OK;
}

HRESULT ScriptedWorkbook::save_as(const DispatchCall& call) {
    const auto path = text_in(call.argument(0));
    if (call.count() != 2 || !path || call.argument(1).vt != VT_I4)
        return wrong_arguments("SaveAs");
    expect(!application_->alerts, "asks before it replaces a file");
    node_->path = *path;
    node_->file_format = *integer_in(call.argument(1));
    return S_OK;
}

HRESULT ScriptedWorkbook::close(const DispatchCall& call) {
    if (call.count() != 0) return wrong_arguments("Close");
    expect(node_->saved, "asks whether to save when it is closed");
    expect(!application_->visible, "is closed while the user sees it");
    node_->closed = true;
    std::erase(application_->workbooks, node_);
    return S_OK;
}

// --- Worksheets

std::span<const DispatchMember<ScriptedWorksheets>> ScriptedWorksheets::members() {
    static constexpr DispatchMember<ScriptedWorksheets> kMembers[] = {
        {u"Count", kGet, &ScriptedWorksheets::count},
        {u"Item", kGet, &ScriptedWorksheets::item},
        {u"Add", kCall, &ScriptedWorksheets::add},
    };
    return kMembers;
}

HRESULT ScriptedWorksheets::count(const DispatchCall& call) {
    return call.give(static_cast<LONG>(node_->sheets.size()));
}

HRESULT ScriptedWorksheets::item(const DispatchCall& call) {
    if (call.count() != 1 || call.argument(0).vt != VT_I4) return wrong_arguments("Item");
    const LONG number = call.argument(0).lVal;
    if (number < 1 || static_cast<std::size_t>(number) > node_->sheets.size())
        return DISP_E_BADINDEX;
    return give_known<ScriptedWorksheet>(call, node_->sheets[static_cast<std::size_t>(number) - 1]);
}

HRESULT ScriptedWorksheets::add(const DispatchCall& call) {
    const auto place_of = [&](const std::shared_ptr<SheetModel>& sheet) {
        return static_cast<std::size_t>(
            std::find(node_->sheets.begin(), node_->sheets.end(), sheet) - node_->sheets.begin());
    };
    std::size_t place = place_of(node_->active);
    if (call.count() == 2) {
        const VARIANT& before = call.argument(0);
        const VARIANT& after = call.argument(1);
        const bool is_before = before.vt == VT_DISPATCH;
        if ((is_before ? after.vt : before.vt) != VT_NULL ||
            (is_before ? before.vt : after.vt) != VT_DISPATCH)
            return wrong_arguments("Add");
        // Only sheets of this application are passed.
        auto* const sheet = static_cast<ScriptedWorksheet*>((is_before ? before : after).pdispVal);
        place = place_of(sheet->model()) + (is_before ? 0 : 1);
    } else if (call.count() != 0) {
        return wrong_arguments("Add");
    }
    std::u16string name;
    for (std::size_t number = node_->sheets.size() + 1; name.empty(); ++number) {
        name = u"Sheet" + foundation::unicode::to_utf16(std::to_string(number));
        for (const auto& sheet : node_->sheets)
            if (sheet->name == name) name.clear();
    }
    node_->active = node_->add_sheet(name, place);
    node_->active->workbook = node_;
    return give_known<ScriptedWorksheet>(call, node_->active);
}

// --- Worksheet

std::span<const DispatchMember<ScriptedWorksheet>> ScriptedWorksheet::members() {
    static constexpr DispatchMember<ScriptedWorksheet> kMembers[] = {
        {u"Name", kGet | kPut, &ScriptedWorksheet::name},
        {u"Visible", kGet | kPut, &ScriptedWorksheet::visible},
        {u"Type", kGet, &ScriptedWorksheet::type},
        {u"Delete", kCall, &ScriptedWorksheet::remove},
        {u"Move", kCall, &ScriptedWorksheet::move},
        {u"Activate", kCall, &ScriptedWorksheet::activate},
        {u"Parent", kGet, &ScriptedWorksheet::parent},
        {u"UsedRange", kGet, &ScriptedWorksheet::used_range},
        {u"Range", kGet, &ScriptedWorksheet::range},
        {u"Cells", kGet, &ScriptedWorksheet::cells},
        {u"Names", kGet, &ScriptedWorksheet::names},
        {u"ProtectContents", kGet, &ScriptedWorksheet::protect_contents},
        {u"AutoFilterMode", kGet | kPut, &ScriptedWorksheet::auto_filter_mode},
        {u"AutoFilter", kGet, &ScriptedWorksheet::auto_filter},
    };
    return kMembers;
}

HRESULT ScriptedWorksheet::name(const DispatchCall& call) {
    if (!call.is_put()) return call.give(std::u16string_view(node_->name));
    const auto name = text_in(call.value());
    if (!name) return wrong_arguments("Name");
    if (is_bad_name(*name)) return kRefused;
    node_->name = *name;
    return S_OK;
}

HRESULT ScriptedWorksheet::visible(const DispatchCall& call) {
    if (!call.is_put()) return call.give(node_->visible);
    if (call.value().vt != VT_I4) return wrong_arguments("Visible");
    node_->visible = call.value().lVal;
    return S_OK;
}

HRESULT ScriptedWorksheet::type(const DispatchCall& call) {
    return call.give(node_->type);
}

HRESULT ScriptedWorksheet::remove(const DispatchCall&) {
    const auto workbook = node_->workbook.lock();
    expect(!application_->alerts, "asks before it is deleted");
    if (workbook->sheets.size() == 1) return kRefused;
    std::erase(workbook->sheets, node_);
    if (workbook->active == node_) workbook->active = workbook->sheets.front();
    node_->deleted = true;
    return S_OK;
}

HRESULT ScriptedWorksheet::move(const DispatchCall& call) {
    if (call.count() != 1 || call.argument(0).vt != VT_DISPATCH) return wrong_arguments("Move");
    const auto next = static_cast<ScriptedWorksheet*>(call.argument(0).pdispVal)->model();
    const auto workbook = node_->workbook.lock();
    expect(next != node_, "is moved before itself");
    std::erase(workbook->sheets, node_);
    workbook->sheets.insert(std::find(workbook->sheets.begin(), workbook->sheets.end(), next),
                            node_);
    workbook->active = node_;
    return S_OK;
}

HRESULT ScriptedWorksheet::activate(const DispatchCall&) {
    node_->workbook.lock()->active = node_;
    return S_OK;
}

HRESULT ScriptedWorksheet::parent(const DispatchCall& call) {
    return give_known<ScriptedWorkbook>(call, node_->workbook.lock());
}

HRESULT ScriptedWorksheet::used_range(const DispatchCall& call) {
    spreadsheet::Range used{1 << 20, 1 << 20, 0, 0};
    for (const auto& [place, cell] : node_->cells) {
        used.first_row = std::min(used.first_row, place.first);
        used.first_column = std::min(used.first_column, place.second);
        used.last_row = std::max(used.last_row, place.first);
        used.last_column = std::max(used.last_column, place.second);
    }
    if (node_->cells.empty()) used = {};
    return give_range(script_, application_, call, node_,
                      spreadsheet::range_string(node_->used.value_or(used)));
}

HRESULT ScriptedWorksheet::range(const DispatchCall& call) {
    const auto address = text_in(call.argument(0));
    if (call.count() != 1 || !address) return wrong_arguments("Range");
    return give_range(script_, application_, call, node_, std::u16string(*address));
}

HRESULT ScriptedWorksheet::cells(const DispatchCall& call) {
    if (call.count() != 2 || call.argument(0).vt != VT_I4 || call.argument(1).vt != VT_I4)
        return wrong_arguments("Cells");
    const int row = call.argument(0).lVal - 1;
    const int column = call.argument(1).lVal - 1;
    return give_range(script_, application_, call, node_,
                      spreadsheet::range_string({row, column, row, column}));
}

HRESULT ScriptedWorksheet::names(const DispatchCall& call) {
    return give_names(script_, application_, call, node_->workbook.lock(), node_);
}

HRESULT ScriptedWorksheet::protect_contents(const DispatchCall& call) {
    return call.give(node_->is_protected);
}

HRESULT ScriptedWorksheet::auto_filter_mode(const DispatchCall& call) {
    if (!call.is_put()) return call.give(node_->filter.has_value());
    if (call.value().vt != VT_BOOL || is_true(call.value()))
        return wrong_arguments("AutoFilterMode");
    node_->filter.reset();
    return S_OK;
}

HRESULT ScriptedWorksheet::auto_filter(const DispatchCall& call) {
    if (!node_->filter) return kRefused;
    return give_filter(script_, application_, call, node_);
}

// --- Model and script

std::shared_ptr<SheetModel> WorkbookModel::add_sheet(std::u16string name, std::size_t place) {
    auto sheet = std::make_shared<SheetModel>();
    sheet->name = std::move(name);
    sheets.insert(sheets.begin() + static_cast<std::ptrdiff_t>(place), sheet);
    if (!active) active = sheet;
    return sheet;
}

Script::Script() {
    international.resize(45, u"-");
    const char16_t* const letters[] = {u"y", u"m", u"d", u"h", u"m", u"s"};
    for (std::size_t index = 0; index < 6; ++index)
        international[18 + index] = letters[index];
    international[25] = u"General";
}

Script::~Script() = default;

long Script::held() const {
    long sum = 0;
    for (const auto& object : objects_)
        sum += object->references;
    return sum;
}

int Script::count(const std::string& call) const {
    return static_cast<int>(std::count(calls.begin(), calls.end(), call));
}

std::shared_ptr<WorkbookModel> Script::add_file(const std::u16string& path,
                                                const std::vector<std::u16string>& sheets) {
    auto workbook = std::make_shared<WorkbookModel>();
    workbook->path = path;
    for (const std::u16string& name : sheets)
        workbook->add_sheet(name, workbook->sheets.size())->workbook = workbook;
    if (path.ends_with(u".txt")) workbook->file_format = kPlainText;
    files[path] = workbook;
    return workbook;
}

IDispatch* Script::start_application() {
    if (!starts) return nullptr;
    applications.push_back(std::make_shared<ApplicationModel>());
    IDispatch* const made = keep<ScriptedApplication>(*this, applications.back());
    made->AddRef();
    return made;
}

} // namespace scripted
