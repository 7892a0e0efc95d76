#pragma once
#include <optional>
#include <string>
#include <string_view>
namespace workbook {
inline std::optional<std::string> shared_formula_at(std::string_view, int, int) {
    return {};
}
} // namespace workbook
