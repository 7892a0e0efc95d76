// SPDX-License-Identifier: Apache-2.0
#include "automation/libreoffice/cell_values.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <com/sun/star/lang/XMultiServiceFactory.hpp>
#include <com/sun/star/sheet/XCellRangeAddressable.hpp>
#include <com/sun/star/sheet/XCellRangeData.hpp>
#include <com/sun/star/sheet/XCellRangeFormula.hpp>
#include <com/sun/star/sheet/XSheetCellCursor.hpp>
#include <com/sun/star/sheet/XSheetCellRangeContainer.hpp>
#include <com/sun/star/sheet/XUsedAreaCursor.hpp>
#include <com/sun/star/table/XCell.hpp>

#include "automation/libreoffice/boolean_formula.h"
#include "automation/libreoffice/office_object.h"
#include "automation/libreoffice/row_bands.h"

namespace office {
namespace {

using foundation::automation::BlockBuilder;
using foundation::automation::BlockView;

using Rows = Sequence<Sequence<Any>>;

/// Errors of the application's cells and the numbers that automation has for them.
struct CellError {
    sal_Int32 error;
    SCODE code;
};
constexpr SCODE error_code(int number) {
    return static_cast<SCODE>(0x800a0000u + static_cast<unsigned>(number));
}
constexpr SCODE kValueError = error_code(2015);
constexpr CellError kErrors[] = {
    {521, error_code(2000)},   // #NULL!
    {532, error_code(2007)},   // #DIV/0!
    {519, kValueError},        // #VALUE!
    {524, error_code(2023)},   // #REF!
    {525, error_code(2029)},   // #NAME?
    {503, error_code(2036)},   // #NUM!
    {32767, error_code(2042)}, // #N/A
};

SCODE code_of_error(sal_Int32 error) {
    const auto found = std::find_if(std::begin(kErrors), std::end(kErrors),
                                    [&](const CellError& entry) { return entry.error == error; });
    return found == std::end(kErrors) ? kValueError : found->code;
}

std::size_t index_in(const CellArea& area, int row, int column) {
    return static_cast<std::size_t>(column - area.first_column) *
               static_cast<std::size_t>(area.rows()) +
           static_cast<std::size_t>(row - area.first_row);
}

/// The part of an area that is inside another; nullopt for none.
std::optional<CellArea> intersection(const CellArea& a, const CellArea& b) {
    const CellArea common{std::max(a.first_row, b.first_row),
                          std::max(a.first_column, b.first_column),
                          std::min(a.last_row, b.last_row), std::min(a.last_column, b.last_column)};
    if (common.rows() <= 0 || common.columns() <= 0) return std::nullopt;
    return common;
}

// --- Reading

class BlockReader {
  public:
    BlockReader(const DocumentCells& cells, VARIANT* elements)
        : cells_(cells), elements_(elements) {}

    void read(const CellArea& filled) {
        for_each_band(filled, [&](const CellArea& band) { read_band(band); });
    }

    /// Turns numbers into the dates and booleans that they are shown as.
    void apply_formats(const CellArea& filled, Dates dates) {
        if (!has_numbers_) return;
        const FormatMap& map = cells_.document->formats_of(cells_);
        for (int column = filled.first_column; column <= filled.last_column; ++column)
            for (const FormatMap::Run& run : map.runs(column)) {
                const NumberFormat& format = cells_.document->formats().find(run.key);
                if (!format.is_boolean && !(format.is_date && dates == Dates::AsDates)) continue;
                for (int row = std::max(run.first_row, filled.first_row);
                     row <= std::min(run.last_row, filled.last_row); ++row)
                    convert(elements_[index_in(cells_.area, row, column)], format.is_boolean);
            }
    }

  private:
    void read_band(const CellArea& band) {
        const auto object = cells_.object(band);
        const Rows rows = as<css::sheet::XCellRangeData>(object)->getDataArray();
        Sequence<Sequence<OUString>> formulas;
        check_shape(rows, band);
        for (int row = band.first_row; row <= band.last_row; ++row) {
            const Sequence<Any>& row_values = rows[row - band.first_row];
            for (int column = band.first_column; column <= band.last_column; ++column) {
                const Any& value = row_values[column - band.first_column];
                VARIANT& out = elements_[index_in(cells_.area, row, column)];
                double number = 0.0;
                OUString text;
                if (value >>= number) {
                    const bool is_boolean =
                        (number == 0.0 || number == 1.0) && cells_.document->loses_booleans() &&
                        has_boolean_result(formula_at(object, formulas, band, row, column));
                    out = (is_boolean ? Variant::boolean(number != 0.0) : Variant::number(number))
                              .release();
                    has_numbers_ = true;
                } else if (!(value >>= text)) {
                    out.vt = VT_ERROR;
                    out.scode =
                        code_of_error(cells_.document->error_of(*cells_.sheet, row, column));
                } else if (!text.isEmpty() ||
                           !formula_at(object, formulas, band, row, column).empty()) {
                    // An empty text is an empty cell, unless a formula has made it.
                    // Text of several lines has a mark in the place of a tab.
                    out = Variant::text(view_of(text.replace(u'\x1', u'\t'))).release();
                }
            }
        }
    }

    template <class Element>
    static void check_shape(const Sequence<Sequence<Element>>& rows, const CellArea& area) {
        const bool fits = rows.getLength() == area.rows() &&
                          std::all_of(rows.begin(), rows.end(), [&](const auto& row) {
                              return row.getLength() == area.columns();
                          });
        if (!fits) throw Refusal{E_UNEXPECTED};
    }

    /// The text of a cell's formula, or of the value that was entered. The formulas of a band are
    /// fetched when the first is asked for.
    static std::u16string_view formula_at(const Reference<css::table::XCellRange>& object,
                                          Sequence<Sequence<OUString>>& formulas,
                                          const CellArea& band, int row, int column) {
        if (!formulas.hasElements()) {
            formulas = as<css::sheet::XCellRangeFormula>(object)->getFormulaArray();
            check_shape(formulas, band);
        }
        const auto& known = formulas;
        return view_of(known[row - band.first_row][column - band.first_column]);
    }

    void convert(VARIANT& element, bool to_boolean) const {
        if (element.vt != VT_R8) return;
        if (to_boolean)
            element = Variant::boolean(element.dblVal != 0.0).release();
        else if (element.dblVal >= 1.0)
            element = Variant::date(element.dblVal + cells_.document->first_day()).release();
    }

    const DocumentCells& cells_;
    VARIANT* const elements_;
    bool has_numbers_ = false;
};

/// The cells of an area that may hold something.
std::optional<CellArea> filled_part(const DocumentCells& cells) {
    if (cells.area.rows() == 1 && cells.area.columns() == 1) return cells.area;
    const auto cursor = as<css::sheet::XUsedAreaCursor>(cells.sheet->cells->createCursor());
    cursor->gotoEndOfUsedArea(false);
    const auto last = as<css::sheet::XCellRangeAddressable>(cursor)->getRangeAddress();
    return intersection(cells.area, {0, 0, last.EndRow, last.EndColumn});
}

// --- Writing

/// What the format of a cell has to show for its value to stay what it is.
enum class Shown { Boolean, Date, Time, DateAndTime, Number };
constexpr std::size_t kShownCount = 5;

FormatKey format_of(NumberFormats& formats, Shown shown) {
    switch (shown) {
    case Shown::Boolean:
        return formats.key_of(u"BOOLEAN");
    case Shown::Date:
        return formats.key_of(u"YYYY-MM-DD");
    case Shown::Time:
        return formats.key_of(u"HH:MM:SS");
    case Shown::DateAndTime:
        return formats.key_of(u"YYYY-MM-DD HH:MM:SS");
    default:
        return formats.key_of(u"General");
    }
}

/// What a value needs that its cell's format does not show.
std::optional<Shown> missing_in(const NumberFormat& format, const VARIANT& value) {
    switch (value.vt) {
    case VT_BOOL:
        if (format.is_boolean) return std::nullopt;
        return Shown::Boolean;
    case VT_DATE:
        if (format.is_date) return std::nullopt;
        return value.date == std::floor(value.date) ? Shown::Date
               : value.date < 1.0                   ? Shown::Time
                                                    : Shown::DateAndTime;
    default:
        if (!format.is_boolean || !foundation::automation::number_in(value)) return std::nullopt;
        return Shown::Number;
    }
}

class BlockWriter {
  public:
    BlockWriter(const DocumentCells& cells, const VARIANT* elements)
        : cells_(cells), elements_(elements) {}

    void write() {
        cells_.document->forget_errors();
        for_each_band(cells_.area, [&](const CellArea& band) { write_band(band); });
        find_formats();
        cells_.sheet->formats.reset();
        for (std::size_t shown = 0; shown < kShownCount; ++shown)
            set_format(static_cast<Shown>(shown), areas_[shown]);
    }

  private:
    Any converted(const VARIANT& value) const {
        // A void value would be an error, an empty text is an empty cell.
        if (value.vt == VT_EMPTY || value.vt == VT_NULL) return Any(OUString());
        if (value.vt == VT_DATE) return Any(value.date - cells_.document->first_day());
        if (value.vt == VT_BOOL) return Any(is_true(value) ? 1.0 : 0.0);
        if (const auto number = foundation::automation::number_in(value)) return Any(*number);
        auto text = text_in(value);
        if (!text) throw Refusal{DISP_E_TYPEMISMATCH};
        if (text->starts_with(u'\'')) text->remove_prefix(1);
        return Any(to_uno(*text));
    }

    void write_band(const CellArea& band) {
        Rows rows(band.rows());
        Sequence<Any>* const row_values = rows.getArray();
        for (int row = band.first_row; row <= band.last_row; ++row) {
            Sequence<Any>& out = row_values[row - band.first_row];
            out.realloc(band.columns());
            Any* const values = out.getArray();
            for (int column = band.first_column; column <= band.last_column; ++column)
                values[column - band.first_column] =
                    converted(elements_[index_in(cells_.area, row, column)]);
        }
        as<css::sheet::XCellRangeData>(cells_.object(band))->setDataArray(rows);
    }

    /// Collects the cells whose format has to change, as runs in their columns.
    void find_formats() {
        const FormatMap& map = cells_.document->formats_of(cells_);
        for (int column = cells_.area.first_column; column <= cells_.area.last_column; ++column)
            for (const FormatMap::Run& run : map.runs(column)) {
                const NumberFormat& format = cells_.document->formats().find(run.key);
                for (int row = std::max(run.first_row, cells_.area.first_row);
                     row <= std::min(run.last_row, cells_.area.last_row); ++row) {
                    const auto shown =
                        missing_in(format, elements_[index_in(cells_.area, row, column)]);
                    if (shown) add(areas_[static_cast<std::size_t>(*shown)], row, column);
                }
            }
    }

    static void add(std::vector<CellArea>& areas, int row, int column) {
        if (!areas.empty() && areas.back().first_column == column &&
            areas.back().last_row + 1 == row)
            areas.back().last_row = row;
        else
            areas.push_back({row, column, row, column});
    }

    void set_format(Shown shown, const std::vector<CellArea>& areas) {
        if (areas.empty()) return;
        std::vector<css::table::CellRangeAddress> addresses;
        for (const CellArea& area : areas)
            addresses.push_back(cells_.document->address_of({cells_.document, cells_.sheet, area}));
        const Reference<css::sheet::XSheetCellRangeContainer> container(
            as<css::lang::XMultiServiceFactory>(cells_.document->object())
                ->createInstance("com.sun.star.sheet.SheetCellRanges"),
            css::uno::UNO_QUERY_THROW);
        container->addRangeAddresses(sequence_of(addresses), false);
        set_property(container, "NumberFormat", format_of(cells_.document->formats(), shown));
    }

    const DocumentCells& cells_;
    const VARIANT* const elements_;
    std::vector<CellArea> areas_[kShownCount];
};

} // namespace

Variant read_values(const DocumentCells& cells, Dates dates) {
    BlockBuilder block(static_cast<std::uint32_t>(cells.area.rows()),
                       static_cast<std::uint32_t>(cells.area.columns()));
    if (const auto filled = filled_part(cells)) {
        BlockReader reader(cells, block.elements());
        reader.read(*filled);
        reader.apply_formats(*filled, dates);
    }
    if (cells.area.rows() > 1 || cells.area.columns() > 1) return std::move(block).take();
    return Variant::copy_of(block.elements()[0]);
}

void write_values(const DocumentCells& cells, const VARIANT& values) {
    if ((values.vt & VT_ARRAY) == 0) {
        if (cells.area.rows() > 1 || cells.area.columns() > 1) throw Refusal{DISP_E_TYPEMISMATCH};
        return BlockWriter(cells, &values).write();
    }
    const BlockView block(values);
    const bool fits = block && block.rows() == static_cast<std::size_t>(cells.area.rows()) &&
                      block.columns() == static_cast<std::size_t>(cells.area.columns());
    if (!fits) throw Refusal{DISP_E_TYPEMISMATCH};
    BlockWriter(cells, block.elements()).write();
}

} // namespace office
