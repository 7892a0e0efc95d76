// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "foundation/child_process.h"

extern char** environ;

namespace foundation {
namespace {

/// How long a child that has lost its input may take to end by itself.
constexpr std::chrono::milliseconds kFarewell{2000};
/// Between two looks at a child where the system does not report its end.
constexpr std::chrono::milliseconds kStep{20};
constexpr int kNotExecutable = 127;

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

/// This process's variables with some replaced, as execve wants them.
std::vector<std::string>
make_environment(const std::vector<std::pair<std::string, std::string>>& replaced) {
    std::vector<std::string> variables;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view text(*entry);
        const std::string_view name = text.substr(0, text.find('='));
        if (std::none_of(replaced.begin(), replaced.end(),
                         [&](const auto& pair) { return pair.first == name; }))
            variables.emplace_back(text);
    }
    for (const auto& [name, value] : replaced)
        variables.push_back(name + "=" + value);
    return variables;
}

std::vector<char*> pointers_to(std::vector<std::string>& strings) {
    std::vector<char*> pointers;
    for (std::string& text : strings)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// What the child does between fork and execve: system calls alone, as other threads may have held
/// locks when it was forked.
struct ChildStart {
    char** command;
    char** environment;
    int input;
    int output;
    bool dies_with_thread;
    pid_t parent;

    [[noreturn]] void run() const {
        if (dies_with_thread) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            if (getppid() != parent) _exit(kNotExecutable); // it has ended before the line above
        }
        setsid();
        sigset_t none;
        sigemptyset(&none);
        pthread_sigmask(SIG_SETMASK, &none, nullptr);
        // A host may have closed its standard files, and got these in their places.
        const int safe_input = fcntl(input, F_DUPFD, STDERR_FILENO + 1);
        const int safe_output = fcntl(output, F_DUPFD, STDERR_FILENO + 1);
        dup2(safe_input, STDIN_FILENO);
        dup2(safe_output, STDOUT_FILENO);
        dup2(safe_output, STDERR_FILENO);
        close_range(STDERR_FILENO + 1, ~0u, 0);
        execve(command[0], command, environment);
        _exit(kNotExecutable);
    }
};

/// A file descriptor that is closed at the end of the scope.
struct ScopedDescriptor {
    int value;
    ~ScopedDescriptor() {
        if (value >= 0) close(value);
    }
};

pid_t start(const ChildOptions& options, int input) {
    std::vector<std::string> command = options.command;
    std::vector<std::string> environment = make_environment(options.environment);
    const std::vector<char*> arguments = pointers_to(command);
    const std::vector<char*> variables = pointers_to(environment);
    const std::string log = options.log_path.empty() ? "/dev/null" : options.log_path;
    const ScopedDescriptor output{
        open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600)};
    if (output.value < 0) fail("open");
    const ChildStart child{const_cast<char**>(arguments.data()),
                           const_cast<char**>(variables.data()),
                           input,
                           output.value,
                           options.dies_with_thread,
                           getpid()};
    const pid_t id = fork();
    if (id < 0) fail("fork");
    if (id == 0) child.run();
    return id;
}

/// Starts the program; `input` becomes the descriptor to write to, if one is wanted.
pid_t start_with_input(const ChildOptions& options, int& input) {
    // A socket, since writing to one without a reader can be kept from raising a signal.
    int ends[2] = {-1, -1};
    if (!options.has_input) {
        const ScopedDescriptor nothing{open("/dev/null", O_RDONLY | O_CLOEXEC)};
        return start(options, nothing.value);
    }
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) fail("socketpair");
    const ScopedDescriptor child_end{ends[1]};
    ScopedDescriptor own_end{ends[0]};
    const pid_t id = start(options, child_end.value);
    input = std::exchange(own_end.value, -1);
    return id;
}

} // namespace

ChildProcess::ChildProcess(const ChildOptions& options) : id_(start_with_input(options, input_)) {
    handle_ = static_cast<int>(syscall(SYS_pidfd_open, id_, 0));
}

ChildProcess::~ChildProcess() {
    if (input_ >= 0) close(input_);
    if (!wait_for(input_ >= 0 ? kFarewell : std::chrono::milliseconds(0))) {
        kill();
        wait_for(kFarewell);
    }
    waitpid(id_, nullptr, WNOHANG);
    if (handle_ >= 0) close(handle_);
}

void ChildProcess::send(const std::string& text) {
    std::size_t sent = 0;
    while (sent < text.size()) {
        const ssize_t count = ::send(input_, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return;
        sent += static_cast<std::size_t>(count);
    }
}

std::optional<int> ChildProcess::wait_for(std::chrono::milliseconds limit) const {
    const auto end = std::chrono::steady_clock::now() + limit;
    for (;;) {
        // Leaves the child unreaped, so that its number is not given to another process.
        siginfo_t info{};
        const int result =
            waitid(P_PID, static_cast<id_t>(id_), &info, WEXITED | WNOHANG | WNOWAIT);
        if (result != 0) return 0; // the host lets the system reap its children
        if (info.si_pid != 0)
            return info.si_code == CLD_EXITED ? info.si_status : 128 + info.si_status;
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            end - std::chrono::steady_clock::now());
        if (left.count() <= 0) return std::nullopt;
        pollfd ended{handle_, POLLIN, 0};
        poll(&ended, 1, static_cast<int>(handle_ >= 0 ? left.count() : kStep.count()));
    }
}

void ChildProcess::kill() const {
    if (handle_ < 0 || syscall(SYS_pidfd_send_signal, handle_, SIGKILL, nullptr, 0) != 0)
        ::kill(id_, SIGKILL);
}

int own_process_id() {
    return getpid();
}

unsigned own_user_id() {
    return getuid();
}

PipeSignalBlock::PipeSignalBlock() {
    sigset_t pipe;
    sigset_t before;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, &before);
    was_blocked_ = sigismember(&before, SIGPIPE) == 1;
}

PipeSignalBlock::~PipeSignalBlock() {
    if (was_blocked_) return;
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_UNBLOCK, &pipe, nullptr);
}

std::optional<long long> processor_time(int process_id) {
    std::ifstream file("/proc/" + std::to_string(process_id) + "/stat");
    std::string text;
    if (!std::getline(file, text)) return std::nullopt;
    // The name, in parentheses, may hold anything. The times are fields 14 and 15; 3 follows it.
    std::istringstream fields(text.substr(std::min(text.rfind(')') + 1, text.size())));
    std::string skipped;
    for (int field = 3; field < 14; ++field)
        fields >> skipped;
    long long user = 0;
    long long system = 0;
    if (!(fields >> user >> system)) return std::nullopt;
    return user + system;
}

std::string make_temporary_folder(const std::string& prefix) {
    std::error_code failure;
    std::filesystem::path parent = std::filesystem::temp_directory_path(failure);
    if (failure) parent = "/tmp";
    std::string path = (parent / (prefix + "XXXXXX")).string();
    if (mkdtemp(path.data()) == nullptr) fail("mkdtemp");
    return path;
}

} // namespace foundation
