#include "TestSupport.h"

#include "platform/EventLog.h"
#include "platform/Process.h"
#include "platform/ProcessScope.h"
#include "platform/UIKit.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <thread>
#include <vector>

namespace {

// serve runs each tab's process on whichever worker thread takes its request: an animation block
// running on one thread never takes in, nor loses, a change made on another.
TEST(Animations, ProcessesOnThreadsOfTheirOwnRecordOnlyTheirOwnChanges)
{
    constexpr int kBlocks = 400;
    constexpr int kChanges = 20;
    std::vector<int> wrong(2, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 2; ++t)
        threads.emplace_back([&, t] {
            test::TempDir root;
            ProcessScope none(nullptr);
            Process process(Process::Options{.root = root.path(), .resources = test::resourcesDir()});
            auto view = std::make_shared<UIView>("view" + std::to_string(t));
            for (int block = 0; block < kBlocks; ++block) {
                UIView::animateWithDuration(0.25, 0, [&] {
                    for (int i = 0; i < kChanges; ++i)
                        view->setAlpha(i / double(kChanges));
                });
                auto events = process.events().drain();
                bool own = events.size() == kChanges;
                for (auto& event : events)
                    own = own && event.value("view", "") == "view" + std::to_string(t);
                if (!own)
                    ++wrong[t];
            }
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(wrong[0], 0);
    EXPECT_EQ(wrong[1], 0);
}

}  // namespace
