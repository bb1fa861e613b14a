#pragma once
// NSFileManager and NSData's file operations, on logical device paths (see Process). Removals are
// recorded as {"event":"delete","path":...}; failures are answered, never thrown.

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class NSFileManager {
public:
    static NSFileManager& defaultManager();

    /// Whether something is at path, following links (a link whose target is missing does not
    /// exist); NO for a path outside the device.
    bool fileExistsAtPath(std::string_view path) const;
    /// Removes a file, a link or a whole folder; false when nothing was there or it could not be removed.
    bool removeItemAtPath(std::string_view path) const;
    /// The file's bytes, or nothing when it is missing, unreadable or larger than limit.
    std::optional<std::string> contentsAtPath(std::string_view path, std::size_t limit = 64 << 20) const;
    /// writeToFile:atomically:YES, creating missing folders; false on failure (nothing half written).
    bool writeAtomically(std::string_view path, std::string_view bytes) const;
    /// enumeratorAtPath: every item below a folder, as paths relative to it, each folder before its
    /// contents (in name order, for a repeatable walk). The folder may itself be a link to a folder;
    /// links below it are listed, never followed; folders that cannot be read are skipped.
    std::vector<std::string> enumeratorAtPath(std::string_view path) const;
};

/// Host-path helpers shared by the platform's writers.
namespace AtomicFile {

/// Writes bytes to a temporary file beside path, flushes it to disk, renames it over path and
/// flushes the folder, so that a crash leaves either the old or the new file, never a torn one.
bool write(const std::filesystem::path& path, std::string_view bytes);
/// Whether a read follows a symbolic link at the path itself.
enum class Links { Follow, Refuse };
/// Reads a whole file; nothing when missing, unreadable, not a regular file (a FIFO, a device or a
/// folder is never waited on) or larger than limit. With Links::Refuse a link at path reads as nothing.
std::optional<std::string> read(const std::filesystem::path& path, std::size_t limit, Links links = Links::Follow);

}  // namespace AtomicFile
