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

const PlistDictionary emptyValues;

/// How often the write path reads a file that could not be read before it gives up.
constexpr int kReadAttempts = 3;

/// The lock file that orders the writes of a domain; nothing when it lies outside the root.
std::optional<fs::path> lockFile(const std::string& identifier)
{
    return Process::current().hostPath(std::string(NSFileManager::kLocksDirectory) + identifier + ".lock");
}

std::string utcTimestamp()
{
    std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm tm {};
    gmtime_r(&now, &tm);
    char text[32];
    std::strftime(text, sizeof text, "%Y%m%dT%H%M%SZ", &tm);
    return text;
}

/// Renames a damaged file aside (HBPreferences::damagedFileAside); false when it stays.
bool moveAside(const std::string& file)
{
    return SystemCalls::rename(file.c_str(), HBPreferences::damagedFileAside(file).c_str()) == 0;
}

}  // namespace

std::string HBPreferences::damagedFileAside(const std::string& file)
{
    std::string base = file + ".corrupt-" + utcTimestamp();
    std::string target = base;
    std::error_code ec;
    for (int n = 2; fs::exists(fs::symlink_status(target, ec)); ++n)
        target = base + "-" + std::to_string(n);
    return target;
}

std::optional<bool> HBPreferences::fileIsDamaged() const
{
    Stored stored = loadForWrite(Reading::Check);
    if (stored.state == Stored::State::Unreadable)
        return std::nullopt;
    return stored.state == Stored::State::Corrupt;
}

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

HBPreferences::Stored HBPreferences::load(Reading reading) const
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
        stored.problem = contents.problem;
        return stored;
    case AtomicFile::ReadStatus::Unusable:
        stored.state = Stored::State::Corrupt;
        return stored;
    case AtomicFile::ReadStatus::Read:
        break;
    }
    if (reading == Reading::Check) {
        stored.state = PropertyListSerialization::isDictionaryData(contents.bytes) ? Stored::State::Values : Stored::State::Corrupt;
        return stored;
    }
    std::optional<PlistValue> parsed = PropertyListSerialization::propertyListWithData(contents.bytes);
    if (!parsed || parsed->kind() != PlistValue::Kind::Dictionary) {
        stored.state = Stored::State::Corrupt;
        return stored;
    }
    stored.state = Stored::State::Values;
    stored.values = std::move(*parsed).takeDictionary();
    return stored;
}

const PlistDictionary& HBPreferences::current()
{
    if (HBPreferencesReadPass::hasChecked(*this))
        return _snapshot ? _snapshot->values.dictionaryValue() : emptyValues;
    HBPreferencesReadPass::checked(*this);
    struct stat st {};
    if (!_file || ::stat(_file->c_str(), &st) != 0) {
        _snapshot.reset();
        return emptyValues;
    }
    if (_snapshot && _snapshot->device == st.st_dev && _snapshot->inode == st.st_ino && _snapshot->size == st.st_size &&
        _snapshot->modified.tv_sec == st.st_mtim.tv_sec && _snapshot->modified.tv_nsec == st.st_mtim.tv_nsec)
        return _snapshot->values.dictionaryValue();
    Stored stored = load();
    if (stored.state == Stored::State::Unreadable) {
        // Read as empty this time; the next read tries again.
        _snapshot.reset();
        return emptyValues;
    }
    _snapshot = Snapshot{st.st_dev, st.st_ino, st.st_size, st.st_mtim, PlistValue(std::move(stored.values))};
    return _snapshot->values.dictionaryValue();
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

namespace {
thread_local const HBPreferences::RowWrite* currentRowWrite = nullptr;
}

HBPreferences::RowWrite::RowWrite(std::string label, std::string page)
    : _label(std::move(label))
    , _page(std::move(page))
    , _outer(currentRowWrite)
{
    currentRowWrite = this;
}

HBPreferences::RowWrite::~RowWrite()
{
    currentRowWrite = _outer;
}

const HBPreferences::RowWrite* HBPreferences::RowWrite::current()
{
    return currentRowWrite;
}

bool HBPreferences::refuse(std::string_view what, const std::string& reason) const
{
    EventLog::Event event{{"event", "error"},
                          {"message", "could not store " + std::string(what) + " in " + _identifier + ": " + reason},
                          {"domain", _identifier},
                          {"key", _writingKey},
                          {"reason", reason},
                          {"path", pathForIdentifier(_identifier)},
                          {"write", true}};
    if (const RowWrite* row = RowWrite::current()) {
        event["label"] = row->label();
        event["page"] = row->page();
    }
    Process::current().events().record(std::move(event));
    return false;
}

HBPreferences::Stored HBPreferences::loadForWrite(Reading reading) const
{
    Stored stored = load(reading);
    for (int attempt = 1; attempt < kReadAttempts && stored.state == Stored::State::Unreadable; ++attempt)
        stored = load(reading);
    return stored;
}

bool HBPreferences::store(PlistDictionary values, bool corrupt, std::string_view what)
{
    _snapshot.reset();
    if (corrupt && !moveAside(*_file))
        return refuse(what, std::string("the damaged file cannot be moved aside (") + std::strerror(errno) +
                                "); nothing was changed");
    PlistValue written(std::move(values));
    std::string bytes = PropertyListSerialization::dataWithPropertyList(written, PropertyListSerialization::Format::Binary);
    // The domain's lock is held: the temporary file has its one name, and one that a killed writer
    // left is replaced without looking through the folder.
    if (auto problem = AtomicFile::replace(*_file, bytes, AtomicFile::Temporary::Fixed))
        return refuse(what, *problem);
    // What was just written is what the next read finds (writers that take the lock wait for it):
    // kept, so that the next read does not parse the file again.
    struct stat st {};
    if (::stat(_file->c_str(), &st) == 0 && static_cast<std::size_t>(st.st_size) == bytes.size())
        _snapshot = Snapshot{st.st_dev, st.st_ino, st.st_size, st.st_mtim, std::move(written)};
    HBPreferencesReadPass::forget(*this);
    return true;
}

template <class Change>
bool HBPreferences::modify(std::string_view what, Change change)
{
    if (!_file)
        return refuse(what, "\"" + _identifier + "\" names no preference file");
    auto lockPath = lockFile(_identifier);
    if (!lockPath)
        return refuse(what, "the domain's lock file is outside the root; nothing was changed");
    AtomicFile::WriteLock lock(*lockPath);
    if (!lock.held())
        return refuse(what, lock.problem() + "; nothing was changed");
    // The domain's one temporary file, when there is one, was left by a writer that was killed:
    // it goes now, even when nothing needs writing.
    ::unlink(AtomicFile::temporaryName(*_file).c_str());
    Stored stored = loadForWrite();
    if (stored.state == Stored::State::Unreadable)
        return refuse(what, "the file cannot be read (" + stored.problem + "); nothing was changed");
    if (!change(stored.values, stored.state != Stored::State::Missing))
        return true;
    return store(std::move(stored.values), stored.state == Stored::State::Corrupt, what);
}

bool HBPreferences::setObject(const PlistValue& value, std::string_view key)
{
    _writingKey = key;
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
    _writingKey.clear();
    return modify("an empty domain", [](PlistDictionary& values, bool existed) {
        values.clear();
        return existed;
    });
}

bool HBPreferences::replaceAllObjects(const PlistDictionary& contents)
{
    _writingKey.clear();
    return modify("the restored domain", [&](PlistDictionary& values, bool) {
        values = contents;
        return true;
    });
}
