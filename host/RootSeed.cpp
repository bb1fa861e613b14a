#include "host/RootSeed.h"

#include "platform/NSFileManager.h"

#include <system_error>

namespace fs = std::filesystem;

void seedRoot(const fs::path& root)
{
    std::error_code ec;
    fs::path marker = root / ".nimbra-prefs-seeded";
    if (fs::exists(marker, ec))
        return;
    fs::create_directories(root, ec);
    // The system volume's frameworks (stand-ins: the platform layer defines their symbols).
    for (const char* framework : {"System/Library/PrivateFrameworks/BackBoardServices.framework/BackBoardServices",
                                  "System/Library/PrivateFrameworks/ControlCenterServices.framework/ControlCenterServices"})
        AtomicFile::write(root / ".rootfs" / framework, "Mach-O stand-in\n");
    AtomicFile::write(marker, "");
}
