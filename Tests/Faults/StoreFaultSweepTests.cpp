#include "Tests/Faults/FaultCounts.h"
#include "Tests/Faults/FaultInjection.h"
#include "Tests/Faults/StoreWorld.h"

#include <gmock/gmock.h>

namespace teralune {
namespace {

std::ptrdiff_t openDescriptors() {
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return std::distance(begin(descriptors), end(descriptors));
}

TEST(StoreFaultSweepTests, each_call_that_fails_is_reported_and_leaves_a_state_that_the_next_run_mends) {
    using Effect = Fault::Effect;
    constexpr std::pair<const char*, Call> calls[] = {
        {"read", Call::read},         {"write", Call::write},   {"sync", Call::sync},
        {"truncate", Call::truncate}, {"open", Call::open},     {"remove", Call::remove},
        {"map", Call::map},           {"rename", Call::rename}, {"allocation", Call::allocate}};
    const TemporaryFolder folder;
    StoreWorld world(folder.path());
    for (const Operation& operation : storeOperations(&world)) {
        std::string counts;
        std::size_t allPoints = 0;
        for (const auto& [name, call] : calls) {
            // What can't be read is just what a repair does without.
            if (operation.name == "repair" && call == Call::read) {
                continue;
            }
            std::size_t points = 0;
            for (const Effect effect :
                 {Effect::fails, Effect::failsFromThenOn, Effect::isFull, Effect::isFullFromThenOn}) {
                if (effect >= Effect::isFull && call != Call::write) {
                    continue;
                }
                bool hasStruck = true;
                const int stride = call == Call::allocate && !isLong() ? 61 : 1;
                for (int number = 1; hasStruck; number += stride) {
                    const std::string where = operation.name + ", " + name + " " + std::to_string(number) +
                                              ", effect " + std::to_string(static_cast<int>(effect));
                    world.place(operation.startName, operation.start);
                    const std::ptrdiff_t descriptors = openDescriptors();
                    ASSERT_TRUE(operation.opening(world)) << where;
                    armFault({Fault::bit(call), number, effect});
                    const bool succeeded = operation.run(world);
                    hasStruck = disarmFault();
                    points += hasStruck ? 1 : 0;
                    ASSERT_TRUE(succeeded || hasStruck) << where << ": " << world.lastFailure;
                    // Every other time the store goes on as it is, as it does in an app that keeps running.
                    if (number % 2 == 0) {
                        const std::string state = operation.state(world);
                        ASSERT_THAT(operation.states, testing::Contains(state)) << where;
                        ASSERT_TRUE(!succeeded || state == operation.states.back()) << where << ": swallowed";
                        ASSERT_TRUE(operation.opening(world)) << where << ": " << world.lastFailure;
                    }
                    ASSERT_TRUE(operation.run(world)) << where << ": " << world.lastFailure;
                    ASSERT_EQ(operation.state(world), operation.states.back()) << where;
                    ASSERT_EQ(openDescriptors(), descriptors) << where;
                }
            }
            allPoints += points;
            if (points > 0) {
                counts += std::to_string(points) + " " + name + ", ";
            }
        }
        printFaults(operation.name + " with a failing call", allPoints,
                    counts + "an allowed state, the failure told, the next run right");
    }
}

} // namespace
} // namespace teralune
