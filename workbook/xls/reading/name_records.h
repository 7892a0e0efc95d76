// SPDX-License-Identifier: Apache-2.0
//
// Defined names that refer to one rectangle of cells: NAME records (MS-XLS 2.4.150), and the
// references to sheets that they use (2.4.105 ExternSheet, 2.4.271 SupBook).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbook/cells/rectangle.h"
#include "workbook/xls/biff_version.h"
#include "workbook/xls/reading/record_strings.h"

namespace workbook {

struct XlsName {
    std::u16string name;
    std::optional<int> scope;       ///< index of the sheet whose name it is; nullopt for the book's
    std::optional<int> sheet;       ///< index of the sheet that it refers to, if it says so
    std::optional<Rectangle> cells; ///< nullopt for anything but one rectangle of this book
    std::optional<std::uint16_t> link; ///< BIFF8: number of the reference that gives `sheet`
};

class NameRecords {
  public:
    explicit NameRecords(BiffVersion version) : version_(version) {}

    /// Consumes `records.record()` when it is about names; false for any other record. Names that
    /// are cut are empty: only the look-up of a name needs them.
    bool read(RecordStream& records, RecordStrings& strings);
    /// Once all records were read.
    void finish();

    /// The cells of sheet `sheet` that `name` refers to: first a name of this sheet, then one of
    /// the book.
    std::optional<Rectangle> find(std::u16string_view name, int sheet) const;
    const std::vector<XlsName>& names() const { return names_; }

  private:
    struct SheetSpan {
        std::uint16_t book, first, last;
    };

    void read_name(RecordStream& records, RecordStrings& strings);
    void read_links(RecordStream& records);
    void parse_formula(std::string_view tokens, XlsName& name) const;
    const XlsName* find(std::u16string_view name, std::optional<int> scope) const;

    const BiffVersion version_;
    std::vector<XlsName> names_;
    std::vector<SheetSpan> links_;
    std::vector<bool> is_own_book_; ///< by SUPBOOK record
};

} // namespace workbook
