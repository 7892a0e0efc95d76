// SPDX-License-Identifier: Apache-2.0
//
// Deflates a stream of bytes (RFC 1951). ISA-L is the fast engine, zlib the one that is everywhere.
#pragma once

#include <cstddef>
#include <memory>

#include "workbook/io/byte_sink.h"
#include "workbook/zip/inflate.h"

namespace workbook {

class Packer {
  public:
    virtual ~Packer() = default;

    /// Packs the next bytes; what is ready goes to `out`.
    virtual void pack(const char* bytes, std::size_t count, ByteSink& out) = 0;
    /// Ends the stream and sends the rest to `out`; the packer is then ready for another stream.
    virtual void finish(ByteSink& out) = 0;
};

/// An engine that is not built in is replaced by zlib.
std::unique_ptr<Packer> make_packer(InflateEngine engine = kBestInflateEngine);

} // namespace workbook
