// SPDX-License-Identifier: Apache-2.0
#include "automation/libreoffice/office_process.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <system_error>

#include <osl/file.hxx>
#include <rtl/digest.h>

#include "automation/libreoffice/start_problem.h"
#include "automation/libreoffice/uno_access.h"
#include "foundation/environment.h"
#include "foundation/unicode.h"

namespace office {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kDefaultLimit{60'000};
/// How many times the limit of silence a call may last.
constexpr int kLongestCall = 30;
/// How often within the limit of silence the process is looked at.
constexpr int kLooks = 8;
constexpr int kRestartCode = 81;

/// Settings that differ from those of a user's profile: no files beside the document, no macros, no
/// links to other documents, nothing to undo, nothing saved without being asked.
constexpr const char* kSettings = R"(<?xml version="1.0" encoding="UTF-8"?>
<oor:items xmlns:oor="http://openoffice.org/2001/registry">
<item oor:path="/org.openoffice.Office.Common/Misc"><prop oor:name="UseDocumentOOoLockFile" oor:op="fuse"><value>false</value></prop></item>
<item oor:path="/org.openoffice.Office.Common/Misc"><prop oor:name="UseDocumentSystemFileLocking" oor:op="fuse"><value>false</value></prop></item>
<item oor:path="/org.openoffice.Office.Common/Security/Scripting"><prop oor:name="DisableMacrosExecution" oor:op="fuse"><value>true</value></prop></item>
<item oor:path="/org.openoffice.Office.Common/Undo"><prop oor:name="Steps" oor:op="fuse"><value>0</value></prop></item>
<item oor:path="/org.openoffice.Office.Calc/Content/Update"><prop oor:name="Link" oor:op="fuse"><value>2</value></prop></item>
<item oor:path="/org.openoffice.Office.Recovery/AutoSave"><prop oor:name="Enabled" oor:op="fuse"><value>false</value></prop></item>
<item oor:path="/org.openoffice.Office.Recovery/RecoveryInfo"><prop oor:name="Enabled" oor:op="fuse"><value>false</value></prop></item>
</oor:items>
)";

/// Removes the files whose paths were its input, once that ends.
constexpr const char* kRemoverScript =
    "set --; while IFS= read -r path; do set -- \"$@\" \"$path\"; done; "
    "rm -rf -- \"$@\" || { sleep 1; rm -rf -- \"$@\"; }";

std::string make_pipe_name() {
    // Unique among the processes of this user, which share a folder of pipes.
    static std::atomic<unsigned> number{0};
    return "zxspreadsheet_" + std::to_string(foundation::own_process_id()) + "_" +
           std::to_string(++number);
}

/// The address of a profile among the files of a process.
OUString profile_address(const std::string& folder) {
    OUString address;
    osl::FileBase::getFileURLFromSystemPath(OUString::fromUtf8((folder + "/profile").c_str()),
                                            address);
    return address;
}

/// The sockets that a process makes outside its folder: that of its pipe, and the one by which
/// processes with one profile would find each other.
std::vector<std::string> socket_paths(const std::string& pipe_name, const OUString& profile) {
    std::uint8_t digest[RTL_DIGEST_LENGTH_MD5];
    rtl_digest_MD5(profile.getStr(),
                   static_cast<sal_uInt32>(profile.getLength()) * sizeof(sal_Unicode), digest,
                   sizeof digest);
    std::string digits;
    for (const std::uint8_t byte : digest) {
        char text[2];
        digits.append(text, std::to_chars(text, text + sizeof text, byte, 16).ptr);
    }
    const std::string prefix = "/OSL_PIPE_" + std::to_string(foundation::own_user_id()) + "_";
    std::vector<std::string> paths;
    for (const char* folder : {"/tmp", "/var/tmp"})
        for (const std::string& name : {pipe_name, "SingleOfficeIPC_" + digits})
            paths.push_back(folder + prefix + name);
    return paths;
}

void write_file(const std::filesystem::path& path, std::string_view text) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

} // namespace

milliseconds silence_limit() {
    const std::string text =
        foundation::unicode::to_utf8(foundation::environment_variable("ZX_APPLICATION_TIMEOUT"));
    double seconds = 0;
    const auto end = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool is_number = !text.empty() && end.ptr == text.data() + text.size();
    constexpr double kShortest = 0.1;
    constexpr double kLongest = 24 * 60 * 60;
    return is_number && seconds >= kShortest && seconds <= kLongest
               ? milliseconds(static_cast<long>(seconds * 1000))
               : kDefaultLimit;
}

OfficeProcess::OfficeProcess(const OfficeProgram& program)
    : program_path_(program.path),
      folder_(foundation::make_temporary_folder("zxspreadsheet-")),
      pipe_name_(make_pipe_name()),
      limit_(silence_limit()) {
    foundation::ChildOptions remover;
    remover.command = {"/bin/sh", "-c", kRemoverScript};
    remover.has_input = true;
    remover_ = std::make_unique<foundation::ChildProcess>(remover);
    remover_->send(folder_ + "\n");
    for (const std::string& path : socket_paths(pipe_name_, profile_address(folder_)))
        remover_->send(path + "\n");
    make_profile(program);
    watcher_ = std::thread([this] { watch_calls(); });
    std::unique_lock lock(mutex_);
    try {
        start_and_wait(lock);
    } catch (...) {
        is_ending_ = true;
        lock.unlock();
        changed_.notify_all();
        watcher_.join();
        throw;
    }
}

OfficeProcess::~OfficeProcess() {
    kill();
    {
        const std::scoped_lock lock(mutex_);
        is_ending_ = true;
    }
    changed_.notify_all();
    watcher_.join();
    child_.reset();
    remover_.reset(); // waits until the files are gone
}

void OfficeProcess::make_profile(const OfficeProgram& program) const {
    const std::filesystem::path user = std::filesystem::path(folder_) / "profile" / "user";
    write_file(user / "registrymodifications.xcu", kSettings);
    // A profile that another build seems to have made is set up once more, which takes a restart.
    if (!program.build.empty()) write_file(user / "extensions" / "buildid", program.build);
    std::filesystem::create_directories(std::filesystem::path(folder_) / "temporary");
}

foundation::ChildOptions OfficeProcess::child_options() const {
    foundation::ChildOptions options;
    const std::string profile = foundation::unicode::to_utf8(view_of(profile_address(folder_)));
    options.command = {program_path_,   "-env:UserInstallation=" + profile,
                       "--headless",    "--invisible",
                       "--norestore",   "--nologo",
                       "--nodefault",   "--nofirststartwizard",
                       "--nolockcheck", "--accept=pipe,name=" + pipe_name_ + ";urp;"};
    options.environment = {
        {"SAL_USE_VCLPLUGIN", "svp"}, {"LC_ALL", "C.UTF-8"}, {"TMPDIR", folder_ + "/temporary"}};
    options.log_path = folder_ + "/log";
    options.dies_with_thread = true;
    return options;
}

// --- The thread that starts and watches

void OfficeProcess::start_and_wait(std::unique_lock<std::mutex>& lock) {
    is_start_wanted_ = true;
    changed_.notify_all();
    changed_.wait(lock, [&] { return !is_start_wanted_; });
    if (start_failure_) std::rethrow_exception(std::exchange(start_failure_, nullptr));
}

void OfficeProcess::run_start() {
    try {
        child_.reset();
        child_ = std::make_unique<foundation::ChildProcess>(child_options());
    } catch (const std::exception& failure) {
        start_failure_ = std::make_exception_ptr(
            StartProblem("LibreOffice cannot be started: " + std::string(failure.what()) + "."));
    }
    is_start_wanted_ = false;
    changed_.notify_all();
}

void OfficeProcess::watch_calls() {
    std::unique_lock lock(mutex_);
    unsigned long long watched_call = 0;
    std::optional<long long> last_time;
    steady_clock::time_point begin;
    steady_clock::time_point last_progress;
    while (!is_ending_) {
        if (is_start_wanted_) run_start();
        if (calls_in_progress_ == 0) {
            is_watcher_idle_ = true;
            changed_.wait(lock,
                          [&] { return is_ending_ || is_start_wanted_ || calls_in_progress_ > 0; });
            is_watcher_idle_ = false;
            continue;
        }
        const auto now = steady_clock::now();
        const auto time = child_ ? foundation::processor_time(child_->id()) : std::nullopt;
        if (watched_call != calls_begun_) {
            watched_call = calls_begun_;
            begin = last_progress = now;
        } else if (time != last_time) {
            last_progress = now;
        }
        last_time = time;
        if (child_ && (now - last_progress >= limit_ || now - begin >= limit_ * kLongestCall)) {
            is_given_up_ = true;
            child_->kill();
        }
        // The end of a call wakes nobody: calls are short, and there are many.
        changed_.wait_for(lock, limit_ / kLooks, [&] { return is_ending_ || is_start_wanted_; });
    }
}

OfficeProcess::Call::Call(OfficeProcess& process) : process_(process) {
    const std::scoped_lock lock(process_.mutex_);
    ++process_.calls_begun_;
    ++process_.calls_in_progress_;
    if (process_.is_watcher_idle_) process_.changed_.notify_all();
}

OfficeProcess::Call::~Call() {
    const std::scoped_lock lock(process_.mutex_);
    --process_.calls_in_progress_;
}

// --- The process

bool OfficeProcess::has_ended(milliseconds limit) {
    return child_->wait_for(limit).has_value();
}

void OfficeProcess::kill() {
    const std::scoped_lock lock(mutex_);
    if (child_) child_->kill();
}

bool OfficeProcess::wants_restart() {
    return child_->wait_for(milliseconds(0)) == kRestartCode;
}

void OfficeProcess::restart() {
    std::unique_lock lock(mutex_);
    start_and_wait(lock);
}

std::string OfficeProcess::last_words() const {
    std::ifstream log(folder_ + "/log");
    std::string last;
    for (std::string line; std::getline(log, line);)
        if (!line.empty()) last = line;
    return last;
}

} // namespace office
