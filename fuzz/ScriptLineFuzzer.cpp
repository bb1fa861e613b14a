// One line of `nimbra-prefs script` (after a few fixed lines that open a page with rows of every
// kind), run on a fresh session: output or a refused command, never a crash or a hang.

#include "FuzzRoot.h"

#include "host/ScriptRunner.h"

#include <cstddef>
#include <cstdint>
#include <sstream>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static fuzz::FuzzRoot root;
    if (size > 4096)
        return -1;
    Session& session = root.freshSession();
    std::string text(reinterpret_cast<const char*>(data), size);
    std::istringstream in("open NIMRootListController\n" + text + "\nshow\nrows\nevents\n");
    std::ostringstream out, diagnostics;
    runScript(session, in, out, diagnostics);
    return 0;
}
