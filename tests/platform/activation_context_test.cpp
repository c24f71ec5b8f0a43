#include "base/activation_context.h"

#include "support/failing_calls.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace qx {
namespace {

bool AContextIsActive()
{
    HANDLE context = nullptr;
    if (!GetCurrentActCtx(&context) || context == nullptr)
        return false;
    ReleaseActCtx(context);
    return true;
}

TEST(ActivationContext, IsActiveWhileTheScopeLives)
{
    ASSERT_FALSE(AContextIsActive());
    {
        const ActivationScope scope;
        EXPECT_TRUE(AContextIsActive());
    }
    EXPECT_FALSE(AContextIsActive());
}

TEST(ActivationContext, WhatCannotBeMadeOrActivatedIsGoneWithout)
{
    const auto isActive = [] {
        ForgetActivationContext();
        const ActivationScope scope;
        return AContextIsActive();
    };
    {
        test::FailingCalls<decltype(GetModuleFileNameW), struct Names> names(nullptr, "GetModuleFileNameW", 0);
        names.FailFrom(1);
        EXPECT_FALSE(isActive());
    }
    {
        test::FailingCalls<decltype(CreateActCtxW), struct Contexts> contexts(nullptr, "CreateActCtxW",
                                                                              INVALID_HANDLE_VALUE);
        contexts.FailFrom(1);
        EXPECT_FALSE(isActive());
    }
    {
        test::FailingCalls<decltype(ActivateActCtx), struct Activations> activations(nullptr, "ActivateActCtx", FALSE);
        activations.FailFrom(1);
        EXPECT_FALSE(isActive());
    }
    EXPECT_TRUE(isActive());
}

TEST(ActivationContext, TwoThreadsMayBeTheFirstToUseIt)
{
    constexpr int kRounds = 200;
    int without = 0;
    for (int round = 0; round < kRounds; ++round) {
        ForgetActivationContext();
        std::atomic<int> waiting{2}, missing{0};
        const auto use = [&] {
            --waiting;
            while (waiting != 0) {
            }
            const ActivationScope scope;
            missing += AContextIsActive() ? 0 : 1;
        };
        std::thread other(use);
        use();
        other.join();
        without += missing;
    }
    EXPECT_EQ(without, 0);
}

} // namespace
} // namespace qx
