// SPDX-License-Identifier: Apache-2.0
//
// The reading side of a worksheet: what it says about itself, areas, types and values of cells.
#include <algorithm>
#include <utility>

#include "spreadsheet/cell_iterator.h"
#include "spreadsheet/com/com_sheet.h"
#include "spreadsheet/com/date_cells.h"
#include "spreadsheet/com/excel_application.h"
#include "spreadsheet/com/range_values.h"
#include "spreadsheet/com/selected_blocks.h"
#include "spreadsheet/limits.h"
#include "spreadsheet/range_walk.h"
#include "spreadsheet/typed_cells.h"

namespace spreadsheet {
namespace {

using com::get;
using com::Variant;
using foundation::automation::integer_in;
using foundation::automation::is_true;
using foundation::automation::text_in;

constexpr std::string_view kTag = "[COM SHEET MSG]:";

/// The application's numbers of a sheet's visibility, and one that it does not use.
constexpr LONG kVisible = -1;
constexpr LONG kHidden = 0;
constexpr LONG kVeryHidden = 2;
constexpr LONG kNoState = 1;

constexpr Range kEmptyRange{0, 0, -1, -1};

std::size_t cell_count(const Range& range) {
    return static_cast<std::size_t>(range.count());
}

} // namespace

COMSheet::COMSheet(std::shared_ptr<excel_application> application, std::shared_ptr<IDispatch> sheet,
                   book::format format)
    : application_(std::move(application)), sheet_(std::move(sheet)), format_(format) {}

std::u16string COMSheet::name() const {
    const com::CallResult result = get(object(), OLESTR("Name"));
    const auto text = text_in(result.value.get());
    return result && text ? std::u16string(*text) : std::u16string();
}

sheet::hidden COMSheet::hidden() const {
    constexpr error_id kNotKnown = error_id::hidden_state_not_set;
    const Variant visible = get(object(), OLESTR("Visible")).or_fail(kTag, kNotKnown);
    switch (integer_in(visible.get()).value_or(kNoState)) {
    case kVisible:
        return sheet::hidden::visible;
    case kHidden:
        return sheet::hidden::hidden;
    case kVeryHidden:
        return sheet::hidden::very_hidden;
    default:
        com::fail_call(kTag, kNotKnown, OLESTR("Visible"), S_OK);
    }
}

bool COMSheet::is_protected() const {
    return false;
}

// --- Areas

void COMSheet::check_limits(const Range& range) const {
    if (is_empty(range) || range.first_row < 0 || range.first_column < 0 ||
        !is_within_limits(range, format_))
        com::fail(kTag, error_id::range_not_parsed,
                  {FailureKind::Limit, "The range is empty or beyond the limits of the format."});
}

std::shared_ptr<IDispatch> COMSheet::range_object(const Range& range) const {
    check_limits(range);
    const Variant address = Variant::text(range_string(range));
    return get(object(), OLESTR("Range"), {address.get()})
        .object_or_fail(kTag, error_id::range_not_parsed);
}

std::optional<Range> COMSheet::area_of(IDispatch* range_object) const {
    const com::CallResult result = get(range_object, OLESTR("Address"));
    const auto address = text_in(result.value.get());
    if (!result || !address) return std::nullopt;
    std::u16string text(*address);
    std::erase(text, u'$');
    try {
        return parse_range(text.data(), text.size(), format_, kEmptyRange, true, nullptr, nullptr);
    } catch (const Exception&) {
        return std::nullopt;
    }
}

Range COMSheet::used_range() const {
    constexpr error_id kNotARange = error_id::range_not_parsed;
    const auto used = get(object(), OLESTR("UsedRange")).object_or_fail(kTag, kNotARange);
    const std::optional<Range> area = area_of(used.get());
    if (!area) com::fail_call(kTag, kNotARange, OLESTR("Address"), S_OK);
    if (*area != Range{}) return *area;
    cell_type first = cell_type::empty;
    cell_types(*area, &first);
    return first == cell_type::empty ? kEmptyRange : *area;
}

std::shared_ptr<IDispatch> COMSheet::find_name(IDispatch* owner, const std::u16string& name) const {
    const Variant key = Variant::text(name);
    const auto names = get(owner, OLESTR("Names")).object();
    const auto entry = get(names.get(), OLESTR("Item"), {key.get()}).object();
    return get(entry.get(), OLESTR("RefersToRange")).object();
}

Range COMSheet::named_range(const std::u16string& name) const {
    std::shared_ptr<IDispatch> cells = find_name(object(), name);
    if (!cells) {
        const auto workbook = get(object(), OLESTR("Parent")).object();
        cells = find_name(workbook.get(), name);
    }
    const auto home = get(cells.get(), OLESTR("Worksheet")).object();
    const com::CallResult home_name = get(home.get(), OLESTR("Name"));
    const auto text = text_in(home_name.value.get());
    const bool is_here = text && *text == this->name();
    const std::optional<Range> area = is_here ? area_of(cells.get()) : std::nullopt;
    if (!area)
        com::fail(kTag, error_id::named_range_not_found,
                  {FailureKind::Missing, "The sheet has no cells of that name."});
    return *area;
}

// --- Types

RangeValues COMSheet::values_of(const Range& range, const OLECHAR* member) const {
    // What `cell_types` has left serves one read. The cells that it refers to may have gone.
    if (kept_range_) {
        const KeptRange kept = std::move(*kept_range_);
        kept_range_.reset();
        if (kept.range == range)
            if (com::CallResult result = get(kept.object.get(), member)) {
                RangeValues values(std::move(result.value), range);
                if (values) return values;
            }
    }
    const auto object = range_object(range);
    RangeValues values(get(object.get(), member).or_fail(kTag, error_id::internal), range);
    if (!values) com::fail_call(kTag, error_id::internal, member, S_OK);
    return values;
}

void COMSheet::cell_types(Range range, cell_type* out) const {
    if (is_empty(range)) return;
    kept_range_.reset();
    const auto object = range_object(range);
    const RangeValues values(get(object.get(), OLESTR("Value")).or_fail(kTag, error_id::internal),
                             range);
    if (!values) com::fail_call(kTag, error_id::internal, OLESTR("Value"), S_OK);
    const Variant format =
        get(object.get(), OLESTR("NumberFormat")).or_fail(kTag, error_id::internal);
    std::transform(values.cells(), values.cells() + cell_count(range), out, type_of);
    if (has_date_candidates(values.cells(), cell_count(range)))
        mark_dates(application_->date_formats(), sheet_.get(), range, format.get(), values.cells(),
                   out);
    kept_range_ = KeptRange{range, object};
}

void COMSheet::cell_types(const CellIterator& cells, cell_type* out) const {
    const SelectedBlocks blocks(cells);
    std::vector<std::vector<cell_type>> types;
    for (const Range& block : blocks.ranges()) {
        types.emplace_back(cell_count(block));
        cell_types(block, types.back().data());
    }
    for (const CellIterator::Indices at : cells) {
        const SelectedBlocks::Place place = blocks.find(at.row, at.column);
        *out++ = types[place.block][place.cell];
    }
}

// --- Values

double COMSheet::date_offset_days() const {
    const auto workbook = get(object(), OLESTR("Parent")).object();
    const com::CallResult date_1904 = get(workbook.get(), OLESTR("Date1904"));
    return date_1904 && is_true(date_1904.value.get()) ? kDateSystemOffsetDays : 0.0;
}

/// Calls `use` with each cell of a range that is not empty.
template <class Use>
void COMSheet::read_cells(const Range& range, const OLECHAR* member, Use use) const {
    if (is_empty(range)) return;
    const RangeValues values = values_of(range, member);
    ApplicationCell cell([this] { return date_offset_days(); });
    for (std::size_t index = 0; index < cell_count(range); ++index)
        use(index, cell.select(values.cells()[index]));
}

void COMSheet::read(Range range, double* out) const {
    read_cells(range, OLESTR("Value2"),
               [&](std::size_t index, ApplicationCell& cell) { out[index] = cell.number(); });
}

void COMSheet::readDatesAsDoubles(Range range, double* out) const {
    read(range, out);
}

void COMSheet::read(Range range, SerialDatenum* out) const {
    read_cells(range, OLESTR("Value"),
               [&](std::size_t index, ApplicationCell& cell) { out[index] = {cell.date()}; });
}

void COMSheet::read(Range range, bool* out) const {
    read_cells(range, OLESTR("Value"),
               [&](std::size_t index, ApplicationCell& cell) { out[index] = cell.boolean(); });
}

void COMSheet::read(Range range, unsigned char* out) const {
    read_cells(range, OLESTR("Value"), [&](std::size_t index, ApplicationCell& cell) {
        out[index] = cell.boolean() ? 1 : 0;
    });
}

void COMSheet::read(Range range, const StringBuilder& builder) const {
    read_cells(range, OLESTR("Value"), [&](std::size_t, ApplicationCell& cell) {
        builder.append(builder.context, cell.text());
    });
}

void COMSheet::read(Range range, const cell_type* types, const CellBuilder& builder) const {
    read_cells(range, OLESTR("Value"), [&](std::size_t index, ApplicationCell& cell) {
        deliver(builder, types[index], cell);
    });
}

void COMSheet::read_cell_array(CellTypeIterator& cells, output::CellOutputBuilder& builder,
                               const bool dates_as_numbers) const {
    const SelectedBlocks blocks(cells.row_blocks(), cells.column_indices());
    std::vector<RangeValues> values;
    for (const Range& block : blocks.ranges())
        values.push_back(values_of(block, OLESTR("Value")));
    ApplicationCell cell([this] { return date_offset_days(); });
    builder.begin(cells.rows(), cells.columns());
    for (cells.rewind(); !cells.at_end(); ++cells) {
        const SelectedBlocks::Place place = blocks.find((*cells).row, (*cells).column);
        deliver(builder, cells.type(), dates_as_numbers,
                cell.select(values[place.block].cells()[place.cell]));
    }
}

} // namespace spreadsheet
