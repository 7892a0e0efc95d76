// SPDX-License-Identifier: Apache-2.0
//
// A sheet with a used range and defined names, for what works over any sheet. Every operation that
// no test needs throws.
#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "spreadsheet/exception.h"
#include "spreadsheet/sheet.h"

namespace spreadsheet {

class FakeSheet : public ISheet {
  public:
    Range used{};
    std::map<std::u16string, Range> names;
    bool refuse_types = false;

    Range used_range() const override { return used; }
    Range named_range(const std::u16string& name) const override {
        const auto found = names.find(name);
        if (found == names.end()) throw Exception(error_id::named_range_not_found);
        return found->second;
    }
    void cell_types(Range range, cell_type* out) const override {
        if (refuse_types) refuse();
        std::fill_n(out, range.count(), cell_type::number);
    }

    void name(const std::u16string&) override { refuse(); }
    std::u16string name() const override { refuse(); }
    void hidden(sheet::hidden) override { refuse(); }
    sheet::hidden hidden() const override { refuse(); }
    bool is_protected() const override { refuse(); }
    void set_protected(bool) override { refuse(); }
    void clear(Cell) override { refuse(); }
    void clear(Range) override { refuse(); }
    void cell_types(const CellIterator&, cell_type*) const override { refuse(); }
    bool cell_types(Range, cell_type*, const MergedCellColumnRule&,
                    const MergedCellRowRule&) override {
        refuse();
    }
    std::vector<bool> get_merged_cells_vector() const override { refuse(); }
    std::vector<int> get_omit_rows_vector() const override { refuse(); }
    std::vector<int> get_omit_vars_vector() const override { refuse(); }
    void reset_merged_cells_vector() override { refuse(); }
    void reset_omit_vars_bool() override { refuse(); }
    void set_return_empty_vars_bool(const bool) override { refuse(); }
    cell_type typeCheck(int, int) override { refuse(); }
    bool read(Range, unsigned char*, const MergedCellColumnRule&,
              const MergedCellRowRule&) override {
        refuse();
    }
    void read(Range, unsigned char*) const override { refuse(); }
    bool read(Range, bool*, const MergedCellColumnRule&, const MergedCellRowRule&) override {
        refuse();
    }
    void read(Range, bool*) const override { refuse(); }
    bool read(Range, SerialDatenum*, const MergedCellColumnRule&,
              const MergedCellRowRule&) override {
        refuse();
    }
    void read(Range, SerialDatenum*) const override { refuse(); }
    bool read(Range, double*, const MergedCellColumnRule&, const MergedCellRowRule&) override {
        refuse();
    }
    void read(Range, double*) const override { refuse(); }
    bool read(Range, const StringBuilder&, const MergedCellColumnRule&,
              const MergedCellRowRule&) override {
        refuse();
    }
    void read(Range, const StringBuilder&) const override { refuse(); }
    void read(Range, const cell_type*, const CellBuilder&) const override { refuse(); }
    void write(Range, const unsigned char*) override { refuse(); }
    void write(Range, const bool*) override { refuse(); }
    void write(Range, const SerialDatenum*) override { refuse(); }
    void write(Range, const double*) override { refuse(); }
    void write(Range, const StringProvider&) override { refuse(); }
    void write(Range, const cell_type*, const CellProvider&, bool) override { refuse(); }
    void auto_fit_column_widths(Range) override { refuse(); }
    void unmerge(Range) override { refuse(); }
    bool is_range_writeable(Range) override { refuse(); }
    void read_cell_array(CellTypeIterator&, output::CellOutputBuilder&, const bool,
                         const MergedCellColumnRule&, const MergedCellRowRule&) override {
        refuse();
    }
    void read_cell_array(CellTypeIterator&, output::CellOutputBuilder&, const bool) const override {
        refuse();
    }
    bool readDatesAsDoubles(Range, double*, const MergedCellColumnRule&,
                            const MergedCellRowRule&) override {
        refuse();
    }
    void readDatesAsDoubles(Range, double*) const override { refuse(); }
    void prefetch(Range, cell_type*) const override { refuse(); }

  private:
    [[noreturn]] static void refuse() {
        throw Exception(error_id::internal, "not part of the fake");
    }
};

} // namespace spreadsheet
