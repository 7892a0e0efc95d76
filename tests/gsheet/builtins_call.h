// SPDX-License-Identifier: Apache-2.0
//
// Calls of the host's functions with arguments made on the spot.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "foundation/core/message_id.h"
#include "foundation/host_array.h"
#include "foundation/unicode.h"
#include "spreadsheet/gsheet/builtins.h"

namespace gsheet::test {

using Builtin = void (*)(int, HostArrayPtr*, int, const HostArray**);
using foundation::CellArray;
using foundation::CharacterArray;
using foundation::DoubleArray;
using foundation::LogicalArray;
using foundation::StringArray;

/// A string array of which some elements are missing.
class StringsWithMissing : public StringArray {
  public:
    StringsWithMissing(std::vector<std::u16string> texts, std::size_t missing)
        : StringArray(1, texts.size(), texts), missing_(missing) {}
    bool is_missing(std::size_t index) const override { return index == missing_; }

  private:
    std::size_t missing_;
};

/// A character vector.
inline HostArrayPtr text(const std::u16string& units) {
    return std::make_unique<CharacterArray>(1, units.size(),
                                            std::vector<char16_t>(units.begin(), units.end()));
}
inline HostArrayPtr strings(std::vector<std::u16string> texts) {
    const std::size_t count = texts.size();
    return std::make_unique<StringArray>(1, count, std::move(texts));
}
inline HostArrayPtr number(double value) {
    return std::make_unique<DoubleArray>(1, 1, std::vector<double>{value});
}
inline HostArrayPtr truth(bool value) {
    return std::make_unique<LogicalArray>(1, 1, std::vector<bool>{value});
}

/// Arguments of one call.
template <class... Array>
std::vector<HostArrayPtr> inputs(Array... arrays) {
    std::vector<HostArrayPtr> list;
    (list.push_back(std::move(arrays)), ...);
    return list;
}

struct CallResult {
    HostArrayPtr output;
    std::string error;    ///< the message identifier, empty when the call succeeded
    std::string argument; ///< of the error

    std::string text() const {
        return output == nullptr
                   ? "no output"
                   : foundation::unicode::to_utf8({output->characters(), output->size()});
    }
};

inline CallResult call(Builtin builtin, const std::vector<HostArrayPtr>& arrays,
                       int output_count = 1) {
    std::vector<const HostArray*> pointers;
    for (const HostArrayPtr& array : arrays)
        pointers.push_back(array.get());
    CallResult result;
    try {
        builtin(output_count, &result.output, static_cast<int>(pointers.size()), pointers.data());
    } catch (const foundation::core::except::IMessageId& error) {
        result.error = error.identifier();
        result.argument = error.argument();
    }
    return result;
}

} // namespace gsheet::test
