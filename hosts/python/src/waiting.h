// SPDX-License-Identifier: Apache-2.0
//
// Long work beside the interpreter: its lock is free meanwhile, and Ctrl-C is noticed. The
// interpreter handles signals on the main thread only, so the work runs on a thread of its own and
// the caller's looks at signals while it waits.
#pragma once

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <thread>
#include <type_traits>
#include <utility>

#include <pybind11/pybind11.h>

#include "spreadsheet/table.h"

namespace zxpython {

/// Shared by work and waiter: set when the caller does not want the result any more.
using StopFlag = std::shared_ptr<std::atomic<bool>>;

inline spreadsheet::InterruptCheck check_of(const StopFlag& flag) {
    return {flag.get(),
            [](void* context) { return static_cast<std::atomic<bool>*>(context)->load(); }};
}

/// Keeps a thread that nobody waits for; `join_abandoned` waits for all of them at exit.
void abandon(std::thread thread);
void join_abandoned();

/// What becomes of work that is interrupted.
enum class OnInterrupt {
    Wait,   ///< it touches what the caller has: it is waited for, then the interrupt goes on
    Abandon ///< it owns all that it uses: it goes on and its result is dropped
};

/// Calls `work(flag)` without the interpreter's lock and returns its result. The lock is held on
/// entry and exit. Throws what the work throws, or the exception of a signal handler.
template <class Work>
auto run_beside(OnInterrupt on_interrupt, Work work) {
    namespace py = pybind11;
    using Result = std::invoke_result_t<Work&, const StopFlag&>;
    const auto flag = std::make_shared<std::atomic<bool>>(false);
    std::packaged_task<Result()> task(
        [work = std::move(work), flag]() mutable { return work(flag); });
    std::future<Result> result = task.get_future();
    std::thread thread(std::move(task));
    bool interrupted = false;
    for (bool done = false; !done && !interrupted;) {
        {
            py::gil_scoped_release release;
            done = result.wait_for(std::chrono::milliseconds(20)) == std::future_status::ready;
        }
        interrupted = !done && PyErr_CheckSignals() != 0;
    }
    if (!interrupted) {
        thread.join();
        return result.get();
    }
    flag->store(true);
    py::error_already_set signal; // takes the exception of the handler
    if (on_interrupt == OnInterrupt::Wait) {
        py::gil_scoped_release release;
        thread.join();
    } else {
        abandon(std::move(thread));
    }
    throw signal;
}

} // namespace zxpython
