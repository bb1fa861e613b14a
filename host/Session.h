#pragma once
// One run of the bundle in the host: a process (root, system facts, clock), the Settings app's
// navigation stack, and the user's gestures as commands. `nimbra-prefs script` and the tests drive
// it line by line; every command either does what a user would do or throws CommandError.

#include "platform/PSListController.h"
#include "platform/Process.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

class CommandError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class Session {
public:
    using Json = nlohmann::ordered_json;

    /// The root, resources and system facts of the session's process.
    using Options = Process::Options;

    explicit Session(Options options);
    ~Session();

    Process& process() { return *_process; }
    /// The page on top of the navigation stack, or nullptr.
    std::shared_ptr<PSListController> topPage() const;

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
    /// Answers the image picker being shown with an image file of this machine.
    void image(const std::filesystem::path& path);
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

    /// Ends a command: draws what changed (bar buttons).
    void commit() { _process->commit(); }

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
};
