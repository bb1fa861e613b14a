#include "host/ServerSession.h"

#include "cells/NimbraImagePicker.h"
#include "platform/PSListController.h"

#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace {

/// Where picked images are stored on the device.
constexpr std::string_view kImageFolder = "/var/jb/var/mobile/Library/Nimbra/";

}  // namespace

ServerSession::ServerSession(Session::Options options, EventHistoryLimits limits)
    : _limits(limits)
{
    // The new process must not stay current once made: other tabs' work comes next.
    ProcessScope none(nullptr);
    _session = std::make_unique<Session>(std::move(options));
    _session->open("NIMRootListController");
    drain();
}

ServerSession::~ServerSession()
{
    // Pages and blocks are released with their own process current.
    ProcessScope scope(&_session->process());
    _session.reset();
}

std::unique_ptr<ProcessScope> ServerSession::activate()
{
    return std::make_unique<ProcessScope>(&_session->process());
}

std::uint64_t ServerSession::identity(const std::shared_ptr<const void>& object)
{
    auto it = _identities.find(object.get());
    if (it != _identities.end() && it->second.first.lock() == object)
        return it->second.second;
    if (_identities.size() > 8192)
        std::erase_if(_identities, [](auto& entry) { return entry.second.first.expired(); });
    _identities[object.get()] = {object, ++_nextIdentity};
    return _nextIdentity;
}

void ServerSession::drain()
{
    _session->commit();
    Json drained = _session->events();
    for (auto& event : drained["events"]) {
        _historyBytes += event.dump().size();
        _history.emplace_back(++_sequence, std::move(event));
        while (_history.size() > 1 && (_history.size() > _limits.count || _historyBytes > _limits.bytes)) {
            _historyBytes -= _history.front().second.dump().size();
            _history.pop_front();
        }
    }
}

ServerSession::Json ServerSession::state()
{
    Json state = _session->state();
    state["seq"] = _sequence;
    // Each page of the stack by its identity, so that a screen can tell a push or a pop from a new
    // stack however many changes one answer brings.
    auto pages = _session->pages();
    auto& stack = state["stack"];
    for (std::size_t level = 0; level < stack.size() && level < pages.size(); ++level)
        if (pages[level])
            stack[level]["uid"] = identity(pages[level]);
    auto page = _session->topPage();
    if (!page || !state["page"].is_object())
        return state;
    state["page"]["uid"] = identity(page);
    auto& rows = state["page"]["rows"];
    auto& specifiers = page->specifiers();
    for (std::size_t i = 0; i < rows.size() && i < specifiers.size(); ++i) {
        rows[i]["uid"] = identity(specifiers[i]);
        auto picker = std::dynamic_pointer_cast<NimbraImagePicker>(page->cellForSpecifier(specifiers[i]));
        if (!picker || !picker->previewContents())
            continue;
        std::string path = std::string(kImageFolder) + picker->fileName() + ".png";
        Json image{{"path", path}, {"version", nullptr}};
        std::error_code ec;
        if (auto host = _session->process().hostPath(path)) {
            auto time = fs::last_write_time(*host, ec);
            if (!ec)
                image["version"] = std::to_string(time.time_since_epoch().count()) + "-" + std::to_string(fs::file_size(*host, ec));
        }
        rows[i]["image"] = image;
    }
    return state;
}

ServerSession::Json ServerSession::eventsSince(std::uint64_t since) const
{
    Json events = Json::array();
    for (auto& [number, event] : _history) {
        if (number <= since)
            continue;
        Json numbered = event;
        numbered["seq"] = number;
        events.push_back(std::move(numbered));
    }
    std::uint64_t oldest = _history.empty() ? _sequence + 1 : _history.front().first;
    // Behind the kept history, or ahead of this session (a browser left open over a restart).
    bool missed = since > _sequence || since + 1 < oldest;
    return {{"seq", _sequence}, {"missed", missed}, {"events", events}};
}

std::optional<std::string> ServerSession::failedWriteSince(std::uint64_t since) const
{
    for (auto it = _history.rbegin(); it != _history.rend() && it->first > since; ++it)
        if (it->second.value("event", "") == "error" && it->second.value("write", false))
            return it->second.value("message", "");
    return std::nullopt;
}

std::uint64_t ServerSession::answered(const std::string& client) const
{
    for (auto& [name, sequence] : _answered)
        if (!client.empty() && name == client)
            return sequence;
    return 0;
}

void ServerSession::setAnswered(const std::string& client, std::uint64_t sequence)
{
    if (client.empty())
        return;
    std::erase_if(_answered, [&](auto& entry) { return entry.first == client; });
    _answered.emplace_back(client, sequence);
    if (_answered.size() > kAnsweredClients)
        _answered.erase(_answered.begin());
}

void ServerSession::sentPickerRows(std::uint64_t answer, std::size_t fingerprint)
{
    _sentRows.push_back({answer, fingerprint});
    if (_sentRows.size() > kSentRows)
        _sentRows.pop_front();
}

std::size_t ServerSession::sentPickerRows(std::uint64_t answer) const
{
    for (auto& sent : _sentRows)
        if (sent.answer == answer)
            return sent.fingerprint;
    return 0;
}
