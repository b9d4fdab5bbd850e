#include "results/ParameterizedResultData.h"
#include "results/Result.h"
#include "tests/support/VirtualSlot.h"
#include "variables/Variable.h"

#include <gtest/gtest.h>

#include <type_traits>

// Hosts are compiled against the order of the virtual operations.

#if defined(__x86_64__) && defined(__GXX_ABI_VERSION)

namespace Orrery {
namespace {

using TestSupport::slotOf;

/// With one virtual operation more than Base: its slot is the number of those of Base.
template <class Base>
struct WithOneMore : Base
{
    virtual void more() {}
};

template <class Data>
void expectTheSearchBehindThatOfEveryFolder()
{
    EXPECT_EQ(slotOf(static_cast<Variable* (Data::*)(const QString&)>(&Data::FindResultVar)), 7);
    EXPECT_EQ(slotOf(static_cast<const Variable* (Data::*)(const QString&) const>(&Data::FindResultVar)), 8);
    EXPECT_EQ(slotOf(&Data::GetVariableList), 9);
    EXPECT_EQ(slotOf(&Data::GetVariableNameList), 10);
    EXPECT_EQ(slotOf(&WithOneMore<Data>::more), 11);
}

TEST(ResultsVirtualOrder, OfAResultIsThatOfEveryFolder)
{
    EXPECT_EQ(slotOf(&WithOneMore<PropertyObject>::more), 7);
    EXPECT_EQ(slotOf(&WithOneMore<Result>::more), 7);
}

TEST(ResultsVirtualOrder, OfAFolderOfDataAddsTheSearch)
{
    expectTheSearchBehindThatOfEveryFolder<ResultData>();
}

TEST(ResultsVirtualOrder, OfASweepAddsNothing)
{
    expectTheSearchBehindThatOfEveryFolder<ParameterizedResultData>();
}

TEST(ResultsVirtualOrder, GoesWithSingleInheritance)
{
    EXPECT_TRUE((std::is_base_of_v<PropertyObject, Result>));
    EXPECT_TRUE((std::is_base_of_v<PropertyObject, ResultData>));
    EXPECT_TRUE((std::is_base_of_v<ResultData, ParameterizedResultData>));
    EXPECT_EQ(sizeof(ParameterizedResultData), sizeof(PropertyObject));
}

} // namespace
} // namespace Orrery

#endif
