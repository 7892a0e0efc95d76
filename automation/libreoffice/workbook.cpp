// SPDX-License-Identifier: Apache-2.0
#include <com/sun/star/frame/XModel.hpp>
#include <com/sun/star/frame/XStorable.hpp>
#include <com/sun/star/frame/XTitle.hpp>
#include <com/sun/star/util/XModifiable.hpp>
#include <osl/file.hxx>

#include "automation/libreoffice/file_formats_table.h"
#include "automation/libreoffice/served_objects.h"

namespace office {
namespace {

/// The address of a file whose folder exists; the application would make the folder.
OUString address_to_save_at(std::u16string_view path) {
    OUString address;
    if (osl::FileBase::getFileURLFromSystemPath(to_uno(path), address) != osl::FileBase::E_None)
        throw Refusal{E_INVALIDARG};
    osl::DirectoryItem folder;
    if (osl::DirectoryItem::get(address.copy(0, address.lastIndexOf('/') + 1), folder) !=
        osl::FileBase::E_None)
        throw Refusal{DISP_E_EXCEPTION};
    return address;
}

} // namespace

Workbook::Workbook(std::shared_ptr<OfficeSession> session, std::shared_ptr<OpenDocument> document)
    : OfficeObject(std::move(session)), document_(std::move(document)) {}

std::span<const DispatchMember<Workbook>> Workbook::members() {
    static constexpr DispatchMember<Workbook> kMembers[] = {
        {u"FullName", kGet, &Workbook::full_name},
        {u"FileFormat", kGet, &Workbook::file_format},
        {u"Date1904", kGet, &Workbook::date_1904},
        {u"Worksheets", kGet, &Workbook::worksheets},
        {u"ActiveSheet", kGet, &Workbook::active_sheet},
        {u"Names", kGet, &Workbook::names},
        {u"Saved", kPut, &Workbook::saved},
        {u"SaveAs", kCall, &Workbook::save_as},
        {u"Close", kCall, &Workbook::close},
    };
    return kMembers;
}

HRESULT Workbook::full_name(const DispatchCall& call) {
    const OUString address = as<css::frame::XModel>(document_->object())->getURL();
    OUString name;
    if (address.isEmpty())
        name = as<css::frame::XTitle>(document_->object())->getTitle();
    else
        osl::FileBase::getSystemPathFromFileURL(address, name);
    return call.give(view_of(name));
}

HRESULT Workbook::file_format(const DispatchCall& call) {
    const auto model = as<css::frame::XModel>(document_->object());
    const OUString address = model->getURL();
    if (address.isEmpty()) return call.give(LONG{session_->default_save_format});
    OUString filter;
    for (const css::beans::PropertyValue& argument : model->getArgs())
        if (argument.Name == "FilterName") argument.Value >>= filter;
    const LONG number = number_of_filter(view_of(filter));
    const bool is_named_csv = address.endsWithIgnoreAsciiCase(".csv");
    return call.give(number == kCommaSeparated && !is_named_csv ? LONG{kPlainText} : number);
}

HRESULT Workbook::date_1904(const DispatchCall& call) {
    return call.give(document_->counts_from_1904());
}

HRESULT Workbook::worksheets(const DispatchCall& call) {
    return give_new<Worksheets>(call, document_);
}

HRESULT Workbook::active_sheet(const DispatchCall& call) {
    return give_new<Worksheet>(call, document_, document_->active_sheet());
}

HRESULT Workbook::names(const DispatchCall& call) {
    return give_new<Names>(call, document_, Reference<css::uno::XInterface>(document_->object()));
}

HRESULT Workbook::saved(const DispatchCall& call) {
    as<css::util::XModifiable>(document_->object())->setModified(!is_true(call.value()));
    return S_OK;
}

HRESULT Workbook::save_as(const DispatchCall& call) {
    const FileFormat* const format = find_saved_format(integer_argument(call.argument(1)));
    if (format == nullptr) return E_NOTIMPL;
    const OUString address = address_to_save_at(text_argument(call.argument(0)));
    std::vector<css::beans::PropertyValue> options = {
        named("FilterName", Any(to_uno(format->filter))), named("Overwrite", Any(true))};
    if (format->number == kCommaSeparated)
        options.push_back(named("FilterOptions", Any(to_uno(kTextSaving))));
    as<css::frame::XStorable>(document_->object())->storeAsURL(address, sequence_of(options));
    return S_OK;
}

HRESULT Workbook::close(const DispatchCall&) {
    close_document(*session_, document_);
    return S_OK;
}

} // namespace office
