// SPDX-License-Identifier: Apache-2.0
//
// Opening, making and closing of documents.
#include <algorithm>

#include <com/sun/star/document/MacroExecMode.hpp>
#include <com/sun/star/document/UpdateDocMode.hpp>
#include <com/sun/star/frame/XComponentLoader.hpp>
#include <com/sun/star/util/XCloseable.hpp>
#include <osl/file.hxx>

#include "automation/libreoffice/file_formats_table.h"
#include "automation/libreoffice/served_objects.h"
#include "foundation/ascii_case.h"

namespace office {
namespace {

void close_object(const Reference<css::uno::XInterface>& document) {
    try {
        as<css::util::XCloseable>(document)->close(true);
    } catch (const css::uno::Exception&) {
        // Something else holds it, which closes it in the end.
    }
}

bool has_extension(std::u16string_view path, std::u16string_view extension) {
    return path.size() > extension.size() &&
           foundation::unicode::equal_ignoring_ascii_case(
               path.substr(path.size() - extension.size()), extension);
}

} // namespace

LONG integer_argument(const VARIANT& argument) {
    const auto number = integer_in(argument);
    if (!number) throw Refusal{DISP_E_TYPEMISMATCH};
    return *number;
}

std::u16string_view text_argument(const VARIANT& argument) {
    const auto text = text_in(argument);
    if (!text) throw Refusal{DISP_E_TYPEMISMATCH};
    return *text;
}

void close_document(OfficeSession& session, const std::shared_ptr<OpenDocument>& document) {
    std::erase(session.documents, document);
    close_object(document->object());
}

std::span<const DispatchMember<Workbooks>> Workbooks::members() {
    static constexpr DispatchMember<Workbooks> kMembers[] = {
        {u"Count", kGet, &Workbooks::count},  {u"Item", kGet, &Workbooks::item},
        {u"Open", kCall, &Workbooks::open},   {u"Add", kCall, &Workbooks::add},
        {u"Close", kCall, &Workbooks::close},
    };
    return kMembers;
}

HRESULT Workbooks::count(const DispatchCall& call) {
    // Known here, but who asks wants to use the application: one that is ending has to say so.
    session_->desktop()->getCurrentFrame();
    return call.give(static_cast<LONG>(session_->documents.size()));
}

HRESULT Workbooks::item(const DispatchCall& call) {
    const LONG number = integer_argument(call.argument(0));
    if (number < 1 || static_cast<std::size_t>(number) > session_->documents.size())
        return DISP_E_BADINDEX;
    return give_new<Workbook>(call, session_->documents[static_cast<std::size_t>(number) - 1]);
}

HRESULT Workbooks::load(const DispatchCall& call, const OUString& address,
                        std::vector<css::beans::PropertyValue> options) {
    options.push_back(named("Hidden", Any(true)));
    options.push_back(named("AsTemplate", Any(false)));
    options.push_back(
        named("MacroExecutionMode", Any(css::document::MacroExecMode::NEVER_EXECUTE)));
    options.push_back(named("UpdateDocMode", Any(css::document::UpdateDocMode::NO_UPDATE)));
    const Reference<css::uno::XInterface> loaded(
        as<css::frame::XComponentLoader>(session_->desktop())
            ->loadComponentFromURL(address, "_blank", 0, sequence_of(options)));
    if (!loaded.is()) return DISP_E_EXCEPTION;
    std::shared_ptr<OpenDocument> document;
    try {
        document = std::make_shared<OpenDocument>(loaded);
    } catch (const css::uno::Exception&) {
        close_object(loaded); // a document of another kind
        throw;
    }
    session_->documents.push_back(document);
    return give_new<Workbook>(call, document);
}

HRESULT Workbooks::open(const DispatchCall& call) {
    const std::u16string_view path = text_argument(call.argument(0));
    OUString address;
    if (osl::FileBase::getFileURLFromSystemPath(to_uno(path), address) != osl::FileBase::E_None)
        return E_INVALIDARG;
    std::vector<css::beans::PropertyValue> options;
    if (has_extension(path, u".csv")) {
        options.push_back(named("FilterName", Any(to_uno(kTextFilter))));
        options.push_back(named("FilterOptions", Any(to_uno(kTextLoading))));
    }
    return load(call, address, std::move(options));
}

HRESULT Workbooks::add(const DispatchCall& call) {
    return load(call, "private:factory/scalc", {});
}

HRESULT Workbooks::close(const DispatchCall&) {
    while (!session_->documents.empty()) {
        const auto document = session_->documents.back();
        close_document(*session_, document);
    }
    return S_OK;
}

} // namespace office
