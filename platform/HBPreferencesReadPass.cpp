#include "platform/HBPreferencesReadPass.h"

#include "platform/Process.h"

#include <set>

namespace {

struct ReadPassState {
    unsigned depth = 0;
    std::set<const HBPreferences*> checked;
};

ReadPassState& state()
{
    return Process::current().global<ReadPassState>();
}

}  // namespace

HBPreferencesReadPass::HBPreferencesReadPass()
{
    ++state().depth;
}

HBPreferencesReadPass::~HBPreferencesReadPass()
{
    ReadPassState& pass = state();
    if (--pass.depth == 0)
        pass.checked.clear();
}

bool HBPreferencesReadPass::hasChecked(const HBPreferences& preferences)
{
    const ReadPassState& pass = state();
    return pass.depth > 0 && pass.checked.contains(&preferences);
}

void HBPreferencesReadPass::checked(const HBPreferences& preferences)
{
    ReadPassState& pass = state();
    if (pass.depth > 0)
        pass.checked.insert(&preferences);
}

void HBPreferencesReadPass::forget(const HBPreferences& preferences)
{
    state().checked.erase(&preferences);
}
