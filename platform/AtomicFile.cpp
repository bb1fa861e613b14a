#include "platform/AtomicFile.h"

#include "platform/SystemCalls.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace fs = std::filesystem;

namespace AtomicFile {
namespace {

std::string failed(const char* what)
{
    return std::string(what) + " (" + std::strerror(errno) + ")";
}

/// Gives the new file at fd the mode and owner of the file it replaces, or the umask's mode.
std::optional<std::string> takeOverMode(int fd, const fs::path& path)
{
    struct stat st {};
    if (::stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode)) {
        // Another owner is kept where the process may give it (as root); otherwise the file is ours.
        if ((st.st_uid != ::geteuid() || st.st_gid != ::getegid()) && ::fchown(fd, st.st_uid, st.st_gid) != 0 &&
            errno != EPERM)
            return failed("cannot give the file its owner");
        if (::fchmod(fd, st.st_mode & 07777) != 0)
            return failed("cannot set the file's permissions");
        return std::nullopt;
    }
    if (::fchmod(fd, 0666 & ~currentUmask()) != 0)
        return failed("cannot set the file's permissions");
    return std::nullopt;
}

/// Writes what produce gives to a new temporary file beside path, flushed; its name, or what
/// failed. With a staged name, that is the temporary file's name.
std::optional<std::string> writeTemporary(const fs::path& path, const Producer& produce, std::string& temporary,
                                          Temporary naming = Temporary::Unique, const fs::path* staged = nullptr)
{
    std::error_code ec;
    fs::create_directories(path.parent_path(), ec);
    int fd = -1;
    if (naming == Temporary::Fixed || staged) {
        temporary = staged ? staged->string() : temporaryName(path).string();
        // What a killed writer left goes first; the lock the caller holds keeps others away.
        ::unlink(temporary.c_str());
        fd = SystemCalls::createFile(temporary.c_str(), 0600);
    } else {
        temporary = (path.parent_path() / ("." + path.filename().string() + ".XXXXXX")).string();
        fd = SystemCalls::createTemporary(temporary.data());
    }
    if (fd < 0) {
        temporary.clear();
        return failed("cannot create a temporary file");
    }
    std::optional<std::string> problem = takeOverMode(fd, path);
    auto put = [&](std::string_view bytes) {
        for (std::size_t written = 0; !problem && written < bytes.size();) {
            ssize_t n = SystemCalls::write(fd, bytes.data() + written, bytes.size() - written);
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0) {
                if (n == 0)
                    errno = EIO;
                problem = failed("cannot write");
            } else {
                written += static_cast<std::size_t>(n);
            }
        }
        return !problem;
    };
    if (!problem && !produce(put) && !problem)
        problem = "cannot make the file's contents";
    if (!problem && SystemCalls::fsync(fd) != 0)
        problem = failed("cannot flush the file to disk");
    if (SystemCalls::close(fd) != 0 && !problem)
        problem = failed("cannot close the file");
    if (problem) {
        ::unlink(temporary.c_str());
        temporary.clear();
    }
    return problem;
}

/// Flushes path's folder, so that a rename or link in it survives a crash.
std::optional<std::string> flushFolder(const fs::path& path)
{
    int dir = SystemCalls::open(path.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir < 0)
        return failed("cannot open the folder to flush it");
    std::optional<std::string> problem;
    if (SystemCalls::fsyncDirectory(dir) != 0)
        problem = failed("cannot flush the folder to disk");
    ::close(dir);
    return problem;
}

}  // namespace

Contents load(const fs::path& path, std::size_t limit, Links links)
{
    Contents contents;
    int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | (links == Links::Refuse ? O_NOFOLLOW : 0);
    int fd = SystemCalls::open(path.c_str(), flags);
    if (fd < 0) {
        if (errno == ENOENT || errno == ENOTDIR)
            contents.status = ReadStatus::Missing;
        else if (errno == ELOOP && links == Links::Refuse)
            contents.status = ReadStatus::Unusable;
        else
            contents.status = ReadStatus::Unreadable;
        contents.problem = failed("cannot open");
        return contents;
    }
    struct stat st {};
    if (::fstat(fd, &st) != 0) {
        contents.status = ReadStatus::Unreadable;
        contents.problem = failed("cannot examine");
    } else if (!S_ISREG(st.st_mode)) {
        contents.status = ReadStatus::Unusable;
        contents.problem = "not a regular file";
    } else if (static_cast<std::size_t>(st.st_size) > limit) {
        contents.status = ReadStatus::Unusable;
        contents.problem = "larger than " + std::to_string(limit) + " bytes";
    } else {
        contents.status = ReadStatus::Read;
        contents.bytes.resize(static_cast<std::size_t>(st.st_size));
        std::size_t got = 0;
        while (got < contents.bytes.size()) {
            ssize_t n = SystemCalls::read(fd, contents.bytes.data() + got, contents.bytes.size() - got);
            if (n < 0 && errno == EINTR)
                continue;
            if (n < 0) {
                contents = {ReadStatus::Unreadable, {}, failed("cannot read")};
                break;
            }
            if (n == 0)
                break;
            got += static_cast<std::size_t>(n);
        }
        if (contents.status == ReadStatus::Read)
            contents.bytes.resize(got);
    }
    ::close(fd);
    return contents;
}

std::optional<std::string> read(const fs::path& path, std::size_t limit, Links links)
{
    Contents contents = load(path, limit, links);
    if (contents.status != ReadStatus::Read)
        return std::nullopt;
    return std::move(contents.bytes);
}

namespace {

/// All of bytes, as a producer.
Producer whole(std::string_view bytes)
{
    return [bytes](const Sink& put) { return put(bytes); };
}

}  // namespace

std::optional<std::string> replace(const fs::path& path, std::string_view bytes, Temporary naming)
{
    return replace(path, whole(bytes), naming);
}

std::optional<std::string> replace(const fs::path& path, const Producer& produce, Temporary naming)
{
    std::string temporary;
    if (auto problem = writeTemporary(path, produce, temporary, naming))
        return problem;
    if (SystemCalls::rename(temporary.c_str(), path.c_str()) != 0) {
        std::string problem = failed("cannot rename the new file into place");
        ::unlink(temporary.c_str());
        return problem;
    }
    return flushFolder(path);
}

std::optional<std::string> stage(const fs::path& staged, std::string_view bytes, const fs::path& target)
{
    std::string temporary;
    return writeTemporary(target, whole(bytes), temporary, Temporary::Fixed, &staged);
}

std::optional<std::string> flushFolderOf(const fs::path& path)
{
    return flushFolder(path);
}

bool write(const fs::path& path, std::string_view bytes)
{
    return !replace(path, bytes);
}

bool create(const fs::path& path, std::string_view bytes)
{
    std::error_code ec;
    if (fs::exists(fs::symlink_status(path, ec)))
        return true;
    std::string temporary;
    if (writeTemporary(path, whole(bytes), temporary))
        return false;
    // link() never replaces: a file that appeared meanwhile wins.
    bool linked = ::link(temporary.c_str(), path.c_str()) == 0 || errno == EEXIST;
    ::unlink(temporary.c_str());
    return linked && !flushFolder(path);
}

fs::path temporaryName(const fs::path& path)
{
    return path.parent_path() / ("." + path.filename().string() + ".nimtmp");
}

unsigned currentUmask()
{
    // umask() both reads and sets, which another thread could see: the kernel reports it instead.
    if (FILE* status = std::fopen("/proc/self/status", "re")) {
        char line[256];
        unsigned mask = 0;
        bool found = false;
        while (!found && std::fgets(line, sizeof line, status))
            found = std::sscanf(line, "Umask: %o", &mask) == 1;
        std::fclose(status);
        if (found)
            return mask & 0777;
    }
    mode_t mask = ::umask(022);
    ::umask(mask);
    return mask & 0777;
}

WriteLock::WriteLock(const fs::path& lockFile)
{
    std::error_code ec;
    fs::create_directories(lockFile.parent_path(), ec);
    _fd = SystemCalls::open(lockFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0644);
    int result = _fd < 0 ? -1 : 0;
    while (_fd >= 0 && (result = SystemCalls::flock(_fd, LOCK_EX)) != 0 && errno == EINTR) {
    }
    if (result != 0) {
        _problem = failed("cannot take the lock");
        if (_fd >= 0)
            ::close(_fd);
        _fd = -1;
    }
}

WriteLock::~WriteLock()
{
    if (_fd >= 0)
        ::close(_fd);  // closing releases the lock
}

bool isTemporaryName(std::string_view name, std::string_view targetName)
{
    constexpr std::size_t kRandom = 6;
    if (name.size() != targetName.size() + 2 + kRandom || name[0] != '.' || name.substr(1, targetName.size()) != targetName ||
        name[1 + targetName.size()] != '.')
        return false;
    for (char c : name.substr(2 + targetName.size()))
        if (!std::isalnum(static_cast<unsigned char>(c)))
            return false;
    return true;
}

}  // namespace AtomicFile
