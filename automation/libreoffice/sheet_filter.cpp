// SPDX-License-Identifier: Apache-2.0
#include "automation/libreoffice/sheet_filter.h"

#include <charconv>

#include <com/sun/star/sheet/FilterConnection.hpp>
#include <com/sun/star/sheet/FilterFieldType.hpp>
#include <com/sun/star/sheet/FilterOperator2.hpp>
#include <com/sun/star/sheet/XSheetFilterDescriptor3.hpp>
#include <com/sun/star/sheet/XSheetFilterable.hpp>
#include <com/sun/star/sheet/XUnnamedDatabaseRanges.hpp>
#include <com/sun/star/util/XRefreshable.hpp>

#include "foundation/unicode.h"

namespace office {
namespace {

namespace operators = css::sheet::FilterOperator2;

constexpr LONG kAnd = 1;
constexpr LONG kOr = 2;
constexpr LONG kList = 7;
constexpr LONG kColour = 8;

/// How an operator is written: what is before the value and after it. A longer sign is before the
/// shorter one that it begins with.
struct OperatorText {
    sal_Int32 number;
    std::u16string_view before;
    std::u16string_view after;
};
constexpr OperatorText kOperatorTexts[] = {
    {operators::CONTAINS, u"=*", u"*"},   {operators::DOES_NOT_CONTAIN, u"<>*", u"*"},
    {operators::ENDS_WITH, u"=*", u""},   {operators::DOES_NOT_END_WITH, u"<>*", u""},
    {operators::BEGINS_WITH, u"=", u"*"}, {operators::DOES_NOT_BEGIN_WITH, u"<>", u"*"},
    {operators::NOT_EQUAL, u"<>", u""},   {operators::GREATER_EQUAL, u">=", u""},
    {operators::LESS_EQUAL, u"<=", u""},  {operators::GREATER, u">", u""},
    {operators::LESS, u"<", u""},         {operators::EQUAL, u"=", u""},
};

/// Automation's numbers of the operators that count rows.
std::optional<LONG> counting_combination(sal_Int32 number) {
    switch (number) {
    case operators::TOP_VALUES:
        return 3;
    case operators::BOTTOM_VALUES:
        return 4;
    case operators::TOP_PERCENT:
        return 5;
    case operators::BOTTOM_PERCENT:
        return 6;
    default:
        return std::nullopt;
    }
}

bool is_colour(const css::sheet::FilterFieldValue& value) {
    return value.FilterType == css::sheet::FilterFieldType::BACKGROUND_COLOR ||
           value.FilterType == css::sheet::FilterFieldType::TEXT_COLOR;
}

std::u16string value_text(const css::sheet::FilterFieldValue& value) {
    if (!value.IsNumeric || !value.StringValue.isEmpty())
        return std::u16string(view_of(value.StringValue));
    const OUString digits = OUString::number(value.NumericValue);
    return std::u16string(view_of(digits));
}

std::u16string criterion_text(sal_Int32 number, const css::sheet::FilterFieldValue& value) {
    if (number == operators::EMPTY) return u"=";
    if (number == operators::NOT_EMPTY) return u"<>";
    for (const OperatorText& text : kOperatorTexts)
        if (text.number == number)
            return std::u16string(text.before) + value_text(value) + std::u16string(text.after);
    throw Refusal{DISP_E_EXCEPTION};
}

css::sheet::TableFilterField3 parse_criterion(std::u16string_view text, sal_Int32 column,
                                              bool is_alternative) {
    css::sheet::TableFilterField3 field;
    field.Field = column;
    field.Connection =
        is_alternative ? css::sheet::FilterConnection_OR : css::sheet::FilterConnection_AND;
    field.Operator = operators::EQUAL;
    for (const OperatorText& form : kOperatorTexts) {
        if (text.size() <= form.before.size() + form.after.size() ||
            !text.starts_with(form.before) || !text.ends_with(form.after))
            continue;
        field.Operator = form.number;
        text =
            text.substr(form.before.size(), text.size() - form.before.size() - form.after.size());
        break;
    }
    css::sheet::FilterFieldValue value;
    if (text == u"=" || text == u"<>" || text.empty()) {
        field.Operator = text == u"<>" ? operators::NOT_EMPTY : operators::EMPTY;
        text = {};
    }
    const std::string narrow = foundation::unicode::to_utf8(text);
    const auto end =
        std::from_chars(narrow.data(), narrow.data() + narrow.size(), value.NumericValue);
    value.IsNumeric = !narrow.empty() && end.ptr == narrow.data() + narrow.size();
    value.StringValue = to_uno(text);
    value.FilterType = value.IsNumeric ? css::sheet::FilterFieldType::NUMERIC
                                       : css::sheet::FilterFieldType::STRING;
    field.Values = Sequence<css::sheet::FilterFieldValue>(&value, 1);
    return field;
}

/// A field as it was read, as it has to be written: what kind its values are is not read.
css::sheet::TableFilterField3 to_written(css::sheet::TableFilterField3 field) {
    css::sheet::FilterFieldValue* const values = field.Values.getArray();
    for (sal_Int32 index = 0; index < field.Values.getLength(); ++index)
        if (!is_colour(values[index]))
            values[index].FilterType = values[index].IsNumeric
                                           ? css::sheet::FilterFieldType::NUMERIC
                                           : css::sheet::FilterFieldType::STRING;
    return field;
}

} // namespace

SheetFilter::SheetFilter(const std::shared_ptr<OpenDocument>& document,
                         const std::shared_ptr<DocumentSheet>& sheet)
    : document_(document), sheet_(sheet) {
    const auto ranges = property<Reference<css::sheet::XUnnamedDatabaseRanges>>(
        document_->object(), "UnnamedDatabaseRanges");
    const auto place = static_cast<sal_Int16>(document_->place_of(*sheet_));
    if (ranges.is() && ranges->hasByTable(place))
        range_.set(ranges->getByTable(place), css::uno::UNO_QUERY);
}

bool SheetFilter::is_on() const {
    return range_.is() && property<bool>(range_, "AutoFilter");
}

CellArea SheetFilter::area() const {
    const css::table::CellRangeAddress address = range_->getDataArea();
    return {address.StartRow, address.StartColumn, address.EndRow, address.EndColumn};
}

std::vector<SheetFilter::Field> SheetFilter::fields() const {
    const auto read =
        as<css::sheet::XSheetFilterDescriptor3>(range_->getFilterDescriptor())->getFilterFields3();
    return {read.begin(), read.end()};
}

std::optional<FilterCriteria> SheetFilter::criteria(LONG field) const {
    std::vector<Field> own;
    for (const Field& candidate : fields())
        if (candidate.Field == field - 1 && candidate.Values.hasElements())
            own.push_back(candidate);
    if (own.empty()) return std::nullopt;
    const Field& first = own.front();
    const auto& values = first.Values;
    if (is_colour(values[0])) return FilterCriteria{kColour, {}, {}};
    if (const auto counting = counting_combination(first.Operator))
        return FilterCriteria{*counting, value_text(values[0]), {}};
    const std::size_t count = own.size() - 1 + static_cast<std::size_t>(values.getLength());
    FilterCriteria criteria{0, criterion_text(first.Operator, values[0]), {}};
    if (count == 1) return criteria;
    if (count > 2) return FilterCriteria{kList, criteria.first, {}};
    if (values.getLength() == 2) { // a list of two values
        criteria.combination = kOr;
        criteria.second = criterion_text(first.Operator, values[1]);
    } else {
        const Field& second = own.back();
        criteria.combination = second.Connection == css::sheet::FilterConnection_OR ? kOr : kAnd;
        criteria.second = criterion_text(second.Operator, second.Values[0]);
    }
    return criteria;
}

void SheetFilter::switch_off() {
    if (!is_on()) return;
    // An empty filter first, or else the rows stay hidden.
    const auto filtered =
        as<css::sheet::XSheetFilterable>(DocumentCells{document_, sheet_, area()}.object());
    filtered->filter(filtered->createFilterDescriptor(true));
    set_property(range_, "AutoFilter", false);
}

void SheetFilter::switch_on(const CellArea& area) {
    if (is_on()) return;
    const auto ranges = property<Reference<css::sheet::XUnnamedDatabaseRanges>>(
        document_->object(), "UnnamedDatabaseRanges");
    const css::table::CellRangeAddress address =
        document_->address_of(DocumentCells{document_, sheet_, area});
    ranges->setByTable(address);
    range_.set(ranges->getByTable(address.Sheet), css::uno::UNO_QUERY_THROW);
    set_property(range_, "AutoFilter", true);
}

void SheetFilter::set_criteria(LONG field, const FilterCriteria& criteria) {
    if (criteria.combination < 0 || criteria.combination > kOr) throw Refusal{E_NOTIMPL};
    std::vector<Field> written;
    for (const Field& other : fields())
        if (other.Field != field - 1) written.push_back(to_written(other));
    written.push_back(parse_criterion(criteria.first, field - 1, false));
    if (criteria.combination != 0)
        written.push_back(parse_criterion(criteria.second, field - 1, criteria.combination == kOr));
    const auto descriptor = range_->getFilterDescriptor();
    set_property(descriptor, "ContainsHeader", true);
    as<css::sheet::XSheetFilterDescriptor3>(descriptor)->setFilterFields3(sequence_of(written));
    as<css::util::XRefreshable>(range_)->refresh();
}

// --- The objects

namespace {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// The filter of one column.
class Filter final : public OfficeObject<Filter> {
  public:
    Filter(std::shared_ptr<OfficeSession> session, std::optional<FilterCriteria> criteria)
        : OfficeObject(std::move(session)), criteria_(std::move(criteria)) {}

    static std::span<const DispatchMember<Filter>> members() {
        static constexpr DispatchMember<Filter> kMembers[] = {
            {u"On", kGet, &Filter::on},
            {u"Operator", kGet, &Filter::combination},
            {u"Criteria1", kGet, &Filter::first},
            {u"Criteria2", kGet, &Filter::second},
        };
        return kMembers;
    }

  private:
    const FilterCriteria& criteria() const {
        if (!criteria_) throw Refusal{DISP_E_EXCEPTION};
        return *criteria_;
    }
    HRESULT on(const DispatchCall& call) { return call.give(criteria_.has_value()); }
    HRESULT combination(const DispatchCall& call) { return call.give(criteria().combination); }
    HRESULT first(const DispatchCall& call) {
        return call.give(std::u16string_view(criteria().first));
    }
    HRESULT second(const DispatchCall& call) {
        if (criteria().second.empty()) throw Refusal{DISP_E_EXCEPTION};
        return call.give(std::u16string_view(criteria().second));
    }

    const std::optional<FilterCriteria> criteria_;
};

/// The filters of the columns.
class Filters final : public OfficeObject<Filters> {
  public:
    Filters(std::shared_ptr<OfficeSession> session, std::shared_ptr<OpenDocument> document,
            std::shared_ptr<DocumentSheet> sheet)
        : OfficeObject(std::move(session)),
          document_(std::move(document)),
          sheet_(std::move(sheet)) {}

    static std::span<const DispatchMember<Filters>> members() {
        static constexpr DispatchMember<Filters> kMembers[] = {
            {u"Count", kGet, &Filters::count},
            {u"Item", kGet, &Filters::item},
        };
        return kMembers;
    }

  private:
    HRESULT count(const DispatchCall& call) {
        return call.give(LONG{SheetFilter(document_, sheet_).area().columns()});
    }
    HRESULT item(const DispatchCall& call) {
        const LONG field = integer_argument(call.argument(0));
        const SheetFilter filter(document_, sheet_);
        if (field < 1 || field > filter.area().columns()) return DISP_E_BADINDEX;
        return give_new<Filter>(call, filter.criteria(field));
    }

    const std::shared_ptr<OpenDocument> document_;
    const std::shared_ptr<DocumentSheet> sheet_;
};

#pragma GCC diagnostic pop

} // namespace

AutoFilter::AutoFilter(std::shared_ptr<OfficeSession> session,
                       std::shared_ptr<OpenDocument> document, std::shared_ptr<DocumentSheet> sheet)
    : OfficeObject(std::move(session)), document_(std::move(document)), sheet_(std::move(sheet)) {}

std::span<const DispatchMember<AutoFilter>> AutoFilter::members() {
    static constexpr DispatchMember<AutoFilter> kMembers[] = {
        {u"Filters", kGet, &AutoFilter::filters},
        {u"Range", kGet, &AutoFilter::range},
    };
    return kMembers;
}

HRESULT AutoFilter::filters(const DispatchCall& call) {
    return give_new<Filters>(call, document_, sheet_);
}

HRESULT AutoFilter::range(const DispatchCall& call) {
    return give_new<Range>(call,
                           DocumentCells{document_, sheet_, SheetFilter(document_, sheet_).area()});
}

} // namespace office
