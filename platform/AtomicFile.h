#pragma once
// Whole-file reads and crash-safe writes on host paths, shared by the platform's readers and
// writers. Every system call goes through SystemCalls, so tests can make each one fail.

#include <cstddef>
#include <filesystem>
#include <functional>
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

/// How replace() names its temporary file.
enum class Temporary {
    Unique,  // ".NAME.XXXXXX" with six random letters or digits: writers may run at once
    Fixed,   // temporaryName(): the caller holds a lock (WriteLock) that orders every write of the
             // path, so the one temporary a killed writer left is simply replaced by the next write
};

/// Writes bytes to a temporary file beside path, flushes it to disk, renames it over path and
/// flushes the folder, so that a crash leaves either the old or the new file, never a torn one.
/// The new file keeps the mode and owner of the file it replaces; a new file gets the mode the
/// process's umask leaves of 0666. Nothing when the new file is durable; otherwise what failed
/// (the temporary file is removed; when only the folder's flush failed the new file is in place
/// but may not survive a crash). No path is named in what failed.
std::optional<std::string> replace(const std::filesystem::path& path, std::string_view bytes,
                                   Temporary temporary = Temporary::Unique);
/// Where a producer puts the file's bytes, a part at a time; false once a write failed (the
/// producer should stop then).
using Sink = std::function<bool(std::string_view)>;
/// Makes a file's contents into a sink; false when it could not make all of them.
using Producer = std::function<bool(const Sink&)>;
/// replace() of the bytes produce puts, written as they come (never held whole): for contents made
/// a part at a time. When produce answers false nothing changes and that is what failed.
std::optional<std::string> replace(const std::filesystem::path& path, const Producer& produce,
                                   Temporary temporary = Temporary::Unique);
/// The first half of replace() for a set of files that must change together: writes bytes to
/// staged (replacing what a killed writer left there), with the mode and owner target has (or the
/// umask's), flushed to disk. Renaming staged over target later makes the change; nothing when
/// staged is durable, otherwise what failed (staged is removed).
std::optional<std::string> stage(const std::filesystem::path& staged, std::string_view bytes,
                                 const std::filesystem::path& target);
/// Flushes the folder holding path, so that renames in it survive a crash; what failed, if anything.
std::optional<std::string> flushFolderOf(const std::filesystem::path& path);
/// replace() as a yes / no.
bool write(const std::filesystem::path& path, std::string_view bytes);
/// Writes a new file as replace() does, but only when nothing is at path: an existing file (or
/// link, or anything else) is never replaced. True when the file is there afterwards.
bool create(const std::filesystem::path& path, std::string_view bytes);

/// Whether name is one of the temporary files replace() makes for target_name: "." + target_name +
/// "." followed by six letters or digits.
bool isTemporaryName(std::string_view name, std::string_view targetName);
/// The one temporary file of replace() with Temporary::Fixed: ".NAME.nimtmp" beside path.
std::filesystem::path temporaryName(const std::filesystem::path& path);

/// The mode bits the process's umask clears from new files.
unsigned currentUmask();

/// An exclusive flock on a lock file (made, with its folders, when missing), held for the life of
/// the object: writes that take the same lock are ordered. A lock that cannot be taken is reported
/// by held() and problem(); nothing may then be written.
class WriteLock {
public:
    explicit WriteLock(const std::filesystem::path& lockFile);
    ~WriteLock();
    WriteLock(const WriteLock&) = delete;
    WriteLock& operator=(const WriteLock&) = delete;

    bool held() const { return _fd >= 0; }
    const std::string& problem() const { return _problem; }

private:
    int _fd = -1;
    std::string _problem;
};

}  // namespace AtomicFile
