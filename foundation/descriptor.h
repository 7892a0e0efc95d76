// SPDX-License-Identifier: Apache-2.0
//
// Owns a file descriptor of a POSIX system. Only sources for such systems include this header.
#pragma once

#include <unistd.h>

namespace foundation::files {

class Descriptor {
  public:
    explicit Descriptor(int value) : value_(value) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (value_ >= 0) ::close(value_);
    }
    int get() const { return value_; }

  private:
    int value_;
};

} // namespace foundation::files
