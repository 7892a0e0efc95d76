// SPDX-License-Identifier: Apache-2.0
//
// The package that a new book begins as: workbook without sheets, theme, styles, document
// properties. It exists in memory only; everything else that a new book gets is a change to it.
#pragma once

#include <chrono>
#include <memory>
#include <span>
#include <string_view>

#include "workbook/opc/opc_package.h"

namespace workbook {

/// `now` becomes the time of creation.
std::unique_ptr<OpcPackage> make_blank_package(std::chrono::system_clock::time_point now);

/// The worksheet part of an empty sheet.
std::string_view blank_worksheet_part();

/// A part of the package whose text is always the same.
struct BlankPart {
    std::string_view name, text;
};
std::span<const BlankPart> blank_parts();

} // namespace workbook
