#pragma once

#include <gtest/gtest.h>

#include <pthread.h>

#include <functional>

namespace Orrery::UnitsTest {

/// Run on a thread with 256 KiB of stack, which is less than many platforms give a thread.
inline void runOnSmallStack(std::function<void()> function)
{
    const auto call = [](void* argument) -> void* {
        (*static_cast<std::function<void()>*>(argument))();
        return nullptr;
    };
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, std::size_t{256} * 1024), 0);
    pthread_t thread{};
    ASSERT_EQ(pthread_create(&thread, &attributes, call, &function), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attributes);
}

} // namespace Orrery::UnitsTest
