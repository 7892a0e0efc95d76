// SPDX-License-Identifier: Apache-2.0
//
// Both inflate engines write straight into the caller's buffer and keep their own 32 KiB of
// history.
#include "workbook/zip/inflate.h"

#include <algorithm>
#include <new>

#include <zlib.h>
#ifdef ZX_HAVE_ISAL
#include <isa-l/crc.h>
#include <isa-l/igzip_lib.h>

#include "workbook/zip/vector_work.h"
#endif

namespace workbook {

namespace {

constexpr std::size_t kPackedBlockBytes = 128u << 10;
/// Larger requests gain nothing, and the engines count in 32 bits.
constexpr std::size_t kMaxStepBytes = 64u << 10;

unsigned char* as_octets(char* bytes) {
    return reinterpret_cast<unsigned char*>(bytes);
}
// Neither engine writes to its input; ISA-L and zlib only lack the const.
unsigned char* as_octets(const char* bytes) {
    return as_octets(const_cast<char*>(bytes));
}

class StoredUnpacker final : public Unpacker {
  public:
    Step unpack(PackedBytes& packed, char* buffer, std::size_t capacity) override {
        const std::size_t got = packed.read(buffer, capacity);
        return {got, got == 0 ? State::Finished : State::More};
    }
};

#ifdef ZX_HAVE_ISAL
class IsalUnpacker final : public Unpacker {
  public:
    IsalUnpacker() {
        isal_inflate_init(&state_);
        state_.avail_in = 0;
        state_.crc_flag = ISAL_DEFLATE;
    }

    Step unpack(PackedBytes& packed, char* buffer, std::size_t capacity) override {
        const auto wanted = static_cast<std::uint32_t>(std::min(capacity, kMaxStepBytes));
        state_.next_out = as_octets(buffer);
        state_.avail_out = wanted;
        State result = State::More;
        while (state_.avail_out > 0 && result == State::More)
            result = advance(packed);
        return {wanted - state_.avail_out, result};
    }

  private:
    State advance(PackedBytes& packed) {
        bool at_end = false;
        if (state_.avail_in == 0) {
            const PackedBytes::Block block = packed.next();
            state_.next_in = as_octets(block.bytes);
            state_.avail_in = static_cast<std::uint32_t>(block.count);
            at_end = block.count == 0;
        }
        const std::uint32_t room = state_.avail_out;
        if (isal_inflate(&state_) < 0) return State::Broken;
        if (state_.block_state == ISAL_BLOCK_FINISH) return State::Finished;
        return at_end && state_.avail_out == room ? State::Broken : State::More;
    }

    inflate_state state_;
};
#endif

class ZlibUnpacker final : public Unpacker {
  public:
    ZlibUnpacker() {
        if (inflateInit2(&stream_, -MAX_WBITS) != Z_OK) throw std::bad_alloc();
    }
    ~ZlibUnpacker() override { inflateEnd(&stream_); }
    ZlibUnpacker(const ZlibUnpacker&) = delete;
    ZlibUnpacker& operator=(const ZlibUnpacker&) = delete;

    Step unpack(PackedBytes& packed, char* buffer, std::size_t capacity) override {
        const auto wanted = static_cast<uInt>(std::min(capacity, kMaxStepBytes));
        stream_.next_out = as_octets(buffer);
        stream_.avail_out = wanted;
        State result = State::More;
        while (stream_.avail_out > 0 && result == State::More)
            result = advance(packed);
        return {wanted - stream_.avail_out, result};
    }

  private:
    State advance(PackedBytes& packed) {
        if (stream_.avail_in == 0) {
            const PackedBytes::Block block = packed.next();
            stream_.next_in = as_octets(block.bytes);
            stream_.avail_in = static_cast<uInt>(block.count);
        }
        // Z_BUF_ERROR: no progress was possible, which here means that the input has ended.
        switch (inflate(&stream_, Z_NO_FLUSH)) {
        case Z_OK:
            return State::More;
        case Z_STREAM_END:
            return State::Finished;
        default:
            return State::Broken;
        }
    }

    z_stream stream_{};
};

} // namespace

PackedBytes::Block PackedBytes::next() {
    if (left_ == 0) return {nullptr, 0};
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(left_, kPackedBlockBytes));
    if (block_ == nullptr) block_.reset(new char[wanted]);
    const std::size_t got = read(block_.get(), wanted);
    return {block_.get(), got};
}

std::size_t PackedBytes::read(char* buffer, std::size_t capacity) {
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(left_, capacity));
    const std::size_t got = wanted == 0 ? 0 : file_.read_at(position_, buffer, wanted);
    position_ += got;
    left_ = got == 0 ? 0 : left_ - got;
    return got;
}

std::unique_ptr<Unpacker> make_unpacker(std::uint16_t method,
                                        [[maybe_unused]] InflateEngine engine) {
    if (method == kMethodStored) return std::make_unique<StoredUnpacker>();
    if (method != kMethodDeflated) return nullptr;
#ifdef ZX_HAVE_ISAL
    if (engine == InflateEngine::Isal)
        return std::unique_ptr<Unpacker>(new IsalUnpacker); // make_unique would clear 100 KB first
#endif
    return std::make_unique<ZlibUnpacker>();
}

std::uint32_t update_crc32([[maybe_unused]] InflateEngine engine, std::uint32_t crc,
                           const char* bytes, std::size_t count) {
#ifdef ZX_HAVE_ISAL
    if (engine == InflateEngine::Isal) {
        crc = crc32_gzip_refl(crc, as_octets(bytes), count);
        end_vector_work();
        return crc;
    }
#endif
    return static_cast<std::uint32_t>(::crc32_z(crc, as_octets(bytes), count));
}

} // namespace workbook
