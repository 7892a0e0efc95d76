// SPDX-License-Identifier: Apache-2.0
//
// What a process leaves behind when it is told to end: SIGINT, SIGTERM and SIGHUP; on Windows
// Ctrl-C, Ctrl-Break and a closed console. For programs only: the library leaves such signals to
// its host.
#pragma once

#include <cstddef>
#include <filesystem>

#include "foundation/export.h"

namespace foundation {

/// For as long as it lives, an interruption removes the paths named to it, the last one first, and
/// ends the process as it would have ended. A signal that the process ignores stays ignored.
/// Objects end in the reverse order of their making; all are used on one thread.
class ZX_API RemovedOnInterruption {
  public:
    RemovedOnInterruption();
    RemovedOnInterruption(const RemovedOnInterruption&) = delete;
    RemovedOnInterruption& operator=(const RemovedOnInterruption&) = delete;
    ~RemovedOnInterruption();

    /// A file, or a folder, which has to be empty by then; it need not exist yet. Not taken are
    /// more than eight paths in a process, and a path of 4,096 bytes (Windows: units) or more.
    void add(const std::filesystem::path& path);

  private:
    std::size_t first_; ///< of the paths named to this object
};

} // namespace foundation
