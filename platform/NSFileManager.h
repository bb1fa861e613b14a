#pragma once
// NSFileManager and NSData's file operations, on logical device paths (see Process). Removals are
// recorded as {"event":"delete","path":...}; failures are answered, never thrown.

#include "platform/AtomicFile.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class NSFileManager {
public:
    /// The folder of the lock files that order the writes of domains and other files.
    static constexpr std::string_view kLocksDirectory = "/var/jb/var/mobile/Library/Caches/com.veltram.nimbraprefs.locks/";

    static NSFileManager& defaultManager();

    /// Whether something is at path, following links (a link whose target is missing does not
    /// exist); NO for a path outside the device.
    bool fileExistsAtPath(std::string_view path) const;
    /// Removes a file, a link or a whole folder; false when nothing was there or it could not be removed.
    bool removeItemAtPath(std::string_view path) const;
    /// The file's bytes, or nothing when it is missing, unreadable or larger than limit.
    std::optional<std::string> contentsAtPath(std::string_view path, std::size_t limit = 64 << 20) const;
    /// writeToFile:atomically:YES, creating missing folders; false on failure (nothing half written).
    /// Writes of one file name are ordered by a lock; a new file follows the umask, a rewritten one
    /// keeps its mode and owner; the temporary file of a write that was killed is replaced by the
    /// next write of the file.
    bool writeAtomically(std::string_view path, std::string_view bytes) const;
    /// writeAtomically of the bytes produce puts, written to the disk as they come.
    bool writeAtomically(std::string_view path, const AtomicFile::Producer& produce) const;
    /// enumeratorAtPath: every item below a folder, as paths relative to it, each folder before its
    /// contents (in name order, for a repeatable walk). The folder may itself be a link to a folder;
    /// links below it are listed, never followed; folders that cannot be read are skipped.
    std::vector<std::string> enumeratorAtPath(std::string_view path) const;
};
