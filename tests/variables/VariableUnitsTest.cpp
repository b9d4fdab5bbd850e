// In what a Variable is measured: its units, those for display, and those of its axes.
#include "tests/foundations/storage/DataFiles.h"
#include "tests/tracking/ChangeTestSupport.h"
#include "tests/variables/VariableTestSupport.h"
#include "units/Units.h"
#include "variables/Variable.h"

#include <gtest/gtest.h>

namespace Orrery {
namespace {

const QString unitName = QStringLiteral("Unit");
const QString displayName = QStringLiteral("DisplayUnit");
const QString folderName = QStringLiteral("Indep");
const QStringList noLines;

Units unit(const char* siString)
{
    return Units::FromSIString(QString::fromLatin1(siString));
}

QString siOf(const Units& units)
{
    return units.GetSIUnits();
}

QString leadsNowhere()
{
    return QStringLiteral("!! Indep is either nonexistent or it's not a variable !!") +
           QStringLiteral("Orrery::Variable::GetIndepVariable");
}

Variable* indepAt(const Variable& variable, int index)
{
    Variable* found = nullptr;
    variable.GetIndepVariable(&found, index);
    return found;
}

// --- none set

TEST(VariableUnits, OfAFreshVariableAreDefaults)
{
    const Variable variable(QStringLiteral("v"));
    const Units other = unit("m");
    const Units* found = &other;
    EXPECT_EQ(variable.GetUnits(&found), ER_NOT_FOUND);
    EXPECT_EQ(found, nullptr); // overwritten also in failure, unlike the independents
    found = &other;
    EXPECT_EQ(variable.GetDisplayUnits(&found), ER_NOT_FOUND);
    EXPECT_EQ(found, nullptr);
    EXPECT_TRUE(variable.GetUnits() == Units());
    EXPECT_FALSE(variable.GetUnits().IsValid());
    EXPECT_TRUE(Dimensionless(variable.GetUnits()));
    EXPECT_EQ(variable.GetUnits().GetPropertyCount(), 0);
    EXPECT_FALSE(variable.HasProperty(unitName)); // asking makes nothing
}

TEST(VariableUnits, ByDefaultAreOneObjectForAllVariables)
{
    const Units* first = nullptr;
    {
        const Variable variable;
        first = &variable.GetUnits();
        EXPECT_EQ(&variable.GetDisplayUnits(), first);
        EXPECT_EQ(&variable.GetUnits(), first);
    }
    const Variable other;
    EXPECT_EQ(&other.GetUnits(), first);
    EXPECT_FALSE(first->IsValid());
}

TEST(VariableUnits, OfAMissingAxisAreAnotherDefault)
{
    const Variable variable;
    const Variable other;
    const Units& ofAxis = variable.GetUnitsOfIndep(0);
    EXPECT_FALSE(ofAxis.IsValid());
    EXPECT_EQ(&other.GetUnitsOfIndep(5), &ofAxis);
    EXPECT_NE(&variable.GetUnits(), &ofAxis);
}

TEST(VariableUnits, RefuseANullResult)
{
    Variable variable;
    ASSERT_EQ(variable.SetUnits(unit("m")), ER_SUCCESS);
    EXPECT_EQ(variable.GetUnits(nullptr), ER_INVALID_ARGUMENT);
    EXPECT_EQ(variable.GetDisplayUnits(nullptr), ER_INVALID_ARGUMENT);
}

// --- set

TEST(VariableUnits, AreAnOwnCopyOfThoseGiven)
{
    Variable variable;
    PropertyObject elsewhere;
    auto* given = insert(elsewhere, std::make_unique<Units>(unit("km/s")));
    ASSERT_NE(given, nullptr);
    ASSERT_EQ(given->SetName(QStringLiteral("velocity")), ER_SUCCESS);
    ASSERT_EQ(variable.SetUnits(*given), ER_SUCCESS);

    const Units* found = nullptr;
    EXPECT_EQ(variable.GetUnits(&found), ER_SUCCESS);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found, variable.GetPropertyPtr(unitName));
    EXPECT_EQ(found, &variable.GetUnits());
    EXPECT_TRUE(*found == *given);
    EXPECT_EQ(siOf(*found), QStringLiteral("km/s"));
    EXPECT_EQ(found->GetName(), unitName);
    EXPECT_EQ(given->GetName(), QStringLiteral("velocity"));
    EXPECT_EQ(given->GetParent(), &elsewhere);
}

TEST(VariableUnits, ReplaceFormerOnesAndOtherChildrenOfTheirName)
{
    Variable variable;
    ASSERT_EQ(variable.SetProperty(unitName, QStringLiteral("m")), ER_SUCCESS);
    const Units* found = nullptr;
    EXPECT_EQ(variable.GetUnits(&found), ER_NOT_FOUND);
    EXPECT_EQ(&variable.GetUnits(), &Variable().GetUnits());

    ASSERT_EQ(variable.SetUnits(unit("m")), ER_SUCCESS);
    ASSERT_EQ(variable.SetUnits(unit("s")), ER_SUCCESS);
    EXPECT_EQ(siOf(variable.GetUnits()), QStringLiteral("s"));
}

TEST(VariableUnits, MayBeSetToThemselves)
{
    Variable variable;
    ASSERT_EQ(variable.SetUnits(variable.GetUnits()), ER_SUCCESS); // the default
    EXPECT_TRUE(variable.HasProperty(unitName));
    ASSERT_EQ(variable.SetUnits(unit("km")), ER_SUCCESS);
    ASSERT_EQ(variable.SetUnits(variable.GetUnits()), ER_SUCCESS);
    EXPECT_EQ(siOf(variable.GetUnits()), QStringLiteral("km"));
    EXPECT_EQ(variable.GetUnits().GetScale(), 1000.0);
    ASSERT_EQ(variable.SetDisplayUnits(variable.GetDisplayUnits()), ER_SUCCESS);
    ASSERT_EQ(variable.SetDisplayUnits(variable.GetDisplayUnits()), ER_SUCCESS);
    EXPECT_EQ(siOf(variable.GetDisplayUnits()), QStringLiteral("km"));
}

TEST(VariableUnits, AreTakenAsTheyAre)
{
    Variable variable;
    ASSERT_EQ(variable.SetUnits(unit("no such unit")), ER_SUCCESS);
    const Units* found = nullptr;
    EXPECT_EQ(variable.GetUnits(&found), ER_SUCCESS);
    EXPECT_FALSE(found->IsValid());
}

TEST(VariableUnits, MarkNothingDirtyAndSendNoSignal)
{
    PropertyObject top;
    Variable* variable = insertVariable(top, QStringLiteral("v"));
    variable->GetData();
    const SignalSpies spies(*variable);
    ASSERT_EQ(variable->SetUnits(unit("m")), ER_SUCCESS);
    ASSERT_EQ(variable->SetDisplayUnits(unit("km")), ER_SUCCESS);
    EXPECT_TRUE(variable->getDirtyTracker()->isClean());
    EXPECT_EQ(spies.count(), 0);
}

TEST(VariableUnits, ThatTheTreeRefusesHandItsCodeThrough)
{
    PropertyObject top;
    PropertyObject* folder = &top;
    for (int depth = 2; depth < PropertyObject::MaxDepth; ++depth)
        folder = insertFolder(*folder, QStringLiteral("d"));
    Variable* deepest = insertVariable(*folder, QStringLiteral("v"));
    ASSERT_NE(deepest, nullptr);
    EXPECT_EQ(deepest->SetUnits(unit("m")), ER_FAILED);
    EXPECT_EQ(deepest->SetDisplayUnits(unit("m")), ER_FAILED);
    EXPECT_EQ(deepest->SetUnitsOfIndep(unit("m"), 0), ER_NOT_FOUND);
    EXPECT_EQ(&deepest->GetDisplayUnits(), &Variable().GetUnits());
}

// --- display units

TEST(DisplayUnits, AreTheUnitsWhileNoneAreSet)
{
    Variable variable;
    ASSERT_EQ(variable.SetUnits(unit("m")), ER_SUCCESS);
    EXPECT_EQ(&variable.GetDisplayUnits(), &variable.GetUnits());
    const Units* found = nullptr;
    EXPECT_EQ(variable.GetDisplayUnits(&found), ER_NOT_FOUND);

    ASSERT_EQ(variable.SetDisplayUnits(unit("km")), ER_SUCCESS);
    EXPECT_EQ(siOf(variable.GetDisplayUnits()), QStringLiteral("km"));
    EXPECT_EQ(siOf(variable.GetUnits()), QStringLiteral("m"));
    EXPECT_EQ(variable.GetDisplayUnits(&found), ER_SUCCESS);
    EXPECT_EQ(found, variable.GetPropertyPtr(displayName));
}

TEST(DisplayUnits, ThatDoNotFitTheUnitsAreRefused)
{
    Variable variable;
    ASSERT_EQ(variable.SetUnits(unit("m")), ER_SUCCESS);
    ASSERT_EQ(variable.SetDisplayUnits(unit("km")), ER_SUCCESS);
    EXPECT_EQ(variable.SetDisplayUnits(unit("s")), ER_INVALID_ARGUMENT);
    EXPECT_EQ(variable.SetDisplayUnits(Units()), ER_INVALID_ARGUMENT);
    EXPECT_EQ(siOf(variable.GetDisplayUnits()), QStringLiteral("km"));
}

TEST(DisplayUnits, OfAVariableWithoutUnitsMayBeAny)
{
    Variable variable;
    EXPECT_EQ(variable.SetDisplayUnits(unit("s")), ER_SUCCESS);
    EXPECT_EQ(siOf(variable.GetDisplayUnits()), QStringLiteral("s"));
    EXPECT_FALSE(variable.GetUnits().IsValid());

    Variable odd;
    ASSERT_EQ(odd.SetProperty(unitName, 1.0), ER_SUCCESS); // no units either
    EXPECT_EQ(odd.SetDisplayUnits(unit("s")), ER_SUCCESS);
}

// The one-sidedness: units are never checked against the display units.
TEST(DisplayUnits, StayWhenTheUnitsCeaseToFit)
{
    Variable variable;
    ASSERT_EQ(variable.SetUnits(unit("m")), ER_SUCCESS);
    ASSERT_EQ(variable.SetDisplayUnits(unit("km")), ER_SUCCESS);
    EXPECT_EQ(variable.SetUnits(unit("s")), ER_SUCCESS);
    EXPECT_EQ(siOf(variable.GetUnits()), QStringLiteral("s"));
    EXPECT_EQ(siOf(variable.GetDisplayUnits()), QStringLiteral("km"));
}

// --- units of the axes

TEST(UnitsOfAxes, AreThoseOfTheIndependent)
{
    PropertyObject top;
    Variable* v = insertVariable(top, QStringLiteral("v"));
    Variable* t = insertVariable(top, QStringLiteral("t"));
    ASSERT_EQ(v->AddIndepVariableRef(t), ER_SUCCESS);
    EXPECT_EQ(&v->GetUnitsOfIndep(0), &t->GetUnits()); // the default of a Variable
    ASSERT_EQ(v->SetUnitsOfIndep(unit("s"), 0), ER_SUCCESS);
    EXPECT_EQ(siOf(t->GetUnits()), QStringLiteral("s"));
    EXPECT_EQ(&v->GetUnitsOfIndep(0), &t->GetUnits());
    EXPECT_EQ(v->GetIndepCount(), 1);
}

TEST(UnitsOfAxes, AreSharedByAllThatAreMeasuredAgainstThem)
{
    PropertyObject top;
    Variable* v = insertVariable(top, QStringLiteral("v"));
    Variable* w = insertVariable(top, QStringLiteral("w"));
    const Variable* t = insertVariable(top, QStringLiteral("t"));
    ASSERT_EQ(v->AddIndepVariableRef(t), ER_SUCCESS);
    ASSERT_EQ(w->AddIndepVariableRef(v), ER_SUCCESS);
    ASSERT_EQ(w->AddIndepVariableRef(t), ER_SUCCESS);
    ASSERT_EQ(v->SetUnitsOfIndep(unit("ms"), 0), ER_SUCCESS);
    EXPECT_EQ(siOf(w->GetUnitsOfIndep(1)), QStringLiteral("ms"));
    EXPECT_FALSE(w->GetUnitsOfIndep(0).IsValid());
}

TEST(UnitsOfAxes, ReachAnAxisOutsideTheTree)
{
    Variable v(QStringLiteral("v"));
    const Variable loose(QStringLiteral("t"));
    ASSERT_EQ(v.AddIndepVariableRef(&loose), ER_SUCCESS);
    ASSERT_EQ(v.SetUnitsOfIndep(unit("s"), 0), ER_SUCCESS);
    EXPECT_EQ(siOf(loose.GetUnits()), QStringLiteral("s"));
    EXPECT_EQ(v.GetIndepCount(), 1);
}

TEST(UnitsOfAxes, MayBeSetToThemselves)
{
    PropertyObject top;
    Variable* v = insertVariable(top, QStringLiteral("v"));
    ASSERT_EQ(v->AddIndepVariableRef(insertVariable(top, QStringLiteral("t"))), ER_SUCCESS);
    ASSERT_EQ(v->SetUnitsOfIndep(unit("km"), 0), ER_SUCCESS);
    ASSERT_EQ(v->SetUnitsOfIndep(v->GetUnitsOfIndep(0), 0), ER_SUCCESS);
    EXPECT_EQ(siOf(v->GetUnitsOfIndep(0)), QStringLiteral("km"));
}

TEST(UnitsOfAxes, AreNotCheckedAgainstAnything)
{
    PropertyObject top;
    Variable* v = insertVariable(top, QStringLiteral("v"));
    Variable* t = insertVariable(top, QStringLiteral("t"));
    ASSERT_EQ(v->AddIndepVariableRef(t), ER_SUCCESS);
    ASSERT_EQ(t->SetDisplayUnits(unit("m")), ER_SUCCESS);
    EXPECT_EQ(v->SetUnitsOfIndep(unit("s"), 0), ER_SUCCESS);
    EXPECT_EQ(siOf(t->GetDisplayUnits()), QStringLiteral("m"));
}

TEST(UnitsOfAxes, MakeADefaultIndependentWhereThereIsNone)
{
    Variable v(QStringLiteral("v"), numbers({1, 2, 3}));
    ASSERT_EQ(v.SetUnitsOfIndep(unit("s"), 0), ER_SUCCESS);
    EXPECT_EQ(siOf(v.GetUnitsOfIndep(0)), QStringLiteral("s"));
    EXPECT_EQ(v.GetIndepCount(), 1);
    const Variable* axis = indepAt(v, 0);
    ASSERT_NE(axis, nullptr);
    EXPECT_EQ(axis, v.GetPropertyPtr(QStringLiteral("v_index")));
    EXPECT_EQ(axis->GetMaxIndepOffset(), 3u);

    // A next one fails, and what was made for it stays.
    EXPECT_EQ(v.SetUnitsOfIndep(unit("m"), 3), ER_NOT_FOUND);
    EXPECT_EQ(v.GetIndepCount(), 2);
    EXPECT_NE(v.GetPropertyPtr(QStringLiteral("v_index0")), nullptr);
    EXPECT_FALSE(v.GetUnitsOfIndep(1).IsValid());
}

TEST(UnitsOfAxes, AddOneIndependentWhateverTheIndexAndThenFail)
{
    Variable v(QStringLiteral("v"), numbers({1}));
    EXPECT_EQ(v.SetUnitsOfIndep(unit("s"), 1), ER_NOT_FOUND);
    EXPECT_EQ(v.GetIndepCount(), 1);
    EXPECT_FALSE(v.GetUnitsOfIndep(0).IsValid());
}

TEST(UnitsOfAxes, ReplaceAValueInTheFoldersPlace)
{
    Variable v(QStringLiteral("v"), numbers({1}));
    ASSERT_EQ(v.SetProperty(folderName, 5.0), ER_SUCCESS);
    const MessageCapture log;
    EXPECT_EQ(v.SetUnitsOfIndep(unit("s"), 0), ER_SUCCESS);
    EXPECT_EQ(log.warnings(), QStringList("invalid pIndepGroup, is not a property object; clearing it..."));
    EXPECT_EQ(siOf(v.GetUnitsOfIndep(0)), QStringLiteral("s"));
}

TEST(UnitsOfAxes, OfAnEntryThatLeadsNowhereFailAfterOneMoreIndependent)
{
    Variable v(QStringLiteral("v"), numbers({1}));
    PropertyObject* folder = insertFolder(v, folderName);
    ASSERT_EQ(folder->SetProperty(QStringLiteral("0"), 1.0), ER_SUCCESS);
    {
        const MessageCapture log;
        EXPECT_FALSE(v.GetUnitsOfIndep(0).IsValid());
        EXPECT_EQ(log.warnings(), QStringList(leadsNowhere()));
    }
    const MessageCapture log;
    EXPECT_EQ(v.SetUnitsOfIndep(unit("s"), 0), ER_NOT_FOUND);
    EXPECT_EQ(log.warnings(), (QStringList{leadsNowhere(), leadsNowhere()})); // before and after the new one
    EXPECT_EQ(v.GetIndepCount(), 2);
    EXPECT_NE(indepAt(v, 1), nullptr);
}

TEST(UnitsOfAxes, AtANegativeIndexDoNotCrash)
{
    Variable v(QStringLiteral("v"), numbers({1}));
    EXPECT_FALSE(v.GetUnitsOfIndep(-1).IsValid());
    EXPECT_EQ(v.SetUnitsOfIndep(unit("s"), -1), ER_NOT_FOUND);
}

// --- copies and files

TEST(VariableUnits, AreCopiedWithTheVariable)
{
    Variable v(QStringLiteral("v"));
    ASSERT_EQ(v.SetUnits(unit("m")), ER_SUCCESS);
    ASSERT_EQ(v.SetDisplayUnits(unit("km")), ER_SUCCESS);
    const Variable copy(v);
    EXPECT_NE(&copy.GetUnits(), &v.GetUnits());
    EXPECT_TRUE(copy.GetUnits() == v.GetUnits());
    EXPECT_EQ(siOf(copy.GetDisplayUnits()), QStringLiteral("km"));
}

void buildTreeWithUnits(PropertyObject& root)
{
    Variable* v = insertVariable(root, QStringLiteral("v"));
    v->UpdateData(numbers({1, 2}));
    v->SetUnits(unit("m/s"));
    v->SetDisplayUnits(unit("km/s"));
    v->SetUnitsOfIndep(unit("dB(mW)"), 0);
}

TEST(SavedUnits, ComeBackAsTheyWere)
{
    EXPECT_EQ(StorageTest::RoundTrip(&buildTreeWithUnits), std::string());
}

TEST(SavedUnits, WorkAfterAReload)
{
    const StorageTest::ScratchFolder disk;
    const QString path = disk.Path(QStringLiteral("units.h5"));
    StorageTest::SaveNew(path, &buildTreeWithUnits).reset();
    const auto file = StorageTest::Open(path);
    const auto* v = file->GetRoot()->GetPtr<Variable>(QStringLiteral("v"));
    ASSERT_NE(v, nullptr);
    EXPECT_TRUE(v->GetUnits().IsValid());
    EXPECT_TRUE(v->GetUnits() == unit("m/s"));
    EXPECT_TRUE(v->GetDisplayUnits() == unit("km/s"));
    EXPECT_EQ(v->GetDisplayUnits().GetScale(), 1000.0);
    EXPECT_TRUE(v->GetUnitsOfIndep(0) == unit("dB(mW)"));
    EXPECT_TRUE(v->GetUnitsOfIndep(0).IsLogarithmic());
    ASSERT_NE(indepAt(*v, 0), nullptr);
    EXPECT_EQ(ToDoubles(indepAt(*v, 0)->GetData()), (std::vector<double>{0, 1}));
}

} // namespace
} // namespace Orrery
