#pragma once
// Cephei's HBPreferences: a named key/value store backed by one property-list file,
// "/var/jb/var/mobile/Library/Preferences/<identifier>.plist", that other processes read and write
// too.
//
// - Reads see the file as it is now: a change written by another process is seen by the next read
//   (the parsed file is kept only while its inode, size and modification time stay the same).
// - A write is a read-modify-write of the file under an advisory lock per domain, so two processes
//   writing different keys lose neither, and every key the bundle does not know is kept. The file
//   is replaced atomically (temporary file, fsync, rename, fsync of the folder). A lock that cannot
//   be taken refuses the write. Under the lock the temporary file has one fixed name per domain
//   (".<identifier>.plist.nimtmp"), so the one a killed writer left is replaced by the next write
//   of the domain, at a cost that does not grow with the folder. New files follow the umask;
//   rewritten files keep their mode and owner.
// - A file that cannot be read (an I/O error, no permission) is read again; when it still cannot
//   be read the write is refused and the file left as it is.
// - A file that cannot be parsed (PropertyListCheck refuses hostile bytes before parsing), whose top
//   level is not a dictionary, that is not a regular file or that is larger than kMaximumFileSize
//   reads as empty. It is never destroyed silently: the first write moves it aside to
//   "<name>.plist.corrupt-<UTC timestamp>" before writing a new file.
// - A write that fails records {"event":"error","message":...,"domain":IDENTIFIER,"key":KEY,
//   "reason":...,"path":DEVICE PATH,"write":true} and answers false; a write answered true is on
//   disk. The message and the reason name no path. A write made for a row of a page (see
//   RowWrite) also carries the row's "label" and the page's "page" title.
// - An identifier that is not a plain file name (empty, "." or "..", containing "/") names no file:
//   it reads as empty and every write fails.

#include "platform/ObjCRuntime.h"
#include "platform/PlistValue.h"

#include <sys/types.h>

#include <cstdint>
#include <ctime>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

class HBPreferences : public NSObject {
public:
    /// Larger preference files are taken for damaged.
    static constexpr std::size_t kMaximumFileSize = 8 << 20;

    /// The one shared instance for an identifier in the current process.
    static std::shared_ptr<HBPreferences> preferencesForIdentifier(std::string_view identifier);
    /// The logical path of a domain's file.
    static std::string pathForIdentifier(std::string_view identifier);
    /// Whether identifier can name a domain file.
    static bool isValidIdentifier(std::string_view identifier);

    explicit HBPreferences(std::string identifier);

    const std::string& identifier() const { return _identifier; }

    /// The stored value, or nil when absent.
    PlistValue objectForKey(std::string_view key);
    /// boolValue of the stored value; NO when absent (or the given default).
    bool boolForKey(std::string_view key);
    bool boolForKey(std::string_view key, bool defaultValue);
    /// integerValue of the stored value; 0 when absent (or the given default).
    std::int64_t integerForKey(std::string_view key);
    std::int64_t integerForKey(std::string_view key, std::int64_t defaultValue);
    /// doubleValue of the stored value; 0 when absent (or the given default).
    double doubleForKey(std::string_view key, double defaultValue = 0);
    /// Every stored key and value.
    PlistDictionary dictionaryRepresentation();

    /// While one lives on this thread, the writes it makes are for one row of a page: their error
    /// events name the row's label and the page's title.
    class RowWrite {
    public:
        RowWrite(std::string label, std::string page);
        ~RowWrite();
        RowWrite(const RowWrite&) = delete;
        RowWrite& operator=(const RowWrite&) = delete;

        const std::string& label() const { return _label; }
        const std::string& page() const { return _page; }
        static const RowWrite* current();

    private:
        std::string _label;
        std::string _page;
        const RowWrite* _outer;
    };

    /// Stores value under key (nil removes the key). True once the file is safely on disk; false,
    /// with an `error` event saying why, when it is not.
    bool setObject(const PlistValue& value, std::string_view key);
    bool removeObjectForKey(std::string_view key) { return setObject({}, key); }
    /// Deletes every key: the domain's file, when there is one, is left holding an empty dictionary.
    bool removeAllObjects();
    /// Whether the domain's file is there but damaged (what a write moves aside before it writes),
    /// read as a write reads it; nothing when it cannot be read (a write would be refused).
    std::optional<bool> fileIsDamaged() const;
    /// The name a damaged file at host path file is moved aside to, free now:
    /// "<file>.corrupt-<UTC timestamp>", with "-2", "-3", ... after it when that is taken.
    static std::string damagedFileAside(const std::string& file);

    /// Replaces every key and value with contents in one locked, atomic write (a restored backup);
    /// the file is written even when it was missing or already held the same values. True once
    /// the new file is safely on disk; false, with an `error` event, when it is not.
    bool replaceAllObjects(const PlistDictionary& contents);

private:
    /// What the file held when read.
    struct Stored {
        enum class State { Missing, Values, Corrupt, Unreadable } state = State::Missing;
        PlistDictionary values;  // with Values
        std::string problem;     // with Unreadable
    };
    struct Snapshot {
        dev_t device = 0;
        ino_t inode = 0;
        off_t size = -1;
        std::timespec modified{};
        PlistValue values;  // a dictionary
    };

    const PlistDictionary& current();
    /// What a read of the file finds: its values, or (Check) only whether it holds a dictionary,
    /// with no value made.
    enum class Reading { Values, Check };
    /// Reads and parses the file afresh.
    Stored load(Reading reading = Reading::Values) const;
    /// load(), read again while the file cannot be read (kReadAttempts in all).
    Stored loadForWrite(Reading reading = Reading::Values) const;
    /// The write path: under the domain's lock, change(values, existed) edits what the file holds;
    /// when it answers true the result is stored. `what` names the change in error messages.
    template <class Change> bool modify(std::string_view what, Change change);
    /// The key of the write being made, for its error event ("" for whole-domain writes).
    std::string _writingKey;
    /// Moves a corrupt file aside and replaces the file with values (kept as what the file holds).
    bool store(PlistDictionary values, bool corrupt, std::string_view what);
    /// Records why a write of `what` (under key, when one key) failed; false. The reason names no path.
    bool refuse(std::string_view what, const std::string& reason) const;

    std::string _identifier;
    std::optional<std::string> _file;  // the host path
    std::optional<Snapshot> _snapshot;
};
