// SPDX-License-Identifier: Apache-2.0
//
// Columns give their vectors to arrays without a copy: a capsule owns the column.
#include "columns.h"

#include <memory>
#include <string>

namespace zxpython {
namespace {

namespace py = pybind11;
using spreadsheet::Column;

template <class Stored, class Value>
void give(py::dict& parts, const char* name, const std::vector<Value>& values,
          const py::capsule& owner) {
    static_assert(sizeof(Stored) == sizeof(Value));
    if (values.empty()) return;
    parts[name] = py::array_t<Stored>(static_cast<py::ssize_t>(values.size()),
                                      reinterpret_cast<const Stored*>(values.data()), owner);
}

template <class Stored, class Value>
void take(const py::dict& parts, const char* name, std::vector<Value>& values) {
    static_assert(sizeof(Stored) == sizeof(Value));
    if (!parts.contains(name)) return;
    const auto array = py::cast<py::array_t<Stored, py::array::c_style>>(parts[name]);
    const auto* first = reinterpret_cast<const Value*>(array.data());
    values.assign(first, first + array.size());
}

/// Offsets from outside must ascend and stay within the bytes.
void check_strings(const spreadsheet::StringList& strings) {
    bool is_valid = !strings.offsets.empty() && strings.offsets.front() == 0;
    for (std::size_t i = 1; is_valid && i < strings.offsets.size(); ++i)
        is_valid = strings.offsets[i] >= strings.offsets[i - 1];
    if (!is_valid || static_cast<std::size_t>(strings.offsets.back()) != strings.bytes.size())
        throw py::value_error("The offsets of a column's strings do not fit its bytes.");
}

} // namespace

py::dict to_python(Column column) {
    auto kept = std::make_unique<Column>(std::move(column));
    const Column& from = *kept;
    const py::capsule owner(kept.get(), [](void* owned) { delete static_cast<Column*>(owned); });
    kept.release();
    py::dict parts;
    parts["name"] = py::str(from.name);
    parts["type"] = static_cast<int>(from.type);
    parts["null_count"] = from.null_count;
    give<std::uint8_t>(parts, "validity", from.validity, owner);
    give<double>(parts, "numbers", from.numbers, owner);
    give<bool>(parts, "booleans", from.booleans, owner);
    give<std::int64_t>(parts, "microseconds", from.microseconds, owner);
    give<std::int32_t>(parts, "codes", from.codes, owner);
    give<std::uint8_t>(parts, "kinds", from.kinds, owner);
    if (!from.codes.empty()) {
        give<std::int32_t>(parts, "offsets", from.strings.offsets, owner);
        parts["bytes"] = py::array_t<std::uint8_t>(
            static_cast<py::ssize_t>(from.strings.bytes.size()),
            reinterpret_cast<const std::uint8_t*>(from.strings.bytes.data()), owner);
    }
    return parts;
}

Column from_python(const py::dict& parts) {
    Column column;
    column.name = py::cast<std::string>(parts["name"]);
    const int type = py::cast<int>(parts["type"]);
    if (type < 0 || type > static_cast<int>(spreadsheet::ColumnType::mixed))
        throw py::value_error("There is no such type of column.");
    column.type = static_cast<spreadsheet::ColumnType>(type);
    column.null_count = py::cast<std::size_t>(parts["null_count"]);
    take<std::uint8_t>(parts, "validity", column.validity);
    take<double>(parts, "numbers", column.numbers);
    take<std::uint8_t>(parts, "booleans", column.booleans);
    take<std::int64_t>(parts, "microseconds", column.microseconds);
    take<std::int32_t>(parts, "codes", column.codes);
    take<std::uint8_t>(parts, "kinds", column.kinds);
    if (parts.contains("offsets")) {
        take<std::int32_t>(parts, "offsets", column.strings.offsets);
        const auto bytes = py::cast<py::array_t<std::uint8_t, py::array::c_style>>(parts["bytes"]);
        column.strings.bytes.assign(reinterpret_cast<const char*>(bytes.data()),
                                    static_cast<std::size_t>(bytes.size()));
        check_strings(column.strings);
    }
    return column;
}

} // namespace zxpython
