// SPDX-License-Identifier: Apache-2.0
//
// Which formats are dates is decided once per format, not once per cell.
#include "workbook/cells/cell_formats.h"

#include "workbook/number_format/date_format.h"

namespace workbook {

void CellFormats::define_number_format(std::uint32_t identifier, std::string_view code) {
    own_formats_[identifier] = is_date_format(code);
}

std::size_t CellFormats::add(CellFormat format) {
    formats_.push_back(format);
    is_date_.push_back(shows_date(format.num_format));
    return formats_.size() - 1;
}

void CellFormats::set_num_format(std::size_t index, std::uint32_t identifier) {
    formats_[index].num_format = identifier;
    is_date_[index] = shows_date(identifier);
}

bool CellFormats::shows_date(std::uint32_t identifier) const {
    const auto own = own_formats_.find(identifier);
    return own == own_formats_.end() ? is_builtin_date_format(identifier) : own->second;
}

} // namespace workbook
