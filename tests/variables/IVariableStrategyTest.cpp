// What a strategy is without the overrides of the library's own: seen through one that a host would write.
#include "variables/IVariableStrategy.h"

#include "tests/variables/VariableTestSupport.h"
#include "variables/Variable.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace Orrery {
namespace {

using Doubles = std::vector<double>;

const QString dataName = QStringLiteral("Data");

class HostStrategy : public IVariableStrategy
{
public:
    using IVariableStrategy::backRef;
    using IVariableStrategy::IVariableStrategy;
    using IVariableStrategy::mutex;
    using IVariableStrategy::push;

    ERESULT GetValueAt(BVariant*, std::uint64_t) const override { return ER_FAILED; }
    ERESULT GetValueRange(BVariant* out, std::uint64_t start, std::uint64_t end) const override
    {
        askedStart = start;
        askedEnd = end;
        if (throws)
            throw std::runtime_error("unreadable");
        *out = MakeVector<double>({1, 2, 3});
        return code;
    }
    std::uint64_t GetMaxIndepOffset() const override { return 3; }
    std::uint64_t GetElementDimCount() const override { return 0; }
    ERESULT GetElementShape(std::vector<std::uint64_t>*) const override { return ER_FAILED; }
    std::shared_ptr<IVariableStrategy> Copy(Variable* owner) const override
    {
        return std::make_shared<HostStrategy>(owner);
    }
    QString GetType() const override { return QStringLiteral("HostStrategy"); }

    ERESULT code = ER_SUCCESS;
    bool throws = false;
    mutable std::uint64_t askedStart = 99;
    mutable std::uint64_t askedEnd = 99;
};

struct StrategyOfAHost : public ::testing::Test
{
    Variable variable{QStringLiteral("x"), MakeVector<double>({9})};
    HostStrategy strategy{&variable};
};

TEST_F(StrategyOfAHost, NamesItsOwner)
{
    EXPECT_EQ(strategy.backRef(), &variable);
    EXPECT_THROW(HostStrategy(nullptr), std::invalid_argument);
}

TEST_F(StrategyOfAHost, GivesAllItsOffsetsAsData)
{
    IsCellArray flag = IsCellArrayTrue;
    EXPECT_EQ(ToDoubles(strategy.GetData(&flag)), (Doubles{1, 2, 3}));
    EXPECT_EQ(flag, IsCellArrayFalse);
    EXPECT_EQ(strategy.askedStart, 0u);
    EXPECT_EQ(strategy.askedEnd, 3u);
    EXPECT_EQ(ToDoubles(strategy.GetData(nullptr)), (Doubles{1, 2, 3}));
}

TEST_F(StrategyOfAHost, GivesNullWhenItsOffsetsCantBeRead)
{
    for (const ERESULT code : {ER_FAILED, ER_NOT_FOUND, ER_INVALID_ARGUMENT}) {
        strategy.code = code;
        IsCellArray flag = IsCellArrayTrue;
        EXPECT_TRUE(strategy.GetData(&flag).isNull());
        EXPECT_EQ(flag, IsCellArrayFalse);
    }
}

TEST_F(StrategyOfAHost, PassesAnExceptionOn)
{
    strategy.throws = true;
    EXPECT_THROW(strategy.GetData(nullptr), std::runtime_error);
}

TEST_F(StrategyOfAHost, DropsDataByDefault)
{
    EXPECT_EQ(&strategy.UpdateData(MakeVector<double>({5}), IsCellArrayTrue), &variable);
    EXPECT_EQ(childDoubles(variable, dataName), (Doubles{9}));
}

TEST_F(StrategyOfAHost, PushesDataWithTheirFlagIntoTheOwner)
{
    strategy.push(MakeVector<double>({5}), IsCellArrayTrue);
    const auto* data = variable.GetPtr<SimpleProperty>(dataName);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(ToDoubles(data->GetValue()), (Doubles{5}));
    EXPECT_EQ(data->GetValueIsCellArray(), IsCellArrayTrue);
}

TEST_F(StrategyOfAHost, PushesIntoTheSameProperty)
{
    const auto* before = variable.GetPropertyPtr(dataName);
    strategy.push(MakeVector<double>({5}), IsCellArrayFalse);
    EXPECT_EQ(variable.GetPropertyPtr(dataName), before);
}

TEST_F(StrategyOfAHost, MakesMissingDataOnPush)
{
    ASSERT_GE(variable.DeleteProperty(dataName), 0);
    strategy.push(MakeVector<double>({5}), IsCellArrayFalse);
    EXPECT_EQ(childDoubles(variable, dataName), (Doubles{5}));
}

TEST_F(StrategyOfAHost, ReplacesAFolderNamedDataOnPush)
{
    ASSERT_GE(variable.DeleteProperty(dataName), 0);
    ASSERT_NE(put(variable, std::make_unique<PropertyObject>(dataName)), nullptr);
    strategy.push(MakeVector<double>({5}), IsCellArrayFalse);
    EXPECT_EQ(childDoubles(variable, dataName), (Doubles{5}));
}

TEST_F(StrategyOfAHost, PushesWhileItsOwnThreadHoldsTheMutex)
{
    const std::lock_guard<std::recursive_mutex> working(strategy.mutex());
    strategy.push(MakeVector<double>({5}), IsCellArrayFalse);
    EXPECT_EQ(childDoubles(variable, dataName), (Doubles{5}));
}

} // namespace
} // namespace Orrery
