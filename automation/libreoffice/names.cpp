// SPDX-License-Identifier: Apache-2.0
#include <com/sun/star/container/XNameAccess.hpp>
#include <com/sun/star/sheet/XCellRangeAddressable.hpp>
#include <com/sun/star/sheet/XCellRangeReferrer.hpp>

#include "automation/libreoffice/served_objects.h"
#include "foundation/ascii_case.h"

namespace office {
namespace {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

class Name final : public OfficeObject<Name> {
  public:
    Name(std::shared_ptr<OfficeSession> session, std::shared_ptr<OpenDocument> document,
         const Reference<css::uno::XInterface>& name)
        : OfficeObject(std::move(session)), document_(std::move(document)), name_(name) {}

    static std::span<const DispatchMember<Name>> members() {
        static constexpr DispatchMember<Name> kMembers[] = {
            {u"RefersToRange", kGet, &Name::refers_to_range},
        };
        return kMembers;
    }

  private:
    HRESULT refers_to_range(const DispatchCall& call) {
        const auto cells = as<css::sheet::XCellRangeReferrer>(name_)->getReferredCells();
        if (!cells.is()) return DISP_E_EXCEPTION;
        const auto address = as<css::sheet::XCellRangeAddressable>(cells)->getRangeAddress();
        const auto& sheet = document_->sheets().at(static_cast<std::size_t>(address.Sheet));
        return give_new<Range>(call, DocumentCells{document_,
                                                   sheet,
                                                   {address.StartRow, address.StartColumn,
                                                    address.EndRow, address.EndColumn}});
    }

    const std::shared_ptr<OpenDocument> document_;
    const Reference<css::uno::XInterface> name_;
};

#pragma GCC diagnostic pop

} // namespace

Names::Names(std::shared_ptr<OfficeSession> session, std::shared_ptr<OpenDocument> document,
             const Reference<css::uno::XInterface>& owner)
    : OfficeObject(std::move(session)), document_(std::move(document)), owner_(owner) {}

std::span<const DispatchMember<Names>> Names::members() {
    static constexpr DispatchMember<Names> kMembers[] = {{u"Item", kGet, &Names::item}};
    return kMembers;
}

HRESULT Names::item(const DispatchCall& call) {
    const std::u16string_view wanted = text_argument(call.argument(0));
    const auto names = property<Reference<css::container::XNameAccess>>(owner_, "NamedRanges");
    for (const OUString& name : names->getElementNames()) {
        if (!foundation::unicode::equal_ignoring_ascii_case(view_of(name), wanted)) continue;
        const Reference<css::uno::XInterface> found(names->getByName(name), css::uno::UNO_QUERY);
        return give_new<Name>(call, document_, found);
    }
    return DISP_E_BADINDEX;
}

} // namespace office
