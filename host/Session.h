#pragma once
// One run of the bundle in the host: a process (root, system facts, clock), the Settings app's
// navigation stack, and the user's gestures as commands. `nimbra-prefs script` and the tests drive
// it line by line; every command either does what a user would do or throws CommandError.

#include "platform/PSListController.h"
#include "platform/Process.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <stdexcept>
#include <string>
#include <vector>

/// A command that could not be carried out, and what kind of refusal it is (the browser host
/// answers each kind with its own HTTP status; the message is for the user only).
class CommandError : public std::runtime_error {
public:
    enum class Kind {
        /// The command or its value is wrong, or the screen does not allow it now.
        Refused,
        /// What it names does not exist (a page, a row, an endpoint).
        NotFound,
        /// What it hands over is larger than allowed (a picture, a request body).
        TooLarge,
        /// What it hands over is of a type not taken (a request body's Content-Type).
        UnsupportedType,
        /// It comes from somewhere it may not (another site).
        Forbidden,
    };

    explicit CommandError(const std::string& message, Kind kind = Kind::Refused)
        : std::runtime_error(message)
        , _kind(kind)
    {
    }
    Kind kind() const { return _kind; }

private:
    Kind _kind;
};

class UIImage;

class Session {
public:
    using Json = nlohmann::ordered_json;

    /// The largest picture the image picker takes, as a file and decoded: a 64-megapixel photo
    /// (8192 x 8192) of at most 16 MiB. Both hosts hand pictures over through decodePicture.
    static constexpr std::size_t kPictureBytes = 16 * 1024 * 1024;
    static constexpr long long kPicturePixels = 8192LL * 8192;
    /// The events a session keeps unread at most; older ones are dropped (and counted) once there
    /// are more, so that a session whose events nobody reads stays flat in memory.
    static constexpr std::size_t kUnreadEvents = 4096;

    /// A picture's bytes decoded within the limits above. The size is read from the header before
    /// anything is decoded; one picture is decoded at a time in the whole program (pictureDecoding()
    /// is held meanwhile), which bounds the memory decoding takes. Needs no session: a host decodes
    /// before it takes a session's turn. Throws CommandError (TooLarge, or Refused for bytes that
    /// are no picture).
    static std::shared_ptr<UIImage> decodePicture(std::string_view bytes);
    static std::mutex& pictureDecoding();
    /// The pictures being decoded or waiting for their turn, in the whole program.
    static std::size_t picturesDecoding();

    /// The root, resources and system facts of the session's process.
    using Options = Process::Options;

    explicit Session(Options options);
    ~Session();

    Process& process() { return *_process; }
    /// The page on top of the navigation stack, or nullptr.
    std::shared_ptr<PSListController> topPage() const;
    /// The pages of the navigation stack from its bottom up (nullptr where a controller is no page).
    std::vector<std::shared_ptr<PSListController>> pages() const;

    // The user's gestures.
    void open(const std::string& className);
    /// Changes the shown row whose key is key on the top page, or on the page at level of the stack
    /// (0: the root page) when given, as a page below the top would take a change of its own row.
    void set(const std::string& key, const PlistValue& value, std::optional<std::size_t> level = std::nullopt);
    void write(const std::string& domain, const std::string& key, const PlistValue& value);
    void tap(const std::string& id);
    /// Taps the shown row at index (counted from 0 over the top page's rows, group rows included).
    void tapRow(std::size_t index);
    void call(const std::string& selector);
    void alert(const std::string& title);
    void wait(double seconds);
    void reload();
    void back();
    /// In the app picker on top, flips those apps.
    void pick(const std::vector<std::string>& bundleIdentifiers);
    /// Answers the image picker being shown with an image file of this machine (decoded as
    /// decodePicture does).
    void image(const std::filesystem::path& path);
    /// Answers the image picker being shown with a decoded picture.
    void image(std::shared_ptr<UIImage> picture);
    /// "Remove Picture" on the shown picture row whose "id" is id: its stored picture is deleted.
    /// Throws when the row is not a picture row, is disabled, or the file stays.
    void removeImage(const std::string& id);
    /// removeImage for the shown row at index (counted as tapRow counts).
    void removeImageAt(std::size_t index);
    /// Cancels the picker being shown (image picker, mail composer, or an app picker on top).
    void cancel();
    /// Drags the shown row at index `from` to index `to`, counted from 0 over the rows of the table
    /// section that holds the movable rows.
    void move(std::size_t from, std::size_t to);
    /// The top page's table reports the vertical offset y.
    void scroll(double y);
    /// Taps the top page's right bar button (the respring button).
    void tapBarButton();
    /// The Settings app is launched afresh on the bundle ("prefs:root=Nimbra", as after a
    /// respring): a new process with the same options, an empty navigation stack, and the root
    /// page on it. Events not yet read stay in the log.
    void relaunch();

    // What the screen and the disk show.
    Json show() const;
    Json rows();
    /// {"events":[...]}: what happened since the last call; "dropped" counts the events left out
    /// when more than kUnreadEvents waited.
    Json events();
    Json file(const std::string& path) const;
    /// Everything a screen needs to draw the app now: the navigation stack, the top page (title, bar
    /// button, colour scheme, rows with their values), and what is presented over it (an alert, the
    /// image picker, the mail composer) or pushed (an app picker). While a page is pushed over the
    /// root page, "root" lists the root page's rows as it shows them (label, cell, enabled, value,
    /// index, detail, key), for a screen that keeps the root's rows beside the page on top.
    Json state();

    /// Real-clock sessions: runs what fell due on the main queue.
    void tick();

    /// Ends a command: draws what changed (bar buttons), and drops the oldest unread events over
    /// kUnreadEvents.
    void commit();

private:
    /// Shows a controller on top: push, then init's followers (specifiers, viewDidLoad, viewWillAppear:).
    void present(const std::shared_ptr<UIViewController>& controller);
    std::shared_ptr<PSListController> requireTopPage() const;
    /// The page at level of the stack (0: the bottom); throws when there is none.
    std::shared_ptr<PSListController> requirePage(std::size_t level) const;
    std::shared_ptr<PSSpecifier> shownRow(const std::string& property, const std::string& value) const;
    /// The index of the shown row whose "id" is id (throws as shownRow does).
    std::size_t shownIndex(const std::string& id) const;
    /// The top page's row at index; throws when there is none.
    std::shared_ptr<PSSpecifier> rowAt(std::size_t index) const;

    std::unique_ptr<Process> _process;
    std::shared_ptr<UINavigationController> _navigation;
    std::size_t _droppedEvents = 0;
};
