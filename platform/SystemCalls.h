#pragma once
// The POSIX calls of the platform's file reads and writes, behind one seam so that tests can make
// any of them fail (ENOSPC, EIO, ...) and check what a failure at each step leaves behind. Without
// an injected fault each function is exactly the system call of the same name (EINTR included).

#include <sys/types.h>

#include <functional>

namespace SystemCalls {

/// The calls a fault can be injected into.
enum class Call { Open, Read, Write, Fsync, DirectoryFsync, Close, Rename, Link, Lock, CreateTemporary };

/// Called before each call with what it is; a non-zero result makes the call fail with that errno
/// without running it. Tests only; an empty function (the default) injects nothing. Not
/// thread-safe: set it while no other thread reads or writes files.
using Fault = std::function<int(Call)>;
void injectFaults(Fault fault);

int open(const char* path, int flags, mode_t mode = 0);
ssize_t read(int fd, void* buffer, size_t size);
ssize_t write(int fd, const void* buffer, size_t size);
int fsync(int fd);
/// fsync of a folder's descriptor, so that a rename in it is durable.
int fsyncDirectory(int fd);
int close(int fd);
int rename(const char* from, const char* to);
/// A second name (a hard link) for a file.
int link(const char* existing, const char* name);
int flock(int fd, int operation);
/// mkostemp(pattern, O_CLOEXEC).
int createTemporary(char* pattern);
/// open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode): a new temporary file of
/// a known name; its faults are those of createTemporary (Call::CreateTemporary).
int createFile(const char* path, mode_t mode);

}  // namespace SystemCalls
