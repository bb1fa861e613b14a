#include "FuzzRoot.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <unistd.h>

namespace fs = std::filesystem;

namespace fuzz {

fs::path FuzzRoot::shippedResources()
{
    return NIMBRA_RESOURCES_DIR;
}

FuzzRoot::FuzzRoot(fs::path resources)
    : _resources(std::move(resources))
{
    std::string pattern = (fs::temp_directory_path() / "nimbra-fuzz-XXXXXX").string();
    if (!::mkdtemp(pattern.data()))
        throw std::runtime_error("mkdtemp failed");
    _path = pattern;
    freshSession();
}

FuzzRoot::~FuzzRoot()
{
    _session.reset();
    std::error_code ec;
    fs::remove_all(_path, ec);
}

Session& FuzzRoot::freshSession()
{
    _session.reset();
    _session = std::make_unique<Session>(Session::Options{.root = _path / "jb", .resources = _resources});
    return *_session;
}

void FuzzRoot::put(const fs::path& path, std::string_view bytes)
{
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary | std::ios::trunc).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace fuzz
