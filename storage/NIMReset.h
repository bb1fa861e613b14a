#pragma once
// Resets and clears: one mechanism for the maintenance page and every group's root page.
//
//   1. an alert titled "Nimbra" with the reset's message, "Confirm" (destructive) then "Cancel";
//   2. Cancel changes nothing (and does not arm the respring button);
//   3. Confirm performs the deletions, in order, synchronously, then restarts at once: it arms the
//      page's respring button and taps it (the stock-app pages close their app instead).
//
// Clearing a domain empties it through its preferences object (removeAllObjects); deleting a file
// ignores every failure; a sweep removes every item below a folder whose relative path matches a
// pattern.

#include "frame/PageDescription.h"

#include <string>
#include <vector>

struct NIMDeletion {
    enum class Kind { ClearDomain, DeleteFile, Sweep };
    Kind kind;
    /// The domain identifier, the file's path, or the swept folder.
    std::string target;
    /// The sweep's regular expression.
    std::string pattern;
};

/// removeAllObjects on the domain's preferences object.
NIMDeletion clearDomain(std::string identifier);
/// removeItemAtPath: on a logical path, failures ignored.
NIMDeletion deleteFile(std::string path);
/// removeFiles:inPath: with pattern over folder.
NIMDeletion sweep(std::string pattern, std::string folder);

struct NIMReset {
    enum class Then { Respring, CloseApp };
    std::string message;
    std::vector<NIMDeletion> deletions;
    Then then = Then::Respring;
};

/// Joins deletion lists.
std::vector<NIMDeletion> operator+(std::vector<NIMDeletion> a, const std::vector<NIMDeletion>& b);

/// The page action that asks, then resets.
PageAction confirmedReset(NIMReset reset);

/// Performs the deletions (what Confirm does before it restarts).
void performDeletions(const std::vector<NIMDeletion>& deletions);

/// removeFiles:inPath: walks folder recursively (never following links) and removes every item
/// whose path relative to folder the expression matches anywhere, case-insensitively, as
/// NSRegularExpression does. Errors are skipped and the walk goes on; nothing outside the folder is
/// touched. An invalid expression removes nothing.
void removeFiles(const std::string& pattern, const std::string& folder);

/// The usual settings reset of a group: "Do you really want to reset <name> Settings?"; clears
/// the group's settings domain when `clears`, then deletes its file and, in order, the files of the
/// given stores (suffixes after the group's identifier, such as ".blackListedApps").
NIMReset groupSettingsReset(const std::string& name, const std::string& suffix, std::vector<std::string> stores, bool clears = true);
/// The usual colour reset: "Do you really want to reset <name> Colors?"; deletes the colour file
/// (the colour domain is not cleared first).
NIMReset groupColorsReset(const std::string& name, const std::string& suffix);
/// The same reset, closing the page's app instead of respringing (the stock app pages).
NIMReset closingApp(NIMReset reset);
