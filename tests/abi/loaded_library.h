// SPDX-License-Identifier: Apache-2.0
//
// A dynamic library that is loaded while the object lives, and what a process holds of the system.
#pragma once

#include <cstddef>
#include <cstring>
#include <ostream>
#include <string>

namespace spreadsheet::test {

class LoadedLibrary {
  public:
    /// Throws `std::runtime_error` with the system's reason.
    explicit LoadedLibrary(const std::string& path);
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;
    ~LoadedLibrary();

    /// The function of that decorated name; throws when it is not exported.
    template <class Function>
    Function* function(const std::string& name) const {
        void* const address = find(name);
        Function* result = nullptr;
        static_assert(sizeof result == sizeof address);
        std::memcpy(&result, &address, sizeof result);
        return result;
    }

  private:
    void* find(const std::string& name) const;
    void* handle_;
};

/// Whether the library is in the process.
bool is_loaded(const std::string& path);

struct ProcessState {
    std::size_t handles; ///< file descriptors elsewhere than on Windows
    std::size_t threads;
    bool operator==(const ProcessState&) const = default;
};

ProcessState process_state();

inline std::ostream& operator<<(std::ostream& out, const ProcessState& state) {
    return out << state.handles << " handles, " << state.threads << " threads";
}

} // namespace spreadsheet::test
