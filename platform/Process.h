#pragma once
// The running process as the bundle sees it: the installation root, the facts of the running
// system (Core Foundation version, the host app's bundle identifier), the main queue and its clock,
// the libraries loaded so far, the shared preference objects and the record of what the device
// showed or did. One process is current at a time; the host makes one per session.
//
// Logical paths: the code speaks of device paths. "/var/jb" and everything below it map to the
// root directory; any other absolute path (the system's own volume, such as
// "/System/Library/PrivateFrameworks/...") maps below "<root>/.rootfs".

#include "platform/EventLog.h"
#include "platform/MainQueue.h"

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <typeindex>
#include <vector>

class HBPreferences;
class UIBarButtonItem;
class DarwinNotifyCenter;

class Process {
public:
    struct Options {
        /// The directory that stands for "/var/jb".
        std::filesystem::path root;
        /// The bundle's resources: page definitions and icons.
        std::filesystem::path resources;
        /// kCFCoreFoundationVersionNumber of the running system.
        double coreFoundationVersion = 1953.1;
        /// The host app's main bundle identifier ("com.veltram.nimbraapp" is the companion app).
        std::string mainBundleIdentifier = "com.apple.Preferences";
        MainQueue::Clock clock = MainQueue::Clock::Virtual;
    };

    explicit Process(Options options);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    static Process& current();
    static bool hasCurrent();

    const Options& options() const { return _options; }
    double coreFoundationVersion() const { return _options.coreFoundationVersion; }
    const std::string& mainBundleIdentifier() const { return _options.mainBundleIdentifier; }
    const std::filesystem::path& resourcesDirectory() const { return _options.resources; }

    /// The host path of a logical path, or nothing when it is not absolute or escapes its volume.
    std::optional<std::filesystem::path> hostPath(std::string_view logical) const;
    /// The logical path of a host path below the root ("" when it is outside).
    std::string logicalPath(const std::filesystem::path& host) const;

    MainQueue& mainQueue() { return _mainQueue; }
    EventLog& events() { return _events; }
    DarwinNotifyCenter& notifyCenter() { return *_notifyCenter; }

    /// Problems the host reports to its user that are no failure of a command (a page definition
    /// that could not be read, say). Also recorded as {"event":"error","message":...}.
    void reportError(std::string message);

    /// dyld: whether the library at a logical path was opened in this process.
    bool isImageLoaded(std::string_view logicalPath) const;
    void markImageLoaded(std::string logicalPath) { _loadedImages.insert(std::move(logicalPath)); }

    /// The shared preference objects, one per identifier.
    std::map<std::string, std::shared_ptr<HBPreferences>, std::less<>>& preferences() { return _preferences; }

    /// A process-wide value of type T, made (default-constructed) on first use and gone with the
    /// process: the bundle's globals live here, so every session starts from a fresh process.
    template <class T>
    T& global()
    {
        auto& slot = _globals[std::type_index(typeid(T))];
        if (!slot)
            slot = std::make_shared<T>();
        return *static_cast<T*>(slot.get());
    }

    /// End of a run-loop turn: what changed on screen is drawn (bar buttons record their new state).
    void commit();
    void setNeedsCommit(const std::shared_ptr<UIBarButtonItem>& item);

private:
    Options _options;
    MainQueue _mainQueue;
    EventLog _events;
    std::unique_ptr<DarwinNotifyCenter> _notifyCenter;
    std::set<std::string, std::less<>> _loadedImages;
    std::map<std::string, std::shared_ptr<HBPreferences>, std::less<>> _preferences;
    std::vector<std::weak_ptr<UIBarButtonItem>> _uncommitted;
    std::map<std::type_index, std::shared_ptr<void>> _globals;
    Process* _previous = nullptr;
};
