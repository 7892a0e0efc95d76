// SPDX-License-Identifier: Apache-2.0
//
// Threads whose result nobody wants any more.
#include "waiting.h"

#include <mutex>
#include <vector>

namespace zxpython {
namespace {

struct Abandoned {
    std::mutex mutex;
    std::vector<std::thread> threads;
};

Abandoned& abandoned() {
    static Abandoned all;
    return all;
}

} // namespace

void abandon(std::thread thread) {
    const std::lock_guard lock(abandoned().mutex);
    abandoned().threads.push_back(std::move(thread));
}

void join_abandoned() {
    std::vector<std::thread> threads;
    {
        const std::lock_guard lock(abandoned().mutex);
        threads.swap(abandoned().threads);
    }
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace zxpython
