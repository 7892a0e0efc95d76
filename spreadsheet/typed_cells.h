// SPDX-License-Identifier: Apache-2.0
//
// Cells of mixed types on their way to and from the host: which callback a type selects. Used by
// every back-end. Not for installation.
#pragma once

#include "spreadsheet/cell_exchange.h"

namespace spreadsheet {

/// Calls the member of `builder` that `wanted` selects with a cell's value. `Cell` converts the
/// cell on demand: `number()`, `date()` (serial, 1900 system), `boolean()` and `text()`.
template <class Cell>
void deliver(const CellBuilder& builder, cell_type wanted, Cell&& cell) {
    switch (wanted) {
    case cell_type::number:
        return builder.number(builder.context, cell.number());
    case cell_type::text:
        return builder.text(builder.context, cell.text());
    case cell_type::date:
        return builder.date(builder.context, cell.date());
    case cell_type::boolean:
        return builder.boolean(builder.context, cell.boolean());
    default:
        builder.text(builder.context, {});
    }
}

/// As above for the builder of a cell array. With `dates_as_numbers` dates arrive as numbers, as
/// `stored_date()` has them.
template <class Cell>
void deliver(output::CellOutputBuilder& builder, cell_type wanted, bool dates_as_numbers,
             Cell&& cell) {
    switch (wanted) {
    case cell_type::number:
        return builder.add_number(cell.number());
    case cell_type::text:
        return builder.add_text(cell.text());
    case cell_type::date:
        return dates_as_numbers ? builder.add_number(cell.stored_date())
                                : builder.add_date(cell.date());
    case cell_type::boolean:
        return builder.add_boolean(cell.boolean());
    default:
        builder.add_empty();
    }
}

/// What `take_cell` passes on for a cell that is written without a value.
struct NoValue {};

/// Takes the provider's element for a cell of `type` and calls `accept` with it: a double, a
/// std::u16string, a `SerialDatenum`, a bool or `NoValue`.
template <class Accept>
void take_cell(const CellProvider& provider, cell_type type, Accept&& accept) {
    switch (type) {
    case cell_type::number:
        return accept(provider.number(provider.context));
    case cell_type::text:
        return accept(provider.text(provider.context));
    case cell_type::date:
        return accept(provider.date(provider.context));
    case cell_type::boolean:
        return accept(provider.boolean(provider.context));
    default:
        provider.skip(provider.context);
        accept(NoValue{});
    }
}

} // namespace spreadsheet
