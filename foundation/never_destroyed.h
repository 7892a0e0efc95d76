// SPDX-License-Identifier: Apache-2.0
//
// A function's static object that outlives everything else in its module: hosts may still call
// while the process ends, after the destructors of statics have run. What it holds has to be given
// back by an ordinary call.
#pragma once

#include <new>

namespace foundation {

template <class T>
class NeverDestroyed {
  public:
    NeverDestroyed() { new (bytes_) T; }
    NeverDestroyed(const NeverDestroyed&) = delete;
    NeverDestroyed& operator=(const NeverDestroyed&) = delete;

    T& get() noexcept { return *std::launder(reinterpret_cast<T*>(bytes_)); }

  private:
    alignas(T) unsigned char bytes_[sizeof(T)];
};

} // namespace foundation
