#pragma once
// Whole-file reads and crash-safe writes on host paths, shared by the platform's readers and
// writers. Every system call goes through SystemCalls, so tests can make each one fail.

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace AtomicFile {

/// Whether a read follows a symbolic link at the path itself.
enum class Links { Follow, Refuse };

/// What a read found.
enum class ReadStatus {
    Read,        // the bytes are there
    Missing,     // nothing at the path (or a folder on the way is missing)
    Unusable,    // not a regular file (a FIFO, a device, a folder; a link with Links::Refuse) or over the limit
    Unreadable,  // there, but opening or reading it failed (EIO, EACCES, ...): it may be fine on a retry
};

struct Contents {
    ReadStatus status = ReadStatus::Missing;
    std::string bytes;  // only with ReadStatus::Read
    std::string problem;  // what failed, for Unusable and Unreadable
};

/// Reads a whole file. A FIFO or a device is never waited on: the file is opened without blocking
/// and refused unless fstat calls it a regular file.
Contents load(const std::filesystem::path& path, std::size_t limit, Links links = Links::Follow);
/// The bytes of load(), or nothing whatever else it found.
std::optional<std::string> read(const std::filesystem::path& path, std::size_t limit, Links links = Links::Follow);

/// Writes bytes to a temporary file ".NAME.XXXXXX" beside path, flushes it to disk, renames it over
/// path and flushes the folder, so that a crash leaves either the old or the new file, never a torn
/// one. Nothing when the new file is durable; otherwise what failed (the temporary file is removed;
/// when only the folder's flush failed the new file is in place but may not survive a crash).
std::optional<std::string> replace(const std::filesystem::path& path, std::string_view bytes);
/// replace() as a yes / no.
bool write(const std::filesystem::path& path, std::string_view bytes);
/// Writes a new file as replace() does, but only when nothing is at path: an existing file (or
/// link, or anything else) is never replaced. True when the file is there afterwards.
bool create(const std::filesystem::path& path, std::string_view bytes);

/// Whether name is one of the temporary files replace() makes for target_name: "." + target_name +
/// "." followed by six letters or digits.
bool isTemporaryName(std::string_view name, std::string_view targetName);

}  // namespace AtomicFile
