// The files `serve` sends: the page application, the bundle's icons, and the stored pictures.

#include "host/ServerImpl.h"
#include "platform/AtomicFile.h"

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

void serveFile(HttpResponse& res, const fs::path& path)
{
    auto bytes = readFile(path, 16 * 1024 * 1024);
    if (!bytes) {
        WebServer::Impl::reply(res, 404, {{"error", "not found"}});
        return;
    }
    res.set_header("Cache-Control", "no-cache");
    res.set_content(std::move(*bytes), contentType(path));
}

}  // namespace

void WebServer::Impl::fileRoutes()
{
    // The page application.
    http.get("/", [this](const HttpRequest&, HttpResponse& res) { serveFile(res, options.web / "index.html"); });
    http.get(R"(/([A-Za-z0-9_-]+\.(html|js|css|svg|png)))", [this](const HttpRequest& req, HttpResponse& res) {
        serveFile(res, options.web / req.matches[1]);
    });
    http.get(R"(/icons/([A-Za-z0-9_-]+\.png))", [this](const HttpRequest& req, HttpResponse& res) {
        serveFile(res, options.icons / req.matches[1]);
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
