#include "storage/NIMFileSweep.h"

#include "platform/Events.h"
#include "platform/NSRegularExpression.h"
#include "platform/Process.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr int kMaximumDepth = 64;

class Walk {
public:
    Walk(const NSRegularExpression& expression, fs::path folder)
        : _expression(expression)
        , _folder(std::move(folder))
    {
    }

    /// Walks the open folder fd (which it closes) whose relative path is prefix.
    void folder(int fd, std::string& prefix, int depth)
    {
        DIR* directory = ::fdopendir(fd);
        if (!directory) {
            ::close(fd);
            return;
        }
        while (dirent* entry = ::readdir(directory)) {
            std::string_view name = entry->d_name;
            if (name == "." || name == "..")
                continue;
            std::size_t length = prefix.size();
            prefix.append(name);
            item(::dirfd(directory), entry, prefix, depth);
            prefix.resize(length);
        }
        ::closedir(directory);
    }

    /// The relative paths removed, in the order the walk met them.
    std::vector<std::string>& removed() { return _removed; }

private:
    void item(int parent, const dirent* entry, std::string& relative, int depth)
    {
        bool isFolder = entry->d_type == DT_DIR;
        if (entry->d_type == DT_UNKNOWN) {
            struct stat st {};
            isFolder = ::fstatat(parent, entry->d_name, &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(st.st_mode);
        }
        if (_expression.matches(relative) && remove(parent, entry->d_name, isFolder, relative)) {
            _removed.push_back(relative);
            return;
        }
        if (!isFolder || depth >= kMaximumDepth)
            return;
        int fd = ::openat(parent, entry->d_name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (fd < 0)
            return;
        relative.push_back('/');
        folder(fd, relative, depth + 1);
    }

    bool remove(int parent, const char* name, bool isFolder, const std::string& relative)
    {
        if (!isFolder)
            return ::unlinkat(parent, name, 0) == 0;
        // A whole folder: remove_all removes links inside it as links, never what they point to.
        std::error_code ec;
        fs::remove_all(_folder / relative, ec);
        return !ec;
    }

    const NSRegularExpression& _expression;
    fs::path _folder;
    std::vector<std::string> _removed;
};

// Name order of relative paths, each folder before its contents: "a/b" before "a-c".
bool inNameOrder(const std::string& a, const std::string& b)
{
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        if (x == '/' || y == '/')
            return x == '/' && y != '/';
        return static_cast<unsigned char>(x) < static_cast<unsigned char>(y);
    });
}

}  // namespace

void NIMFileSweep::run(const NSRegularExpression& expression, const std::string& folder)
{
    Process& process = Process::current();
    auto host = process.hostPath(folder);
    if (!host)
        return;
    // The configured folder is opened following a link (see the header); nothing below it is.
    int fd = ::open(host->c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return;
    Walk walk(expression, *host);
    std::string prefix;
    walk.folder(fd, prefix, 0);
    std::sort(walk.removed().begin(), walk.removed().end(), inNameOrder);
    // Walked names are plain (never "." or ".."), so a device path is the folder's plus the name.
    std::string base = process.logicalPath(*host);
    if (!base.empty() && !base.ends_with('/'))
        base += '/';
    for (const std::string& relative : walk.removed())
        process.events().record(Events::Delete{base.empty() ? std::string() : base + relative});
}
