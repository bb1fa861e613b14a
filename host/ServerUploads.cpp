// What the browser sends `serve` as bytes: a picture for the image picker, a backup to restore;
// and the backup it downloads.

#include "host/ChangeWords.h"
#include "host/ServerImpl.h"
#include "host/SettingsBackup.h"
#include "platform/UIImage.h"

namespace {

using Json = nlohmann::ordered_json;
using Kind = CommandError::Kind;

}  // namespace

void WebServer::Impl::uploadRoutes()
{
    // The uploaded picture answers the image picker being shown. It is decoded before the session's
    // turn, so that the tab's other requests (and every other tab) go on meanwhile.
    http.post("/api/image", Session::kPictureBytes, [this](const HttpRequest& req, HttpResponse& res) {
        std::shared_ptr<UIImage> picture;
        try {
            std::string type = req.get_header_value("Content-Type");
            if (type.rfind("image/", 0) != 0 && type.rfind("application/octet-stream", 0) != 0)
                throw CommandError("upload the picture's bytes (Content-Type: image/... or application/octet-stream)",
                                   Kind::UnsupportedType);
            if (req.body.empty())
                throw CommandError("no picture was uploaded");
            sessionFor(req);  // an ended session is told so before its picture is decoded
            picture = Session::decodePicture(req.body);
        } catch (...) {
            return refuse(req, res, std::current_exception());
        }
        command(req, res, [&](ServerSession& tab) {
            tab.session().image(std::move(picture));
            return Json::object();
        });
    });

    // GET /api/backup downloads a backup of everything stored; POST /api/restore with a backup's
    // bytes lists what it would change (?dryRun=1), in the words of the pages, or restores it, after which the tab's session
    // opens afresh on the root page, as after a respring.
    http.get("/api/backup", [this](const HttpRequest& req, HttpResponse& res) {
        try {
            ServerSession& main = sessions.main();
            std::lock_guard lock(main.mutex);
            auto scope = main.activate();
            std::string bytes = SettingsBackup::collectData();
            res.set_header("Content-Disposition", "attachment; filename=\"Nimbra Settings.plist\"");
            res.set_header("Cache-Control", "no-store");
            res.set_content(std::move(bytes), "application/x-plist");
        } catch (...) {
            refuse(req, res, std::current_exception());
        }
    });
    http.post("/api/restore", SettingsBackup::kMaximumSize, [this](const HttpRequest& req, HttpResponse& res) {
        command(req, res, [&](ServerSession& tab) {
            SettingsBackup backup = SettingsBackup::fromData(req.body);
            if (req.has_param("dryRun") && req.get_param_value("dryRun") != "0")
                return Json{{"changes", ChangeWords(searchIndex(), _resources).describeAll(backup.changes())}};
            backup.restore();
            tab.session().relaunch();
            return Json{{"restored", {{"domains", backup.domains().size()}, {"pictures", backup.pictures().size()}}}};
        });
    });
}
