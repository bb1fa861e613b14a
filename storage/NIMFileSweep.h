#pragma once
// removeFiles:inPath: — one pass over a folder that removes every item whose path relative to the
// folder a pattern matches.
//
// - The walk reads each directory once, in the order the file system lists it, and removes a
//   match on the spot: a file or link is unlinked, a folder goes whole (its contents are not
//   walked). A folder that does not match is walked, down to 64 levels below the swept folder.
// - Links inside the folder are removed as links and never followed. The swept folder itself is
//   the one configured path: when it is a link to a folder, the walk follows it (as every direct
//   deletion of a file in it does), so a reset never silently does only half of its deletions.
// - Errors are skipped and the walk goes on (an unreadable folder, a removal that fails).
// - Each removal is recorded as {"event":"delete","path":...} with its device path below the
//   swept folder, reported once the walk is over in name order (each folder before its contents),
//   so that what a reset reports does not depend on the order a file system lists names in.

#include <string>
#include <vector>

class NSRegularExpression;

class NIMFileSweep {
public:
    /// Walks the logical folder and removes what expression matches. An invalid folder path or a
    /// folder that does not exist removes nothing.
    static void run(const NSRegularExpression& expression, const std::string& folder);
};
