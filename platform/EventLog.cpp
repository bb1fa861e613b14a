#include "platform/EventLog.h"

#include <nlohmann/json.hpp>

#include <type_traits>
#include <utility>

namespace {

using Json = nlohmann::ordered_json;

template <class T> struct IsMaybe : std::false_type {};
template <class T> struct IsMaybe<Events::Maybe<T>> : std::true_type {};

template <class T>
Json value(const T& given);

template <class T>
void addFields(Json::object_t& members, const T& kind)
{
    kind.fields([&](const char* name, const auto& field) {
        if constexpr (IsMaybe<std::decay_t<decltype(field)>>::value) {
            if (field.value)
                members.emplace_back(name, value(*field.value));
        } else {
            members.emplace_back(name, value(field));
        }
    });
}

template <class T>
Json value(const T& given)
{
    if constexpr (requires { given.has_value(); *given; }) {
        return given ? value(*given) : Json(nullptr);
    } else if constexpr (requires { given.fields([](const char*, const auto&) {}); }) {
        Json object = Json::object();
        addFields(object.get_ref<Json::object_t&>(), given);
        return object;
    } else if constexpr (requires { given.begin(); given.size(); } && !std::is_convertible_v<T, std::string_view>) {
        Json array = Json::array();
        auto& items = array.get_ref<Json::array_t&>();
        items.reserve(given.size());
        for (auto& item : given)
            items.push_back(value(item));
        return array;
    } else {
        return Json(given);
    }
}

}  // namespace

EventLog::EventLog() = default;
EventLog::~EventLog() = default;

void EventLog::record(Event event)
{
    _events.push_back(std::move(event));
}

std::vector<EventLog::Event> EventLog::drain()
{
    std::vector<Event> events;
    events.swap(_events);
    return events;
}

std::size_t EventLog::keepLatest(std::size_t count)
{
    if (_events.size() <= count)
        return 0;
    std::size_t forgotten = _events.size() - count;
    _events.erase(_events.begin(), _events.begin() + static_cast<std::ptrdiff_t>(forgotten));
    return forgotten;
}

nlohmann::ordered_json EventLog::json(const Event& event)
{
    return std::visit(
        [](const auto& kind) {
            Json object = Json::object();
            auto& members = object.get_ref<Json::object_t&>();
            members.emplace_back("event", std::decay_t<decltype(kind)>::kName);
            addFields(members, kind);
            return object;
        },
        event);
}
