// SPDX-License-Identifier: Apache-2.0
//
// What a sheet without cells (a chart sheet) answers to every operation on its data. Not for
// installation.
#pragma once

#include <source_location>
#include <string>

#include "spreadsheet/exception.h"
#include "spreadsheet/sheet.h"

namespace spreadsheet {

/// A `Base` (`ISheet` or a class made of it) whose operations on data all throw `refused()`.
template <class Base>
class SheetWithoutCells : public Base {
  public:
    using Base::cell_types;
    void name(const std::u16string&) override { throw this->refused(); }
    std::u16string name() const override { throw this->refused(); }
    void hidden(sheet::hidden) override { throw this->refused(); }
    sheet::hidden hidden() const override { throw this->refused(); }
    bool is_protected() const override { throw this->refused(); }
    void set_protected(bool) override { throw this->refused(); }
    Range used_range() const override { throw this->refused(); }
    void clear(Cell) override { throw this->refused(); }
    void clear(Range) override { throw this->refused(); }
    Range named_range(const std::u16string&) const override { throw this->refused(); }
    void cell_types(Range, cell_type*) const override { throw this->refused(); }

    bool read(Range, unsigned char*, const MergedCellColumnRule&,
              const MergedCellRowRule&) override {
        throw this->refused();
    }
    void read(Range, unsigned char*) const override { throw this->refused(); }
    bool read(Range, bool*, const MergedCellColumnRule&, const MergedCellRowRule&) override {
        throw this->refused();
    }
    void read(Range, bool*) const override { throw this->refused(); }
    bool read(Range, SerialDatenum*, const MergedCellColumnRule&,
              const MergedCellRowRule&) override {
        throw this->refused();
    }
    void read(Range, SerialDatenum*) const override { throw this->refused(); }
    bool read(Range, double*, const MergedCellColumnRule&, const MergedCellRowRule&) override {
        throw this->refused();
    }
    void read(Range, double*) const override { throw this->refused(); }
    bool read(Range, const StringBuilder&, const MergedCellColumnRule&,
              const MergedCellRowRule&) override {
        throw this->refused();
    }
    void read(Range, const StringBuilder&) const override { throw this->refused(); }
    void read(Range, const cell_type*, const CellBuilder&) const override { throw this->refused(); }
    void read_cell_array(CellTypeIterator&, output::CellOutputBuilder&, const bool,
                         const MergedCellColumnRule&, const MergedCellRowRule&) override {
        throw this->refused();
    }
    void read_cell_array(CellTypeIterator&, output::CellOutputBuilder&, const bool) const override {
        throw this->refused();
    }
    bool readDatesAsDoubles(Range, double*, const MergedCellColumnRule&,
                            const MergedCellRowRule&) override {
        throw this->refused();
    }
    void readDatesAsDoubles(Range, double*) const override { throw this->refused(); }

    void write(Range, const unsigned char*) override { throw this->refused(); }
    void write(Range, const bool*) override { throw this->refused(); }
    void write(Range, const SerialDatenum*) override { throw this->refused(); }
    void write(Range, const double*) override { throw this->refused(); }
    void write(Range, const StringProvider&) override { throw this->refused(); }
    void write(Range, const cell_type*, const CellProvider&, bool) override {
        throw this->refused();
    }
    void auto_fit_column_widths(Range) override { throw this->refused(); }
    void unmerge(Range) override { throw this->refused(); }
    bool is_range_writeable(Range) override { throw this->refused(); }

  protected:
    /// `Exception` 31; `where` is the operation that was called.
    virtual Exception
    refused(std::source_location where = std::source_location::current()) const = 0;
};

} // namespace spreadsheet
