#pragma once
// The BackBoardServices framework on the system volume and the one function of it the bundle
// calls. Terminating an app is recorded as {"event":"terminate","bundleID":...}.

#include <string>

namespace BackBoardServices {

/// "/System/Library/PrivateFrameworks/BackBoardServices.framework/BackBoardServices".
extern const char* const kFrameworkPath;
/// "BKSTerminateApplicationForReasonAndReportWithDescription".
extern const char* const kTerminateSymbol;

/// The exported function's type: (bundle identifier, reason, report, description or nullptr).
using TerminateFunction = void (*)(const std::string& bundleIdentifier, int reason, bool report,
                                   const std::string* description);

}  // namespace BackBoardServices
