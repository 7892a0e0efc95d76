// SPDX-License-Identifier: Apache-2.0
//
// One entry's stream and its checks.
#include "workbook/zip/entry_source.h"

#include "workbook/error.h"
#include "workbook/limits.h"

namespace workbook {

EntrySource::EntrySource(foundation::files::RandomAccessFile& file, const ZipEntry& entry,
                         std::uint64_t position, std::uint64_t& total_bytes, InflateEngine engine)
    : name_(entry.name),
      packed_(file, position, entry.packed_size),
      packed_size_(entry.packed_size),
      file_size_(file.size()),
      size_(entry.size),
      total_bytes_(total_bytes),
      expected_crc_(entry.crc32),
      engine_(engine),
      unpacker_(make_unpacker(entry.method, engine)) {
    if (unpacker_ == nullptr)
        throw Error::damaged(name_, "its compression method " + std::to_string(entry.method) +
                                        " is not supported");
    if (size_ > kMaxPartBytes)
        throw Error::limit(name_, std::to_string(size_) + " bytes of at most " +
                                      std::to_string(kMaxPartBytes));
}

std::size_t EntrySource::read(char* buffer, std::size_t capacity) {
    if (finished_ || capacity == 0) return 0;
    const Unpacker::Step step = unpacker_->unpack(packed_, buffer, capacity);
    produced_ += step.produced;
    total_bytes_ += step.produced;
    crc_ = update_crc32(engine_, crc_, buffer, step.produced);
    check_limits();
    if (step.state == Unpacker::State::Broken)
        throw Error::damaged(name_, "its compressed data are broken or end too early");
    if (step.state == Unpacker::State::Finished) {
        finished_ = true;
        check_end();
    }
    return step.produced;
}

void EntrySource::check_limits() const {
    if (produced_ > size_)
        throw Error::damaged(name_, "it unpacks to more than the " + std::to_string(size_) +
                                        " bytes that the container states");
    if (produced_ > kRatioFreeBytes && produced_ / kMaxInflateRatio > packed_size_)
        throw Error::limit(name_, "it unpacks to more than " + std::to_string(kMaxInflateRatio) +
                                      " times its packed size");
    if (total_bytes_ > kMaxTotalBytes ||
        (total_bytes_ > kRatioFreeBytes && total_bytes_ / kMaxTotalInflateRatio > file_size_))
        throw Error::limit(name_, "the book's parts together unpack to more than " +
                                      std::to_string(kMaxTotalInflateRatio) +
                                      " times the file's size or " +
                                      std::to_string(kMaxTotalBytes >> 30) + " GiB");
}

void EntrySource::check_end() const {
    if (produced_ != size_)
        throw Error::damaged(name_, "it unpacks to " + std::to_string(produced_) +
                                        " bytes, the container states " + std::to_string(size_));
    if (crc_ != expected_crc_) throw Error::damaged(name_, "its CRC-32 is wrong");
}

} // namespace workbook
