#include "platform/UIAppearance.h"

#include "platform/Process.h"

namespace {

struct Appearances {
    std::map<std::string, UILabelAppearance> labels;
};

}  // namespace

namespace UIAppearance {

UILabelAppearance& labelWhenContainedIn(const std::string& containerClass)
{
    return Process::current().global<Appearances>().labels[containerClass];
}

const std::map<std::string, UILabelAppearance>& labelAppearances()
{
    return Process::current().global<Appearances>().labels;
}

}  // namespace UIAppearance
