#include "foundations/property/ErrorResult.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <exception>
#include <type_traits>
#include <utility>

namespace Orrery {
namespace {

TEST(ErrorResult, HasTheFixedNumbers)
{
    EXPECT_EQ(static_cast<int>(ER_SUCCESS), 0);
    EXPECT_EQ(static_cast<int>(ER_FAILED), -1);
    EXPECT_EQ(static_cast<int>(ER_NOT_FOUND), -3);
    EXPECT_EQ(static_cast<int>(ER_INVALID_ARGUMENT), -4);
    EXPECT_EQ(static_cast<int>(ER_ALREADY_EXISTS), -5);
}

TEST(ErrorResult, IsASigned32BitNumber)
{
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<ERESULT>, std::int32_t>));
}

TEST(IsCellArrayFlag, HasTheFixedNumbers)
{
    EXPECT_EQ(static_cast<int>(IsCellArrayFalse), 0);
    EXPECT_EQ(static_cast<int>(IsCellArrayTrue), 1);
}

TEST(OrreryExceptionTest, CarriesItsCode)
{
    EXPECT_EQ(OrreryException(ER_NOT_FOUND).GetResult(), ER_NOT_FOUND);
    EXPECT_TRUE(noexcept(OrreryException(ER_FAILED).GetResult()));
}

TEST(OrreryExceptionTest, IsCaughtAsAStandardException)
{
    try {
        throw OrreryException(ER_ALREADY_EXISTS);
    } catch (const std::exception& caught) {
        const auto* exception = dynamic_cast<const OrreryException*>(&caught);
        ASSERT_NE(exception, nullptr);
        EXPECT_EQ(exception->GetResult(), ER_ALREADY_EXISTS);
        ASSERT_NE(caught.what(), nullptr);
    }
}

TEST(OrreryExceptionTest, CopiesMovesAndAssignsItsCode)
{
    const OrreryException original(ER_INVALID_ARGUMENT);
    const OrreryException copy(original);
    EXPECT_EQ(copy.GetResult(), ER_INVALID_ARGUMENT);

    OrreryException source(ER_NOT_FOUND);
    const OrreryException moved(std::move(source));
    EXPECT_EQ(moved.GetResult(), ER_NOT_FOUND);

    OrreryException assigned(ER_FAILED);
    assigned = original;
    EXPECT_EQ(assigned.GetResult(), ER_INVALID_ARGUMENT);
    const OrreryException& itself = assigned;
    assigned = itself;
    EXPECT_EQ(assigned.GetResult(), ER_INVALID_ARGUMENT);
}

TEST(OrreryExceptionTest, SaysTheSameForEachCode)
{
    const OrreryException failed(ER_FAILED);
    const OrreryException notFound(ER_NOT_FOUND);
    const std::exception& first = failed;
    const std::exception& second = notFound;
    EXPECT_STREQ(first.what(), second.what());
}

} // namespace
} // namespace Orrery
