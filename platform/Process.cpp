#include "platform/Process.h"
#include "platform/ProcessScope.h"

#include "platform/DarwinNotifyCenter.h"
#include "platform/Events.h"
#include "platform/UIKit.h"

#include <iostream>
#include <stdexcept>

namespace {

// Each thread has its own current process: the browser host runs several sessions at once.
thread_local Process* currentProcess = nullptr;
constexpr std::string_view jailbreakRoot = "/var/jb";

}  // namespace

Process::Process(Options options)
    : _options(std::move(options))
    , _mainQueue(_options.clock)
    , _notifyCenter(std::make_unique<DarwinNotifyCenter>())
    , _previous(currentProcess)
{
    currentProcess = this;
}

Process::~Process()
{
    _preferences.clear();
    currentProcess = _previous;
}

Process& Process::current()
{
    if (!currentProcess)
        throw std::logic_error("no current process");
    return *currentProcess;
}

ProcessScope::ProcessScope(Process* process)
    : _saved(currentProcess)
{
    currentProcess = process;
}

ProcessScope::~ProcessScope()
{
    currentProcess = _saved;
}

bool Process::hasCurrent()
{
    return currentProcess != nullptr;
}

std::optional<std::filesystem::path> Process::hostPath(std::string_view logical) const
{
    if (logical.empty() || logical.front() != '/')
        return std::nullopt;
    std::filesystem::path normal = std::filesystem::path(logical).lexically_normal();
    std::string text = normal.generic_string();
    if (text.size() > 1 && text.back() == '/')
        text.pop_back();
    std::filesystem::path volume = _options.root;
    std::string_view rest;
    if (text == jailbreakRoot || text.starts_with(std::string(jailbreakRoot) + "/")) {
        rest = std::string_view(text).substr(jailbreakRoot.size());
    } else {
        volume /= ".rootfs";
        rest = text;
    }
    // A normalised absolute path keeps no "..": "/.." normalises to "/".
    while (!rest.empty() && rest.front() == '/')
        rest.remove_prefix(1);
    if (rest.starts_with("..") && (rest.size() == 2 || rest[2] == '/'))
        return std::nullopt;
    return rest.empty() ? volume : volume / std::filesystem::path(rest);
}

std::string Process::logicalPath(const std::filesystem::path& host) const
{
    std::filesystem::path relative = host.lexically_normal().lexically_relative(_options.root.lexically_normal());
    std::string text = relative.generic_string();
    if (text.empty() || text.starts_with(".."))
        return {};
    if (text == ".")
        return std::string(jailbreakRoot);
    if (text == ".rootfs")
        return "/";
    if (text.starts_with(".rootfs/"))
        return text.substr(std::string_view(".rootfs").size());
    return std::string(jailbreakRoot) + "/" + text;
}

void Process::reportError(std::string message)
{
    _events.record(Events::Error{.message = message});
}

bool Process::isImageLoaded(std::string_view logicalPath) const
{
    return _loadedImages.find(logicalPath) != _loadedImages.end();
}

void Process::setNeedsCommit(const std::shared_ptr<UIBarButtonItem>& item)
{
    for (auto& pending : _uncommitted)
        if (pending.lock() == item)
            return;
    _uncommitted.push_back(item);
}

void Process::commit()
{
    auto items = std::move(_uncommitted);
    _uncommitted.clear();
    for (auto& weak : items)
        if (auto item = weak.lock())
            item->commit();
}
