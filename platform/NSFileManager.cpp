#include "platform/NSFileManager.h"

#include "platform/Process.h"

#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace fs = std::filesystem;

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
    return writeAtomically(path, [bytes](const AtomicFile::Sink& put) { return put(bytes); });
}

bool NSFileManager::writeAtomically(std::string_view path, const AtomicFile::Producer& produce) const
{
    auto host = Process::current().hostPath(path);
    if (!host)
        return false;
    // Writes of one file name are ordered by one lock, so the file has one temporary name and the
    // one a killed writer left is replaced by the next write, as a domain's is.
    auto lockFile = Process::current().hostPath(std::string(kLocksDirectory) + "files/" + host->filename().string() + ".lock");
    if (!lockFile)
        return false;
    AtomicFile::WriteLock lock(*lockFile);
    return lock.held() && !AtomicFile::replace(*host, produce, AtomicFile::Temporary::Fixed);
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
