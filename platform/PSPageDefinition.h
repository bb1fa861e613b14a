#pragma once
// A page definition ("<name>.plist" among the bundle's resources) as parsed: its rows' property
// dictionaries, in order, and its title. Definitions are parsed once per file and kept for the
// life of the program, keyed by the file's identity (path, device, inode, size, modification
// time): a definition whose file changed on disk is read again, one that did not is never
// re-parsed. A definition is immutable once made, so every session of the program (each its own
// Process) shares it, from any thread. Pages make fresh specifier objects from the kept rows on
// every load.

#include "platform/PSSpecifier.h"
#include "platform/PlistValue.h"

#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class PSPageDefinition {
public:
    /// What loading a definition gives: the definition, or the message that reports why there is
    /// none ("page definition \"X.plist\" is missing", "... is not a property list dictionary",
    /// "... has no \"items\" array", "...: item N is not a dictionary").
    struct Loaded {
        std::shared_ptr<const PSPageDefinition> definition;
        std::string error;
    };

    /// The definition called name in the current process's resources. A name that is empty or
    /// holds ".." is missing; so is a file that cannot be found. Larger files than 4 MiB are not
    /// property lists. Failures of a file that exists are kept as its definition is, until it changes.
    static Loaded named(std::string_view name);
    /// The definition called name among the resources in a folder, read afresh (no cache), by the
    /// same rules as `named`: what the pages open is what lint checks and search indexes.
    static Loaded read(const std::filesystem::path& resources, std::string_view name);

    /// The rows' property dictionaries as parsed, in definition order.
    const std::vector<std::shared_ptr<const PlistDictionary>>& items() const { return _items; }
    /// What a specifier made from a row starts with, read once from its dictionary: its "label"
    /// ("" when absent or not a string), the cell type its "cell" names (static text when unknown)
    /// and the class name its "detail" gives ("" when none).
    struct RowHead {
        std::string label;
        PSCellType cellType = PSCellType::StaticText;
        std::string detailClassName;
    };
    /// Row index's head. index < items().size().
    const RowHead& rowHead(std::size_t index) const { return _heads[index]; }
    /// The definition's "title", or nil when it has none (or it is not a string).
    const PlistValue& title() const { return _title; }

    /// Row index's properties as a specifier holds them: a string "cellClass" or "detail" becomes
    /// the class it names in the current process, and is left out when no loaded image defines
    /// it. The same immutable dictionary is answered whenever the same classes resolve (a library
    /// opened since may resolve more, and processes differ in what they opened), so rows made from
    /// it may share it. index < items().size().
    PSSharedProperties resolvedItem(std::size_t index) const;

    PSPageDefinition(std::vector<PlistDictionary> items, PlistValue title);

private:
    /// A row's class-valued keys as resolved once, and the dictionary made for that resolution.
    struct Resolution {
        std::vector<const ObjCClass*> classes;
        PSSharedProperties properties;
    };

    std::vector<std::shared_ptr<const PlistDictionary>> _items;
    std::vector<RowHead> _heads;
    /// Each item, wrapped for sharing (used as it is when the row names no class).
    std::vector<PSSharedProperties> _shared;
    /// Per row, its class-naming keys and the names they give, in key order.
    std::vector<std::vector<std::pair<std::string, std::string>>> _classNames;
    PlistValue _title;
    mutable std::mutex _resolving;
    /// Per row, each resolution met so far (at most four: two keys, each resolved or not).
    mutable std::vector<std::vector<Resolution>> _resolved;
};
