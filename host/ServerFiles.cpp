// The files `serve` sends: the page application, the bundle's icons, and the stored pictures.

#include "host/ServerImpl.h"
#include "host/WebModules.h"
#include "platform/AtomicFile.h"

#include <cstdint>
#include <cstdio>

namespace {

namespace fs = std::filesystem;
using namespace ServerRequests;

/// A regular file's bytes; nothing for a link, a FIFO, a folder or a file over limit.
std::optional<std::string> readFile(const fs::path& path, std::size_t limit)
{
    return AtomicFile::read(path, limit, AtomicFile::Links::Refuse);
}

const char* contentType(const fs::path& path)
{
    std::string extension = path.extension().string();
    if (extension == ".html")
        return "text/html; charset=utf-8";
    if (extension == ".js" || extension == ".mjs")
        return "text/javascript; charset=utf-8";
    if (extension == ".css")
        return "text/css; charset=utf-8";
    if (extension == ".svg")
        return "image/svg+xml";
    if (extension == ".png")
        return "image/png";
    return "application/octet-stream";
}

/// A strong validator of the bytes (64-bit FNV-1a): equal bytes, equal tag.
std::string entityTag(const std::string& bytes)
{
    std::uint64_t hash = 14695981039346656037ULL;
    for (unsigned char c : bytes) {
        hash ^= c;
        hash *= 1099511628211ULL;
    }
    char text[19];
    std::snprintf(text, sizeof text, "\"%016llx\"", static_cast<unsigned long long>(hash));
    return text;
}

/// Whether the request's If-None-Match names the tag (or is "*").
bool notModified(const HttpRequest& req, const std::string& tag)
{
    std::string list = req.get_header_value("If-None-Match");
    std::size_t from = 0;
    while (from < list.size()) {
        std::size_t end = list.find(',', from);
        if (end == std::string::npos)
            end = list.size();
        std::string_view item(list.data() + from, end - from);
        while (!item.empty() && (item.front() == ' ' || item.front() == '\t'))
            item.remove_prefix(1);
        while (!item.empty() && (item.back() == ' ' || item.back() == '\t'))
            item.remove_suffix(1);
        if (item.substr(0, 2) == "W/")
            item.remove_prefix(2);
        if (item == "*" || item == tag)
            return true;
        from = end + 1;
    }
    return false;
}

/// Answers a file's bytes. Every answer is revalidated before use (no-cache), and cheaply: a
/// request naming the bytes' tag answers 304 with no body.
void answerFile(const HttpRequest& req, HttpResponse& res, std::string bytes, const char* type)
{
    std::string tag = entityTag(bytes);
    res.set_header("Cache-Control", "no-cache");
    res.set_header("ETag", tag);
    if (notModified(req, tag)) {
        res.status = 304;
        return;
    }
    res.set_content(std::move(bytes), type);
}

void serveFile(const HttpRequest& req, HttpResponse& res, const fs::path& path)
{
    auto bytes = readFile(path, 16 * 1024 * 1024);
    if (!bytes) {
        WebServer::Impl::reply(res, 404, {{"error", "not found"}});
        return;
    }
    answerFile(req, res, std::move(*bytes), contentType(path));
}

/// The page itself, asking at once for every module its scripts import: the browser fetches the
/// whole graph side by side instead of one chain of imports after another.
void serveIndex(const HttpRequest& req, HttpResponse& res, const fs::path& web)
{
    auto bytes = readFile(web / "index.html", 16 * 1024 * 1024);
    if (!bytes) {
        WebServer::Impl::reply(res, 404, {{"error", "not found"}});
        return;
    }
    answerFile(req, res, WebModules::withPreloads(*bytes, web), contentType("index.html"));
}

}  // namespace

void WebServer::Impl::fileRoutes()
{
    // The page application.
    http.get("/", [this](const HttpRequest& req, HttpResponse& res) { serveIndex(req, res, options.web); });
    http.get("/index.html", [this](const HttpRequest& req, HttpResponse& res) { serveIndex(req, res, options.web); });
    http.get(R"(/([A-Za-z0-9_-]+\.(html|js|css|svg|png)))", [this](const HttpRequest& req, HttpResponse& res) {
        serveFile(req, res, options.web / req.matches[1]);
    });
    http.get(R"(/icons/([A-Za-z0-9_-]+\.(png|svg)))", [this](const HttpRequest& req, HttpResponse& res) {
        serveFile(req, res, options.icons / req.matches[1]);
    });

    // A stored picture, and no other file.
    http.get("/api/file", [this](const HttpRequest& req, HttpResponse& res) {
        std::string path = req.get_param_value("path");
        fs::path logical(path);
        // The decoded path as the file system would see it: a NUL would end it early.
        bool plain = path.find('\0') == std::string::npos && path.rfind(kImageFolder, 0) == 0 &&
                     logical.extension() == ".png" && logical.stem() != "" && logical.lexically_normal() == logical &&
                     logical.parent_path().string() + "/" == kImageFolder;
        if (!plain) {
            reply(res, 403, {{"error", "only the stored pictures (" + std::string(kImageFolder) + "NAME.png) are served"}});
            return;
        }
        std::optional<fs::path> host;
        {
            ServerSession& main = sessions.main();
            std::lock_guard lock(main.mutex);
            host = main.session().process().hostPath(path);
        }
        std::optional<std::string> bytes;
        if (host)
            bytes = readFile(*host, 256 * 1024 * 1024);
        if (!bytes) {
            reply(res, 404, {{"error", "no file at " + path}});
            return;
        }
        res.set_header("Cache-Control", "no-cache");
        res.set_content(std::move(*bytes), "image/png");
    });
}
