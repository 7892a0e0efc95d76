// SPDX-License-Identifier: Apache-2.0
//
// Collects what is written.
#pragma once

#include <string>

#include "workbook/io/byte_sink.h"

namespace workbook::test {

class StringSink final : public ByteSink {
  public:
    using ByteSink::append;
    void append(const char* bytes, std::size_t count) override { text.append(bytes, count); }
    std::string text;
};

} // namespace workbook::test
