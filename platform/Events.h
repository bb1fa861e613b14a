#pragma once
// Every kind of event the stand-in records of what the device would show or do, defined once: its
// name and its fields with their types. The platform records them (EventLog::record), the hosts
// read them and send each as the JSON object {"event": NAME, FIELD: VALUE, ...} (EventLog::json),
// and the page application compares the same names (resources/web/event-kinds.js, which a test
// holds equal to Events::kinds()).
//
// Each kind lists its fields in order through `fields(field)`, calling field(name, value) for each:
// an Events::Maybe is left out of the object when empty; a std::optional is null when empty; a
// vector or array is an array; a struct with fields() of its own is an object.

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace Events {

/// A field left out of the event when it has no value.
template <class T>
struct Maybe {
    std::optional<T> value;
    Maybe() = default;
    template <class U>
        requires(!std::is_same_v<std::remove_cvref_t<U>, Maybe> && std::is_convertible_v<U &&, T>)
    Maybe(U&& given) : value(std::forward<U>(given)) {}
};

/// The ids of table rows, null for a row without one.
using RowIds = std::vector<std::optional<std::string>>;

// Table changes (PSListController).

/// Rows inserted after the row with id `after`.
struct Insert {
    static constexpr std::string_view kName = "insert";
    RowIds ids;
    std::string after;
    bool animated = false;
    template <class F> void fields(F&& field) const { field("ids", ids), field("after", after), field("animated", animated); }
};
struct Remove {
    static constexpr std::string_view kName = "remove";
    RowIds ids;
    bool animated = false;
    template <class F> void fields(F&& field) const { field("ids", ids), field("animated", animated); }
};
/// The whole table was built again from the page's rows.
struct Reload {
    static constexpr std::string_view kName = "reload";
    template <class F> void fields(F&&) const {}
};
struct ReloadRow {
    static constexpr std::string_view kName = "reloadRow";
    std::string id;
    template <class F> void fields(F&& field) const { field("id", id); }
};
/// A row moved inside its section, by its place there.
struct Move {
    static constexpr std::string_view kName = "move";
    std::size_t from = 0;
    std::size_t to = 0;
    template <class F> void fields(F&& field) const { field("from", from), field("to", to); }
};

// Navigation and what is presented (UIKit).

struct Push {
    static constexpr std::string_view kName = "push";
    std::string className;
    /// An app picker's store, key and limit (null: no limit); left out for any other page.
    Maybe<std::string> identifier;
    Maybe<std::string> key;
    Maybe<std::optional<int>> maxEnabled;
    template <class F> void fields(F&& field) const
    {
        field("class", className), field("identifier", identifier), field("key", key), field("maxEnabled", maxEnabled);
    }
};
struct Pop {
    static constexpr std::string_view kName = "pop";
    std::string className;
    template <class F> void fields(F&& field) const { field("class", className); }
};
struct AlertAction {
    std::string title;
    /// "default", "cancel" or "destructive".
    std::string style;
    template <class F> void fields(F&& field) const { field("title", title), field("style", style); }
};
struct Alert {
    static constexpr std::string_view kName = "alert";
    std::string title;
    std::string message;
    std::vector<AlertAction> actions;
    template <class F> void fields(F&& field) const { field("title", title), field("message", message), field("actions", actions); }
};
/// A controller other than an alert was presented.
struct Present {
    static constexpr std::string_view kName = "present";
    std::string className;
    template <class F> void fields(F&& field) const { field("class", className); }
};
struct Dismiss {
    static constexpr std::string_view kName = "dismiss";
    std::string className;
    template <class F> void fields(F&& field) const { field("class", className); }
};
/// The navigation bar's button as it is now.
struct Button {
    static constexpr std::string_view kName = "button";
    std::string title;
    /// Red, green, blue and alpha from 0 to 255; null when no tint was set.
    std::optional<std::array<int, 4>> tint;
    template <class F> void fields(F&& field) const { field("title", title), field("tint", tint); }
};
/// A view's property changed inside an animation: one property of one view a change.
struct Animate {
    static constexpr std::string_view kName = "animate";
    std::string view;
    Maybe<double> alpha;
    Maybe<double> translationY;
    double duration = 0;
    template <class F> void fields(F&& field) const
    {
        field("view", view), field("alpha", alpha), field("translationY", translationY), field("duration", duration);
    }
};
/// A blur view was added, with its UIBlurEffectStyle and alpha.
struct Blur {
    static constexpr std::string_view kName = "blur";
    int style = 0;
    double alpha = 0;
    template <class F> void fields(F&& field) const { field("style", style), field("alpha", alpha); }
};
struct EndEditing {
    static constexpr std::string_view kName = "endEditing";
    bool force = false;
    template <class F> void fields(F&& field) const { field("force", force); }
};
/// A spinning wheel started or stopped.
struct Activity {
    static constexpr std::string_view kName = "activity";
    bool animating = false;
    template <class F> void fields(F&& field) const { field("animating", animating); }
};

// The system (Cephei, BackBoardServices, Darwin, the file manager, mail).

struct Respring {
    static constexpr std::string_view kName = "respring";
    std::string url;
    template <class F> void fields(F&& field) const { field("url", url); }
};
struct Spawn {
    static constexpr std::string_view kName = "spawn";
    std::string path;
    std::vector<std::string> argv;
    template <class F> void fields(F&& field) const { field("path", path), field("argv", argv); }
};
struct Dlopen {
    static constexpr std::string_view kName = "dlopen";
    std::string path;
    bool loaded = false;
    template <class F> void fields(F&& field) const { field("path", path), field("loaded", loaded); }
};
struct Terminate {
    static constexpr std::string_view kName = "terminate";
    std::string bundleID;
    template <class F> void fields(F&& field) const { field("bundleID", bundleID); }
};
struct Notify {
    static constexpr std::string_view kName = "notify";
    std::string name;
    template <class F> void fields(F&& field) const { field("name", name); }
};
struct Delete {
    static constexpr std::string_view kName = "delete";
    std::string path;
    template <class F> void fields(F&& field) const { field("path", path); }
};
/// A mail composer was opened, filled in.
struct Compose {
    static constexpr std::string_view kName = "compose";
    std::vector<std::string> to;
    std::string subject;
    std::string body;
    template <class F> void fields(F&& field) const { field("to", to), field("subject", subject), field("body", body); }
};
/// Something went wrong that the user is told of. A failed write (write: true) names its domain,
/// key, reason and device path, and, for a row of a page, the row's label and the page's title; a
/// picture that could not be stored names its path.
struct Error {
    static constexpr std::string_view kName = "error";
    std::string message;
    Maybe<std::string> domain;
    Maybe<std::string> key;
    Maybe<std::string> reason;
    Maybe<std::string> path;
    Maybe<bool> write;
    Maybe<std::string> label;
    Maybe<std::string> page;
    template <class F> void fields(F&& field) const
    {
        field("message", message), field("domain", domain), field("key", key), field("reason", reason), field("path", path),
            field("write", write), field("label", label), field("page", page);
    }
    /// Whether this is a write that did not reach the disk.
    bool isFailedWrite() const { return write.value.value_or(false); }
};

/// One recorded event, of any kind.
using Event = std::variant<Insert, Remove, Reload, ReloadRow, Move, Push, Pop, Alert, Present, Dismiss, Button, Animate,
                           Blur, EndEditing, Activity, Respring, Spawn, Dlopen, Terminate, Notify, Delete, Compose, Error>;

/// The name of an event's kind ("insert", "error", ...).
std::string_view name(const Event& event);

/// A kind's name and the names of its fields, in order.
struct Kind {
    std::string_view name;
    std::vector<std::string_view> fields;
};

/// Every kind, in the order of Event's alternatives.
const std::vector<Kind>& kinds();

}  // namespace Events
