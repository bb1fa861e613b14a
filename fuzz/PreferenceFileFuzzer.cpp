// A preference domain's file holding any bytes: read as the bundle reads it (HBPreferences, then
// every value as JSON, as `file` and the browser show it). Must never crash, hang or grow without
// bound; bytes that are no property-list dictionary read as empty.

#include "FuzzRoot.h"

#include "host/JsonValue.h"
#include "platform/HBPreferences.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static fuzz::FuzzRoot root;
    static const std::string domain = "com.veltram.nimbraprefs.fuzz";
    fuzz::FuzzRoot::put(root.path() / "jb/var/mobile/Library/Preferences" / (domain + ".plist"),
                        std::string_view(reinterpret_cast<const char*>(data), size));
    // A new object each time: the shared one would keep a parse of a file with the same size and time.
    HBPreferences preferences(domain);
    for (auto& [key, value] : preferences.dictionaryRepresentation())
        toJson(value).dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    return 0;
}
