#pragma once
// What every fuzz target shares: a throw-away installation root and a session on it.

#include "host/Session.h"

#include <filesystem>
#include <memory>
#include <string_view>

namespace fuzz {

/// A fresh root below the temporary folder, removed at exit; resources as given (the
/// repository's by default).
class FuzzRoot {
public:
    explicit FuzzRoot(std::filesystem::path resources = shippedResources());
    ~FuzzRoot();
    FuzzRoot(const FuzzRoot&) = delete;
    FuzzRoot& operator=(const FuzzRoot&) = delete;

    /// The repository's resources folder (the one file that knows the clone's paths says where).
    static std::filesystem::path shippedResources();

    const std::filesystem::path& path() const { return _path; }
    /// A new session on the root (the previous one, if any, ends first).
    Session& freshSession();
    Session& session() { return *_session; }
    /// Writes bytes to a host path, replacing what is there.
    static void put(const std::filesystem::path& path, std::string_view bytes);

private:
    std::filesystem::path _path;
    std::filesystem::path _resources;
    std::unique_ptr<Session> _session;
};

}  // namespace fuzz
