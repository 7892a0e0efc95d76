// SPDX-License-Identifier: Apache-2.0
//
// What a sheet of a back-end without merged-cell rules answers to every operation with them. Not
// for installation.
#pragma once

#include <source_location>

#include "spreadsheet/exception.h"
#include "spreadsheet/sheet.h"

namespace spreadsheet {

class SheetWithoutRules : public ISheet {
  public:
    using ISheet::cell_types;
    using ISheet::read;
    using ISheet::read_cell_array;
    using ISheet::readDatesAsDoubles;

    bool cell_types(Range, cell_type*, const MergedCellColumnRule&,
                    const MergedCellRowRule&) final {
        throw refused_rules();
    }
    bool read(Range, unsigned char*, const MergedCellColumnRule&, const MergedCellRowRule&) final {
        throw refused_rules();
    }
    bool read(Range, bool*, const MergedCellColumnRule&, const MergedCellRowRule&) final {
        throw refused_rules();
    }
    bool read(Range, SerialDatenum*, const MergedCellColumnRule&, const MergedCellRowRule&) final {
        throw refused_rules();
    }
    bool read(Range, double*, const MergedCellColumnRule&, const MergedCellRowRule&) final {
        throw refused_rules();
    }
    bool read(Range, const StringBuilder&, const MergedCellColumnRule&,
              const MergedCellRowRule&) final {
        throw refused_rules();
    }
    void read_cell_array(CellTypeIterator&, output::CellOutputBuilder&, const bool,
                         const MergedCellColumnRule&, const MergedCellRowRule&) final {
        throw refused_rules();
    }
    bool readDatesAsDoubles(Range, double*, const MergedCellColumnRule&,
                            const MergedCellRowRule&) final {
        throw refused_rules();
    }

  private:
    /// The back-end's exception, logged; `where` is the operation that was called.
    virtual Exception
    refused_rules(std::source_location where = std::source_location::current()) const = 0;
};

} // namespace spreadsheet
