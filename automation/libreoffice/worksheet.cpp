// SPDX-License-Identifier: Apache-2.0
//
// A worksheet's members, and those of the list of worksheets.
#include <algorithm>

#include <com/sun/star/container/XNamed.hpp>
#include <com/sun/star/util/XProtectable.hpp>

#include "automation/libreoffice/served_objects.h"
#include "automation/libreoffice/sheet_filter.h"
#include "automation/libreoffice/used_area.h"

namespace office {
namespace {

constexpr LONG kWorksheetType = -4167;
constexpr LONG kVisible = -1;
constexpr LONG kHidden = 0;
constexpr LONG kVeryHidden = 2;

/// The application itself takes any name from a program.
bool is_sheet_name(std::u16string_view name) {
    constexpr std::size_t kLongest = 31;
    constexpr std::u16string_view kForbidden = u":\\/?*[]";
    return !name.empty() && name.size() <= kLongest &&
           name.find_first_of(kForbidden) == std::u16string_view::npos && name.front() != u'\'' &&
           name.back() != u'\'';
}

} // namespace

std::shared_ptr<DocumentSheet> sheet_argument(const VARIANT& argument) {
    if (argument.vt != VT_DISPATCH) return nullptr;
    const auto* const sheet = dynamic_cast<const Worksheet*>(argument.pdispVal);
    if (sheet == nullptr) throw Refusal{DISP_E_TYPEMISMATCH};
    return sheet->sheet();
}

// --- One sheet

Worksheet::Worksheet(std::shared_ptr<OfficeSession> session, std::shared_ptr<OpenDocument> document,
                     std::shared_ptr<DocumentSheet> sheet)
    : OfficeObject(std::move(session)), document_(std::move(document)), sheet_(std::move(sheet)) {}

std::span<const DispatchMember<Worksheet>> Worksheet::members() {
    static constexpr DispatchMember<Worksheet> kMembers[] = {
        {u"Name", kGet | kPut, &Worksheet::name},
        {u"Visible", kGet | kPut, &Worksheet::visible},
        {u"Type", kGet, &Worksheet::type},
        {u"Delete", kCall, &Worksheet::remove},
        {u"Move", kCall, &Worksheet::move},
        {u"Activate", kCall, &Worksheet::activate},
        {u"Parent", kGet, &Worksheet::parent},
        {u"UsedRange", kGet, &Worksheet::used_range},
        {u"Range", kGet, &Worksheet::range},
        {u"Cells", kGet, &Worksheet::cells},
        {u"Names", kGet, &Worksheet::names},
        {u"ProtectContents", kGet, &Worksheet::protect_contents},
        {u"AutoFilterMode", kGet | kPut, &Worksheet::auto_filter_mode},
        {u"AutoFilter", kGet, &Worksheet::auto_filter},
    };
    return kMembers;
}

HRESULT Worksheet::name(const DispatchCall& call) {
    if (!call.is_put()) return call.give(std::u16string_view(sheet_->name));
    const std::u16string_view wanted = text_argument(call.value());
    if (!is_sheet_name(wanted)) return DISP_E_EXCEPTION;
    if (document_->is_read_only()) return E_ACCESSDENIED;
    const auto object = as<css::container::XNamed>(sheet_->cells);
    object->setName(to_uno(wanted));
    // A name that another sheet has is passed over in silence.
    sheet_->name = view_of(object->getName());
    return sheet_->name == wanted ? S_OK : DISP_E_EXCEPTION;
}

HRESULT Worksheet::visible(const DispatchCall& call) {
    if (!call.is_put()) {
        const bool is_visible = property<bool>(sheet_->cells, "IsVisible");
        return call.give(is_visible ? kVisible : sheet_->is_very_hidden ? kVeryHidden : kHidden);
    }
    const LONG state = integer_argument(call.value());
    if (state != kVisible && state != kHidden && state != kVeryHidden) return E_INVALIDARG;
    set_property(sheet_->cells, "IsVisible", state == kVisible);
    // The last visible sheet stays visible.
    if (property<bool>(sheet_->cells, "IsVisible") != (state == kVisible)) return DISP_E_EXCEPTION;
    sheet_->is_very_hidden = state == kVeryHidden;
    return S_OK;
}

HRESULT Worksheet::type(const DispatchCall& call) {
    return call.give(kWorksheetType);
}

HRESULT Worksheet::remove(const DispatchCall&) {
    document_->remove_sheet(*sheet_);
    return S_OK;
}

HRESULT Worksheet::move(const DispatchCall& call) {
    const auto next = sheet_argument(call.argument(0));
    if (!next) return E_INVALIDARG;
    document_->move_sheet(*sheet_, *next);
    return S_OK;
}

HRESULT Worksheet::activate(const DispatchCall&) {
    document_->view()->setActiveSheet(sheet_->cells);
    return S_OK;
}

HRESULT Worksheet::parent(const DispatchCall& call) {
    return give_new<Workbook>(call, document_);
}

HRESULT Worksheet::give_cells(const DispatchCall& call, const CellArea& area) {
    return give_new<Range>(call, DocumentCells{document_, sheet_, area});
}

HRESULT Worksheet::used_range(const DispatchCall& call) {
    return give_cells(call, used_area(document_, sheet_));
}

HRESULT Worksheet::range(const DispatchCall& call) {
    const auto area = parse_address(text_argument(call.argument(0)));
    return area ? give_cells(call, *area) : DISP_E_EXCEPTION;
}

HRESULT Worksheet::cells(const DispatchCall& call) {
    const LONG row = integer_argument(call.argument(0));
    const LONG column = integer_argument(call.argument(1));
    if (row < 1 || row > kRows || column < 1 || column > kColumns) return DISP_E_BADINDEX;
    return give_cells(call, {row - 1, column - 1, row - 1, column - 1});
}

HRESULT Worksheet::names(const DispatchCall& call) {
    return give_new<Names>(call, document_, Reference<css::uno::XInterface>(sheet_->cells));
}

HRESULT Worksheet::protect_contents(const DispatchCall& call) {
    return call.give(bool{as<css::util::XProtectable>(sheet_->cells)->isProtected() != 0});
}

HRESULT Worksheet::auto_filter_mode(const DispatchCall& call) {
    SheetFilter filter(document_, sheet_);
    if (!call.is_put()) return call.give(filter.is_on());
    if (is_true(call.value())) return E_INVALIDARG; // switched on through a range
    filter.switch_off();
    return S_OK;
}

HRESULT Worksheet::auto_filter(const DispatchCall& call) {
    if (!SheetFilter(document_, sheet_).is_on()) return call.give(static_cast<IDispatch*>(nullptr));
    return give_new<AutoFilter>(call, document_, sheet_);
}

// --- The list

Worksheets::Worksheets(std::shared_ptr<OfficeSession> session,
                       std::shared_ptr<OpenDocument> document)
    : OfficeObject(std::move(session)), document_(std::move(document)) {}

std::span<const DispatchMember<Worksheets>> Worksheets::members() {
    static constexpr DispatchMember<Worksheets> kMembers[] = {
        {u"Count", kGet, &Worksheets::count},
        {u"Item", kGet, &Worksheets::item},
        {u"Add", kCall, &Worksheets::add},
    };
    return kMembers;
}

HRESULT Worksheets::count(const DispatchCall& call) {
    return call.give(static_cast<LONG>(document_->sheets().size()));
}

HRESULT Worksheets::item(const DispatchCall& call) {
    const LONG number = integer_argument(call.argument(0));
    if (number < 1 || static_cast<std::size_t>(number) > document_->sheets().size())
        return DISP_E_BADINDEX;
    return give_new<Worksheet>(call, document_,
                               document_->sheets()[static_cast<std::size_t>(number) - 1]);
}

HRESULT Worksheets::add(const DispatchCall& call) {
    // The application would add it and then refuse its name.
    if (document_->is_read_only()) return E_ACCESSDENIED;
    const auto before = sheet_argument(call.argument(0));
    const auto after = sheet_argument(call.argument(1));
    const int place = after ? document_->place_of(*after) + 1
                            : document_->place_of(before ? *before : *document_->active_sheet());
    const auto sheet = document_->insert_sheet(place);
    document_->view()->setActiveSheet(sheet->cells);
    return give_new<Worksheet>(call, document_, sheet);
}

} // namespace office
