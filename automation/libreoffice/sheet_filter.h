// SPDX-License-Identifier: Apache-2.0
//
// A sheet's active filter: the buttons over a table, and which rows they hide.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <com/sun/star/sheet/TableFilterField3.hpp>
#include <com/sun/star/sheet/XDatabaseRange.hpp>

#include "automation/libreoffice/served_objects.h"

namespace office {

/// The criteria of one column.
struct FilterCriteria {
    /// Automation's number: 0 one criterion, 1 both, 2 either of two; larger for what is not put
    /// back: 3 to 6 the first or last ones, 7 a list of values, 8 a colour.
    LONG combination = 0;
    std::u16string first; ///< such as ">=5", "=abc", "<>*x*"
    std::u16string second;
};

class SheetFilter {
  public:
    SheetFilter(const std::shared_ptr<OpenDocument>& document,
                const std::shared_ptr<DocumentSheet>& sheet);

    bool is_on() const;
    /// The cells under the filter, its headers included; only while it is on.
    CellArea area() const;
    /// nullopt for a column that is not filtered. `field` counts from 1.
    std::optional<FilterCriteria> criteria(LONG field) const;

    /// Shows all rows and removes the buttons.
    void switch_off();
    /// Puts buttons over the area unless there are some.
    void switch_on(const CellArea& area);
    /// Replaces the criteria of a column and hides the rows that do not meet them. Throws `Refusal`
    /// for a combination above 2.
    void set_criteria(LONG field, const FilterCriteria& criteria);

  private:
    using Field = css::sheet::TableFilterField3;
    std::vector<Field> fields() const;

    const std::shared_ptr<OpenDocument> document_;
    const std::shared_ptr<DocumentSheet> sheet_;
    Reference<css::sheet::XDatabaseRange> range_; ///< null where there has never been a filter
};

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// The object that `Worksheet.AutoFilter` returns.
class AutoFilter final : public OfficeObject<AutoFilter> {
  public:
    AutoFilter(std::shared_ptr<OfficeSession> session, std::shared_ptr<OpenDocument> document,
               std::shared_ptr<DocumentSheet> sheet);
    static std::span<const DispatchMember<AutoFilter>> members();

  private:
    HRESULT filters(const DispatchCall& call);
    HRESULT range(const DispatchCall& call);

    const std::shared_ptr<OpenDocument> document_;
    const std::shared_ptr<DocumentSheet> sheet_;
};

#pragma GCC diagnostic pop

} // namespace office
