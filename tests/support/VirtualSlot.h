#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

namespace TestSupport {

/// The entry of a virtual member function in its table. The common C++ ABI on x86-64 tells it: a pointer to such a
/// function is one more than the byte offset of the entry. A virtual destructor has two entries.
template <class Function>
int slotOf(Function function)
{
    std::uintptr_t words[2];
    static_assert(sizeof function == sizeof words);
    std::memcpy(words, &function, sizeof words);
    EXPECT_EQ(words[0] & 1U, 1U) << "not virtual";
    return static_cast<int>(words[0] / sizeof(void*));
}

} // namespace TestSupport
