#pragma once
// The stand-in for the Objective-C runtime: classes looked up by name (NSClassFromString), the
// library image that defines each class, and selectors performed by name on objects.
//
// A class defined by a library that is loaded at run time (a colour-picker cell, say) resolves only
// after that library was opened with dlopen in the current process; classes of the bundle and of
// the frameworks the Settings app always links resolve at once.

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <typeindex>
#include <vector>

class NSObject;

struct ObjCClass {
    std::string name;
    std::string superclassName;
    /// Logical path of the library that defines the class; empty for classes always loaded.
    std::string image;
    /// Makes a new instance (init); empty for classes that cannot be made by name.
    std::function<std::shared_ptr<NSObject>()> make;
};

class ObjCRuntime {
public:
    /// Registers a class. A name registered twice keeps the first registration.
    static const ObjCClass& registerClass(ObjCClass cls, std::type_index type);
    static const ObjCClass& registerClass(ObjCClass cls);

    /// The class named name, when it is registered and its image is loaded in the current process.
    static const ObjCClass* classNamed(std::string_view name);
    /// The class named name whether or not its image is loaded (for tools that inspect the bundle).
    static const ObjCClass* registeredClassNamed(std::string_view name);
    /// The class registered for an object's dynamic C++ type.
    static const ObjCClass* classOf(const NSObject& object);
    /// Every registered class, by name.
    static std::vector<const ObjCClass*> allClasses();

    /// Whether cls is cls2 or inherits from it (by registered superclass names).
    static bool isSubclass(const ObjCClass& cls, std::string_view ancestorName);
};

/// NSClassFromString: the class or nullptr.
inline const ObjCClass* NSClassFromString(std::string_view name) { return ObjCRuntime::classNamed(name); }

/// Root of every object that receives actions by selector name.
class NSObject : public std::enable_shared_from_this<NSObject> {
public:
    virtual ~NSObject() = default;

    /// The second half of alloc/init: runs once the object is owned, so that it may hand out
    /// references to itself (as targets of buttons and blocks). `make` calls it.
    virtual void init() {}

    /// alloc + init.
    template <class T, class... Args>
    static std::shared_ptr<T> make(Args&&... args)
    {
        auto object = std::make_shared<T>(std::forward<Args>(args)...);
        object->init();
        return object;
    }

    /// A strong reference to this object as its own type (`self`).
    template <class T>
    std::shared_ptr<T> self()
    {
        return std::static_pointer_cast<T>(shared_from_this());
    }

    /// The runtime class, or nullptr for an unregistered C++ type.
    const ObjCClass* objcClass() const { return ObjCRuntime::classOf(*this); }
    /// The class name ("" for an unregistered type).
    std::string className() const;

    /// Whether the object has an action method named selector. A trailing ':' is not significant.
    bool respondsToSelector(std::string_view selector) const;
    /// Performs the action named selector; false when the object has none.
    bool performSelector(std::string_view selector);
    /// The action names this object answers, for tools that check page definitions.
    std::vector<std::string> selectors() const;

protected:
    /// Declares an action method performed by name (a button row's "action", `call NAME`).
    void addAction(std::string selector, std::function<void()> method);

private:
    const std::function<void()>* findAction(std::string_view selector) const;
    std::map<std::string, std::function<void()>, std::less<>> _actions;
};

/// Registers a class of the bundle or of an always-loaded framework under its C++ name.
#define NIM_REGISTER_CLASS(Type, Super)                                                               \
    static const ObjCClass& Type##_objc_class [[maybe_unused]] = ObjCRuntime::registerClass(        \
        ObjCClass{#Type, #Super, "", [] { return std::static_pointer_cast<NSObject>(NSObject::make<Type>()); }}, \
        std::type_index(typeid(Type)))

/// Registers a class that is never made by name (a base class of pages or cells).
#define NIM_REGISTER_ABSTRACT_CLASS(Type, Super)                                                     \
    static const ObjCClass& Type##_objc_class [[maybe_unused]] =                                    \
        ObjCRuntime::registerClass(ObjCClass{#Type, #Super, "", {}}, std::type_index(typeid(Type)))
