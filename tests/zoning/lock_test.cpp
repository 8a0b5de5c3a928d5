#include <chrono>
#include <functional>
#include <future>

#include "tests/zoning/ZoningTest.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class FabricLock : public ZoningTest {
  protected:
    FabricLock() { start(); }
    bool expired = false;
};

TEST_F(FabricLock, OrNotEveryCallWaitsForTheAccessLock) {
    const std::function<void()> operations[] = {
        [] { ZoningCache::CIMMemberTypeToVexlib(2); },
        [] { ZoningCache::cnvCIMZoneTypeToVEX(1); },
        [] { ZoningCache::vex_smlCnvFromVEXZoneType(VEX_ZT_SOFT); },
        [this] { zoning().getUberZoneset(); },
        [this] { zoning().zoneLimitAtMax(); },
        [this] { zoning().LockIdOK(nullptr, expired); },
        [this] { zoning().removeZone(nullptr); },
    };
    std::vector<std::future<void>> running;
    const AccessGuard guard;
    for (const auto& operation : operations) running.push_back(std::async(std::launch::async, operation));
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(50);
    for (const auto& one : running) EXPECT_EQ(one.wait_until(deadline), std::future_status::timeout);
    // The guard is released first, then the threads are waited for.
}

TEST_F(FabricLock, ExpiresAfterNinetySeconds) {
    // The switch's clock runs on while the test does, so a try in which it ticked does not count.
    const auto ok = [&](long age) {
        for (;;) {
            long locked = 0;
            long asked = 0;
            uptime(&locked);
            zoning().ZoningUnlock();
            EXPECT_EQ(zoning().ZoningLock(Arg{"client"}), 1);
            sim.advanceClock(age);
            log();
            const bool answer = zoning().LockIdOK(Arg{"client"}, expired);
            uptime(&asked);
            if (asked - locked == age) return answer;
        }
    };
    EXPECT_TRUE(ok(90));
    EXPECT_FALSE(expired);
    EXPECT_THAT(log(), IsEmpty());
    EXPECT_FALSE(ok(91));
    EXPECT_TRUE(expired) << "and still held";
    EXPECT_FALSE(zoning().LockIdOK(Arg{"other"}, expired));
    EXPECT_FALSE(expired) << "of another client's lock nothing is told";
}

}  // namespace
