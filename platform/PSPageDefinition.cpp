#include "platform/PSPageDefinition.h"

#include "platform/NSFileManager.h"
#include "platform/ObjCRuntime.h"
#include "platform/Process.h"
#include "platform/PropertyListSerialization.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <map>
#include <span>

namespace {

constexpr std::size_t kMaximumDefinitionSize = 4 << 20;

struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    long long modifiedSeconds = 0;
    long modifiedNanoseconds = 0;
    bool operator==(const FileIdentity&) const = default;
};

struct CachedDefinition {
    FileIdentity identity;
    PSPageDefinition::Loaded loaded;
};

/// The parsed definitions of the whole program, by host path: immutable once parsed, so every
/// session (each its own Process) shares them.
struct DefinitionCache {
    std::mutex mutex;
    std::map<std::string, CachedDefinition, std::less<>> byPath;
};

DefinitionCache& definitionCache()
{
    static DefinitionCache* cache = new DefinitionCache;  // never destroyed: used until the very end
    return *cache;
}

PSPageDefinition::Loaded parse(const std::filesystem::path& path, const std::string& file)
{
    auto bytes = AtomicFile::read(path, kMaximumDefinitionSize);
    std::optional<PlistValue> definition;
    if (bytes)
        definition = PropertyListSerialization::propertyListWithData(*bytes);
    auto failed = [&](const std::string& why) { return PSPageDefinition::Loaded{nullptr, "page definition \"" + file + "\"" + why}; };
    if (!definition || definition->kind() != PlistValue::Kind::Dictionary)
        return failed(" is not a property list dictionary");
    const PlistValue& items = (*definition)["items"];
    if (items.kind() != PlistValue::Kind::Array)
        return failed(" has no \"items\" array");
    std::vector<PlistDictionary> rows;
    rows.reserve(items.arrayValue().size());
    for (std::size_t i = 0; i < items.arrayValue().size(); ++i) {
        const PlistValue& item = items.arrayValue()[i];
        if (item.kind() != PlistValue::Kind::Dictionary)
            return failed(": item " + std::to_string(i) + " is not a dictionary");
        rows.push_back(item.dictionaryValue());
    }
    const PlistValue& title = (*definition)["title"];
    return {std::make_shared<PSPageDefinition>(std::move(rows), title.isString() ? title : PlistValue()), {}};
}

/// Whether a definition's property names a class by its name.
bool namesClass(const std::string& key, const PlistValue& value)
{
    return (key == "cellClass" || key == "detail") && value.isString();
}

}  // namespace

PSPageDefinition::PSPageDefinition(std::vector<PlistDictionary> items, PlistValue title)
    : _title(std::move(title))
    , _resolved(items.size())
{
    _items.reserve(items.size());
    _heads.reserve(items.size());
    _classNames.resize(items.size());
    for (std::size_t i = 0; i < items.size(); ++i) {
        auto text = [&](std::string_view key) {
            auto found = items[i].find(key);
            return found != items[i].end() && found->second.isString() ? found->second.stringValue() : std::string();
        };
        _heads.push_back({text("label"), PSCellTypeFromString(text("cell")), text("detail")});
        for (auto& [key, value] : items[i])
            if (namesClass(key, value))
                _classNames[i].emplace_back(key, value.stringValue());
        _items.push_back(std::make_shared<const PlistDictionary>(std::move(items[i])));
        _shared.push_back(PSSharedProperties::of(_items.back()));
    }
}

PSSharedProperties PSPageDefinition::resolvedItem(std::size_t index) const
{
    const auto& names = _classNames[index];
    if (names.empty())
        return _shared[index];
    // Only "cellClass" and "detail" name classes, so a row has at most two.
    std::array<const ObjCClass*, 2> classes{};
    for (std::size_t i = 0; i < names.size(); ++i)
        classes[i] = NSClassFromString(names[i].second);
    const std::span<const ObjCClass*> resolved(classes.data(), names.size());
    std::lock_guard lock(_resolving);
    auto& resolutions = _resolved[index];
    for (const Resolution& resolution : resolutions)
        if (std::ranges::equal(resolution.classes, resolved))
            return resolution.properties;
    auto properties = std::make_shared<PlistDictionary>(*_items[index]);
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (classes[i])
            (*properties)[names[i].first] = PlistValue(classes[i]);
        else
            properties->erase(names[i].first);
    }
    resolutions.push_back({{resolved.begin(), resolved.end()}, PSSharedProperties::of(std::move(properties))});
    return resolutions.back().properties;
}

namespace {

/// Whether name can name a definition: not empty, and not leaving the resources.
bool isDefinitionName(std::string_view name)
{
    return !name.empty() && name.find("..") == std::string_view::npos;
}

}  // namespace

PSPageDefinition::Loaded PSPageDefinition::read(const std::filesystem::path& resources, std::string_view name)
{
    std::string file = std::string(name) + ".plist";
    auto path = resources / file;
    struct stat st {};
    if (!isDefinitionName(name) || ::stat(path.c_str(), &st) != 0)
        return {nullptr, "page definition \"" + file + "\" is missing"};
    return parse(path, file);
}

PSPageDefinition::Loaded PSPageDefinition::named(std::string_view name)
{
    Process& process = Process::current();
    std::string file = std::string(name) + ".plist";
    auto path = process.resourcesDirectory() / file;
    struct stat st {};
    if (!isDefinitionName(name) || ::stat(path.c_str(), &st) != 0)
        return {nullptr, "page definition \"" + file + "\" is missing"};
    // Taken before the file is read: a change made while it is read shows as a new identity next time.
    FileIdentity identity{st.st_dev, st.st_ino, st.st_size, st.st_mtim.tv_sec, st.st_mtim.tv_nsec};
    DefinitionCache& cache = definitionCache();
    {
        std::lock_guard lock(cache.mutex);
        auto cached = cache.byPath.find(path.native());
        if (cached != cache.byPath.end() && cached->second.identity == identity)
            return cached->second.loaded;
    }
    // Parsed outside the lock: sessions opening other pages go on meanwhile. Two sessions that parse
    // the same file at once keep the first one's definition.
    Loaded loaded = parse(path, file);
    std::lock_guard lock(cache.mutex);
    auto [cached, added] = cache.byPath.try_emplace(path.native(), CachedDefinition{identity, loaded});
    if (!added && cached->second.identity != identity)
        cached->second = {identity, std::move(loaded)};
    return cached->second.loaded;
}
