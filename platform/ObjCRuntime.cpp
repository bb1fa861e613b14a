#include "platform/ObjCRuntime.h"

#include "platform/Process.h"

namespace {

struct Registry {
    std::map<std::string, std::unique_ptr<ObjCClass>, std::less<>> byName;
    std::map<std::type_index, const ObjCClass*> byType;
};

Registry& registry()
{
    static Registry r;
    return r;
}

std::string_view withoutColon(std::string_view selector)
{
    if (!selector.empty() && selector.back() == ':')
        selector.remove_suffix(1);
    return selector;
}

}  // namespace

const ObjCClass& ObjCRuntime::registerClass(ObjCClass cls)
{
    auto& r = registry();
    auto it = r.byName.find(cls.name);
    if (it != r.byName.end())
        return *it->second;
    std::string name = cls.name;
    auto [inserted, _] = r.byName.emplace(std::move(name), std::make_unique<ObjCClass>(std::move(cls)));
    return *inserted->second;
}

const ObjCClass& ObjCRuntime::registerClass(ObjCClass cls, std::type_index type)
{
    const ObjCClass& registered = registerClass(std::move(cls));
    registry().byType.emplace(type, &registered);
    return registered;
}

const ObjCClass* ObjCRuntime::registeredClassNamed(std::string_view name)
{
    auto& r = registry();
    auto it = r.byName.find(name);
    return it == r.byName.end() ? nullptr : it->second.get();
}

const ObjCClass* ObjCRuntime::classNamed(std::string_view name)
{
    const ObjCClass* cls = registeredClassNamed(name);
    if (!cls)
        return nullptr;
    if (!cls->image.empty() && !(Process::hasCurrent() && Process::current().isImageLoaded(cls->image)))
        return nullptr;
    return cls;
}

const ObjCClass* ObjCRuntime::classOf(const NSObject& object)
{
    auto& types = registry().byType;
    auto it = types.find(std::type_index(typeid(object)));
    return it == types.end() ? nullptr : it->second;
}

std::vector<const ObjCClass*> ObjCRuntime::allClasses()
{
    std::vector<const ObjCClass*> classes;
    for (auto& [name, cls] : registry().byName)
        classes.push_back(cls.get());
    return classes;
}

bool ObjCRuntime::isSubclass(const ObjCClass& cls, std::string_view ancestorName)
{
    const ObjCClass* current = &cls;
    for (int depth = 0; current && depth < 64; ++depth) {
        if (current->name == ancestorName)
            return true;
        current = registeredClassNamed(current->superclassName);
    }
    return false;
}

std::string NSObject::className() const
{
    const ObjCClass* cls = objcClass();
    return cls ? cls->name : std::string();
}

void NSObject::addAction(std::string selector, std::function<void()> method)
{
    _actions[std::string(withoutColon(selector))] = std::move(method);
}

const std::function<void()>* NSObject::findAction(std::string_view selector) const
{
    auto it = _actions.find(withoutColon(selector));
    return it == _actions.end() ? nullptr : &it->second;
}

bool NSObject::respondsToSelector(std::string_view selector) const
{
    return findAction(selector) != nullptr;
}

bool NSObject::performSelector(std::string_view selector)
{
    const std::function<void()>* found = findAction(selector);
    if (!found)
        return false;
    auto keepAlive = weak_from_this().lock();  // the receiver outlives its own action
    std::function<void()> method = *found;
    method();
    return true;
}

std::vector<std::string> NSObject::selectors() const
{
    std::vector<std::string> names;
    for (auto& [name, _] : _actions)
        names.push_back(name);
    return names;
}
