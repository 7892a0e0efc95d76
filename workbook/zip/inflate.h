// SPDX-License-Identifier: Apache-2.0
//
// Unpacks the data of one container entry as a stream: stored (method 0) and deflated (method 8).
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "foundation/files.h"

namespace workbook {

/// Who inflates. ISA-L is the fast one, zlib the one that is everywhere.
enum class InflateEngine { Isal, Zlib };

#ifdef ZX_HAVE_ISAL
inline constexpr InflateEngine kBestInflateEngine = InflateEngine::Isal;
#else
inline constexpr InflateEngine kBestInflateEngine = InflateEngine::Zlib;
#endif

/// A stretch of a file, read front to back in blocks.
class PackedBytes {
  public:
    struct Block {
        const char* bytes;
        std::size_t count; ///< 0 at the end of the stretch or of the file
    };

    /// `file` must outlive this.
    PackedBytes(foundation::files::RandomAccessFile& file, std::uint64_t position,
                std::uint64_t count)
        : file_(file), position_(position), left_(count) {}

    /// The next block; valid until the next call.
    Block next();

    /// Reads straight into `buffer`; 0 as for `next`.
    std::size_t read(char* buffer, std::size_t capacity);

  private:
    foundation::files::RandomAccessFile& file_;
    std::uint64_t position_;
    std::uint64_t left_;
    std::unique_ptr<char[]> block_;
};

class Unpacker {
  public:
    enum class State { More, Finished, Broken };
    struct Step {
        std::size_t produced;
        State state;
    };

    virtual ~Unpacker() = default;

    /// Writes up to `capacity` bytes to `buffer`; fewer only when the data are finished or broken.
    virtual Step unpack(PackedBytes& packed, char* buffer, std::size_t capacity) = 0;
};

inline constexpr std::uint16_t kMethodStored = 0;
inline constexpr std::uint16_t kMethodDeflated = 8;

/// Null for a method other than the two above. An engine that is not built in is replaced by zlib.
std::unique_ptr<Unpacker> make_unpacker(std::uint16_t method, InflateEngine engine);

/// CRC-32 of ZIP containers, continued from `crc` (0 at the start).
std::uint32_t update_crc32(InflateEngine engine, std::uint32_t crc, const char* bytes,
                           std::size_t count);

} // namespace workbook
