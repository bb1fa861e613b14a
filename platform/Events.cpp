#include "platform/Events.h"

#include <type_traits>

namespace Events {

namespace {

template <class... Alternatives>
std::vector<Kind> listed(std::variant<Alternatives...>*)
{
    std::vector<Kind> list;
    auto add = [&](const auto& kind) {
        Kind entry{std::decay_t<decltype(kind)>::kName, {}};
        kind.fields([&](const char* field, const auto&) { entry.fields.emplace_back(field); });
        list.push_back(std::move(entry));
    };
    (add(Alternatives{}), ...);
    return list;
}

}  // namespace

std::string_view name(const Event& event)
{
    return std::visit([](const auto& kind) { return std::decay_t<decltype(kind)>::kName; }, event);
}

const std::vector<Kind>& kinds()
{
    static const std::vector<Kind> all = listed(static_cast<Event*>(nullptr));
    return all;
}

}  // namespace Events
