#pragma once
// Driving pages in an in-process session: open a page, change values, read back what is shown and
// what happened.

#include "TestSupport.h"

#include <algorithm>
#include <string>
#include <vector>

namespace test {

struct PageSession : SessionOnFreshRoot {
    using SessionOnFreshRoot::SessionOnFreshRoot;

    /// Opens a page and forgets what opening it did.
    void open(const std::string& page)
    {
        session->open(page);
        events();
    }
    /// Forgets the events not taken yet.
    void forget() { events(); }
    void set(const std::string& key, PlistValue value) { session->set(key, std::move(value)); }
    /// Stores a value as another process would, before the page reads it.
    void store(const std::string& domain, const std::string& key, PlistValue value) { session->write(domain, key, std::move(value)); }
    bool shows(const std::string& id) { auto ids = shownIds(); return std::find(ids.begin(), ids.end(), id) != ids.end(); }
    /// Ids of the shown rows among the given ones, in shown order.
    std::vector<std::string> shownOf(const std::vector<std::string>& ids)
    {
        std::vector<std::string> shown;
        for (auto& id : shownIds())
            if (std::find(ids.begin(), ids.end(), id) != ids.end())
                shown.push_back(id);
        return shown;
    }
    /// The events of one kind not taken yet; events of other kinds stay for their own questions.
    std::vector<nlohmann::ordered_json> take(const std::string& kind)
    {
        for (auto& event : SessionOnFreshRoot::events())
            _pending.push_back(std::move(event));
        std::vector<nlohmann::ordered_json> taken;
        std::erase_if(_pending, [&](auto& event) {
            if (event["event"] != kind)
                return false;
            taken.push_back(event);
            return true;
        });
        return taken;
    }
    /// Every event not taken yet; forgets them.
    std::vector<nlohmann::ordered_json> events()
    {
        auto all = std::move(_pending);
        _pending.clear();
        for (auto& event : SessionOnFreshRoot::events())
            all.push_back(std::move(event));
        return all;
    }
    std::vector<nlohmann::ordered_json> events(const std::string& kind) { return take(kind); }

    /// The insertions since the last call, as "id after anchor" (animated unless marked).
    std::vector<std::string> insertions()
    {
        std::vector<std::string> lines;
        for (auto& event : take("insert"))
            lines.push_back(event["ids"][0].get<std::string>() + " after " + event["after"].get<std::string>() +
                            (event["animated"].get<bool>() ? "" : " (unanimated)"));
        return lines;
    }
    /// The removals since the last call, as ids ("(unanimated)" marked).
    std::vector<std::string> removals()
    {
        std::vector<std::string> lines;
        for (auto& event : take("remove"))
            for (auto& id : event["ids"])
                lines.push_back(id.get<std::string>() + (event["animated"].get<bool>() ? "" : " (unanimated)"));
        return lines;
    }
    /// Calls a reset action, confirms its alert and lets the respring happen; the deleted paths.
    /// The alert's message and whether a respring followed are kept.
    std::vector<std::string> confirm(const std::string& action)
    {
        forget();
        session->call(action);
        alertMessage = take("alert").at(0)["message"];
        session->alert("Confirm");
        session->wait(2);
        std::vector<std::string> deleted;
        resprung = false;
        for (auto& event : events()) {
            if (event["event"] == "delete")
                deleted.push_back(event["path"]);
            resprung = resprung || event["event"] == "respring";
        }
        return deleted;
    }
    std::string alertMessage;
    bool resprung = false;

private:
    std::vector<nlohmann::ordered_json> _pending;
};

/// "a after b" lines for a chain: the first after anchor, each next after the one before.
inline std::vector<std::string> chainLines(const std::vector<std::string>& ids, std::string anchor)
{
    std::vector<std::string> lines;
    for (auto& id : ids) {
        lines.push_back(id + " after " + anchor);
        anchor = id;
    }
    return lines;
}

inline std::vector<std::string> unanimated(std::vector<std::string> ids)
{
    for (auto& id : ids)
        id += " (unanimated)";
    return ids;
}

}  // namespace test
