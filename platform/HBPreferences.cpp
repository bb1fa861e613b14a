#include "platform/HBPreferences.h"

#include "platform/AtomicFile.h"
#include "platform/HBPreferencesReadPass.h"
#include "platform/NSFileManager.h"
#include "platform/Process.h"
#include "platform/PropertyListSerialization.h"
#include "platform/SystemCalls.h"

#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr std::string_view preferencesDirectory = "/var/jb/var/mobile/Library/Preferences/";
constexpr std::string_view locksDirectory = "/var/jb/var/mobile/Library/Caches/com.veltram.nimbraprefs.locks/";

const PlistDictionary emptyValues;

/// How often the write path reads a file that could not be read before it gives up.
constexpr int kReadAttempts = 3;

/// An exclusive flock on the domain's lock file, held for the life of the object. A lock that
/// cannot be taken is reported by held() and problem(): nothing is written without it.
class DomainLock {
public:
    explicit DomainLock(const std::string& identifier)
    {
        std::string logical = std::string(locksDirectory) + identifier + ".lock";
        auto path = Process::current().hostPath(logical);
        if (!path) {
            _problem = "the lock file " + logical + " is outside the root";
            return;
        }
        std::error_code ec;
        fs::create_directories(path->parent_path(), ec);
        _fd = SystemCalls::open(path->c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0644);
        int result = _fd < 0 ? -1 : 0;
        while (_fd >= 0 && (result = SystemCalls::flock(_fd, LOCK_EX)) != 0 && errno == EINTR) {
        }
        if (result != 0) {
            _problem = "cannot take the lock " + logical + " (" + std::strerror(errno) + ")";
            if (_fd >= 0)
                ::close(_fd);
            _fd = -1;
            return;
        }
        _takenAt = fs::file_time_type::clock::now();
    }
    ~DomainLock()
    {
        if (_fd >= 0)
            ::close(_fd);  // closing releases the lock
    }
    DomainLock(const DomainLock&) = delete;
    DomainLock& operator=(const DomainLock&) = delete;

    bool held() const { return _fd >= 0; }
    const std::string& problem() const { return _problem; }
    /// When the lock was taken: every writer that started before has finished or died.
    fs::file_time_type takenAt() const { return _takenAt; }

private:
    int _fd = -1;
    std::string _problem;
    fs::file_time_type _takenAt;
};

std::string utcTimestamp()
{
    std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm tm {};
    gmtime_r(&now, &tm);
    char text[32];
    std::strftime(text, sizeof text, "%Y%m%dT%H%M%SZ", &tm);
    return text;
}

/// Renames a damaged file to "<name>.corrupt-<UTC timestamp>[-N]"; false when it stays.
bool moveAside(const fs::path& file)
{
    std::string base = file.string() + ".corrupt-" + utcTimestamp();
    std::string target = base;
    std::error_code ec;
    for (int n = 2; fs::exists(fs::symlink_status(target, ec)); ++n)
        target = base + "-" + std::to_string(n);
    return SystemCalls::rename(file.c_str(), target.c_str()) == 0;
}

/// Removes the temporary files of writes of file that were interrupted (the writer was killed):
/// only files of the writer's own naming pattern, modified before the domain's lock was taken by
/// the caller, which holds it.
void removeInterruptedWrites(const fs::path& file, fs::file_time_type lockTakenAt)
{
    std::error_code ec;
    std::string name = file.filename().string();
    for (fs::directory_iterator it(file.parent_path(), ec), end; !ec && it != end; it.increment(ec)) {
        const fs::path& entry = it->path();
        if (!AtomicFile::isTemporaryName(entry.filename().string(), name))
            continue;
        std::error_code entryError;
        auto status = fs::symlink_status(entry, entryError);
        auto modified = fs::last_write_time(entry, entryError);
        if (!entryError && fs::is_regular_file(status) && modified <= lockTakenAt)
            fs::remove(entry, entryError);
    }
}

}  // namespace

bool HBPreferences::isValidIdentifier(std::string_view identifier)
{
    return !identifier.empty() && identifier != "." && identifier != ".." &&
           identifier.find('/') == std::string_view::npos && identifier.find('\0') == std::string_view::npos;
}

std::string HBPreferences::pathForIdentifier(std::string_view identifier)
{
    return std::string(preferencesDirectory) + std::string(identifier) + ".plist";
}

std::shared_ptr<HBPreferences> HBPreferences::preferencesForIdentifier(std::string_view identifier)
{
    auto& shared = Process::current().preferences();
    auto it = shared.find(identifier);
    if (it != shared.end())
        return it->second;
    auto preferences = std::make_shared<HBPreferences>(std::string(identifier));
    shared.emplace(std::string(identifier), preferences);
    return preferences;
}

HBPreferences::HBPreferences(std::string identifier)
    : _identifier(std::move(identifier))
{
    if (isValidIdentifier(_identifier))
        _file = Process::current().hostPath(pathForIdentifier(_identifier));
}

HBPreferences::Stored HBPreferences::load() const
{
    Stored stored;
    if (!_file)
        return stored;
    AtomicFile::Contents contents = AtomicFile::load(*_file, kMaximumFileSize);
    switch (contents.status) {
    case AtomicFile::ReadStatus::Missing:
        return stored;
    case AtomicFile::ReadStatus::Unreadable:
        stored.state = Stored::State::Unreadable;
        stored.problem = pathForIdentifier(_identifier) + ": " + contents.problem;
        return stored;
    case AtomicFile::ReadStatus::Unusable:
        stored.state = Stored::State::Corrupt;
        return stored;
    case AtomicFile::ReadStatus::Read:
        break;
    }
    std::optional<PlistValue> parsed = PropertyListSerialization::propertyListWithData(contents.bytes);
    if (!parsed || parsed->kind() != PlistValue::Kind::Dictionary) {
        stored.state = Stored::State::Corrupt;
        return stored;
    }
    stored.state = Stored::State::Values;
    stored.values = parsed->dictionaryValue();
    return stored;
}

const PlistDictionary& HBPreferences::current()
{
    if (HBPreferencesReadPass::hasChecked(*this))
        return _snapshot ? _snapshot->values : emptyValues;
    HBPreferencesReadPass::checked(*this);
    struct stat st {};
    if (!_file || ::stat(_file->c_str(), &st) != 0) {
        _snapshot.reset();
        return emptyValues;
    }
    if (_snapshot && _snapshot->device == st.st_dev && _snapshot->inode == st.st_ino && _snapshot->size == st.st_size &&
        _snapshot->modified.tv_sec == st.st_mtim.tv_sec && _snapshot->modified.tv_nsec == st.st_mtim.tv_nsec)
        return _snapshot->values;
    Stored stored = load();
    if (stored.state == Stored::State::Unreadable) {
        // Read as empty this time; the next read tries again.
        _snapshot.reset();
        return emptyValues;
    }
    _snapshot = Snapshot{st.st_dev, st.st_ino, st.st_size, st.st_mtim, std::move(stored.values)};
    return _snapshot->values;
}

PlistValue HBPreferences::objectForKey(std::string_view key)
{
    const PlistDictionary& values = current();
    auto it = values.find(key);
    return it == values.end() ? PlistValue() : it->second;
}

bool HBPreferences::boolForKey(std::string_view key)
{
    return objectForKey(key).boolValue();
}

bool HBPreferences::boolForKey(std::string_view key, bool defaultValue)
{
    PlistValue value = objectForKey(key);
    return value.isNil() ? defaultValue : value.boolValue();
}

std::int64_t HBPreferences::integerForKey(std::string_view key)
{
    return objectForKey(key).integerValue();
}

std::int64_t HBPreferences::integerForKey(std::string_view key, std::int64_t defaultValue)
{
    PlistValue value = objectForKey(key);
    return value.isNil() ? defaultValue : value.integerValue();
}

double HBPreferences::doubleForKey(std::string_view key, double defaultValue)
{
    PlistValue value = objectForKey(key);
    return value.isNil() ? defaultValue : value.doubleValue();
}

PlistDictionary HBPreferences::dictionaryRepresentation()
{
    return current();
}

bool HBPreferences::refuse(std::string_view what, const std::string& problem) const
{
    Process::current().events().record({{"event", "error"},
                                        {"message", "could not store " + std::string(what) + " in " + _identifier + ": " + problem},
                                        {"domain", _identifier},
                                        {"write", true}});
    return false;
}

HBPreferences::Stored HBPreferences::loadForWrite() const
{
    Stored stored = load();
    for (int attempt = 1; attempt < kReadAttempts && stored.state == Stored::State::Unreadable; ++attempt)
        stored = load();
    return stored;
}

bool HBPreferences::store(const PlistDictionary& values, bool corrupt, std::string_view what)
{
    _snapshot.reset();
    if (corrupt && !moveAside(*_file))
        return refuse(what, "the damaged file " + pathForIdentifier(_identifier) + " cannot be moved aside (" +
                                std::strerror(errno) + "); nothing was changed");
    std::string bytes = PropertyListSerialization::dataWithPropertyList(PlistValue(values),
                                                                        PropertyListSerialization::Format::Binary);
    if (auto problem = AtomicFile::replace(*_file, bytes))
        return refuse(what, pathForIdentifier(_identifier) + ": " + *problem);
    HBPreferencesReadPass::forget(*this);
    return true;
}

template <class Change>
bool HBPreferences::modify(std::string_view what, Change change)
{
    if (!_file)
        return refuse(what, "\"" + _identifier + "\" names no preference file");
    DomainLock lock(_identifier);
    if (!lock.held())
        return refuse(what, lock.problem() + "; nothing was changed");
    removeInterruptedWrites(*_file, lock.takenAt());
    Stored stored = loadForWrite();
    if (stored.state == Stored::State::Unreadable)
        return refuse(what, stored.problem + "; nothing was changed");
    if (!change(stored.values, stored.state != Stored::State::Missing))
        return true;
    return store(stored.values, stored.state == Stored::State::Corrupt, what);
}

bool HBPreferences::setObject(const PlistValue& value, std::string_view key)
{
    return modify("\"" + std::string(key) + "\"", [&](PlistDictionary& values, bool) {
        if (value.isNil())
            return values.erase(std::string(key)) > 0;
        auto stored = values.find(key);
        // The same value of the same kind is already on disk: nothing to write (nor to flush).
        if (stored != values.end() && stored->second.kind() == value.kind() && stored->second == value)
            return false;
        values[std::string(key)] = value;
        return true;
    });
}

bool HBPreferences::removeAllObjects()
{
    return modify("an empty domain", [](PlistDictionary& values, bool existed) {
        values.clear();
        return existed;
    });
}

bool HBPreferences::replaceAllObjects(const PlistDictionary& contents)
{
    return modify("the restored domain", [&](PlistDictionary& values, bool) {
        values = contents;
        return true;
    });
}
