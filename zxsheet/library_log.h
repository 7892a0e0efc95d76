// SPDX-License-Identifier: Apache-2.0
//
// Keeps the library started and collects what it logs about failures: exceptions tell what failed,
// the log tells why, and some operations fail in the log alone.
#pragma once

#include <memory>
#include <string>

#include "foundation/log.h"

namespace zxsheet {

class LibraryLog {
  public:
    LibraryLog();
    LibraryLog(const LibraryLog&) = delete;
    LibraryLog& operator=(const LibraryLog&) = delete;
    ~LibraryLog();

    /// Why the last operation failed: the text behind the tag of its record; empty when none was
    /// logged since `forget`.
    std::string cause() const;
    void forget() { sink_->clear(); }

  private:
    std::shared_ptr<foundation::log::CollectingSink> sink_;
};

} // namespace zxsheet
