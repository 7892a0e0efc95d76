// SPDX-License-Identifier: Apache-2.0
//
// A program that this process starts and ends. Not used on Windows. `wait_for` and `kill` may be
// called on any thread while the owner lives.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace foundation {

/// How a program is started. Paths and variables are in the system's encoding.
struct ChildOptions {
    std::vector<std::string> command; ///< the program's path, then its arguments
    /// Variables that differ from this process's.
    std::vector<std::pair<std::string, std::string>> environment;
    std::string log_path;   ///< a file that takes what the child prints; empty for nowhere
    bool has_input = false; ///< `send` writes to the child's standard input, else that is empty
    /// The system kills the child when the thread that starts it ends, with or without its process.
    bool dies_with_thread = false;
};

/// The child leads a session of its own, so that keys pressed in a terminal do not reach it, and
/// inherits no open file but the three standard ones.
class ChildProcess {
  public:
    /// Throws std::system_error when the system refuses; a program that cannot be executed ends
    /// with code 127.
    explicit ChildProcess(const ChildOptions& options);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    /// Closes the child's input; kills the child if that does not end it soon.
    ~ChildProcess();

    int id() const { return id_; }
    /// Writes all of the text; a child that no longer reads is not reported.
    void send(const std::string& text);
    /// Waits for the end at most that long: the exit code, or 128 + the signal that ended it.
    /// nullopt while the child runs.
    std::optional<int> wait_for(std::chrono::milliseconds limit) const;
    void kill() const;

  private:
    int input_ = -1; ///< before `id_`, whose initialiser sets it
    const int id_;
    int handle_ = -1; ///< becomes readable when the child has ended
};

int own_process_id();
unsigned own_user_id();

/// Threads that start in its scope never get the signal of a write to a broken connection, and so
/// see the failure of the write; the thread itself does not while it lasts.
class PipeSignalBlock {
  public:
    PipeSignalBlock();
    PipeSignalBlock(const PipeSignalBlock&) = delete;
    PipeSignalBlock& operator=(const PipeSignalBlock&) = delete;
    ~PipeSignalBlock();

  private:
    bool was_blocked_;
};

/// Processor time that a process has used, in clock ticks; nullopt where the system does not say.
std::optional<long long> processor_time(int process_id);

/// Makes a folder with a new name that begins with `prefix`, for this user alone, among the
/// system's temporary files. Throws std::system_error.
std::string make_temporary_folder(const std::string& prefix);

} // namespace foundation
