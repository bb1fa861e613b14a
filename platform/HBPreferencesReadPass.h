#pragma once
// A reading pass over the preference domains. While one is open, each domain checks its file at
// its first read only (one stat and, when the file changed, one parse) and serves every later read
// of the pass from that snapshot, so that a page rebuilt or drawn row by row reads its domain once.
// A write made during the pass (the page's own) makes the next read check the file again; a change
// another process makes during the pass is seen by the next pass. Passes nest: the outermost one
// ends it. Outside a pass every read checks the file, as HBPreferences says.

class HBPreferences;

class HBPreferencesReadPass {
public:
    HBPreferencesReadPass();
    ~HBPreferencesReadPass();
    HBPreferencesReadPass(const HBPreferencesReadPass&) = delete;
    HBPreferencesReadPass& operator=(const HBPreferencesReadPass&) = delete;

    /// Whether preferences already checked its file in the pass now open (false outside a pass).
    static bool hasChecked(const HBPreferences& preferences);
    /// Notes that preferences checked its file (nothing outside a pass).
    static void checked(const HBPreferences& preferences);
    /// preferences must check its file again at its next read (after a write).
    static void forget(const HBPreferences& preferences);
};
