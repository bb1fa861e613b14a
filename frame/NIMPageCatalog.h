#pragma once
// Every page controller of the bundle, registered by its own file: its class (so that link rows
// can open it by name) and its description (definition, domain, rules) for the host's `pages`
// listing and for the consistency check of the page definitions.

#include "frame/PageDescription.h"
#include "platform/ObjCRuntime.h"

#include <string>
#include <string_view>
#include <vector>

struct NIMPageEntry {
    std::string className;
    const PageDescription& (*description)();
};

namespace NIMPageCatalog {

bool add(NIMPageEntry entry);
/// Every registered page controller, by class name.
std::vector<NIMPageEntry> all();
/// The entry of a page controller class, or nullptr.
const NIMPageEntry* find(std::string_view className);

}  // namespace NIMPageCatalog

/// Registers a page controller: `Type::description()` returns its PageDescription.
#define NIM_REGISTER_PAGE(Type, Super)                                                   \
    NIM_REGISTER_CLASS(Type, Super);                                                     \
    static const bool Type##_page [[maybe_unused]] = NIMPageCatalog::add({#Type, &Type::description})

/// Declares and registers a page controller that is exactly its description: the file then gives
/// `Type::description()` (definition, domain, rule table, actions) and nothing else.
#define NIM_PAGE(Type, Super)                                                         \
    class Type : public Super {                                                       \
    public:                                                                           \
        Type() : Super(description()) {}                                              \
        static const PageDescription& description();                                  \
    };                                                                                \
    NIM_REGISTER_PAGE(Type, Super)
