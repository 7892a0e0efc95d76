// SPDX-License-Identifier: Apache-2.0
//
// A range's members but its values, which are in cell_values.cpp.
#include <com/sun/star/beans/PropertyState.hpp>
#include <com/sun/star/beans/XPropertyState.hpp>
#include <com/sun/star/container/XIndexAccess.hpp>
#include <com/sun/star/sheet/CellFlags.hpp>
#include <com/sun/star/sheet/XSheetOperation.hpp>
#include <com/sun/star/sheet/XUniqueCellFormatRangesSupplier.hpp>
#include <com/sun/star/table/XColumnRowRange.hpp>
#include <com/sun/star/util/CellProtection.hpp>
#include <com/sun/star/util/XMergeable.hpp>
#include <com/sun/star/util/XProtectable.hpp>

#include "automation/libreoffice/cell_values.h"
#include "automation/libreoffice/served_objects.h"
#include "automation/libreoffice/sheet_filter.h"

namespace office {
namespace {

/// Everything in a cell; what is drawn over it stays.
constexpr sal_Int32 kContents = css::sheet::CellFlags::VALUE | css::sheet::CellFlags::DATETIME |
                                css::sheet::CellFlags::STRING | css::sheet::CellFlags::ANNOTATION |
                                css::sheet::CellFlags::FORMULA | css::sheet::CellFlags::HARDATTR |
                                css::sheet::CellFlags::STYLES | css::sheet::CellFlags::EDITATTR |
                                css::sheet::CellFlags::FORMATTED;

bool is_locked(const Reference<css::uno::XInterface>& cells) {
    return property<css::util::CellProtection>(cells, "CellProtection").IsLocked != 0;
}

/// Whether the cells are locked; nullopt where some are and some are not.
std::optional<bool> common_lock(const Reference<css::table::XCellRange>& cells) {
    const auto state = as<css::beans::XPropertyState>(cells)->getPropertyState("CellProtection");
    if (state != css::beans::PropertyState_AMBIGUOUS_VALUE) return is_locked(cells);
    // Protection has more parts than the lock.
    const auto groups = as<css::container::XIndexAccess>(
        as<css::sheet::XUniqueCellFormatRangesSupplier>(cells)->getUniqueCellFormatRanges());
    std::optional<bool> common;
    const int count = groups->getCount();
    for (int index = 0; index < count; ++index) {
        const bool locked = is_locked(
            Reference<css::uno::XInterface>(groups->getByIndex(index), css::uno::UNO_QUERY_THROW));
        if (common && *common != locked) return std::nullopt;
        common = locked;
    }
    return common;
}

} // namespace

Range::Range(std::shared_ptr<OfficeSession> session, DocumentCells cells)
    : OfficeObject(std::move(session)), cells_(std::move(cells)) {}

std::span<const DispatchMember<Range>> Range::members() {
    static constexpr DispatchMember<Range> kMembers[] = {
        {u"Value", kGet | kPut, &Range::value},
        {u"Value2", kGet, &Range::value_2},
        {u"NumberFormat", kGet, &Range::number_format},
        {u"Locked", kGet, &Range::locked},
        {u"Address", kGet, &Range::address},
        {u"Columns", kGet, &Range::columns},
        {u"Worksheet", kGet, &Range::worksheet},
        {u"Clear", kCall, &Range::clear},
        {u"AutoFit", kCall, &Range::auto_fit},
        {u"UnMerge", kCall, &Range::unmerge},
        {u"AutoFilter", kCall, &Range::auto_filter},
    };
    return kMembers;
}

void Range::refuse_if_protected() const {
    if (as<css::util::XProtectable>(cells_.sheet->cells)->isProtected())
        throw Refusal{DISP_E_EXCEPTION};
}

HRESULT Range::value(const DispatchCall& call) {
    if (!call.is_put()) return call.give(read_values(cells_, Dates::AsDates));
    // The application would write the cells that are not locked.
    const bool is_protected = as<css::util::XProtectable>(cells_.sheet->cells)->isProtected() != 0;
    if (is_protected && common_lock(cells_.object()) != false) return DISP_E_EXCEPTION;
    write_values(cells_, call.value());
    return S_OK;
}

HRESULT Range::value_2(const DispatchCall& call) {
    return call.give(read_values(cells_, Dates::AsNumbers));
}

HRESULT Range::number_format(const DispatchCall& call) {
    const auto key = cells_.document->formats_of(cells_).common_format(cells_.area);
    if (!key) return call.give(Variant::null());
    return call.give(std::u16string_view(cells_.document->formats().find(*key).code));
}

HRESULT Range::locked(const DispatchCall& call) {
    const auto locked = common_lock(cells_.object());
    return locked ? call.give(*locked) : call.give(Variant::null());
}

HRESULT Range::address(const DispatchCall& call) {
    return call.give(std::u16string_view(format_address(cells_.area)));
}

HRESULT Range::columns(const DispatchCall& call) {
    DocumentCells whole = cells_;
    whole.area.first_row = 0;
    whole.area.last_row = kRows - 1;
    return give_new<Range>(call, whole);
}

HRESULT Range::worksheet(const DispatchCall& call) {
    return give_new<Worksheet>(call, cells_.document, cells_.sheet);
}

HRESULT Range::clear(const DispatchCall&) {
    refuse_if_protected();
    cells_.sheet->formats.reset();
    cells_.document->forget_errors();
    as<css::sheet::XSheetOperation>(cells_.object())->clearContents(kContents);
    return S_OK;
}

HRESULT Range::auto_fit(const DispatchCall&) {
    refuse_if_protected();
    set_property(as<css::table::XColumnRowRange>(cells_.object())->getColumns(), "OptimalWidth",
                 true);
    return S_OK;
}

HRESULT Range::unmerge(const DispatchCall&) {
    refuse_if_protected();
    cells_.sheet->formats.reset();
    as<css::util::XMergeable>(cells_.object())->merge(false);
    return S_OK;
}

HRESULT Range::auto_filter(const DispatchCall& call) {
    refuse_if_protected();
    SheetFilter filter(cells_.document, cells_.sheet);
    filter.switch_on(cells_.area);
    const LONG field = integer_argument(call.argument(0));
    if (field < 1 || field > cells_.area.columns()) return DISP_E_BADINDEX;
    if (call.count() < 2) return S_OK;
    FilterCriteria criteria;
    criteria.first = text_argument(call.argument(1));
    if (call.count() > 2) {
        criteria.combination = integer_argument(call.argument(2));
        criteria.second = text_argument(call.argument(3));
    }
    filter.set_criteria(field, criteria);
    return S_OK;
}

} // namespace office
