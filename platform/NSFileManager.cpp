#include "platform/NSFileManager.h"

#include "platform/Process.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace fs = std::filesystem;

namespace AtomicFile {

bool write(const fs::path& path, std::string_view bytes)
{
    std::error_code ec;
    fs::create_directories(path.parent_path(), ec);
    std::string pattern = (path.parent_path() / ("." + path.filename().string() + ".XXXXXX")).string();
    int fd = ::mkstemp(pattern.data());
    if (fd < 0)
        return false;
    bool ok = ::fchmod(fd, 0644) == 0;
    for (std::size_t written = 0; ok && written < bytes.size();) {
        ssize_t n = ::write(fd, bytes.data() + written, bytes.size() - written);
        if (n < 0 && errno == EINTR)
            continue;
        ok = n > 0;
        if (ok)
            written += static_cast<std::size_t>(n);
    }
    ok = ok && ::fsync(fd) == 0;
    ok = ::close(fd) == 0 && ok;
    ok = ok && ::rename(pattern.c_str(), path.c_str()) == 0;
    if (!ok) {
        ::unlink(pattern.c_str());
        return false;
    }
    int dir = ::open(path.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir >= 0) {
        ::fsync(dir);
        ::close(dir);
    }
    return true;
}

std::optional<std::string> read(const fs::path& path, std::size_t limit, Links links)
{
    // Non-blocking, so that opening a FIFO does not wait for a writer; fstat then refuses it.
    int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | (links == Links::Refuse ? O_NOFOLLOW : 0);
    int fd = ::open(path.c_str(), flags);
    if (fd < 0)
        return std::nullopt;
    struct stat st {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode) || static_cast<std::size_t>(st.st_size) > limit) {
        ::close(fd);
        return std::nullopt;
    }
    std::string bytes;
    bytes.resize(static_cast<std::size_t>(st.st_size));
    std::size_t got = 0;
    while (got < bytes.size()) {
        ssize_t n = ::read(fd, bytes.data() + got, bytes.size() - got);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        got += static_cast<std::size_t>(n);
    }
    ::close(fd);
    bytes.resize(got);
    return bytes;
}

}  // namespace AtomicFile

NSFileManager& NSFileManager::defaultManager()
{
    static NSFileManager manager;
    return manager;
}

bool NSFileManager::fileExistsAtPath(std::string_view path) const
{
    auto host = Process::current().hostPath(path);
    std::error_code ec;
    // Links are followed: a link whose target is missing does not exist.
    return host && fs::exists(fs::status(*host, ec));
}

bool NSFileManager::removeItemAtPath(std::string_view path) const
{
    auto host = Process::current().hostPath(path);
    if (!host)
        return false;
    std::error_code ec;
    if (!fs::exists(fs::symlink_status(*host, ec)))
        return false;
    // remove_all removes a link itself, never what it points to.
    fs::remove_all(*host, ec);
    if (ec)
        return false;
    Process::current().events().record({{"event", "delete"}, {"path", Process::current().logicalPath(*host)}});
    return true;
}

std::optional<std::string> NSFileManager::contentsAtPath(std::string_view path, std::size_t limit) const
{
    auto host = Process::current().hostPath(path);
    if (!host)
        return std::nullopt;
    return AtomicFile::read(*host, limit);
}

bool NSFileManager::writeAtomically(std::string_view path, std::string_view bytes) const
{
    auto host = Process::current().hostPath(path);
    return host && AtomicFile::write(*host, bytes);
}

namespace {

void walk(const fs::path& folder, const std::string& prefix, std::vector<std::string>& found, int depth)
{
    if (depth > 64)
        return;
    std::error_code ec;
    std::vector<fs::directory_entry> entries;
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec))
        entries.push_back(*it);
    std::sort(entries.begin(), entries.end(), [](auto& a, auto& b) { return a.path().filename() < b.path().filename(); });
    for (auto& entry : entries) {
        std::string relative = prefix + entry.path().filename().string();
        found.push_back(relative);
        if (entry.is_directory(ec) && !entry.is_symlink(ec))
            walk(entry.path(), relative + "/", found, depth + 1);
    }
}

}  // namespace

std::vector<std::string> NSFileManager::enumeratorAtPath(std::string_view path) const
{
    std::vector<std::string> found;
    auto host = Process::current().hostPath(path);
    std::error_code ec;
    // The folder itself may be reached through a link; links inside it are listed, not followed.
    if (host && fs::is_directory(fs::status(*host, ec)))
        walk(*host, "", found, 0);
    return found;
}
