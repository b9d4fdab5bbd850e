// Ranges, concatenations and sweeps that come back from a file, and what their copies come back as.
#include "foundations/property/PropertyReference.h"
#include "foundations/storage/DataFileFactory.h"
#include "tests/foundations/storage/DataFiles.h"
#include "tests/variables/JoinedVariableTestSupport.h"
#include "variables/ConcatVar.h"
#include "variables/ExplicitDataVarStrategy.h"
#include "variables/RangeVar.h"
#include "variables/SweptVariable.h"

#include <gtest/gtest.h>

namespace Orrery {
namespace {

using namespace JoinTest;

const QString strategyName = QStringLiteral("VariableStrategy");

RangeVar* insertRange(PropertyObject& folder, const QString& name)
{
    auto* const axis = insert(folder, std::make_unique<RangeVar>(name));
    axis->SetStart(BVariant(std::int8_t{-3}));
    axis->SetStep(BVariant("0.5"));
    axis->SetCount(BVariant(Doubles{4.0}, {1, 1}));
    return axis;
}

const Doubles rangeValues{-3, -2.5, -2, -1.5};

void fillConcat(ConcatVarStrategy& c, PropertyObject& folder)
{
    c.AddVariable(insertData(folder, QStringLiteral("x"), BVariant(std::vector<std::int32_t>{1, 2, 3})));
    c.AddVariable(insertData(folder, QStringLiteral("y"), numbers({0.5, 1.5})));
}

ConcatVar* insertConcat(PropertyObject& folder, const QString& name)
{
    auto* const c = insert(folder, std::make_unique<ConcatVar>(name));
    fillConcat(*c->SetStrategy<ConcatVarStrategy>(), folder);
    return c;
}

const Doubles concatValues{1, 2, 3, 0.5, 1.5};

void fillSweep(SweptVarStrategy& sweep, PropertyObject& folder)
{
    sweep.SetParameter(insertData(folder, QStringLiteral("p"), numbers({10, 20})));
    sweep.SetConcatVar(insertConcat(folder, QStringLiteral("c")));
}

SweptVariable* insertSweep(PropertyObject& folder, const QString& name)
{
    auto* const sweep = insert(folder, std::make_unique<SweptVariable>(name));
    fillSweep(*sweep->SetStrategy<SweptVarStrategy>(), folder);
    return sweep;
}

const Doubles sweepValues{10, 10, 10, 20, 20};

template <class S>
Variable* insertPlain(PropertyObject& folder, const QString& name)
{
    auto* const plain = insert(folder, std::make_unique<Variable>(name));
    plain->SetStrategy<S>();
    return plain;
}

void insertCloneOf(PropertyObject& folder, const AbstractProperty& source, const QString& name)
{
    std::unique_ptr<AbstractProperty> clone(source.Clone());
    clone->SetName(name);
    if (folder.InsertProperty(clone.get()) < 0)
        throw std::logic_error("a clone can't be put in");
    static_cast<void>(clone.release());
}

/// A tree that has been saved and opened again.
class Reload
{
public:
    explicit Reload(const StorageTest::Builder& build)
    {
        const QString path = m_scratch.Path(QStringLiteral("joins.h5"));
        StorageTest::SaveNew(path, build).reset();
        m_file = StorageTest::Open(path);
    }

    PropertyObject& root() const { return *m_file->GetRoot(); }

    template <class T>
    T* get(const char* name) const
    {
        return root().GetPtr<T>(QString::fromLatin1(name));
    }

private:
    StorageTest::ScratchFolder m_scratch;
    std::shared_ptr<DataFile> m_file;
};

template <class S>
bool worksBy(const Variable& variable)
{
    return isExactly<S>(*variable.GetStrategyPtr().lock());
}

// --- what is saved is what comes back

TEST(JoinedVariableReload, KeepsEveryChildOfARange)
{
    EXPECT_EQ(StorageTest::RoundTrip([](PropertyObject& root) {
                  insertRange(root, QStringLiteral("axis"));
                  insert(root, std::make_unique<RangeVar>(QStringLiteral("fresh")));
              }),
              "");
}

TEST(JoinedVariableReload, KeepsEveryChildOfAConcatenation)
{
    EXPECT_EQ(StorageTest::RoundTrip([](PropertyObject& root) {
                  ConcatVar* const c = insertConcat(root, QStringLiteral("c"));
                  insertData(*c, QStringLiteral("17"), MakeCounting({2}));
                  insert(root, std::make_unique<ConcatVar>(QStringLiteral("fresh")));
              }),
              "");
}

TEST(JoinedVariableReload, KeepsEveryChildOfASweepAndOfClones)
{
    EXPECT_EQ(StorageTest::RoundTrip([](PropertyObject& root) {
                  const SweptVariable* const sweep = insertSweep(root, QStringLiteral("s"));
                  insertCloneOf(root, *sweep, QStringLiteral("s copy"));
                  insertCloneOf(root, *root.GetPtr<ConcatVar>(QStringLiteral("c")), QStringLiteral("c copy"));
                  insertCloneOf(root, *insertRange(root, QStringLiteral("axis")),
                                QStringLiteral("axis copy"));
              }),
              "");
}

// --- ranges

TEST(JoinedVariableReload, ARangeComesBackAsOne)
{
    const Reload reload([](PropertyObject& root) { insertRange(root, QStringLiteral("axis")); });
    auto* const axis = reload.get<RangeVar>("axis");
    ASSERT_NE(axis, nullptr);
    EXPECT_TRUE(worksBy<RangeVarStrategy>(*axis));
    EXPECT_EQ(readData(*axis), gotNumbers(rangeValues));
    double start = 0;
    double step = 0;
    std::uint64_t count = 0;
    EXPECT_EQ(axis->GetParams(&start, &step, &count), ER_SUCCESS);
    EXPECT_EQ(count, 4u);
}

TEST(JoinedVariableReload, APlainVariableWithTheRangeStrategyComesBackWithIt)
{
    const Reload reload([](PropertyObject& root) {
        Variable* const plain = insertPlain<RangeVarStrategy>(root, QStringLiteral("axis"));
        plain->SetProperty(RangeVar::Start, 1.0);
        plain->SetProperty(RangeVar::Count, 2);
    });
    auto* const axis = reload.get<Variable>("axis");
    ASSERT_NE(axis, nullptr);
    EXPECT_TRUE(isExactly<Variable>(*axis));
    EXPECT_TRUE(worksBy<RangeVarStrategy>(*axis));
    EXPECT_EQ(readData(*axis), gotNumbers({1, 2}));
}

TEST(JoinedVariableReload, ACloneOfARangeComesBackExplicitAndEmpty)
{
    const Reload reload([](PropertyObject& root) {
        insertCloneOf(root, *insertRange(root, QStringLiteral("axis")), QStringLiteral("copy"));
    });
    EXPECT_EQ(readData(*reload.get<RangeVar>("axis")), gotNumbers(rangeValues));
    auto* const copy = reload.get<RangeVar>("copy");
    ASSERT_NE(copy, nullptr);
    EXPECT_TRUE(worksBy<ExplicitDataVarStrategy>(*copy));
    EXPECT_EQ(childText(*copy, strategyName), QStringLiteral("ExplicitDataStrategy"));
    EXPECT_EQ(copy->GetMaxIndepOffset(), 0u);
    EXPECT_EQ(readData(*copy), got(BVariant()));
    double start = -7;
    double step = -7;
    std::uint64_t count = 7;
    EXPECT_EQ(copy->GetParams(&start, &step, &count), ER_FAILED);
    EXPECT_EQ(start, -7);
    EXPECT_EQ(copy->SetStart(2.0), ER_SUCCESS); // its parameters are still there
    copy->SetStrategy<RangeVarStrategy>();
    EXPECT_EQ(readData(*copy), gotNumbers({2, 2.5, 3, 3.5}));
}

TEST(JoinedVariableReload, ARangeThatWasGivenAnotherStrategyKeepsItsClass)
{
    const Reload reload([](PropertyObject& root) {
        RangeVar* const axis = insertRange(root, QStringLiteral("axis"));
        insertData(*axis, QStringLiteral("0"), numbers({7}));
        axis->SetStrategy<ConcatVarStrategy>();
    });
    auto* const axis = reload.get<RangeVar>("axis");
    ASSERT_NE(axis, nullptr);
    EXPECT_TRUE(worksBy<ConcatVarStrategy>(*axis));
    EXPECT_EQ(readData(*axis), gotNumbers({7}));
    double number = 0;
    std::uint64_t count = 0;
    EXPECT_EQ(axis->GetParams(&number, &number, &count), ER_FAILED);
}

// --- concatenations

TEST(JoinedVariableReload, AConcatenationComesBackWithItsMembers)
{
    const Reload reload([](PropertyObject& root) { insertConcat(root, QStringLiteral("c")); });
    auto* const c = reload.get<ConcatVar>("c");
    ASSERT_NE(c, nullptr);
    EXPECT_TRUE(worksBy<ConcatVarStrategy>(*c));
    EXPECT_EQ(readData(*c), gotNumbers(concatValues));
    EXPECT_EQ(readRange(*c, 2, 4), gotNumbers({3, 0.5}));
    EXPECT_EQ(readAt(*c, 5), refused(ER_INVALID_ARGUMENT));
    ASSERT_EQ(c->AddVariable(reload.get<Variable>("y")), ER_SUCCESS);
    EXPECT_EQ(c->GetMaxIndepOffset(), 7u);
}

TEST(JoinedVariableReload, AConcatenationOfManyComesBackInItsOrder)
{
    const Reload reload([](PropertyObject& root) {
        auto* const c = insert(root, std::make_unique<ConcatVar>(QStringLiteral("c")));
        for (std::uint64_t i = 0; i < 120; ++i)
            c->AddVariable(insertData(root, numbered("x", i), numbers({static_cast<double>(i)})));
    });
    const Doubles values = ToDoubles(reload.get<ConcatVar>("c")->GetData());
    ASSERT_EQ(values.size(), 120u);
    for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_EQ(values[i], static_cast<double>(i));
}

TEST(JoinedVariableReload, APlainVariableWithTheConcatenatingStrategyComesBackWithIt)
{
    const Reload reload([](PropertyObject& root) {
        auto* const plain = insert(root, std::make_unique<Variable>(QStringLiteral("plain")));
        fillConcat(*plain->SetStrategy<ConcatVarStrategy>(), root);
    });
    auto* const plain = reload.get<Variable>("plain");
    ASSERT_NE(plain, nullptr);
    EXPECT_TRUE(isExactly<Variable>(*plain));
    EXPECT_TRUE(worksBy<ConcatVarStrategy>(*plain));
    EXPECT_EQ(readData(*plain), gotNumbers(concatValues));
}

TEST(JoinedVariableReload, ACloneOfAConcatenationComesBackExplicitWithItsMembers)
{
    const Reload reload([](PropertyObject& root) {
        insertCloneOf(root, *insertConcat(root, QStringLiteral("c")), QStringLiteral("copy"));
    });
    auto* const copy = reload.get<ConcatVar>("copy");
    ASSERT_NE(copy, nullptr);
    EXPECT_TRUE(worksBy<ExplicitDataVarStrategy>(*copy));
    EXPECT_EQ(readData(*copy), got(BVariant()));
    EXPECT_EQ(numberedNames(*copy).size(), 2);
    copy->SetStrategy<ConcatVarStrategy>();
    EXPECT_EQ(readData(*copy), gotNumbers(concatValues));
}

// --- sweeps

TEST(JoinedVariableReload, ASweepComesBackAsAFolderOfItsTypeName)
{
    const Reload reload([](PropertyObject& root) { insertSweep(root, QStringLiteral("s")); });
    PropertyObject* const folder = reload.get<PropertyObject>("s");
    ASSERT_NE(folder, nullptr);
    EXPECT_EQ(folder->PropertyObjType(), QStringLiteral("SweptVariable"));
    EXPECT_FALSE(folder->IsVariable());
    EXPECT_EQ(dynamic_cast<Variable*>(folder), nullptr);
    EXPECT_EQ(childText(*folder, strategyName), QStringLiteral("SweptStrategy"));
    EXPECT_EQ(folder->GetPtr<PropertyReference>(QStringLiteral("Param"))->Resolve(),
              reload.get<Variable>("p"));
    EXPECT_EQ(folder->GetPtr<PropertyReference>(QStringLiteral("DependVar"))->Resolve(),
              reload.get<ConcatVar>("c"));
}

TEST(JoinedVariableReload, APlainVariableWithTheSweptStrategyComesBackWithIt)
{
    const Reload reload([](PropertyObject& root) {
        auto* const plain = insert(root, std::make_unique<Variable>(QStringLiteral("s")));
        fillSweep(*plain->SetStrategy<SweptVarStrategy>(), root);
    });
    auto* const sweep = reload.get<Variable>("s");
    ASSERT_NE(sweep, nullptr);
    EXPECT_TRUE(isExactly<Variable>(*sweep));
    EXPECT_TRUE(worksBy<SweptVarStrategy>(*sweep));
    EXPECT_EQ(readData(*sweep), gotNumbers(sweepValues));
    EXPECT_EQ(readAt(*sweep, 5), refused(ER_INVALID_ARGUMENT));
    EXPECT_EQ(readRange(*sweep, 2, 7), gotNumbers({10, 20, 20, 0, 0}));
}

TEST(JoinedVariableReload, APlainVariableThatOnlySaysSweptStrategyGetsIt)
{
    const Reload reload([](PropertyObject& root) {
        auto* const plain = insert(root, std::make_unique<Variable>(QStringLiteral("s")));
        fillSweep(*plain->SetStrategy<SweptVarStrategy>(), root);
        plain->SetStrategy<ExplicitDataVarStrategy>();
        plain->SetProperty(strategyName, QStringLiteral("SweptStrategy"));
    });
    EXPECT_EQ(readData(*reload.get<Variable>("s")), gotNumbers(sweepValues));
}

TEST(JoinedVariableReload, ACloneOfASweptVariableIsAFolderToo)
{
    const Reload reload([](PropertyObject& root) {
        insertCloneOf(root, *insertSweep(root, QStringLiteral("s")), QStringLiteral("copy"));
    });
    PropertyObject* const folder = reload.get<PropertyObject>("copy");
    ASSERT_NE(folder, nullptr);
    EXPECT_EQ(folder->PropertyObjType(), QStringLiteral("SweptVariable"));
    EXPECT_FALSE(folder->IsVariable());
    EXPECT_EQ(childText(*folder, strategyName), QStringLiteral("ExplicitDataStrategy"));
}

TEST(JoinedVariableReload, ACloneOfAPlainSweepComesBackExplicit)
{
    const Reload reload([](PropertyObject& root) {
        auto* const plain = insert(root, std::make_unique<Variable>(QStringLiteral("s")));
        fillSweep(*plain->SetStrategy<SweptVarStrategy>(), root);
        insertCloneOf(root, *plain, QStringLiteral("copy"));
    });
    auto* const copy = reload.get<Variable>("copy");
    ASSERT_NE(copy, nullptr);
    EXPECT_TRUE(worksBy<ExplicitDataVarStrategy>(*copy));
    EXPECT_EQ(readData(*copy), got(BVariant()));
    EXPECT_EQ(readData(*reload.get<Variable>("s")), gotNumbers(sweepValues));
}

TEST(JoinedVariableReload, AMemberThatIsASweptVariableIsNoneAfterwards)
{
    const auto build = [](PropertyObject& root) {
        const SweptVariable* const sweep = insertSweep(root, QStringLiteral("s"));
        auto* const joined = insert(root, std::make_unique<ConcatVar>(QStringLiteral("joined")));
        joined->AddVariable(root.GetPtr<Variable>(QStringLiteral("p")));
        joined->AddVariable(sweep);
    };
    PropertyObject fresh(QStringLiteral("fresh"));
    build(fresh);
    EXPECT_EQ(readData(*fresh.GetPtr<Variable>(QStringLiteral("joined"))),
              gotNumbers({10, 20, 10, 10, 10, 20, 20}));
    const Reload reload(build);
    auto* const joined = reload.get<ConcatVar>("joined");
    EXPECT_EQ(joined->GetMaxIndepOffset(), 2u);
    EXPECT_EQ(readRange(*joined, 0, 0), stopped(ER_FAILED, numbers({10, 20})));
}

} // namespace
} // namespace Orrery
