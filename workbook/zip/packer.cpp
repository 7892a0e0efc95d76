// SPDX-License-Identifier: Apache-2.0
//
// Both deflate engines, fed block by block.
#include "workbook/zip/packer.h"

#include <algorithm>
#include <new>

#include <zlib.h>
#ifdef ZX_HAVE_ISAL
#include <isa-l/igzip_lib.h>

#include "workbook/zip/vector_work.h"
#endif

namespace workbook {

namespace {

constexpr std::size_t kOutputBytes = 64u << 10;
/// The engines count in 32 bits.
constexpr std::size_t kMaxStepBytes = std::size_t{1} << 30;

// Neither engine writes to its input; ISA-L and zlib only lack the const.
unsigned char* as_octets(const char* bytes) {
    return reinterpret_cast<unsigned char*>(const_cast<char*>(bytes));
}

#ifdef ZX_HAVE_ISAL
/// Level 3 would save 2 percent and take almost twice as long.
constexpr std::uint32_t kIsalLevel = 1;
constexpr std::size_t kIsalLevelBytes = ISAL_DEF_LVL1_DEFAULT;
/// How far back matches are sought, as a power of two. What a cell repeats is some cells or a
/// row before it; within the usual 32 KiB there are more matches of few bytes at distances that
/// take many bits. Worksheets of numbers become 6 percent smaller by this, a fifth faster.
constexpr std::uint16_t kIsalWindowBits = 12;

/// Deflates what `stream` describes. On Windows a function keeps xmm6 to xmm15 for its caller, but
/// the encoders of ISA-L 2.30 for AVX2 and AVX-512 save them 8 bytes apart, so that each overwrites
/// half of the one before. Naming the registers as clobbered makes this function save them. It is
/// not inlined, so no value of another function is in them during the call.
[[gnu::noinline]] void deflate_step(isal_zstream& stream) {
    isal_deflate(&stream); // fails only for settings that it does not know
#ifdef _WIN32
    __asm__ volatile("" ::
                         : "xmm6", "xmm7", "xmm8", "xmm9", "xmm10", "xmm11", "xmm12", "xmm13",
                           "xmm14", "xmm15");
#endif
    end_vector_work();
}

class IsalPacker final : public Packer {
  public:
    IsalPacker() { begin(); }

    void pack(const char* bytes, std::size_t count, ByteSink& out) override {
        while (count > 0) {
            const std::size_t step = std::min(count, kMaxStepBytes);
            stream_.next_in = as_octets(bytes);
            stream_.avail_in = static_cast<std::uint32_t>(step);
            do
                advance(out);
            while (stream_.avail_in > 0 || stream_.avail_out == 0);
            bytes += step;
            count -= step;
        }
    }

    void finish(ByteSink& out) override {
        stream_.avail_in = 0;
        stream_.end_of_stream = 1;
        do
            advance(out);
        while (stream_.internal_state.state != ZSTATE_END);
        begin();
    }

  private:
    void begin() {
        isal_deflate_init(&stream_);
        stream_.level = kIsalLevel;
        stream_.hist_bits = kIsalWindowBits;
        stream_.level_buf = level_buffer_.get();
        stream_.level_buf_size = kIsalLevelBytes;
        stream_.gzip_flag = IGZIP_DEFLATE;
    }

    void advance(ByteSink& out) {
        stream_.next_out = output_.get();
        stream_.avail_out = kOutputBytes;
        deflate_step(stream_);
        out.append(reinterpret_cast<const char*>(output_.get()), kOutputBytes - stream_.avail_out);
    }

    isal_zstream stream_;
    std::unique_ptr<unsigned char[]> level_buffer_{new unsigned char[kIsalLevelBytes]};
    std::unique_ptr<unsigned char[]> output_{new unsigned char[kOutputBytes]};
};
#endif

class ZlibPacker final : public Packer {
  public:
    ZlibPacker() {
        constexpr int kMemoryLevel = 8;
        // Level 3 is the last one with the fast match finder.
        if (deflateInit2(&stream_, 3, Z_DEFLATED, -MAX_WBITS, kMemoryLevel, Z_DEFAULT_STRATEGY) !=
            Z_OK)
            throw std::bad_alloc();
    }
    ~ZlibPacker() override { deflateEnd(&stream_); }
    ZlibPacker(const ZlibPacker&) = delete;
    ZlibPacker& operator=(const ZlibPacker&) = delete;

    void pack(const char* bytes, std::size_t count, ByteSink& out) override {
        while (count > 0) {
            const std::size_t step = std::min(count, kMaxStepBytes);
            stream_.next_in = as_octets(bytes);
            stream_.avail_in = static_cast<uInt>(step);
            do
                advance(Z_NO_FLUSH, out);
            while (stream_.avail_in > 0 || stream_.avail_out == 0);
            bytes += step;
            count -= step;
        }
    }

    void finish(ByteSink& out) override {
        stream_.avail_in = 0;
        while (advance(Z_FINISH, out) == Z_OK) {
        }
        deflateReset(&stream_);
    }

  private:
    int advance(int flush, ByteSink& out) {
        stream_.next_out = output_.get();
        stream_.avail_out = kOutputBytes;
        const int result = deflate(&stream_, flush);
        out.append(reinterpret_cast<const char*>(output_.get()), kOutputBytes - stream_.avail_out);
        return result;
    }

    z_stream stream_{};
    std::unique_ptr<unsigned char[]> output_{new unsigned char[kOutputBytes]};
};

} // namespace

std::unique_ptr<Packer> make_packer([[maybe_unused]] InflateEngine engine) {
#ifdef ZX_HAVE_ISAL
    if (engine == InflateEngine::Isal)
        return std::unique_ptr<Packer>(new IsalPacker); // make_unique would clear 80 KB first
#endif
    return std::make_unique<ZlibPacker>();
}

} // namespace workbook
