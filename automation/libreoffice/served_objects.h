// SPDX-License-Identifier: Apache-2.0
//
// The objects that serve the application's members; docs/automation.md lists the members. Members
// of objects that are made by one other class alone are in that class's source.
#pragma once

#include "automation/libreoffice/office_object.h"
#include "automation/libreoffice/open_document.h"

namespace office {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// The collection of open workbooks.
class Workbooks final : public OfficeObject<Workbooks> {
  public:
    using OfficeObject::OfficeObject;
    static std::span<const DispatchMember<Workbooks>> members();

  private:
    HRESULT count(const DispatchCall& call);
    HRESULT item(const DispatchCall& call);
    HRESULT open(const DispatchCall& call);
    HRESULT add(const DispatchCall& call);
    HRESULT close(const DispatchCall& call);
    HRESULT load(const DispatchCall& call, const OUString& address,
                 std::vector<css::beans::PropertyValue> options);
};

class Workbook final : public OfficeObject<Workbook> {
  public:
    Workbook(std::shared_ptr<OfficeSession> session, std::shared_ptr<OpenDocument> document);
    static std::span<const DispatchMember<Workbook>> members();

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

    const std::shared_ptr<OpenDocument> document_;
};

/// The sheet that an argument is; null for an argument that is left out. Throws `Refusal`.
std::shared_ptr<DocumentSheet> sheet_argument(const VARIANT& argument);

/// Closes a document without asking or saving; the session forgets it.
void close_document(OfficeSession& session, const std::shared_ptr<OpenDocument>& document);

class Worksheet final : public OfficeObject<Worksheet> {
  public:
    Worksheet(std::shared_ptr<OfficeSession> session, std::shared_ptr<OpenDocument> document,
              std::shared_ptr<DocumentSheet> sheet);
    static std::span<const DispatchMember<Worksheet>> members();

    const std::shared_ptr<DocumentSheet>& sheet() const { return sheet_; }

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
    HRESULT give_cells(const DispatchCall& call, const CellArea& area);

    const std::shared_ptr<OpenDocument> document_;
    const std::shared_ptr<DocumentSheet> sheet_;
};

/// The sheets of a workbook.
class Worksheets final : public OfficeObject<Worksheets> {
  public:
    Worksheets(std::shared_ptr<OfficeSession> session, std::shared_ptr<OpenDocument> document);
    static std::span<const DispatchMember<Worksheets>> members();

  private:
    HRESULT count(const DispatchCall& call);
    HRESULT item(const DispatchCall& call);
    HRESULT add(const DispatchCall& call);

    const std::shared_ptr<OpenDocument> document_;
};

class Range final : public OfficeObject<Range> {
  public:
    Range(std::shared_ptr<OfficeSession> session, DocumentCells cells);
    static std::span<const DispatchMember<Range>> members();

  private:
    HRESULT value(const DispatchCall& call);
    HRESULT value_2(const DispatchCall& call);
    HRESULT number_format(const DispatchCall& call);
    HRESULT locked(const DispatchCall& call);
    HRESULT address(const DispatchCall& call);
    HRESULT columns(const DispatchCall& call);
    HRESULT worksheet(const DispatchCall& call);
    HRESULT clear(const DispatchCall& call);
    HRESULT auto_fit(const DispatchCall& call);
    HRESULT unmerge(const DispatchCall& call);
    HRESULT auto_filter(const DispatchCall& call);
    void refuse_if_protected() const;

    const DocumentCells cells_;
};

/// The names of a workbook or of a sheet alone, whichever `owner` is.
class Names final : public OfficeObject<Names> {
  public:
    Names(std::shared_ptr<OfficeSession> session, std::shared_ptr<OpenDocument> document,
          const Reference<css::uno::XInterface>& owner);
    static std::span<const DispatchMember<Names>> members();

  private:
    HRESULT item(const DispatchCall& call);

    const std::shared_ptr<OpenDocument> document_;
    const Reference<css::uno::XInterface> owner_;
};

#pragma GCC diagnostic pop

} // namespace office
