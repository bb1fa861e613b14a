#include "platform/SystemCalls.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace SystemCalls {
namespace {

Fault& injected()
{
    static Fault fault;
    return fault;
}

/// Whether the call is to fail; errno is then set.
bool faulted(Call call)
{
    if (!injected())
        return false;
    int error = injected()(call);
    if (error == 0)
        return false;
    errno = error;
    return true;
}

}  // namespace

void injectFaults(Fault fault)
{
    injected() = std::move(fault);
}

int open(const char* path, int flags, mode_t mode)
{
    return faulted(Call::Open) ? -1 : ::open(path, flags, mode);
}

ssize_t read(int fd, void* buffer, size_t size)
{
    return faulted(Call::Read) ? -1 : ::read(fd, buffer, size);
}

ssize_t write(int fd, const void* buffer, size_t size)
{
    return faulted(Call::Write) ? -1 : ::write(fd, buffer, size);
}

int fsync(int fd)
{
    return faulted(Call::Fsync) ? -1 : ::fsync(fd);
}

int fsyncDirectory(int fd)
{
    return faulted(Call::DirectoryFsync) ? -1 : ::fsync(fd);
}

int close(int fd)
{
    if (faulted(Call::Close)) {
        // As after a real failed close, the descriptor is gone.
        int error = errno;
        ::close(fd);
        errno = error;
        return -1;
    }
    return ::close(fd);
}

int rename(const char* from, const char* to)
{
    return faulted(Call::Rename) ? -1 : ::rename(from, to);
}

int link(const char* existing, const char* name)
{
    return faulted(Call::Link) ? -1 : ::link(existing, name);
}

int flock(int fd, int operation)
{
    return faulted(Call::Lock) ? -1 : ::flock(fd, operation);
}

int createTemporary(char* pattern)
{
    return faulted(Call::CreateTemporary) ? -1 : ::mkostemp(pattern, O_CLOEXEC);
}

int createFile(const char* path, mode_t mode)
{
    return faulted(Call::CreateTemporary) ? -1 : ::open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode);
}

}  // namespace SystemCalls
