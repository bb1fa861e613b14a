// A page definition holding any bytes, loaded as a page loads its definition: a clear error (an
// empty page) or rows, never a crash, a hang or growth without bound.

#include "FuzzRoot.h"

#include "platform/PSListController.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static fuzz::FuzzRoot resources("/nonexistent");  // only for a folder of its own
    static fuzz::FuzzRoot root(resources.path() / "resources");
    fuzz::FuzzRoot::put(resources.path() / "resources/Fuzzed.plist", std::string_view(reinterpret_cast<const char*>(data), size));
    auto page = NSObject::make<PSListController>();
    page->loadSpecifiersFromPlistName("Fuzzed", page);
    root.session().process().events().drain();
    return 0;
}
