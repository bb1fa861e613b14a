#pragma once
// Which rows a page shows for which values of its switches and choices, found by asking the page
// itself: the page is opened in a session on a throw-away root, its deciding rows are given values
// (stored in their domains, as the rows store them), the page is rebuilt, and the rows it shows are
// recorded. Nothing here knows a page's rules; what a rebuild shows is the page's own answer.
//
// A state gives every deciding row one of its values: a switch NO or YES, a segment or list one of
// the values it offers. The probe starts from the values the rows show while nothing is stored,
// changes one row at a time, and goes on from every state that showed a row not seen before, so
// that rows nested under others are reached too.

#include "platform/PlistValue.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class Session;

class PageProbe {
public:
    /// A row whose values may decide which rows are shown: a switch, or a segment or list row with
    /// the values it offers.
    struct Decider {
        std::string id;
        std::string key;
        std::string domain;
        std::string label;
        /// The values it offers, and their titles ("" for a switch's NO and YES).
        std::vector<PlistValue> values;
        std::vector<std::string> titles;
        bool isSwitch = false;
        /// Its value while nothing is stored (an index into values).
        std::uint8_t shownByDefault = 0;
    };
    /// One value per decider (indices into their values).
    using State = std::vector<std::uint8_t>;

    /// Opens className on top of session (which must show a page already) and reads its rows.
    /// Throws CommandError when the page cannot be opened.
    PageProbe(Session& session, const std::string& className);
    /// Leaves the page; what the probe stored stays in the session's root.
    ~PageProbe();
    PageProbe(const PageProbe&) = delete;
    PageProbe& operator=(const PageProbe&) = delete;

    const std::vector<Decider>& deciders() const { return _deciders; }
    /// The ids of the rows the page's definition gives, in order (each once).
    const std::vector<std::string>& ids() const { return _ids; }
    /// Whether the page keeps the row ids()[row] aside to detach it (its own list of such rows:
    /// where to look harder, never what the row's condition is).
    bool detachable(std::size_t row) const { return _detachable[row]; }
    /// The state of the values shown while nothing is stored.
    State initial() const;

    /// Whether the page, rebuilt with the values of state stored, shows the row ids()[row].
    bool shows(const State& state, std::size_t row);
    /// The rows shown for state, one flag per id of ids().
    const std::vector<bool>& shown(const State& state);

    /// The rows shown for state when it was asked about already, else nullptr.
    const std::vector<bool>* known(const State& state) const
    {
        auto found = _shown.find(keyOf(state));
        return found == _shown.end() ? nullptr : &found->second;
    }

    /// Every state asked about so far, in the order they were first asked.
    const std::vector<State>& asked() const { return _asked; }

    /// The rebuilds made so far.
    std::size_t rebuilds() const { return _rebuilds; }

private:
    static std::string keyOf(const State& state) { return std::string(state.begin(), state.end()); }
    void store(const State& state);

    Session& _session;
    std::vector<Decider> _deciders;
    std::vector<std::string> _ids;
    std::unordered_map<std::string, std::size_t> _idIndex;
    std::vector<bool> _detachable;
    std::unordered_map<std::string, std::vector<bool>> _shown;
    std::vector<State> _asked;
    /// The values last stored, per decider; empty before the first store.
    State _stored;
    std::size_t _rebuilds = 0;
};
