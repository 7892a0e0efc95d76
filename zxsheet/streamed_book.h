// SPDX-License-Identifier: Apache-2.0
//
// Books that come from a stream or go to one. The library needs files, so such a book is in a
// folder of its own for as long as the command runs; nobody else can read that folder.
#pragma once

#include <cstdint>
#include <filesystem>
#include <istream>
#include <optional>
#include <ostream>
#include <string>

#include "foundation/interruption.h"
#include "zxsheet/book_location.h"

namespace zxsheet {

/// A stream that never ends must end somewhere.
inline constexpr std::uint64_t kMaxStreamBytes = std::uint64_t{4} << 30;

/// A folder for temporary files, removed with all that is in it, also when the process is told to
/// end.
class TemporaryFolder {
  public:
    /// Throws `CommandError` when none can be made.
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    /// The UTF-8 path of a file in it.
    std::string file(const std::string& name);

  private:
    foundation::RemovedOnInterruption removed_;
    std::filesystem::path path_;
};

class StreamedBook {
  public:
    /// If the book is standard input, or a path of a pipe, copies it into a file of a folder, which
    /// `location` means from then on; does nothing for any other book. `output` is where the book
    /// is saved to, if it is. Throws `CommandError` for more than `max_bytes`.
    void fetch(BookLocation& location, const std::string& output, std::istream& in,
               std::uint64_t max_bytes = kMaxStreamBytes);

  private:
    std::optional<TemporaryFolder> folder_;
};

/// Copies a file to a stream. Throws `CommandError`.
void send_file(const std::string& path, std::ostream& out);

} // namespace zxsheet
