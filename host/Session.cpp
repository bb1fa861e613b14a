#include "host/Session.h"

#include "cells/NimbraImagePicker.h"
#include "frame/NIMCollapsibleListController.h"
#include "frame/SharedActions.h"
#include "host/JsonValue.h"
#include "host/RootSeed.h"
#include "platform/ColorPickerLibraries.h"
#include "platform/HBPreferences.h"
#include "platform/HBPreferencesReadPass.h"
#include "platform/HBSupportController.h"
#include "platform/SparkAppListTableViewController.h"
#include "platform/UIImagePickerController.h"
#include "platform/NSFileManager.h"
#include "platform/PropertyListSerialization.h"
#include "storage/NIMAppPicker.h"

#include <stb/stb_image.h>

#include <atomic>
#include <climits>

Session::Session(Options options)
{
    seedRoot(options.root);
    _process = std::make_unique<Process>(std::move(options));
    _navigation = NSObject::make<UINavigationController>();
}

Session::~Session()
{
    // Pages and blocks go before the process they live in.
    _navigation.reset();
}

std::shared_ptr<PSListController> Session::topPage() const
{
    return std::dynamic_pointer_cast<PSListController>(_navigation->topViewController());
}

std::vector<std::shared_ptr<PSListController>> Session::pages() const
{
    std::vector<std::shared_ptr<PSListController>> pages;
    for (auto& controller : _navigation->viewControllers())
        pages.push_back(std::dynamic_pointer_cast<PSListController>(controller));
    return pages;
}

std::shared_ptr<PSListController> Session::requireTopPage() const
{
    auto page = topPage();
    if (!page)
        throw CommandError("no page is open");
    return page;
}

std::shared_ptr<PSListController> Session::requirePage(std::size_t level) const
{
    auto& controllers = _navigation->viewControllers();
    auto page = level < controllers.size() ? std::dynamic_pointer_cast<PSListController>(controllers[level]) : nullptr;
    if (!page)
        throw CommandError("no page is open at level " + std::to_string(level) + " of the stack");
    return page;
}

std::shared_ptr<PSSpecifier> Session::shownRow(const std::string& property, const std::string& value) const
{
    auto page = requireTopPage();
    for (auto& row : page->specifiers())
        if (row->propertyForKey(property).stringValue() == value)
            return row;
    throw CommandError(page->className() + " shows no row with " + property + " \"" + value + "\"", CommandError::Kind::NotFound);
}

void Session::present(const std::shared_ptr<UIViewController>& controller)
{
    _navigation->pushViewController(controller, true);
}

void Session::open(const std::string& className)
{
    const ObjCClass* cls = NSClassFromString(className);
    if (!cls || !cls->make || !ObjCRuntime::isSubclass(*cls, "PSListController"))
        throw CommandError("unknown page controller \"" + className + "\"", CommandError::Kind::NotFound);
    // The root page chooses the colour-picker library when the bundle opens; a page opened
    // directly, before any choice was made, finds it chosen as the root page would have chosen it.
    if (className != "NIMRootListController" && !NimbraColorPickers::colorPickerChosen())
        NimbraColorPickers::selectColorPicker();
    present(std::static_pointer_cast<UIViewController>(cls->make()));
}

void Session::set(const std::string& key, const PlistValue& value, std::optional<std::size_t> level)
{
    auto page = level ? requirePage(*level) : requireTopPage();
    for (auto& row : page->specifiers()) {
        bool spark = SparkColourPicker::isSparkRow(*row);
        if ((spark ? row->propertyForKey("libsparkcolourpicker")["key"] : row->propertyForKey("key")).stringValue() != key)
            continue;
        if (!row->isEnabled())
            throw CommandError("the row for \"" + key + "\" is disabled");
        // A libsparkcolourpicker row is edited by the library's own cell, which stores the colour itself.
        if (spark) {
            HBPreferences::RowWrite write(row->name(), page->navigationItem().title);
            if (!SparkColourPicker::store(*row, value))
                page->reloadSpecifier(row);
            return;
        }
        // A slider hands over a real, whatever number was typed or sent.
        if (row->cellType() == PSCellType::Slider && value.kind() == PlistValue::Kind::Integer)
            page->setPreferenceValue(PlistValue(value.doubleValue()), row);
        else
            page->setPreferenceValue(value, row);
        return;
    }
    throw CommandError(page->className() + " shows no row with key \"" + key + "\"", CommandError::Kind::NotFound);
}

void Session::write(const std::string& domain, const std::string& key, const PlistValue& value)
{
    if (!HBPreferences::isValidIdentifier(domain))
        throw CommandError("\"" + domain + "\" is not a domain identifier");
    if (!HBPreferences::preferencesForIdentifier(domain)->setObject(value, key))
        throw CommandError("could not write " + domain);
}

std::size_t Session::shownIndex(const std::string& id) const
{
    auto row = shownRow("id", id);
    auto& rows = requireTopPage()->specifiers();
    return static_cast<std::size_t>(std::find(rows.begin(), rows.end(), row) - rows.begin());
}

std::shared_ptr<PSSpecifier> Session::rowAt(std::size_t index) const
{
    auto page = requireTopPage();
    auto& rows = page->specifiers();
    if (index >= rows.size())
        throw CommandError(page->className() + " shows no row " + std::to_string(index), CommandError::Kind::NotFound);
    return rows[index];
}

void Session::tap(const std::string& id)
{
    tapRow(shownIndex(id));
}

void Session::tapRow(std::size_t index)
{
    auto page = requireTopPage();
    auto row = rowAt(index);
    std::string id = row->identifier().empty() ? std::to_string(index) : row->identifier();
    if (!row->isEnabled())
        throw CommandError("the row \"" + id + "\" is disabled");
    const std::string& action = row->propertyForKey("action").stringValue();
    if (!action.empty()) {
        auto target = row->target();
        if (!target || !target->performSelector(action))
            throw CommandError("row \"" + id + "\" calls " + action + ", which its target does not have");
        return;
    }
    if (row->cellType() == PSCellType::Link || row->cellType() == PSCellType::LinkList) {
        const ObjCClass* detail = row->detailControllerClass();
        if (!detail && !row->detailClassName().empty())
            throw CommandError("page " + row->detailClassName() + " is not available yet", CommandError::Kind::NotFound);
        if (detail && detail->name == "PSListItemsController")
            throw CommandError("row \"" + id + "\" is a list: choose its value with set");
        if (detail && detail->make) {
            present(std::static_pointer_cast<UIViewController>(detail->make()));
            return;
        }
    }
    throw CommandError("row \"" + id + "\" does nothing when tapped");
}

void Session::call(const std::string& selector)
{
    auto page = requireTopPage();
    if (!page->performSelector(selector))
        throw CommandError(page->className() + " has no action " + selector);
}

void Session::alert(const std::string& title)
{
    auto page = requireTopPage();
    auto alert = std::dynamic_pointer_cast<UIAlertController>(page->presentedViewController());
    if (!alert)
        throw CommandError("no alert is shown");
    const UIAlertAction* action = alert->actionTitled(title);
    if (!action)
        throw CommandError("the alert has no action \"" + title + "\"");
    auto handler = action->handler;
    page->dismissViewControllerAnimated(true);
    if (handler)
        handler();
}

void Session::wait(double seconds)
{
    if (!(seconds >= 0))
        throw CommandError("cannot wait a negative time");
    _process->mainQueue().advance(seconds);
}

void Session::reload()
{
    requireTopPage()->reloadSpecifiers();
}

void Session::back()
{
    if (_navigation->viewControllers().size() < 2)
        throw CommandError("there is no page to go back to");
    _navigation->popViewControllerAnimated(true);
}

void Session::pick(const std::vector<std::string>& bundleIdentifiers)
{
    auto picker = std::dynamic_pointer_cast<SparkAppListTableViewController>(_navigation->topViewController());
    if (!picker)
        throw CommandError("no app picker is shown");
    if (bundleIdentifiers.empty())
        throw CommandError("missing bundle identifier");
    for (auto& identifier : bundleIdentifiers)
        if (!picker->toggleApplication(identifier))
            throw CommandError("no installed app has the bundle identifier \"" + identifier + "\"");
}

namespace {

std::atomic<std::size_t> decodingPictures = 0;

}  // namespace

std::mutex& Session::pictureDecoding()
{
    static std::mutex decoding;
    return decoding;
}

std::size_t Session::picturesDecoding()
{
    return decodingPictures;
}

std::shared_ptr<UIImage> Session::decodePicture(std::string_view bytes)
{
    if (bytes.size() > kPictureBytes)
        throw CommandError("the picture is larger than " + std::to_string(kPictureBytes / (1024 * 1024)) + " MiB",
                           CommandError::Kind::TooLarge);
    int width = 0, height = 0, components = 0;
    if (bytes.empty() || !stbi_info_from_memory(reinterpret_cast<const stbi_uc*>(bytes.data()), static_cast<int>(bytes.size()),
                                                &width, &height, &components))
        throw CommandError("the file is not a picture");
    if (width <= 0 || height <= 0 || static_cast<long long>(width) * height > kPicturePixels)
        throw CommandError("the picture is too large (" + std::to_string(width) + " x " + std::to_string(height) +
                               " pixels; at most " + std::to_string(kPicturePixels / (1024 * 1024)) + " megapixels)",
                           CommandError::Kind::TooLarge);
    ++decodingPictures;
    struct Done {
        ~Done() { --decodingPictures; }
    } done;
    std::lock_guard turn(pictureDecoding());
    auto picture = UIImage::imageWithData(bytes);
    if (!picture)
        throw CommandError("the file is not a picture");
    return picture;
}

void Session::image(const std::filesystem::path& path)
{
    if (!std::dynamic_pointer_cast<UIImagePickerController>(requireTopPage()->presentedViewController()))
        throw CommandError("no image picker is shown");
    std::error_code ec;
    if (auto size = std::filesystem::file_size(path, ec); !ec && size > kPictureBytes)
        throw CommandError("the picture is larger than " + std::to_string(kPictureBytes / (1024 * 1024)) + " MiB",
                           CommandError::Kind::TooLarge);
    auto bytes = AtomicFile::read(path, kPictureBytes);
    if (!bytes)
        throw CommandError("\"" + path.string() + "\" is not an image file");
    image(decodePicture(*bytes));
}

void Session::image(std::shared_ptr<UIImage> picture)
{
    auto picker = std::dynamic_pointer_cast<UIImagePickerController>(requireTopPage()->presentedViewController());
    if (!picker)
        throw CommandError("no image picker is shown");
    picker->pick(std::move(picture));
}

void Session::removeImage(const std::string& id)
{
    removeImageAt(shownIndex(id));
}

void Session::removeImageAt(std::size_t index)
{
    auto page = requireTopPage();
    auto row = rowAt(index);
    std::string id = "\"" + (row->identifier().empty() ? std::to_string(index) : row->identifier()) + "\"";
    auto picker = std::dynamic_pointer_cast<NimbraImagePicker>(page->cellForSpecifier(row));
    if (!picker)
        throw CommandError("row " + id + " is not a picture row");
    if (!row->isEnabled())
        throw CommandError("the row " + id + " is disabled");
    if (!picker->removeImage())
        throw CommandError("the picture of row " + id + " could not be removed");
}

void Session::cancel()
{
    auto presented = requireTopPage()->presentedViewController();
    if (auto picker = std::dynamic_pointer_cast<UIImagePickerController>(presented)) {
        picker->cancel();
        return;
    }
    if (auto composer = std::dynamic_pointer_cast<MFMailComposeViewController>(presented)) {
        composer->finish(MFMailComposeViewControllerDelegate::Result::Cancelled);
        return;
    }
    if (std::dynamic_pointer_cast<SparkAppListTableViewController>(_navigation->topViewController())) {
        _navigation->popViewControllerAnimated(true);
        return;
    }
    throw CommandError("no picker is shown");
}

void Session::move(std::size_t from, std::size_t to)
{
    auto page = requireTopPage();
    auto& rows = page->specifiers();
    // The section that holds the movable rows: from the group row before the first of them to the next group row.
    std::size_t first = rows.size();
    for (std::size_t i = 0; i < rows.size() && first == rows.size(); ++i)
        if (auto cell = page->cellForSpecifier(rows[i]); cell && cell->showsReorderControl())
            first = i;
    if (first == rows.size())
        throw CommandError(page->className() + " shows no movable rows");
    std::size_t start = first;
    while (start > 0 && rows[start - 1]->cellType() != PSCellType::Group)
        --start;
    std::size_t end = first;
    while (end < rows.size() && rows[end]->cellType() != PSCellType::Group)
        ++end;
    if (!page->moveRow(start, end - start, from, to))
        throw CommandError("the section has rows 0 to " + std::to_string(end - start - 1) + ", not " + std::to_string(from) +
                           " and " + std::to_string(to));
}

void Session::scroll(double y)
{
    auto page = requireTopPage();
    auto table = page->table();
    table->setContentOffsetY(y);
    page->scrollViewDidScroll(*table);
}

void Session::tapBarButton()
{
    auto button = requireTopPage()->navigationItem().rightBarButtonItem;
    if (!button)
        throw CommandError(topPage()->className() + " has no bar button");
    button->tap();
}

void Session::relaunch()
{
    Options options = _process->options();
    std::vector<EventLog::Event> unread = _process->events().drain();
    // The old app's pages and blocks go with its process, as in the destructor.
    _navigation.reset();
    _process.reset();
    _process = std::make_unique<Process>(std::move(options));
    _navigation = NSObject::make<UINavigationController>();
    for (auto& event : unread)
        _process->events().record(std::move(event));
    open("NIMRootListController");
}

Session::Json Session::show() const
{
    auto page = requireTopPage();
    Json ids = Json::array();
    for (auto& row : page->specifiers())
        if (!row->identifier().empty())
            ids.push_back(row->identifier());
    return {{"page", page->className()}, {"ids", ids}};
}

Session::Json Session::rows()
{
    auto page = requireTopPage();
    HBPreferencesReadPass pass;  // every row's value from one reading of its domain
    Json rows = Json::array();
    for (auto& row : page->specifiers()) {
        Json properties = Json::object();
        for (auto& [key, value] : row->properties())
            properties[key] = toJson(value);
        Json entry{{"label", row->name()},
                   {"properties", properties},
                   {"cellClass", row->cellClass() ? Json(row->cellClass()->name) : Json(nullptr)},
                   {"enabled", row->isEnabled()}};
        if (SparkColourPicker::isSparkRow(*row))
            entry["value"] = toJson(SparkColourPicker::storedValue(*row));
        else if (!row->key().empty())
            entry["value"] = toJson(page->readPreferenceValue(row));
        rows.push_back(std::move(entry));
    }
    return {{"page", page->className()}, {"rows", rows}};
}

Session::Json Session::events()
{
    std::vector<EventLog::Event> drained = _process->events().drain();
    Json answer = Json::object();
    auto& events = (answer["events"] = Json::array()).get_ref<Json::array_t&>();
    events.reserve(drained.size());
    std::move(drained.begin(), drained.end(), std::back_inserter(events));
    if (_droppedEvents)
        answer["dropped"] = std::exchange(_droppedEvents, 0);
    return answer;
}

void Session::commit()
{
    _process->commit();
    auto& log = _process->events();
    if (log.pending().size() > kUnreadEvents) {
        std::vector<EventLog::Event> unread = log.drain();
        std::size_t drop = unread.size() - kUnreadEvents;
        _droppedEvents += drop;
        for (auto it = unread.begin() + static_cast<std::ptrdiff_t>(drop); it != unread.end(); ++it)
            log.record(std::move(*it));
    }
}

Session::Json Session::file(const std::string& path) const
{
    if (!_process->hostPath(path))
        throw CommandError("\"" + path + "\" is not an absolute device path");
    auto& files = NSFileManager::defaultManager();
    Json value = nullptr;
    bool exists = files.fileExistsAtPath(path);
    if (auto bytes = files.contentsAtPath(path))
        if (auto parsed = PropertyListSerialization::propertyListWithData(*bytes))
            value = toJson(*parsed);
    return {{"path", path}, {"exists", exists}, {"value", value}};
}

void Session::tick()
{
    _process->mainQueue().runDue();
    _process->commit();
}

namespace {

/// How many apps the picker a row opens has chosen; nothing for a row that opens no app picker.
std::optional<std::size_t> chosenApps(PSListController& page, const PSSpecifier& row)
{
    auto* collapsible = dynamic_cast<NIMCollapsibleListController*>(&page);
    const std::string& name = row.propertyForKey("action").stringValue();
    if (!collapsible || name.empty())
        return std::nullopt;
    for (auto& [selector, action] : collapsible->page().actions)
        if (selector == name)
            return NIMAppPicker::chosenCount(action);
    return std::nullopt;
}

/// The app picker a row's action opens, or nullptr.
const NIMAppPicker::Push* pickerOf(PSListController& page, const PSSpecifier& row)
{
    auto* collapsible = dynamic_cast<NIMCollapsibleListController*>(&page);
    const std::string& name = row.propertyForKey("action").stringValue();
    if (!collapsible || name.empty())
        return nullptr;
    for (auto& [selector, action] : collapsible->page().actions)
        if (selector == name)
            return action.target<NIMAppPicker::Push>();
    return nullptr;
}

/// The label of the group row above row index of page ("" when it has none).
std::string groupLabelAbove(PSListController& page, std::size_t index)
{
    auto& rows = page.specifiers();
    for (std::size_t i = std::min(index, rows.size()); i-- > 0;)
        if (rows[i]->cellType() == PSCellType::Group)
            return rows[i]->name();
    return "";
}

/// Words joined by "-" ("Select Apps" -> "Select-Apps"), keeping letters, digits and other characters.
std::string hyphenated(const std::string& words)
{
    std::string name;
    for (char c : words) {
        if (c == ' ' || c == '\t' || c == '/' || c == '?' || c == '#') {
            if (!name.empty() && name.back() != '-')
                name += '-';
        } else {
            name += c;
        }
    }
    while (!name.empty() && name.back() == '-')
        name.pop_back();
    return name;
}

/// The name of the app picker the shown row at index opens, in the words of the page: its label
/// ("Select-Apps"), led by its group's when another picker row of the page has the same label
/// ("Double-Tap-Choose-App", "Hold-Choose-App"). "" when the row opens no app picker.
std::string pickerName(PSListController& page, std::size_t index)
{
    auto& rows = page.specifiers();
    if (index >= rows.size() || !pickerOf(page, *rows[index]))
        return "";
    const std::string& label = rows[index]->name();
    bool shared = false;
    for (std::size_t i = 0; i < rows.size(); ++i)
        shared = shared || (i != index && rows[i]->name() == label && pickerOf(page, *rows[i]));
    std::string group = shared ? groupLabelAbove(page, index) : "";
    return hyphenated(group.empty() ? label : group + " " + label);
}

/// The name of the picker controller pushed over page: that of the first shown row of page whose
/// action opens a picker of the same store and key ("" when none does).
std::string pickerNameOver(PSListController& page, const SparkAppListTableViewController& picker)
{
    auto& rows = page.specifiers();
    for (std::size_t i = 0; i < rows.size(); ++i)
        if (auto* push = pickerOf(page, *rows[i]); push && push->storeIdentifier == picker.identifier() && push->key == picker.key())
            return pickerName(page, i);
    return "";
}

Session::Json colorJson(const std::optional<UIColor>& color)
{
    if (!color)
        return nullptr;
    auto c = color->components255();
    return {c[0], c[1], c[2], c[3]};
}

}  // namespace

Session::Json Session::state()
{
    Json stack = Json::array();
    const auto& controllers = _navigation->viewControllers();
    for (std::size_t level = 0; level < controllers.size(); ++level) {
        auto& controller = controllers[level];
        stack.push_back({{"class", controller->className()}, {"title", controller->navigationItem().title}});
        // An app picker is named, in the address, by the row of the page below that opens it.
        auto picker = std::dynamic_pointer_cast<SparkAppListTableViewController>(controller);
        auto below = level ? std::dynamic_pointer_cast<PSListController>(controllers[level - 1]) : nullptr;
        if (picker && below)
            if (std::string name = pickerNameOver(*below, *picker); !name.empty())
                stack.back()["picker"] = name;
    }
    Json state{{"stack", stack}, {"page", nullptr}, {"presented", nullptr}, {"picker", nullptr}};
    auto page = topPage();
    if (!page)
        return state;

    Json pageState = rows();
    pageState["title"] = page->navigationItem().title;
    for (std::size_t i = 0; i < pageState["rows"].size(); ++i) {
        auto& specifier = page->specifiers()[i];
        pageState["rows"][i]["index"] = i;
        pageState["rows"][i]["cell"] = std::string(PSCellTypeName(specifier->cellType()));
        if (auto apps = chosenApps(*page, *specifier)) {
            pageState["rows"][i]["apps"] = *apps;
            pageState["rows"][i]["picker"] = pickerName(*page, i);
        }
        if (auto cell = page->cellForSpecifier(specifier)) {
            if (!cell->detailTextLabel().text.empty())
                pageState["rows"][i]["subtitle"] = cell->detailTextLabel().text;
            if (cell->showsReorderControl())
                pageState["rows"][i]["movable"] = true;
        }
    }
    if (auto titleView = page->navigationItem().titleView; titleView && !titleView->subviews().empty()) {
        auto content = titleView->subviews().front();
        Json title{{"alpha", content->alpha()}, {"translationY", content->translation()[1]}};
        for (auto& part : content->subviews()) {
            if (auto label = std::dynamic_pointer_cast<UILabel>(part))
                title["text"] = label->text;
            if (auto image = std::dynamic_pointer_cast<UIImageView>(part))
                title["image"] = image->imageName;
        }
        pageState["titleView"] = title;
    }
    if (!page->specifiers().empty()) {
        if (auto header = page->headerViewForSpecifier(page->specifiers().front())) {
            Json drawn{{"width", header->frame().width}, {"height", header->frame().height}};
            for (auto& part : header->subviews())
                if (auto image = std::dynamic_pointer_cast<UIImageView>(part))
                    drawn["image"] = {{"name", image->imageName}, {"height", image->frame().height}};
            pageState["header"] = drawn;
        }
    }
    if (auto button = page->navigationItem().rightBarButtonItem)
        pageState["rightButton"] = {{"title", button->title()}, {"tint", colorJson(button->tintColor())}};
    if (auto list = std::dynamic_pointer_cast<HBListController>(page)) {
        if (auto scheme = list->hb_appearanceSettings())
            pageState["appearance"] = {{"tint", colorJson(scheme->tintColor())},
                                       {"navigationBarBackground", colorJson(scheme->navigationBarBackgroundColor())},
                                       {"navigationBarTitle", colorJson(scheme->navigationBarTitleColor())},
                                       {"navigationBarTint", colorJson(scheme->navigationBarTintColor())},
                                       {"cellText", colorJson(scheme->tableViewCellTextColor())},
                                       {"separator", colorJson(scheme->tableViewCellSeparatorColor())},
                                       {"translucent", scheme->translucentNavigationBar()}};
    }
    state["page"] = pageState;

    if (controllers.size() > 1)
        if (auto root = std::dynamic_pointer_cast<PSListController>(controllers.front())) {
            HBPreferencesReadPass pass;
            Json rows = Json::array();
            std::size_t index = 0;
            for (auto& row : root->specifiers()) {
                rows.push_back({{"label", row->name()},
                                {"cell", std::string(PSCellTypeName(row->cellType()))},
                                {"enabled", row->isEnabled()},
                                {"value", row->key().empty() ? Json(nullptr) : toJson(root->readPreferenceValue(row))},
                                {"index", index++},
                                {"detail", row->detailControllerClass() ? row->detailControllerClass()->name : std::string()},
                                {"key", row->key()},
                                {"icon", row->propertyForKey("icon").isString() ? row->propertyForKey("icon").stringValue() : std::string()}});
            }
            state["root"] = rows;
        }

    if (auto picker = std::dynamic_pointer_cast<SparkAppListTableViewController>(page))
        state["picker"] = {{"identifier", picker->identifier()},
                           {"key", picker->key()},
                           {"maxEnabled", picker->maxEnabled() ? Json(*picker->maxEnabled()) : Json(nullptr)}};

    auto presented = page->presentedViewController();
    if (auto alert = std::dynamic_pointer_cast<UIAlertController>(presented)) {
        Json actions = Json::array();
        for (auto& action : alert->actions())
            actions.push_back({{"title", action.title},
                               {"style", action.style == UIAlertActionStyle::Destructive ? "destructive"
                                         : action.style == UIAlertActionStyle::Cancel    ? "cancel"
                                                                                         : "default"}});
        state["presented"] = {{"kind", "alert"}, {"title", alert->title()}, {"message", alert->message()}, {"actions", actions}};
    } else if (std::dynamic_pointer_cast<UIImagePickerController>(presented)) {
        state["presented"] = {{"kind", "imagePicker"}};
    } else if (auto composer = std::dynamic_pointer_cast<MFMailComposeViewController>(presented)) {
        state["presented"] = {{"kind", "mail"}, {"to", composer->toRecipients}, {"subject", composer->subject}, {"body", composer->body}};
    } else if (presented) {
        state["presented"] = {{"kind", "other"}, {"class", presented->className()}};
    }
    return state;
}
