#pragma once
// One backup of everything the bundle stores: every preference, colour, app-list and rearrangement
// file of the product's domains in the Preferences folder ("com.veltram.nimbraprefs" and
// "com.veltram.nimbraprefs.*" .plist files), and the picked pictures
// ("/var/jb/var/mobile/Library/Nimbra/NAME.png"). The file is a binary property list (the one
// format that holds every stored value exactly; an XML backup of an earlier version reads too):
//
//   format   "com.veltram.nimbraprefs.backup"      version  1
//   domains  {identifier: {key: value, ...}, ...}  pictures {NAME: <PNG data>, ...}
//
// Reading a backup validates all of it before anything is written: the format and version, domain
// identifiers of the product only, property-list values only, pictures that really are PNG, and
// sizes (a file over kMaximumSize is refused without being read). A restore is all or nothing: under
// the lock of every file it replaces, each new file is staged beside its old one and flushed, then
// a journal commits the set and the staged files are renamed into place. Killed or out of space at
// any moment, it leaves the complete old set or the complete new set: the next start
// (finishInterruptedRestore) finishes a committed restore and undoes one that was not. Domains
// and pictures the backup does not hold are left as they are, and files of other products are
// never touched. Everything works on the current Process's root.

#include "platform/PlistValue.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// A backup that cannot be read or restored; the message says why, in the user's terms.
class BackupError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class SettingsBackup {
public:
    static constexpr std::string_view kFormat = "com.veltram.nimbraprefs.backup";
    static constexpr std::int64_t kVersion = 1;
    /// Larger backup files are refused unread.
    static constexpr std::size_t kMaximumSize = 64 << 20;
    /// The largest picture a backup may hold.
    static constexpr std::size_t kMaximumPicture = 16 << 20;

    /// A backup of what the current root stores now, as a binary property list, made a file at a
    /// time (each domain's values are written and dropped before the next is read). Files that
    /// cannot be backed up (a damaged preference file, a picture that is not PNG) are left out and
    /// named in skipped, when given.
    static std::string collectData(std::vector<std::string>* skipped = nullptr);
    /// A stamp of what collectData() would read now: it changes whenever a file of the product's domains
    /// or a picture is written, replaced, added or removed (by this process or any other), and is
    /// cheap to take (one stat per file, nothing read).
    static std::string stamp();
    /// A backup from its bytes; throws BackupError when any part of it is not valid.
    static SettingsBackup fromData(std::string_view bytes);
    /// A backup from a file of this machine; throws BackupError when it is missing, larger than
    /// kMaximumSize (not read), or not valid.
    static SettingsBackup fromFile(const std::filesystem::path& file);

    /// What a restore would change now, one JSON object each: {"domain","key","old","new"} for a
    /// value (null where absent), {"picture","old","new"} for a picture (sizes in bytes, old null
    /// when absent). Domains in identifier order, keys in key order, then pictures.
    nlohmann::ordered_json changes() const;
    /// Writes every domain and picture of the backup, all or nothing. Throws BackupError saying
    /// what failed and whether anything was restored.
    void restore() const;
    /// Finishes a restore that was committed but interrupted, or undoes one that was not; does
    /// nothing when no restore was interrupted. Throws BackupError when it cannot.
    static void finishInterruptedRestore();

    /// Domain identifier to its contents (a dictionary).
    const std::map<std::string, PlistValue>& domains() const { return _domains; }
    /// Picture name (without ".png") to its bytes.
    const std::map<std::string, std::string>& pictures() const { return _pictures; }

    /// Whether identifier names one of the product's domains ("com.veltram.nimbraprefs" or
    /// "com.veltram.nimbraprefs." followed by letters, digits, "." and "-").
    static bool isProductDomain(std::string_view identifier);

private:
    std::map<std::string, PlistValue> _domains;
    /// Each domain as the binary property list a restore writes, when already made.
    std::map<std::string, std::string> _encoded;
    std::map<std::string, std::string> _pictures;
};
