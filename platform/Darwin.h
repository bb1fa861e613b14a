#pragma once
// The C interfaces of the device the bundle calls by name: dyld (dlopen, dlsym) and process
// launching (posix_spawn, waitpid), on logical paths.
//
// - dlopen loads a library when its file exists under the root, recorded as
//   {"event":"dlopen","path":...,"loaded":B}; the classes and symbols that library defines become
//   visible only then.
// - posix_spawn really runs the program at the mapped path, recorded as
//   {"event":"spawn","path":...,"argv":[...]}; waitpid waits for it (Darwin's option 4, wait for
//   exit, is what Linux's waitpid does with no option).

#include <sys/types.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Darwin {

constexpr int kRTLDLazy = 0x1;   // RTLD_LAZY
constexpr int kWaitExited = 0x4;  // Darwin's WEXITED

/// A function exported by a library image.
using Symbol = void (*)();

/// An opened library: the logical path of its image.
struct LibraryHandle {
    std::string image;
};

/// Opens the library at a logical path; nullptr when there is no file there.
const LibraryHandle* dlopen(std::string_view path, int mode);
/// The symbol named name in an opened library, or nullptr.
Symbol dlsym(const LibraryHandle* handle, std::string_view name);

/// Declares what a library image exports (the platform's stand-ins for device libraries).
void registerSymbol(std::string image, std::string name, Symbol symbol);

/// Launches the program at a logical path with argv and an empty environment; 0 or an errno value.
int posix_spawn(pid_t* pid, std::string_view path, const std::vector<std::string>& argv);
/// Waits for a spawned process; the pid or -1.
pid_t waitpid(pid_t pid, int* status, int options);

}  // namespace Darwin
