// SPDX-License-Identifier: Apache-2.0
//
// A handler may use nothing but what is async-signal-safe (POSIX.1-2017, 2.4.3): the paths are kept
// in arrays of fixed size, and a path is complete before it is counted.
#include "foundation/interruption.h"

#include <array>
#include <atomic>

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#else
#include <csignal>

#include <unistd.h>
#endif

namespace foundation {
namespace {

constexpr std::size_t kMaxPaths = 8, kMaxUnits = 4096;

std::array<std::array<std::filesystem::path::value_type, kMaxUnits>, kMaxPaths> paths;
std::atomic<std::size_t> path_count{0};

#ifdef _WIN32

BOOL WINAPI remove_all(DWORD) {
    for (std::size_t i = path_count; i-- > 0;)
        if (::DeleteFileW(paths[i].data()) == 0) ::RemoveDirectoryW(paths[i].data());
    return FALSE; // the next handler ends the process
}

void install() {
    ::SetConsoleCtrlHandler(remove_all, TRUE);
}

void uninstall() {
    ::SetConsoleCtrlHandler(remove_all, FALSE);
}

#else

constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};
std::array<struct sigaction, kSignals.size()> previous;

extern "C" void remove_all(int signal) {
    for (std::size_t i = path_count; i-- > 0;)
        if (::unlink(paths[i].data()) != 0) ::rmdir(paths[i].data());
    ::raise(signal); // SA_RESETHAND has put the default action back; it happens on return
}

void install() {
    struct sigaction action {};
    action.sa_handler = remove_all;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        ::sigaction(kSignals[i], nullptr, &previous[i]);
        if (previous[i].sa_handler == SIG_DFL) ::sigaction(kSignals[i], &action, nullptr);
    }
}

void uninstall() {
    for (std::size_t i = 0; i < kSignals.size(); ++i)
        ::sigaction(kSignals[i], &previous[i], nullptr);
}

#endif

} // namespace

RemovedOnInterruption::RemovedOnInterruption() : first_(path_count) {
    if (first_ == 0) install();
}

RemovedOnInterruption::~RemovedOnInterruption() {
    path_count = first_;
    if (first_ == 0) uninstall();
}

void RemovedOnInterruption::add(const std::filesystem::path& path) {
    const std::size_t count = path_count;
    const auto& text = path.native();
    if (count == paths.size() || text.size() >= kMaxUnits) return;
    paths[count][text.copy(paths[count].data(), text.size())] = 0;
    path_count = count + 1;
}

} // namespace foundation
