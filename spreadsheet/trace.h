// SPDX-License-Identifier: Apache-2.0
//
// The trace record of an operation: `const Trace trace;` as its first line logs the entry into it
// and the way out with source unit, function and line. Not for installation.
#pragma once

#include <optional>
#include <source_location>
#include <string>
#include <string_view>

#include "foundation/log.h"
#include "spreadsheet/book_factory.h"

namespace spreadsheet {

class Trace {
  public:
    /// `unit` names the source unit where it is not the file that calls.
    explicit Trace(std::source_location where = std::source_location::current(),
                   std::string_view unit = {}) {
        auto& logger = getLogger();
        if (!logger.enabled(foundation::log::trace)) return;
        const std::string name = unit.empty() ? unit_of(where.file_name()) : std::string(unit);
        record_.emplace(logger, name.c_str(), where.function_name(),
                        static_cast<int>(where.line()));
    }

  private:
    /// The source's path below this folder, without its extension.
    static std::string unit_of(std::string_view path) {
        constexpr std::string_view kFolder = "spreadsheet/";
        const std::size_t folder = path.rfind(kFolder);
        if (folder != std::string_view::npos) path.remove_prefix(folder + kFolder.size());
        return std::string(path.substr(0, path.rfind('.')));
    }

    std::optional<foundation::log::ScopedTrace> record_;
};

} // namespace spreadsheet
