// SPDX-License-Identifier: Apache-2.0
//
// Workbook streams for tests, record by record. A stream without a container is a file that loads.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "foundation/files.h"
#include "workbook/io/little_endian.h"

namespace workbook::test {

/// Bytes of fields, one after another.
class Bytes {
  public:
    Bytes& u8(unsigned value) {
        bytes_ += static_cast<char>(value);
        return *this;
    }
    Bytes& u16(unsigned value) {
        append_u16(bytes_, static_cast<std::uint16_t>(value));
        return *this;
    }
    Bytes& u32(std::uint32_t value) {
        append_u32(bytes_, value);
        return *this;
    }
    Bytes& f64(double value) {
        std::uint64_t bits;
        std::memcpy(&bits, &value, sizeof bits);
        append_u64(bytes_, bits);
        return *this;
    }
    Bytes& text(std::string_view bytes) {
        bytes_.append(bytes);
        return *this;
    }
    Bytes& wide(std::u16string_view units) {
        for (const char16_t unit : units)
            u16(unit);
        return *this;
    }
    const std::string& str() const { return bytes_; }

  private:
    std::string bytes_;
};

/// Row, column and format: how cell records begin from BIFF3 on.
inline Bytes cell(int row, int column, int format = 0) {
    return Bytes()
        .u16(static_cast<unsigned>(row))
        .u16(static_cast<unsigned>(column))
        .u16(static_cast<unsigned>(format));
}

class Stream {
  public:
    Stream& record(unsigned id, const Bytes& data) { return record(id, data.str()); }
    Stream& record(unsigned id, std::string_view data = {}) {
        append_u16(bytes_, static_cast<std::uint16_t>(id));
        append_u16(bytes_, static_cast<std::uint16_t>(data.size()));
        bytes_.append(data);
        return *this;
    }
    Stream& bof8(unsigned kind) {
        return record(0x0809, Bytes().u16(0x0600).u16(kind).u32(0).u32(0).u32(0));
    }
    Stream& eof() { return record(0x000A); }
    Stream& append(const Stream& other) {
        bytes_ += other.bytes_;
        return *this;
    }
    std::size_t size() const { return bytes_.size(); }
    const std::string& str() const { return bytes_; }
    std::unique_ptr<foundation::files::RandomAccessFile> file() const {
        return foundation::files::memory_file(bytes_);
    }

  private:
    std::string bytes_;
};

/// The BOUNDSHEET record of a BIFF8 sheet.
inline Bytes bound_sheet(std::size_t position, unsigned state, unsigned type,
                         std::string_view name) {
    return Bytes()
        .u32(static_cast<std::uint32_t>(position))
        .u8(state)
        .u8(type)
        .u8(static_cast<unsigned>(name.size()))
        .u8(0)
        .text(name);
}

/// A BIFF8 book with one sheet "Data": `globals` are records of its globals, `sheet` of the sheet.
inline Stream book8(const Stream& globals, const Stream& sheet) {
    const auto with_position = [&](std::size_t position) {
        return Stream()
            .bof8(0x05)
            .record(0x0085, bound_sheet(position, 0, 0, "Data"))
            .append(globals)
            .eof();
    };
    const std::size_t position = with_position(0).size();
    return with_position(position).append(Stream().bof8(0x10).append(sheet).eof());
}

} // namespace workbook::test
