#pragma once
// One backup of everything the bundle stores: every preference, colour, app-list and rearrangement
// file of the product's domains in the Preferences folder ("com.veltram.nimbraprefs" and
// "com.veltram.nimbraprefs.*" .plist files), and the picked pictures
// ("/var/jb/var/mobile/Library/Nimbra/NAME.png"). The file is an XML property list:
//
//   format   "com.veltram.nimbraprefs.backup"      version  1
//   domains  {identifier: {key: value, ...}, ...}  pictures {NAME: <PNG data>, ...}
//
// Reading a backup validates all of it before anything is written: the format and version, domain
// identifiers of the product only, property-list values only, pictures that really are PNG, and
// sizes (a file over kMaximumSize is refused without being read). A restore then replaces each
// domain of the backup in one locked, atomic write (the same write a changed value goes through)
// and writes each picture atomically. Domains and pictures the backup does not hold are left as
// they are, and files of other products are never touched. Everything works on the current
// Process's root.

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

    /// What the current root stores now. Files that cannot be backed up (a damaged preference
    /// file, a picture that is not PNG) are left out and named in skipped, when given.
    static SettingsBackup collect(std::vector<std::string>* skipped = nullptr);
    /// A stamp of what collect() would read now: it changes whenever a file of the product's domains
    /// or a picture is written, replaced, added or removed (by this process or any other), and is
    /// cheap to take (one stat per file, nothing read).
    static std::string stamp();
    /// A backup from its bytes; throws BackupError when any part of it is not valid.
    static SettingsBackup fromData(std::string_view bytes);
    /// A backup from a file of this machine; throws BackupError when it is missing, larger than
    /// kMaximumSize (not read), or not valid.
    static SettingsBackup fromFile(const std::filesystem::path& file);

    /// The backup as an XML property list.
    std::string data() const;
    /// What a restore would change now, one JSON object each: {"domain","key","old","new"} for a
    /// value (null where absent), {"picture","old","new"} for a picture (sizes in bytes, old null
    /// when absent). Domains in identifier order, keys in key order, then pictures.
    nlohmann::ordered_json changes() const;
    /// Writes every domain and picture of the backup. Throws BackupError naming what could not be
    /// written; what was written before stays written.
    void restore() const;

    const std::map<std::string, PlistDictionary>& domains() const { return _domains; }
    /// Picture name (without ".png") to its bytes.
    const std::map<std::string, std::string>& pictures() const { return _pictures; }

    /// Whether identifier names one of the product's domains ("com.veltram.nimbraprefs" or
    /// "com.veltram.nimbraprefs." followed by letters, digits, "." and "-").
    static bool isProductDomain(std::string_view identifier);

private:
    std::map<std::string, PlistDictionary> _domains;
    std::map<std::string, std::string> _pictures;
};
