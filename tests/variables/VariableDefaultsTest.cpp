// What a complete Variable has and a new one lacks.
#include "variables/VariableDefaults.h"

#include "Core/FunctionProperty.h"
#include "tests/foundations/storage/DataFiles.h"
#include "tests/tracking/ChangeTestSupport.h"
#include "tests/variables/VariableTestSupport.h"
#include "units/Units.h"
#include "variables/FunctionVar.h"
#include "variables/RangeVarStrategy.h"
#include "variables/Variable.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <type_traits>

namespace Orrery {
namespace {

using Doubles = std::vector<double>;

const QString folderName = QStringLiteral("Indep");
const QString unitName = QStringLiteral("Unit");

static_assert(std::is_empty_v<VariableDefaults>);
static_assert(!std::is_polymorphic_v<VariableDefaults>);
static_assert(std::is_copy_assignable_v<VariableDefaults> && std::is_move_assignable_v<VariableDefaults>);

Variable* indepAt(const Variable& variable, int index)
{
    Variable* found = nullptr;
    variable.GetIndepVariable(&found, index);
    return found;
}

Variable* child(Variable& variable, const char* name)
{
    return variable.GetPtr<Variable>(QString::fromLatin1(name));
}

// --- the default independent

TEST(DefaultIndep, NumbersTheOffsets)
{
    Variable v(QStringLiteral("v"), MakeCounting({5}));
    VariableDefaults().GenerateDefaultIndep(v);
    Variable* index = child(v, "v_index");
    ASSERT_NE(index, nullptr);
    EXPECT_EQ(v.GetIndepCount(), 1);
    EXPECT_EQ(indepAt(v, 0), index);
    EXPECT_EQ(index->GetMaxIndepOffset(), 5u);
    EXPECT_EQ(ToDoubles(index->GetData()), (Doubles{0, 1, 2, 3, 4}));
}

TEST(DefaultIndep, IsAPlainVariableWithTheRangeStrategyAndThreeParameters)
{
    Variable v(QStringLiteral("v"), MakeCounting({5}));
    VariableDefaults().GenerateDefaultIndep(v);
    Variable* index = child(v, "v_index");
    ASSERT_NE(index, nullptr);
    EXPECT_TRUE(isExactly<Variable>(*index));
    EXPECT_EQ(index->PropertyObjType(), QStringLiteral("Variable"));
    const auto strategy = index->GetStrategyPtr().lock();
    EXPECT_TRUE(isExactly<RangeVarStrategy>(*strategy));
    EXPECT_EQ(childText(*index, QStringLiteral("VariableStrategy")), QStringLiteral("RangeStrategy"));
    const auto value = [index](const char* name) {
        return index->GetPtr<SimpleProperty>(QString::fromLatin1(name))->GetValue();
    };
    EXPECT_EQ(TestSupport::ToElements<std::uint64_t>(value("Count")), std::vector<std::uint64_t>{5});
    EXPECT_EQ(TestSupport::ToElements<double>(value("Start")), Doubles{0.0});
    EXPECT_EQ(TestSupport::ToElements<double>(value("Step")), Doubles{1.0});
}

TEST(DefaultIndep, IsASecondOneOnASecondCall)
{
    Variable v(QStringLiteral("v"), MakeCounting({5}));
    const VariableDefaults defaults;
    defaults.GenerateDefaultIndep(v);
    defaults.GenerateDefaultIndep(v);
    EXPECT_EQ(v.GetIndepCount(), 2);
    EXPECT_NE(child(v, "v_index0"), nullptr);
    EXPECT_EQ(indepAt(v, 1), child(v, "v_index0"));
    defaults.GenerateDefaultIndep(v);
    EXPECT_EQ(v.GetIndepCount(), 3);
    EXPECT_EQ(indepAt(v, 2), child(v, "v_index1"));
}

TEST(DefaultIndep, AvoidsNamesThatAreTakenByAnything)
{
    Variable v(QStringLiteral("v"), MakeCounting({2}));
    ASSERT_EQ(v.SetProperty(QStringLiteral("v_index"), 1.0), ER_SUCCESS);
    ASSERT_NE(insertFolder(v, QStringLiteral("v_index0")), nullptr);
    VariableDefaults().GenerateDefaultIndep(v);
    EXPECT_EQ(indepAt(v, 0), child(v, "v_index1"));
    EXPECT_TRUE(v.GetPropertyPtr(QStringLiteral("v_index"))->IsSimpleProperty());
}

struct CountCase
{
    const char* name;
    BVariant data;
    std::uint64_t count;
};

class DefaultIndepCount : public testing::TestWithParam<CountCase>
{
};

TEST_P(DefaultIndepCount, IsTheNumberOfOffsets)
{
    Variable v(QStringLiteral("v"), GetParam().data);
    VariableDefaults().GenerateDefaultIndep(v);
    ASSERT_NE(indepAt(v, 0), nullptr);
    EXPECT_EQ(indepAt(v, 0)->GetMaxIndepOffset(), GetParam().count);
    EXPECT_EQ(ToDoubles(indepAt(v, 0)->GetData()).size(), GetParam().count);
}

INSTANTIATE_TEST_SUITE_P(Data, DefaultIndepCount,
                         testing::Values(CountCase{"Null", BVariant(), 0},
                                         CountCase{"Scalar", BVariant(3.0), 1},
                                         CountCase{"Row", MakeCounting({1, 4}), 4},
                                         CountCase{"Matrix", MakeCounting({2, 3}), 2}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(DefaultIndep, OfANamelessVariableIsNamedIndex)
{
    Variable v;
    VariableDefaults().GenerateDefaultIndep(v);
    EXPECT_EQ(indepAt(v, 0), child(v, "_index"));
    EXPECT_NE(child(v, "_index"), nullptr);
}

TEST(DefaultIndep, StaysAsItWasWhenTheDataGrow)
{
    Variable v(QStringLiteral("v"), MakeCounting({2}));
    VariableDefaults().GenerateDefaultIndep(v);
    v.UpdateData(MakeCounting({9}));
    EXPECT_EQ(indepAt(v, 0)->GetMaxIndepOffset(), 2u);
}

TEST(DefaultIndep, ComesBehindOthersAndMarksTheVariableDirty)
{
    PropertyObject top;
    Variable* v = insertVariable(top, QStringLiteral("v"));
    Variable* t = insertVariable(top, QStringLiteral("t"));
    ASSERT_EQ(v->AddIndepVariableRef(t), ER_SUCCESS);
    v->GetData();
    ASSERT_TRUE(v->getDirtyTracker()->isClean());
    VariableDefaults().GenerateDefaultIndep(*v);
    EXPECT_EQ(indepAt(*v, 0), t);
    EXPECT_EQ(indepAt(*v, 1), child(*v, "v_index"));
    EXPECT_TRUE(v->getDirtyTracker()->isDirty());
}

TEST(DefaultIndep, IsNotMadeWhereTheTreeIsTooDeep)
{
    PropertyObject top;
    PropertyObject* folder = &top;
    for (int depth = 2; depth < PropertyObject::MaxDepth; ++depth)
        folder = insertFolder(*folder, QStringLiteral("d"));
    Variable* v = insertVariable(*folder, QStringLiteral("v"));
    ASSERT_NE(v, nullptr);
    const int children = v->GetPropertyCount();
    const VariableDefaults defaults;
    defaults.GenerateDefaultIndep(*v);
    defaults.InsertDefaultIndepFolder(*v);
    defaults.InsertDefaultUnits(*v);
    EXPECT_EQ(v->GetPropertyCount(), children);
    EXPECT_EQ(v->GetIndepCount(), 0);
}

TEST(DefaultIndep, OfAFunctionVariableCountsWhatItComputes)
{
    PropertyObject top;
    auto* f = insert(top, std::make_unique<FunctionVar>(QStringLiteral("f")));
    auto* x = insert(top, std::make_unique<Variable>(QStringLiteral("x"), MakeCounting({4})));
    auto function = std::make_unique<Function>(QStringLiteral("polynomial-1"));
    function->SetParameters({BVariant(0.0), BVariant(1.0)});
    ASSERT_EQ(f->SetFunction(function.get()), ER_SUCCESS);
    function.release();
    ASSERT_EQ(f->AddArgumentRef(x), ER_SUCCESS);
    VariableDefaults().GenerateDefaultIndep(*f);
    ASSERT_NE(indepAt(*f, 0), nullptr);
    EXPECT_EQ(indepAt(*f, 0)->GetMaxIndepOffset(), 4u);

    top.DeleteProperty(QStringLiteral("x"));
    f->getDirtyTracker()->markDirty();
    EXPECT_THROW(VariableDefaults().GenerateDefaultIndep(*f), std::logic_error);
    EXPECT_EQ(f->GetIndepCount(), 1);
    EXPECT_EQ(child(*f, "f_index0"), nullptr);
}

TEST(DefaultIndep, OfACloneIsItsOwn)
{
    Variable v(QStringLiteral("v"), MakeCounting({3}));
    VariableDefaults().GenerateDefaultIndep(v);
    Variable copy(v);
    ASSERT_NE(indepAt(copy, 0), nullptr);
    EXPECT_EQ(indepAt(copy, 0), child(copy, "v_index"));
    EXPECT_EQ(ToDoubles(indepAt(copy, 0)->GetData()), (Doubles{0, 1, 2}));
}

// --- the folder

TEST(DefaultIndepFolder, IsEmptyWhereThereWasNone)
{
    Variable v(QStringLiteral("v"));
    VariableDefaults().InsertDefaultIndepFolder(v);
    auto* folder = v.GetPtr<PropertyObject>(folderName);
    ASSERT_NE(folder, nullptr);
    EXPECT_TRUE(isExactly<PropertyObject>(*folder));
    EXPECT_EQ(v.GetIndepCount(), 0);
}

TEST(DefaultIndepFolder, LeavesWhatStandsInItsPlaceAlone)
{
    Variable v(QStringLiteral("v"), MakeCounting({3}));
    VariableDefaults().GenerateDefaultIndep(v);
    const auto* folder = v.GetPropertyPtr(folderName);
    VariableDefaults().InsertDefaultIndepFolder(v);
    EXPECT_EQ(v.GetPropertyPtr(folderName), folder);
    EXPECT_EQ(v.GetIndepCount(), 1);

    Variable odd;
    ASSERT_EQ(odd.SetProperty(folderName, 1.0), ER_SUCCESS);
    VariableDefaults().InsertDefaultIndepFolder(odd);
    EXPECT_TRUE(odd.GetPropertyPtr(folderName)->IsSimpleProperty());
}

// --- units

TEST(DefaultUnits, AreInsertedWhereThereAreNone)
{
    Variable v(QStringLiteral("v"));
    VariableDefaults().InsertDefaultUnits(v);
    const Units* units = nullptr;
    EXPECT_EQ(v.GetUnits(&units), ER_SUCCESS);
    ASSERT_NE(units, nullptr);
    EXPECT_TRUE(*units == Units());
    EXPECT_FALSE(units->IsValid());
    EXPECT_EQ(units->GetName(), unitName);
    EXPECT_EQ(units->GetParent(), &v);
}

TEST(DefaultUnits, LeaveUnitsAlone)
{
    Variable v(QStringLiteral("v"));
    ASSERT_EQ(v.SetUnits(Units::FromSIString(QStringLiteral("km"))), ER_SUCCESS);
    const Units* former = &v.GetUnits();
    VariableDefaults().InsertDefaultUnits(v);
    EXPECT_EQ(&v.GetUnits(), former);
    EXPECT_EQ(v.GetUnits().GetScale(), 1000.0);
}

// Any folder of that name counts as units here, though nobody else takes it for such.
TEST(DefaultUnits, LeaveAnyFolderOfTheirNameAlone)
{
    Variable v(QStringLiteral("v"));
    const PropertyObject* folder = insertFolder(v, unitName);
    VariableDefaults().InsertDefaultUnits(v);
    EXPECT_EQ(v.GetPropertyPtr(unitName), folder);
    const Units* units = nullptr;
    EXPECT_EQ(v.GetUnits(&units), ER_NOT_FOUND);
}

TEST(DefaultUnits, ReplaceAValueOfTheirName)
{
    Variable v(QStringLiteral("v"));
    ASSERT_EQ(v.SetProperty(unitName, QStringLiteral("m")), ER_SUCCESS);
    VariableDefaults().InsertDefaultUnits(v);
    const Units* units = nullptr;
    EXPECT_EQ(v.GetUnits(&units), ER_SUCCESS);
}

// --- clearing

TEST(ClearedIndepRefs, LeaveTheIndependentsWhereTheyAre)
{
    Variable v(QStringLiteral("v"), MakeCounting({3}));
    const VariableDefaults defaults;
    defaults.GenerateDefaultIndep(v);
    defaults.ClearIndepRefs(v);
    EXPECT_EQ(v.GetIndepCount(), 0);
    EXPECT_FALSE(v.HasProperty(folderName));
    ASSERT_NE(child(v, "v_index"), nullptr);
    EXPECT_EQ(child(v, "v_index")->GetMaxIndepOffset(), 3u);

    defaults.GenerateDefaultIndep(v); // so the next one has another name
    EXPECT_EQ(indepAt(v, 0), child(v, "v_index0"));
}

TEST(ClearedIndepRefs, AreNoMatterWhereThereAreNone)
{
    Variable v(QStringLiteral("v"), MakeCounting({3}));
    const int children = v.GetPropertyCount();
    EXPECT_NO_THROW(VariableDefaults().ClearIndepRefs(v));
    EXPECT_EQ(v.GetPropertyCount(), children);
}

TEST(ClearedIndepRefs, TakeAValueOfThatNameAlong)
{
    Variable v(QStringLiteral("v"));
    ASSERT_EQ(v.SetProperty(folderName, 1.0), ER_SUCCESS);
    VariableDefaults().ClearIndepRefs(v);
    EXPECT_FALSE(v.HasProperty(folderName));
}

// --- files

void buildVariableWithDefaults(PropertyObject& root)
{
    Variable* v = insertVariable(root, QStringLiteral("v"));
    v->UpdateData(MakeCounting({4}));
    const VariableDefaults defaults;
    defaults.GenerateDefaultIndep(*v);
    defaults.InsertDefaultUnits(*v);
}

TEST(SavedDefaults, ComeBackAsTheyWere)
{
    EXPECT_EQ(StorageTest::RoundTrip(&buildVariableWithDefaults), std::string());
}

TEST(SavedDefaults, WorkAfterAReload)
{
    const StorageTest::ScratchFolder disk;
    const QString path = disk.Path(QStringLiteral("defaults.h5"));
    StorageTest::SaveNew(path, &buildVariableWithDefaults).reset();
    const auto file = StorageTest::Open(path);
    auto* v = file->GetRoot()->GetPtr<Variable>(QStringLiteral("v"));
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(indepAt(*v, 0), child(*v, "v_index"));
    ASSERT_NE(indepAt(*v, 0), nullptr);
    EXPECT_EQ(ToDoubles(indepAt(*v, 0)->GetData()), (Doubles{0, 1, 2, 3}));
    const Units* units = nullptr;
    EXPECT_EQ(v->GetUnits(&units), ER_SUCCESS);
    EXPECT_TRUE(v->GetUnits() == Units());
}

} // namespace
} // namespace Orrery
