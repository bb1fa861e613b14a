#include "platform/BackBoardServices.h"

#include "platform/Darwin.h"
#include "platform/Events.h"
#include "platform/Process.h"

namespace BackBoardServices {

const char* const kFrameworkPath = "/System/Library/PrivateFrameworks/BackBoardServices.framework/BackBoardServices";
const char* const kTerminateSymbol = "BKSTerminateApplicationForReasonAndReportWithDescription";

namespace {

void terminateApplication(const std::string& bundleIdentifier, int reason, bool report, const std::string* description)
{
    (void)reason;
    (void)report;
    (void)description;
    Process::current().events().record(Events::Terminate{bundleIdentifier});
}

const bool registered = [] {
    Darwin::registerSymbol(kFrameworkPath, kTerminateSymbol, reinterpret_cast<Darwin::Symbol>(&terminateApplication));
    return true;
}();

}  // namespace

}  // namespace BackBoardServices
