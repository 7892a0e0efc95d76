// SPDX-License-Identifier: Apache-2.0
//
// The scripted application's ranges, filters and names.
#include <algorithm>
#include <charconv>
#include <cmath>

#include "foundation/ascii_case.h"
#include "spreadsheet/exception.h"
#include "tests/automation/scripted_workbook.h"

namespace scripted {
namespace {

using foundation::automation::BlockBuilder;
using foundation::automation::BlockView;
using spreadsheet::Range;

constexpr std::size_t kLongestText = 32'767;

std::optional<Range> parse(std::u16string address) {
    std::erase(address, u'$');
    try {
        return spreadsheet::parse_range(address.data(), address.size(),
                                        spreadsheet::book::format::XLSX, {0, 0, -1, -1}, true,
                                        nullptr, nullptr);
    } catch (const spreadsheet::Exception&) {
        return std::nullopt;
    }
}

/// As an application reads what a user types.
Variant entered(std::u16string_view text) {
    if (text.starts_with(u'\'')) return Variant::text(text.substr(1));
    if (foundation::unicode::equal_ignoring_ascii_case(text, std::u16string_view(u"true")))
        return Variant::boolean(true);
    const std::string narrow = foundation::unicode::to_utf8(text);
    double number = 0.0;
    const auto end = std::from_chars(narrow.data(), narrow.data() + narrow.size(), number);
    if (!narrow.empty() && end.ptr == narrow.data() + narrow.size()) return Variant::number(number);
    return Variant::text(text);
}

class ScriptedRange : public NodeObject<ScriptedRange, SheetModel> {
  public:
    static constexpr const char* kName = "Range";

    ScriptedRange(Script& script, std::shared_ptr<ApplicationModel> application,
                  std::shared_ptr<SheetModel> sheet, Range range, std::u16string address)
        : NodeObject(script, std::move(application), std::move(sheet)),
          range_(range),
          address_(std::move(address)) {}

    static std::span<const DispatchMember<ScriptedRange>> members() {
        static constexpr DispatchMember<ScriptedRange> kMembers[] = {
            {u"Value", kGet | kPut, &ScriptedRange::value},
            {u"Value2", kGet, &ScriptedRange::value_2},
            {u"NumberFormat", kGet, &ScriptedRange::number_format},
            {u"Locked", kGet, &ScriptedRange::locked},
            {u"Address", kGet, &ScriptedRange::address},
            {u"Columns", kGet, &ScriptedRange::columns},
            {u"Worksheet", kGet, &ScriptedRange::worksheet},
            {u"Clear", kCall, &ScriptedRange::clear},
            {u"AutoFit", kCall, &ScriptedRange::auto_fit},
            {u"UnMerge", kCall, &ScriptedRange::unmerge},
            {u"AutoFilter", kCall, &ScriptedRange::auto_filter},
        };
        return kMembers;
    }

  private:
    HRESULT value(const DispatchCall& call) {
        if (!call.is_put()) return read(call, 0.0);
        const BlockView block(call.value());
        if (!block || block.rows() != rows() || block.columns() != columns())
            return wrong_arguments("Value");
        expect(!node_->filter, "is written while rows are filtered");
        if (is_locked() || holds_long_text(block)) return kRefused;
        const VARIANT* element = block.elements();
        for (int column = range_.first_column; column <= range_.last_column; ++column)
            for (int row = range_.first_row; row <= range_.last_row; ++row, ++element)
                enter(row, column, *element);
        return S_OK;
    }

    HRESULT value_2(const DispatchCall& call) {
        return read(call, node_->workbook.lock()->date_1904 ? 1462.0 : -0.0, true);
    }

    /// Serial numbers in place of dates, if asked for.
    HRESULT read(const DispatchCall& call, double shift_days, bool raw = false) {
        const auto converted = [&](const CellModel* cell) {
            if (cell == nullptr) return Variant();
            if (raw && cell->value.type() == VT_DATE)
                return Variant::number(cell->value.get().date - shift_days);
            return Variant::copy_of(cell->value.get());
        };
        if (range_.count() == 1)
            return call.give(converted(find(range_.first_row, range_.first_column)));
        BlockBuilder block(static_cast<std::uint32_t>(rows()),
                           static_cast<std::uint32_t>(columns()));
        VARIANT* element = block.elements();
        for (int column = range_.first_column; column <= range_.last_column; ++column)
            for (int row = range_.first_row; row <= range_.last_row; ++row)
                *element++ = converted(find(row, column)).release();
        return call.give(std::move(block).take());
    }

    HRESULT number_format(const DispatchCall& call) {
        const auto format_of = [](const CellModel* cell) -> std::u16string_view {
            return cell == nullptr ? std::u16string_view(u"General") : cell->format;
        };
        const std::u16string_view first = format_of(find(range_.first_row, range_.first_column));
        if (!all_cells([&](const CellModel* cell) { return format_of(cell) == first; }))
            return call.give(Variant::null());
        return call.give(first);
    }

    HRESULT locked(const DispatchCall& call) {
        const auto is = [](const CellModel* cell) { return cell == nullptr || cell->locked; };
        const bool first = is(find(range_.first_row, range_.first_column));
        if (!all_cells([&](const CellModel* cell) { return is(cell) == first; }))
            return call.give(Variant::null());
        return call.give(first);
    }

    HRESULT address(const DispatchCall& call) { return call.give(std::u16string_view(address_)); }

    HRESULT columns(const DispatchCall& call) {
        return give_range(script_, application_, call, node_, spreadsheet::range_string(range_));
    }

    HRESULT worksheet(const DispatchCall& call) {
        return give_known<ScriptedWorksheet>(call, node_);
    }

    HRESULT clear(const DispatchCall&) {
        if (is_locked()) return kRefused;
        for (int column = range_.first_column; column <= range_.last_column; ++column)
            for (int row = range_.first_row; row <= range_.last_row; ++row)
                node_->cells.erase({row, column});
        return done("Clear");
    }
    HRESULT auto_fit(const DispatchCall&) { return done("AutoFit"); }
    HRESULT unmerge(const DispatchCall&) { return is_locked() ? kRefused : done("UnMerge"); }

    HRESULT auto_filter(const DispatchCall& call) {
        const auto field = integer_in(call.argument(0));
        if (call.argument(0).vt != VT_I4 || *field < 1 ||
            static_cast<std::size_t>(*field) > columns())
            return wrong_arguments("AutoFilter");
        if (!node_->filter) node_->filter = FilterModel{range_, {}};
        if (call.count() == 1) return S_OK;
        FilterModel::Criteria& criteria = node_->filter->columns[*field];
        criteria.first = Variant::copy_of(call.argument(1));
        if (call.count() == 2) return S_OK;
        if (call.count() != 4 || call.argument(2).vt != VT_I4) return wrong_arguments("AutoFilter");
        criteria.combination = call.argument(2).lVal;
        criteria.second = Variant::copy_of(call.argument(3));
        return S_OK;
    }

    std::size_t rows() const {
        return static_cast<std::size_t>(range_.last_row - range_.first_row + 1);
    }
    std::size_t columns() const {
        return static_cast<std::size_t>(range_.last_column - range_.first_column + 1);
    }
    const CellModel* find(int row, int column) const {
        const auto found = node_->cells.find({row, column});
        return found == node_->cells.end() ? nullptr : &found->second;
    }
    template <class Test>
    bool all_cells(Test test) const {
        for (int column = range_.first_column; column <= range_.last_column; ++column)
            for (int row = range_.first_row; row <= range_.last_row; ++row)
                if (!test(find(row, column))) return false;
        return true;
    }
    bool is_locked() const {
        return node_->is_protected &&
               !all_cells([](const CellModel* cell) { return cell != nullptr && !cell->locked; });
    }
    bool holds_long_text(const BlockView& block) const {
        return std::any_of(block.elements(), block.elements() + rows() * columns(),
                           [](const VARIANT& element) {
                               const auto text = text_in(element);
                               return text && text->size() > kLongestText + 1;
                           });
    }
    void enter(int row, int column, const VARIANT& element) {
        CellModel& cell = node_->at(row, column);
        switch (element.vt) {
        case VT_BSTR:
            cell.value = entered(*text_in(element));
            break;
        case VT_R8:
            expect(!std::isnan(element.dblVal), "is given what is not a number");
            [[fallthrough]];
        case VT_EMPTY:
        case VT_DATE:
        case VT_BOOL:
            cell.value = Variant::copy_of(element);
            break;
        default:
            expect(false, "is given a value of an unexpected type");
        }
    }
    HRESULT done(const char* what) {
        node_->done.push_back(std::string(what) + " " +
                              foundation::unicode::to_utf8(spreadsheet::range_string(range_)));
        return S_OK;
    }

    const Range range_;
    const std::u16string address_;
};

class ScriptedFilter : public ScriptedObject<ScriptedFilter> {
  public:
    static constexpr const char* kName = "Filter";
    ScriptedFilter(Script& script, std::shared_ptr<ApplicationModel> application,
                   std::shared_ptr<SheetModel> sheet, LONG field)
        : ScriptedObject(script, std::move(application)), sheet_(std::move(sheet)), field_(field) {}

    static std::span<const DispatchMember<ScriptedFilter>> members() {
        static constexpr DispatchMember<ScriptedFilter> kMembers[] = {
            {u"On", kGet, &ScriptedFilter::on},
            {u"Operator", kGet, &ScriptedFilter::combination},
            {u"Criteria1", kGet, &ScriptedFilter::first},
            {u"Criteria2", kGet, &ScriptedFilter::second},
        };
        return kMembers;
    }

  private:
    const FilterModel::Criteria* find() const {
        const auto found = sheet_->filter->columns.find(field_);
        return found == sheet_->filter->columns.end() ? nullptr : &found->second;
    }
    HRESULT on(const DispatchCall& call) { return call.give(find() != nullptr); }
    HRESULT combination(const DispatchCall& call) {
        return find() == nullptr ? kRefused : call.give(find()->combination);
    }
    HRESULT first(const DispatchCall& call) {
        return find() == nullptr ? kRefused : call.give(Variant::copy_of(find()->first.get()));
    }
    HRESULT second(const DispatchCall& call) {
        if (find() == nullptr || find()->second.type() == VT_EMPTY) return kRefused;
        return call.give(Variant::copy_of(find()->second.get()));
    }

    std::shared_ptr<SheetModel> sheet_;
    const LONG field_;
};

class ScriptedFilters : public NodeObject<ScriptedFilters, SheetModel> {
  public:
    static constexpr const char* kName = "Filters";
    using NodeObject::NodeObject;
    static std::span<const DispatchMember<ScriptedFilters>> members() {
        static constexpr DispatchMember<ScriptedFilters> kMembers[] = {
            {u"Count", kGet, &ScriptedFilters::count},
            {u"Item", kGet, &ScriptedFilters::item},
        };
        return kMembers;
    }

  private:
    HRESULT count(const DispatchCall& call) {
        const Range& area = node_->filter->area;
        return call.give(static_cast<LONG>(area.last_column - area.first_column + 1));
    }
    HRESULT item(const DispatchCall& call) {
        if (call.count() != 1 || call.argument(0).vt != VT_I4) return wrong_arguments("Item");
        return give_new<ScriptedFilter>(call, node_, call.argument(0).lVal);
    }
};

class ScriptedAutoFilter : public NodeObject<ScriptedAutoFilter, SheetModel> {
  public:
    static constexpr const char* kName = "AutoFilter";
    using NodeObject::NodeObject;
    static std::span<const DispatchMember<ScriptedAutoFilter>> members() {
        static constexpr DispatchMember<ScriptedAutoFilter> kMembers[] = {
            {u"Filters", kGet, &ScriptedAutoFilter::filters},
            {u"Range", kGet, &ScriptedAutoFilter::range},
        };
        return kMembers;
    }

  private:
    HRESULT filters(const DispatchCall& call) { return give_new<ScriptedFilters>(call, node_); }
    HRESULT range(const DispatchCall& call) {
        return give_range(script_, application_, call, node_,
                          spreadsheet::range_string(node_->filter->area));
    }
};

class ScriptedName : public NodeObject<ScriptedName, SheetModel> {
  public:
    static constexpr const char* kName = "Name";
    ScriptedName(Script& script, std::shared_ptr<ApplicationModel> application,
                 std::shared_ptr<SheetModel> sheet, std::u16string address)
        : NodeObject(script, std::move(application), std::move(sheet)),
          address_(std::move(address)) {}
    static std::span<const DispatchMember<ScriptedName>> members() {
        static constexpr DispatchMember<ScriptedName> kMembers[] = {
            {u"RefersToRange", kGet, &ScriptedName::refers_to_range},
        };
        return kMembers;
    }

  private:
    HRESULT refers_to_range(const DispatchCall& call) {
        return give_range(script_, application_, call, node_, address_);
    }
    const std::u16string address_;
};

class ScriptedNames : public NodeObject<ScriptedNames, WorkbookModel> {
  public:
    static constexpr const char* kName = "Names";
    ScriptedNames(Script& script, std::shared_ptr<ApplicationModel> application,
                  std::shared_ptr<WorkbookModel> workbook, std::shared_ptr<SheetModel> sheet)
        : NodeObject(script, std::move(application), std::move(workbook)),
          sheet_(std::move(sheet)) {}
    static std::span<const DispatchMember<ScriptedNames>> members() {
        static constexpr DispatchMember<ScriptedNames> kMembers[] = {
            {u"Item", kGet, &ScriptedNames::item},
        };
        return kMembers;
    }

  private:
    HRESULT item(const DispatchCall& call) {
        const auto name = text_in(call.argument(0));
        if (call.count() != 1 || !name) return wrong_arguments("Item");
        if (sheet_) {
            const auto found = sheet_->names.find(std::u16string(*name));
            if (found == sheet_->names.end()) return kRefused;
            return give_new<ScriptedName>(call, sheet_, found->second);
        }
        const auto found = node_->names.find(std::u16string(*name));
        if (found == node_->names.end()) return kRefused;
        for (const auto& sheet : node_->sheets)
            if (sheet->name == found->second.first)
                return give_new<ScriptedName>(call, sheet, found->second.second);
        return kRefused;
    }

    std::shared_ptr<SheetModel> sheet_;
};

/// "$A$1:$B$2" of "A1:B2".
std::u16string absolute(std::u16string_view address) {
    std::u16string out;
    bool in_letters = false;
    for (const char16_t unit : address) {
        const bool is_letter = unit >= u'A' && unit <= u'Z';
        const bool is_part = is_letter || (unit >= u'0' && unit <= u'9');
        const bool begins = is_part && (out.empty() || out.back() == u':' || out.back() == u',' ||
                                        is_letter != in_letters);
        if (begins) out += u'$';
        in_letters = is_letter;
        out += unit;
    }
    return out;
}

} // namespace

HRESULT give_range(Script& script, const std::shared_ptr<ApplicationModel>& application,
                   const DispatchCall& call, const std::shared_ptr<SheetModel>& sheet,
                   std::u16string address) {
    std::erase(address, u'$');
    // Of several areas the first counts.
    const auto range = parse(address.substr(0, address.find(u',')));
    if (!range || sheet->deleted) return kRefused;
    return call.give(static_cast<IDispatch*>(
        script.keep<ScriptedRange>(script, application, sheet, *range, absolute(address))));
}

HRESULT give_filter(Script& script, const std::shared_ptr<ApplicationModel>& application,
                    const DispatchCall& call, const std::shared_ptr<SheetModel>& sheet) {
    return call.give(
        static_cast<IDispatch*>(script.keep<ScriptedAutoFilter>(script, application, sheet)));
}

HRESULT give_names(Script& script, const std::shared_ptr<ApplicationModel>& application,
                   const DispatchCall& call, const std::shared_ptr<WorkbookModel>& workbook,
                   const std::shared_ptr<SheetModel>& sheet) {
    return call.give(
        static_cast<IDispatch*>(script.keep<ScriptedNames>(script, application, workbook, sheet)));
}

} // namespace scripted
