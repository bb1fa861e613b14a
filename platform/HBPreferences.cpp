#include "platform/HBPreferences.h"

#include "platform/HBPreferencesReadPass.h"
#include "platform/NSFileManager.h"
#include "platform/Process.h"
#include "platform/PropertyListSerialization.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr std::string_view preferencesDirectory = "/var/jb/var/mobile/Library/Preferences/";
constexpr std::string_view locksDirectory = "/var/jb/var/mobile/Library/Caches/com.veltram.nimbraprefs.locks/";

const PlistDictionary emptyValues;

/// An exclusive flock held for the life of the object.
class DomainLock {
public:
    explicit DomainLock(const std::string& identifier)
    {
        auto path = Process::current().hostPath(std::string(locksDirectory) + identifier + ".lock");
        if (!path)
            return;
        std::error_code ec;
        fs::create_directories(path->parent_path(), ec);
        _fd = ::open(path->c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        if (_fd >= 0)
            while (::flock(_fd, LOCK_EX) != 0 && errno == EINTR) {
            }
    }
    ~DomainLock()
    {
        if (_fd >= 0)
            ::close(_fd);  // closing releases the lock
    }
    DomainLock(const DomainLock&) = delete;
    DomainLock& operator=(const DomainLock&) = delete;

private:
    int _fd = -1;
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

void moveAside(const fs::path& file)
{
    std::string base = file.string() + ".corrupt-" + utcTimestamp();
    std::string target = base;
    std::error_code ec;
    for (int n = 2; fs::exists(fs::symlink_status(target, ec)); ++n)
        target = base + "-" + std::to_string(n);
    fs::rename(file, target, ec);
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

std::optional<PlistDictionary> HBPreferences::readFile(bool& corrupt) const
{
    corrupt = false;
    std::error_code ec;
    if (!_file || !fs::exists(fs::symlink_status(*_file, ec)))
        return std::nullopt;
    auto bytes = AtomicFile::read(*_file, kMaximumFileSize);
    std::optional<PlistValue> parsed;
    if (bytes)
        parsed = PropertyListSerialization::propertyListWithData(*bytes);
    if (!parsed || parsed->kind() != PlistValue::Kind::Dictionary) {
        corrupt = true;
        return PlistDictionary{};
    }
    return parsed->dictionaryValue();
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
    bool corrupt = false;
    Snapshot snapshot{st.st_dev, st.st_ino, st.st_size, st.st_mtim, readFile(corrupt).value_or(PlistDictionary{})};
    _snapshot = std::move(snapshot);
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

template <class Change>
bool HBPreferences::modify(Change change)
{
    if (!_file)
        return false;
    DomainLock lock(_identifier);
    bool corrupt = false;
    std::optional<PlistDictionary> values = readFile(corrupt);
    bool existed = values.has_value();
    if (!values)
        values.emplace();
    if (!change(*values, existed))
        return true;
    if (corrupt)
        moveAside(*_file);
    std::string bytes = PropertyListSerialization::dataWithPropertyList(PlistValue(*values),
                                                                        PropertyListSerialization::Format::Binary);
    bool written = AtomicFile::write(*_file, bytes);
    _snapshot.reset();
    HBPreferencesReadPass::forget(*this);
    return written;
}

bool HBPreferences::setObject(const PlistValue& value, std::string_view key)
{
    return modify([&](PlistDictionary& values, bool) {
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
    return modify([](PlistDictionary& values, bool existed) {
        values.clear();
        return existed;
    });
}
