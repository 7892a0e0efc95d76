// SPDX-License-Identifier: Apache-2.0
//
// One process of LibreOffice, which belongs to this one: it has a profile, a pipe and a temporary
// folder of its own, and all of them go with it.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "automation/libreoffice/office_program.h"
#include "foundation/child_process.h"

namespace office {

/// How long an application may be silent: the number of seconds in the environment variable
/// ZX_APPLICATION_TIMEOUT, or a minute.
std::chrono::milliseconds silence_limit();

/// Started by the constructor; ended, and its files removed, by the destructor. When this process
/// is killed, the system kills the other and a shell that waits for that removes the files.
///
/// A thread starts the process and watches each call: one during which the process uses no
/// processor time for `silence_limit()`, or that lasts thirty times as long, ends the process. The
/// connection to it breaks then and the call returns.
class OfficeProcess {
  public:
    /// Throws StartProblem.
    explicit OfficeProcess(const OfficeProgram& program);
    OfficeProcess(const OfficeProcess&) = delete;
    OfficeProcess& operator=(const OfficeProcess&) = delete;
    ~OfficeProcess();

    const std::string& pipe_name() const { return pipe_name_; }
    /// Waits for the process to end by itself, at most that long. Any number of calls.
    bool has_ended(std::chrono::milliseconds limit = std::chrono::milliseconds(0));
    void kill();
    /// The process leaves with this code to be started again; a new profile can make it.
    bool wants_restart();
    /// Starts it again after it has ended.
    void restart();
    /// Whether it was ended because it did not answer.
    bool is_given_up() const { return is_given_up_; }
    /// The last line that the process has printed; empty for none.
    std::string last_words() const;

    /// A call in progress.
    class Call {
      public:
        explicit Call(OfficeProcess& process);
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;
        ~Call();

      private:
        OfficeProcess& process_;
    };

  private:
    void make_profile(const OfficeProgram& program) const;
    foundation::ChildOptions child_options() const;
    void watch_calls();
    void run_start();
    void start_and_wait(std::unique_lock<std::mutex>& lock);

    const std::string program_path_;
    const std::string folder_;
    const std::string pipe_name_;
    const std::chrono::milliseconds limit_;
    /// Removes what is left when this object, or this process, has gone.
    std::unique_ptr<foundation::ChildProcess> remover_;

    std::atomic<bool> is_given_up_ = false;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::unique_ptr<foundation::ChildProcess> child_;
    std::exception_ptr start_failure_;
    bool is_start_wanted_ = true;
    bool is_ending_ = false;
    bool is_watcher_idle_ = false;
    int calls_in_progress_ = 0;
    unsigned long long calls_begun_ = 0;
    std::thread watcher_;
};

} // namespace office
