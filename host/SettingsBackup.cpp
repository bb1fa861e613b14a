#include "host/SettingsBackup.h"

#include "host/JsonValue.h"
#include "platform/HBPreferences.h"
#include "platform/NSFileManager.h"
#include "platform/Process.h"
#include "platform/PropertyListSerialization.h"

#include <stb/stb_image.h>

#include <sys/stat.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kBaseDomain = "com.veltram.nimbraprefs";
constexpr std::string_view kPreferencesFolder = "/var/jb/var/mobile/Library/Preferences/";
constexpr std::string_view kPictureFolder = "/var/jb/var/mobile/Library/Nimbra/";
constexpr int kMaximumDepth = 64;

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

/// The regular files of a folder (links are never followed), by name.
std::vector<std::string> filesIn(const fs::path& folder)
{
    std::vector<std::string> names;
    std::error_code ec;
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec))
        if (it->symlink_status(ec).type() == fs::file_type::regular)
            names.push_back(it->path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
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

SettingsBackup SettingsBackup::collect(std::vector<std::string>* skipped)
{
    SettingsBackup backup;
    auto skip = [&](const std::string& what) {
        if (skipped)
            skipped->push_back(what);
    };
    fs::path preferences = hostPath(std::string(kPreferencesFolder));
    for (const std::string& name : filesIn(preferences)) {
        if (!name.ends_with(".plist"))
            continue;
        std::string identifier = name.substr(0, name.size() - 6);
        if (!isProductDomain(identifier))
            continue;
        auto bytes = AtomicFile::read(preferences / name, HBPreferences::kMaximumFileSize);
        auto parsed = bytes ? PropertyListSerialization::propertyListWithData(*bytes) : std::nullopt;
        if (!parsed || parsed->kind() != PlistValue::Kind::Dictionary || !isPropertyList(*parsed)) {
            skip(std::string(kPreferencesFolder) + name + " (damaged)");
            continue;
        }
        backup._domains.emplace(identifier, parsed->dictionaryValue());
    }
    fs::path pictures = hostPath(std::string(kPictureFolder));
    for (const std::string& name : filesIn(pictures)) {
        if (!name.ends_with(".png"))
            continue;
        std::string base = name.substr(0, name.size() - 4);
        auto bytes = AtomicFile::read(pictures / name, kMaximumPicture);
        if (!isPictureName(base) || !bytes || !isPng(*bytes)) {
            skip(std::string(kPictureFolder) + name + " (not a PNG picture of at most " + sizeText(kMaximumPicture) + ")");
            continue;
        }
        backup._pictures.emplace(base, std::move(*bytes));
    }
    return backup;
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
        if (::lstat((folder / name).c_str(), &info) != 0)
            return;
        std::int64_t facts[] = {static_cast<std::int64_t>(info.st_size), static_cast<std::int64_t>(info.st_mtim.tv_sec),
                                static_cast<std::int64_t>(info.st_mtim.tv_nsec), static_cast<std::int64_t>(info.st_ctim.tv_sec),
                                static_cast<std::int64_t>(info.st_ctim.tv_nsec), static_cast<std::int64_t>(info.st_ino)};
        mix(name.data(), name.size() + 1);
        mix(facts, sizeof facts);
    };
    fs::path preferences = hostPath(std::string(kPreferencesFolder));
    for (const std::string& name : filesIn(preferences))
        if (name.ends_with(".plist") && isProductDomain(name.substr(0, name.size() - 6)))
            add(preferences, name);
    fs::path pictures = hostPath(std::string(kPictureFolder));
    for (const std::string& name : filesIn(pictures))
        if (name.ends_with(".png"))
            add(pictures, name);
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash));
    return text;
}

std::string SettingsBackup::data() const
{
    PlistDictionary domains, pictures;
    for (auto& [identifier, values] : _domains)
        domains.emplace(identifier, PlistValue(values));
    for (auto& [name, bytes] : _pictures)
        pictures.emplace(name, PlistValue(PlistData{std::vector<std::uint8_t>(bytes.begin(), bytes.end())}));
    PlistDictionary top{
        {"format", PlistValue(std::string(kFormat))},
        {"version", PlistValue(static_cast<long long>(kVersion))},
        {"domains", PlistValue(std::move(domains))},
        {"pictures", PlistValue(std::move(pictures))},
    };
    return PropertyListSerialization::dataWithPropertyList(PlistValue(std::move(top)), PropertyListSerialization::Format::XML);
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
        backup._domains.emplace(identifier, values.dictionaryValue());
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
        for (auto& [key, value] : values)
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

void SettingsBackup::restore() const
{
    for (auto& [identifier, values] : _domains) {
        auto preferences = HBPreferences::isValidIdentifier(identifier) ? HBPreferences::preferencesForIdentifier(identifier) : nullptr;
        if (!preferences || !preferences->replaceAllObjects(values))
            throw BackupError("could not write " + HBPreferences::pathForIdentifier(identifier) + "; the restore is incomplete");
    }
    for (auto& [name, bytes] : _pictures) {
        std::string path = std::string(kPictureFolder) + name + ".png";
        if (!NSFileManager::defaultManager().writeAtomically(path, bytes))
            throw BackupError("could not write " + path + "; the restore is incomplete");
    }
}
