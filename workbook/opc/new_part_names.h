// SPDX-License-Identifier: Apache-2.0
//
// Names for new parts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "workbook/opc/opc_package.h"

namespace workbook {

class NewPartNames {
  public:
    /// `package` must outlive this.
    explicit NewPartNames(OpcPackage& package) : package_(&package) {}

    /// A name beside that of `model` and like it ("xl/worksheets/sheet1.xml" may give
    /// "xl/worksheets/sheet4.xml"), which neither the package nor another call has. Throws `Error`.
    std::string fresh(std::string_view model);

  private:
    OpcPackage* package_;
    std::unordered_map<std::string, std::uint64_t> last_; ///< by name without number and ending
};

/// How a relationship or a content type writes a part's name: absolute, with percent-escapes.
std::string absolute_target(std::string_view part);

} // namespace workbook
