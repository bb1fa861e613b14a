#include "host/SettingsBackup.h"

#include "host/JsonValue.h"
#include "platform/HBPreferences.h"
#include "platform/NSFileManager.h"
#include "platform/Process.h"
#include "platform/AtomicFile.h"
#include "platform/PropertyListSerialization.h"
#include "platform/SystemCalls.h"

#include <stb/stb_image.h>

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <memory>
#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kBaseDomain = "com.veltram.nimbraprefs";
constexpr std::string_view kPreferencesFolder = "/var/jb/var/mobile/Library/Preferences/";
constexpr std::string_view kPictureFolder = "/var/jb/var/mobile/Library/Nimbra/";
constexpr int kMaximumDepth = 64;
/// The journal of a restore: which staged files replace which files, and whether they must.
constexpr std::string_view kJournal = "/var/jb/var/mobile/Library/Caches/com.veltram.nimbraprefs.restore.plist";
/// Held by a restore and by the recovery of an interrupted one, so they never overlap.
constexpr std::string_view kRestoreLock = "restore.lock";

std::string sizeText(std::size_t bytes)
{
    return std::to_string(bytes / (1024 * 1024)) + " MiB";
}

bool isPictureName(std::string_view name)
{
    if (name.empty() || name.size() > 255 || name.front() == '.' || name.front() == '-')
        return false;
    for (char c : name)
        if (!((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '-' || c == '.'))
            return false;
    return true;
}

bool isPng(std::string_view bytes)
{
    static constexpr std::string_view signature("\x89PNG\r\n\x1a\n", 8);
    int width = 0, height = 0, components = 0;
    return bytes.starts_with(signature) && bytes.size() <= INT_MAX &&
           stbi_info_from_memory(reinterpret_cast<const stbi_uc*>(bytes.data()), static_cast<int>(bytes.size()), &width,
                                 &height, &components);
}

/// Whether a value is made only of property-list types, nested no deeper than kMaximumDepth.
bool isPropertyList(const PlistValue& value, int depth = 0)
{
    if (depth > kMaximumDepth)
        return false;
    switch (value.kind()) {
    case PlistValue::Kind::Nil:
    case PlistValue::Kind::Class:
        return false;
    case PlistValue::Kind::Array:
        for (auto& element : value.arrayValue())
            if (!isPropertyList(element, depth + 1))
                return false;
        return true;
    case PlistValue::Kind::Dictionary:
        for (auto& [key, element] : value.dictionaryValue())
            if (!isPropertyList(element, depth + 1))
                return false;
        return true;
    default:
        return true;
    }
}

fs::path hostPath(const std::string& logical)
{
    auto path = Process::current().hostPath(logical);
    if (!path)
        throw BackupError("no device path " + logical);
    return *path;
}

/// The product's domain files of the Preferences folder ("IDENTIFIER.plist").
bool isDomainFileName(std::string_view name)
{
    return name.ends_with(".plist") && SettingsBackup::isProductDomain(name.substr(0, name.size() - 6));
}

bool isPictureFileName(std::string_view name)
{
    return name.ends_with(".png");
}

/// The files of a folder whose names pass wanted and that read as regular files, by name: a link
/// to a file is in (the pages read and write through it), a link to nothing or to a folder is not.
/// Only a link (or an entry of unknown type) costs a look at what it names.
std::vector<std::string> filesIn(const fs::path& folder, bool (*wanted)(std::string_view))
{
    std::vector<std::string> names;
    DIR* dir = ::opendir(folder.c_str());
    if (!dir)
        return names;
    while (const dirent* entry = ::readdir(dir)) {
        std::string_view name = entry->d_name;
        if (!wanted(name))
            continue;
        struct stat info {};
        if (entry->d_type == DT_REG ||
            ((entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN) && ::stat((folder / name).c_str(), &info) == 0 &&
             S_ISREG(info.st_mode)))
            names.emplace_back(name);
    }
    ::closedir(dir);
    std::sort(names.begin(), names.end());
    return names;
}

/// The name a file is staged under beside itself during a restore.
fs::path stagedName(const fs::path& target)
{
    return target.parent_path() / ("." + target.filename().string() + ".restore");
}

/// One file a restore replaces.
struct Replacement {
    std::string target;  // device path
    std::string bytes;
    std::string lock;    // device path of the lock that orders its writes
};

std::string lockOfDomain(const std::string& identifier)
{
    return std::string(NSFileManager::kLocksDirectory) + identifier + ".lock";
}

std::string lockOfFile(const std::string& logical)
{
    return std::string(NSFileManager::kLocksDirectory) + "files/" + fs::path(logical).filename().string() + ".lock";
}

/// A damaged file a restore replaces, and the name it is kept under (device paths).
struct Aside {
    std::string target;
    std::string aside;
};

/// Writes the journal durably; what failed, if anything.
std::optional<std::string> writeJournal(const fs::path& journal, std::string_view state, const std::vector<Replacement>& files,
                                        const std::vector<Aside>& asides)
{
    PlistArray targets, kept;
    targets.reserve(files.size());
    for (auto& file : files)
        targets.push_back(PlistValue(file.target));
    for (auto& aside : asides)
        kept.push_back(PlistValue(PlistDictionary{{"file", PlistValue(aside.target)}, {"aside", PlistValue(aside.aside)}}));
    PlistDictionary contents{{"state", PlistValue(state)}, {"files", PlistValue(std::move(targets))},
                             {"aside", PlistValue(std::move(kept))}};
    // The restore lock is held: the journal's temporary file has its one name.
    return AtomicFile::replace(journal,
                               PropertyListSerialization::dataWithPropertyList(PlistValue(std::move(contents)),
                                                                               PropertyListSerialization::Format::Binary),
                               AtomicFile::Temporary::Fixed);
}

/// Removes the journal durably.
void removeJournal(const fs::path& journal)
{
    ::unlink(journal.c_str());
    AtomicFile::flushFolderOf(journal);
}

/// The folders holding files, each once.
std::vector<fs::path> foldersOf(const std::vector<fs::path>& files)
{
    std::vector<fs::path> folders;
    for (auto& file : files)
        if (std::find(folders.begin(), folders.end(), file.parent_path()) == folders.end())
            folders.push_back(file.parent_path());
    return folders;
}

/// Finishes (state "commit") or undoes (state "staging") the restore a journal describes, then
/// removes the journal. The caller holds the restore lock. What failed, if anything.
std::optional<std::string> settle(const fs::path& journal)
{
    auto bytes = AtomicFile::read(journal, 64 << 20);
    if (!bytes)
        return std::nullopt;
    auto parsed = PropertyListSerialization::propertyListWithData(*bytes);
    Process& process = Process::current();
    std::vector<fs::path> targets;
    if (parsed)
        for (auto& item : (*parsed)["files"].arrayValue())
            if (auto host = process.hostPath(item.stringValue()); host && item.isString())
                targets.push_back(*host);
    bool commit = parsed && (*parsed)["state"].stringValue() == "commit";
    // The damaged files kept aside: an undone restore leaves each one in place, so its second name goes.
    if (parsed && !commit)
        for (auto& item : (*parsed)["aside"].arrayValue())
            if (auto host = process.hostPath(item["aside"].stringValue()); host && item["aside"].isString())
                ::unlink(host->c_str());
    std::optional<std::string> problem;
    for (auto& target : targets) {
        fs::path staged = stagedName(target);
        if (commit) {
            if (SystemCalls::rename(staged.c_str(), target.c_str()) != 0 && errno != ENOENT && !problem)
                problem = std::string("cannot put a restored file in place (") + std::strerror(errno) + ")";
        } else {
            ::unlink(staged.c_str());
        }
    }
    for (auto& folder : foldersOf(targets))
        if (auto flushed = AtomicFile::flushFolderOf(folder / "."); flushed && !problem)
            problem = *flushed;
    if (problem)
        return problem;  // the journal stays: the next start tries again
    removeJournal(journal);
    return std::nullopt;
}

fs::path restoreLockPath()
{
    return hostPath(std::string(NSFileManager::kLocksDirectory) + std::string(kRestoreLock));
}

}  // namespace

bool SettingsBackup::isProductDomain(std::string_view identifier)
{
    if (identifier == kBaseDomain)
        return true;
    if (!identifier.starts_with(std::string(kBaseDomain) + ".") || identifier.size() == kBaseDomain.size() + 1 ||
        identifier.size() > 200 || identifier.back() == '.' || identifier.find("..") != std::string_view::npos)
        return false;
    for (char c : identifier)
        if (!((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '.' || c == '-' || c == '_'))
            return false;
    return HBPreferences::isValidIdentifier(identifier);
}

std::string SettingsBackup::collectData(std::vector<std::string>* skipped)
{
    auto skip = [&](const std::string& what) {
        if (skipped)
            skipped->push_back(what);
    };
    using Writer = PropertyListSerialization::BinaryPropertyListWriter;
    Writer writer;
    std::vector<std::pair<std::string, Writer::Reference>> domains, pictures;
    fs::path preferences = hostPath(std::string(kPreferencesFolder));
    for (const std::string& name : filesIn(preferences, isDomainFileName)) {
        auto bytes = AtomicFile::read(preferences / name, HBPreferences::kMaximumFileSize);
        auto parsed = bytes ? PropertyListSerialization::propertyListWithData(*bytes) : std::nullopt;
        if (!parsed || parsed->kind() != PlistValue::Kind::Dictionary || !isPropertyList(*parsed)) {
            skip(std::string(kPreferencesFolder) + name + " (damaged)");
            continue;
        }
        // Written now and dropped: the values of every domain are never held at once.
        domains.emplace_back(name.substr(0, name.size() - 6), writer.add(*parsed));
    }
    fs::path pictureFolder = hostPath(std::string(kPictureFolder));
    for (const std::string& name : filesIn(pictureFolder, isPictureFileName)) {
        std::string base = name.substr(0, name.size() - 4);
        auto bytes = AtomicFile::read(pictureFolder / name, kMaximumPicture);
        if (!isPictureName(base) || !bytes || !isPng(*bytes)) {
            skip(std::string(kPictureFolder) + name + " (not a PNG picture of at most " + sizeText(kMaximumPicture) + ")");
            continue;
        }
        pictures.emplace_back(base, writer.addData(*bytes));
    }
    Writer::Reference top = writer.addDictionary({
        {"format", writer.add(PlistValue(kFormat))},
        {"version", writer.add(PlistValue(static_cast<long long>(kVersion)))},
        {"domains", writer.addDictionary(std::move(domains))},
        {"pictures", writer.addDictionary(std::move(pictures))},
    });
    // Binary: the one property-list format that holds every value exactly (a date's fraction, an
    // integer past 2^63, a UID, a string with any character).
    return std::string(writer.finish(top));
}

std::string SettingsBackup::stamp()
{
    // FNV-1a over each file's name, size, modification and change times and inode.
    std::uint64_t hash = 14695981039346656037ULL;
    auto mix = [&](const void* data, std::size_t size) {
        for (std::size_t i = 0; i < size; ++i) {
            hash ^= static_cast<const unsigned char*>(data)[i];
            hash *= 1099511628211ULL;
        }
    };
    auto add = [&](const fs::path& folder, const std::string& name) {
        struct stat info {};
        // Through a link, as collectData() reads it.
        if (::stat((folder / name).c_str(), &info) != 0)
            return;
        std::int64_t facts[] = {static_cast<std::int64_t>(info.st_size), static_cast<std::int64_t>(info.st_mtim.tv_sec),
                                static_cast<std::int64_t>(info.st_mtim.tv_nsec), static_cast<std::int64_t>(info.st_ctim.tv_sec),
                                static_cast<std::int64_t>(info.st_ctim.tv_nsec), static_cast<std::int64_t>(info.st_ino)};
        mix(name.data(), name.size() + 1);
        mix(facts, sizeof facts);
    };
    fs::path preferences = hostPath(std::string(kPreferencesFolder));
    for (const std::string& name : filesIn(preferences, isDomainFileName))
        add(preferences, name);
    fs::path pictures = hostPath(std::string(kPictureFolder));
    for (const std::string& name : filesIn(pictures, isPictureFileName))
        add(pictures, name);
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash));
    return text;
}

SettingsBackup SettingsBackup::fromData(std::string_view bytes)
{
    if (bytes.size() > kMaximumSize)
        throw BackupError("the backup is larger than " + sizeText(kMaximumSize));
    auto parsed = PropertyListSerialization::propertyListWithData(bytes);
    if (!parsed || parsed->kind() != PlistValue::Kind::Dictionary)
        throw BackupError("the file is not a settings backup (not a property list; is it complete?)");
    const PlistValue& top = *parsed;
    if (top["format"].stringValue() != kFormat)
        throw BackupError("the file is not a Nimbra settings backup (its format is not \"" + std::string(kFormat) + "\")");
    if (top["version"].kind() != PlistValue::Kind::Integer || top["version"].integerValue() != kVersion)
        throw BackupError("the backup's version is not supported (this program restores version " + std::to_string(kVersion) + ")");
    if (top["domains"].kind() != PlistValue::Kind::Dictionary)
        throw BackupError("the backup has no \"domains\" dictionary");
    SettingsBackup backup;
    for (auto& [identifier, values] : top["domains"].dictionaryValue()) {
        if (!isProductDomain(identifier))
            throw BackupError("the backup holds \"" + identifier + "\", which is not a Nimbra preference domain");
        if (values.kind() != PlistValue::Kind::Dictionary || !isPropertyList(values))
            throw BackupError("the domain \"" + identifier + "\" is not a dictionary of property-list values");
        std::string encoded = PropertyListSerialization::dataWithPropertyList(values, PropertyListSerialization::Format::Binary);
        if (encoded.size() > HBPreferences::kMaximumFileSize)
            throw BackupError("the domain \"" + identifier + "\" is larger than " + sizeText(HBPreferences::kMaximumFileSize));
        backup._domains.emplace(identifier, values);
        backup._encoded.emplace(identifier, std::move(encoded));
    }
    const PlistValue& pictures = top["pictures"];
    if (!pictures.isNil() && pictures.kind() != PlistValue::Kind::Dictionary)
        throw BackupError("the backup's \"pictures\" is not a dictionary");
    if (!pictures.isNil())
        for (auto& [name, value] : pictures.dictionaryValue()) {
            if (!isPictureName(name))
                throw BackupError("the picture name \"" + name + "\" is not a plain file name");
            const PlistData* data = value.dataValue();
            if (!data || data->bytes.size() > kMaximumPicture)
                throw BackupError("the picture \"" + name + "\" is not picture data of at most " + sizeText(kMaximumPicture));
            std::string pictureBytes(data->bytes.begin(), data->bytes.end());
            if (!isPng(pictureBytes))
                throw BackupError("the picture \"" + name + "\" is not a PNG image");
            backup._pictures.emplace(name, std::move(pictureBytes));
        }
    return backup;
}

SettingsBackup SettingsBackup::fromFile(const fs::path& file)
{
    std::error_code ec;
    auto status = fs::status(file, ec);
    if (ec || !fs::exists(status))
        throw BackupError("there is no file " + file.string());
    if (!fs::is_regular_file(status))
        throw BackupError(file.string() + " is not a file");
    auto size = fs::file_size(file, ec);
    if (ec || size > kMaximumSize)
        throw BackupError("the backup is larger than " + sizeText(kMaximumSize));
    auto bytes = AtomicFile::read(file, kMaximumSize);
    if (!bytes)
        throw BackupError("cannot read " + file.string());
    return fromData(*bytes);
}

nlohmann::ordered_json SettingsBackup::changes() const
{
    auto list = nlohmann::ordered_json::array();
    auto json = [](const PlistValue* value) { return value ? toJson(*value) : nlohmann::ordered_json(nullptr); };
    for (auto& [identifier, values] : _domains) {
        PlistDictionary current = HBPreferences::preferencesForIdentifier(identifier)->dictionaryRepresentation();
        std::map<std::string, std::pair<const PlistValue*, const PlistValue*>, std::less<>> keys;
        for (auto& [key, value] : current)
            keys[key].first = &value;
        for (auto& [key, value] : values.dictionaryValue())
            keys[key].second = &value;
        for (auto& [key, pair] : keys) {
            auto [old, now] = pair;
            if (old && now && *old == *now)
                continue;
            list.push_back({{"domain", identifier}, {"key", key}, {"old", json(old)}, {"new", json(now)}});
        }
    }
    for (auto& [name, bytes] : _pictures) {
        std::string path = std::string(kPictureFolder) + name + ".png";
        auto current = NSFileManager::defaultManager().contentsAtPath(path, kMaximumPicture + 1);
        if (current && *current == bytes)
            continue;
        nlohmann::ordered_json old = current ? nlohmann::ordered_json(current->size()) : nlohmann::ordered_json(nullptr);
        list.push_back({{"picture", path}, {"old", old}, {"new", bytes.size()}});
    }
    return list;
}

void SettingsBackup::finishInterruptedRestore()
{
    // Without a journal no restore was interrupted; one that starts now is not disturbed.
    std::error_code ec;
    if (!fs::exists(fs::symlink_status(hostPath(std::string(kJournal)), ec)))
        return;
    AtomicFile::WriteLock lock(restoreLockPath());
    if (!lock.held())
        throw BackupError("cannot take the restore lock (" + lock.problem() + ")");
    if (auto problem = settle(hostPath(std::string(kJournal))))
        throw BackupError("an interrupted restore could not be finished: " + *problem);
}

void SettingsBackup::restore() const
{
    AtomicFile::WriteLock restoreLock(restoreLockPath());
    if (!restoreLock.held())
        throw BackupError("cannot take the restore lock (" + restoreLock.problem() + "); nothing was restored");
    fs::path journal = hostPath(std::string(kJournal));
    if (auto problem = settle(journal))
        throw BackupError("an interrupted restore could not be finished (" + *problem + "); nothing was restored");

    std::vector<Replacement> files;
    for (auto& [identifier, values] : _domains) {
        auto encoded = _encoded.find(identifier);
        files.push_back({HBPreferences::pathForIdentifier(identifier),
                         encoded != _encoded.end()
                             ? encoded->second
                             : PropertyListSerialization::dataWithPropertyList(values, PropertyListSerialization::Format::Binary),
                         lockOfDomain(identifier)});
    }
    for (auto& [name, bytes] : _pictures) {
        std::string path = std::string(kPictureFolder) + name + ".png";
        files.push_back({path, bytes, lockOfFile(path)});
    }
    // Every file's own lock, so that no value write runs between the old set and the new one.
    std::vector<std::unique_ptr<AtomicFile::WriteLock>> locks;
    for (auto& file : files) {
        locks.push_back(std::make_unique<AtomicFile::WriteLock>(hostPath(file.lock)));
        if (!locks.back()->held())
            throw BackupError("cannot take the lock of " + file.target + " (" + locks.back()->problem() + "); nothing was restored");
    }

    // A damaged domain file is kept, as a value write keeps it: it gets its ".corrupt-" name as a
    // second name before anything changes, so it is still in place when the restore is undone.
    std::vector<Aside> asides;
    for (auto& [identifier, values] : _domains) {
        std::string target = HBPreferences::pathForIdentifier(identifier);
        auto damaged = HBPreferences(identifier).fileIsDamaged();
        if (!damaged)
            throw BackupError("cannot read " + target + ", which the backup would replace; nothing was restored");
        if (!*damaged)
            continue;
        std::string host = hostPath(target).string();
        asides.push_back({target, target + HBPreferences::damagedFileAside(host).substr(host.size())});
    }

    // 1. Stage every new file beside the one it replaces; the journal says what to undo.
    auto undo = [&](const std::string& why) {
        for (auto& file : files)
            ::unlink(stagedName(hostPath(file.target)).c_str());
        for (auto& aside : asides)
            ::unlink(hostPath(aside.aside).c_str());
        removeJournal(journal);
        throw BackupError(why + "; nothing was restored");
    };
    if (auto problem = writeJournal(journal, "staging", files, asides))
        undo("cannot write the restore's journal (" + *problem + ")");
    for (auto& aside : asides)
        if (SystemCalls::link(hostPath(aside.target).c_str(), hostPath(aside.aside).c_str()) != 0)
            undo("cannot keep the damaged file " + aside.target + " (" + std::strerror(errno) + ")");
    for (auto& file : files) {
        fs::path target = hostPath(file.target);
        if (auto problem = AtomicFile::stage(stagedName(target), file.bytes, target))
            undo("cannot stage " + file.target + " (" + *problem + ")");
    }
    std::vector<fs::path> targets;
    for (auto& file : files)
        targets.push_back(hostPath(file.target));
    for (auto& folder : foldersOf(targets))
        if (auto problem = AtomicFile::flushFolderOf(folder / "."))
            undo("cannot flush the folder of the restored files (" + *problem + ")");
    // 2. The commit: from here on the new set is the one that stands, and an interrupted restore
    //    is finished by the next start.
    if (auto problem = writeJournal(journal, "commit", files, asides))
        undo("cannot commit the restore (" + *problem + ")");
    if (auto problem = settle(journal))
        throw BackupError("the restore is committed but not yet in place (" + *problem +
                          "); it is finished the next time the program starts");
}
