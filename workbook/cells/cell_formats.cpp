// SPDX-License-Identifier: Apache-2.0
//
// Which formats are dates is decided once per format, not once per cell.
#include "workbook/cells/cell_formats.h"

#include "workbook/number_format/date_format.h"

namespace workbook {

void CellFormats::define_number_format(std::uint32_t identifier, std::string_view code) {
    own_formats_[identifier] = date_style(code);
}

std::size_t CellFormats::add(CellFormat format) {
    formats_.push_back(format);
    styles_.push_back(style_of(format.num_format));
    return formats_.size() - 1;
}

void CellFormats::set_num_format(std::size_t index, std::uint32_t identifier) {
    formats_[index].num_format = identifier;
    styles_[index] = style_of(identifier);
}

std::uint8_t CellFormats::style_of(std::uint32_t identifier) const {
    const auto own = own_formats_.find(identifier);
    return static_cast<std::uint8_t>(own == own_formats_.end() ? builtin_date_style(identifier)
                                                               : own->second);
}

} // namespace workbook
