#include "platform/Darwin.h"

#include "platform/Events.h"
#include "platform/Process.h"

#include <spawn.h>
#include <sys/wait.h>

#include <cerrno>
#include <memory>
#include <mutex>

namespace Darwin {

namespace {

std::map<std::string, std::map<std::string, Symbol, std::less<>>, std::less<>>& exportedSymbols()
{
    static std::map<std::string, std::map<std::string, Symbol, std::less<>>, std::less<>> symbols;
    return symbols;
}

// One handle per image for the life of the program, as dyld hands out the same handle again.
const LibraryHandle* handleFor(std::string_view image)
{
    static std::map<std::string, std::unique_ptr<LibraryHandle>, std::less<>> handles;
    // Shared by the processes of every thread.
    static std::mutex mutex;
    std::lock_guard lock(mutex);
    auto it = handles.find(image);
    if (it == handles.end())
        it = handles.emplace(std::string(image), std::make_unique<LibraryHandle>(LibraryHandle{std::string(image)})).first;
    return it->second.get();
}

}  // namespace

void registerSymbol(std::string image, std::string name, Symbol symbol)
{
    exportedSymbols()[std::move(image)][std::move(name)] = symbol;
}

const LibraryHandle* dlopen(std::string_view path, int mode)
{
    (void)mode;
    Process& process = Process::current();
    std::string logical(path);
    auto host = process.hostPath(logical);
    std::error_code ec;
    bool loaded = host && std::filesystem::is_regular_file(*host, ec);
    process.events().record(Events::Dlopen{logical, loaded});
    if (!loaded)
        return nullptr;
    process.markImageLoaded(logical);
    return handleFor(logical);
}

Symbol dlsym(const LibraryHandle* handle, std::string_view name)
{
    if (!handle || !Process::current().isImageLoaded(handle->image))
        return nullptr;
    auto& symbols = exportedSymbols();
    auto image = symbols.find(handle->image);
    if (image == symbols.end())
        return nullptr;
    auto symbol = image->second.find(name);
    return symbol == image->second.end() ? nullptr : symbol->second;
}

int posix_spawn(pid_t* pid, std::string_view path, const std::vector<std::string>& argv)
{
    Process& process = Process::current();
    process.events().record(Events::Spawn{std::string(path), argv});
    auto host = process.hostPath(path);
    if (!host)
        return ENOENT;
    std::vector<char*> args;
    for (const std::string& arg : argv)
        args.push_back(const_cast<char*>(arg.c_str()));
    args.push_back(nullptr);
    char* environment[] = {nullptr};
    return ::posix_spawn(pid, host->c_str(), nullptr, nullptr, args.data(), environment);
}

pid_t waitpid(pid_t pid, int* status, int options)
{
    int linuxOptions = options & ~kWaitExited;  // Linux waitpid always waits for exit
    pid_t result;
    do {
        result = ::waitpid(pid, status, linuxOptions);
    } while (result < 0 && errno == EINTR);
    return result;
}

}  // namespace Darwin
