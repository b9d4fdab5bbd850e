// Against what a Variable is measured: the folder of independents and the map beside it.
#include "tests/foundations/storage/DataFiles.h"
#include "tests/tracking/ChangeTestSupport.h"
#include "tests/variables/VariableTestSupport.h"
#include "tracking/ObservablePropertyReference.h"
#include "variables/ExplicitDataVar.h"
#include "variables/Variable.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>

namespace Orrery {
namespace {

using Doubles = std::vector<double>;

const QString folderName = QStringLiteral("Indep");
const QString mapName = QStringLiteral("IndependentMap");
const QStringList noLines;

QString leadsNowhere()
{
    return QStringLiteral("!! Indep is either nonexistent or it's not a variable !!") +
           QStringLiteral("Orrery::Variable::GetIndepVariable");
}

PropertyObject* indepFolder(Variable& variable)
{
    return variable.GetPtr<PropertyObject>(folderName);
}

QStringList entryNames(Variable& variable)
{
    QStringList names;
    if (const PropertyObject* folder = indepFolder(variable)) {
        QList<AbstractProperty*> children;
        folder->GetPrefixedChildrenProperties(&children, QString());
        for (const AbstractProperty* child : children)
            names.append(child->GetName());
    }
    return names;
}

/// The independent at a position; null where there is none.
Variable* indepAt(const Variable& variable, int index)
{
    Variable* found = nullptr;
    const ERESULT code = variable.GetIndepVariable(&found, index);
    EXPECT_EQ(code >= 0, found != nullptr);
    return found;
}

QVector<int> mapOf(const Variable& variable)
{
    QVector<int> map;
    EXPECT_EQ(variable.GetIndependentMap(&map), ER_SUCCESS);
    return map;
}

void makeClean(const Variable& variable)
{
    variable.GetData();
    ASSERT_TRUE(variable.getDirtyTracker()->isClean());
}

/// A Variable so deep in its tree that it can't take a folder.
Variable* insertDeepest(PropertyObject& top)
{
    PropertyObject* folder = &top;
    for (int depth = 2; depth < PropertyObject::MaxDepth; ++depth) {
        folder = insertFolder(*folder, QStringLiteral("d"));
        if (!folder)
            return nullptr;
    }
    return insertVariable(*folder, QStringLiteral("deepest"));
}

/// A tree with one Variable "v" and three that can be its axes.
class Axes : public testing::Test
{
protected:
    PropertyObject top{QStringLiteral("top")};
    Variable* v = insertVariable(top, QStringLiteral("v"));
    Variable* a = insertVariable(top, QStringLiteral("a"));
    Variable* b = insertVariable(top, QStringLiteral("b"));
    Variable* c = insertVariable(top, QStringLiteral("c"));

    void addAll()
    {
        for (const Variable* axis : {a, b, c})
            ASSERT_EQ(v->AddIndepVariableRef(axis), ER_SUCCESS);
    }
};

// --- a fresh Variable

TEST(FreshVariable, HasNoAxesAndAnEmptyMapWithoutALogLine)
{
    const Variable variable(QStringLiteral("v"));
    const MessageCapture log;
    EXPECT_EQ(variable.GetIndepCount(), 0);
    Variable* found = nullptr;
    EXPECT_EQ(variable.GetIndepVariable(&found, 0), ER_NOT_FOUND);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(mapOf(variable), QVector<int>());
    EXPECT_TRUE(variable.IsExpanded());
    EXPECT_EQ(log.warnings(), noLines);
    EXPECT_EQ(log.debug(), noLines);
    EXPECT_FALSE(variable.HasProperty(folderName)); // asking makes nothing
    EXPECT_FALSE(variable.HasProperty(mapName));
}

// --- adding

TEST_F(Axes, AreNamedByNumbersInTheOrderOfTheirAddition)
{
    addAll();
    EXPECT_EQ(entryNames(*v), (QStringList{"0", "1", "2"}));
    EXPECT_EQ(v->GetIndepCount(), 3);
    EXPECT_EQ(indepAt(*v, 0), a);
    EXPECT_EQ(indepAt(*v, 1), b);
    EXPECT_EQ(indepAt(*v, 2), c);
}

TEST_F(Axes, AreObservableReferencesInAPlainFolder)
{
    addAll();
    ASSERT_NE(indepFolder(*v), nullptr);
    EXPECT_TRUE(isExactly<PropertyObject>(*indepFolder(*v)));
    const AbstractProperty* entry = indepFolder(*v)->GetPropertyPtr(QStringLiteral("0"));
    ASSERT_NE(entry, nullptr);
    EXPECT_TRUE(isExactly<ObservablePropertyReference>(*entry));
    EXPECT_EQ(a->GetParent(), &top); // owned by nobody through this
}

TEST_F(Axes, AreOrderedByNumberNotByText)
{
    for (int i = 0; i <= 10; ++i)
        ASSERT_EQ(v->AddIndepVariableRef(i == 2 ? b : a), ER_SUCCESS);
    EXPECT_EQ(entryNames(*v).at(2), QStringLiteral("2"));
    EXPECT_EQ(entryNames(*v).last(), QStringLiteral("10"));
    EXPECT_EQ(indepAt(*v, 2), b);
    EXPECT_EQ(indepAt(*v, 10), a);

    ASSERT_EQ(v->AddIndepVariableRef(c), ER_SUCCESS);
    EXPECT_EQ(entryNames(*v).last(), QStringLiteral("11"));
    EXPECT_EQ(indepAt(*v, 11), c);
}

TEST_F(Axes, CloseUpInPositionButNotInNumberAfterADeletion)
{
    addAll();
    ASSERT_EQ(indepFolder(*v)->DeleteProperty(QStringLiteral("1")), ER_SUCCESS);
    EXPECT_EQ(v->GetIndepCount(), 2);
    EXPECT_EQ(indepAt(*v, 0), a);
    EXPECT_EQ(indepAt(*v, 1), c);
    ASSERT_EQ(v->AddIndepVariableRef(b), ER_SUCCESS);
    EXPECT_EQ(entryNames(*v), (QStringList{"0", "2", "3"}));
    EXPECT_EQ(indepAt(*v, 2), b);
}

TEST_F(Axes, ReuseTheHighestNumberAfterItsDeletion)
{
    addAll();
    ASSERT_EQ(indepFolder(*v)->DeleteProperty(QStringLiteral("2")), ER_SUCCESS);
    ASSERT_EQ(v->AddIndepVariableRef(b), ER_SUCCESS);
    EXPECT_EQ(entryNames(*v), (QStringList{"0", "1", "2"}));
}

TEST_F(Axes, MayBeOneVariableTwiceOrTheVariableItself)
{
    ASSERT_EQ(v->AddIndepVariableRef(a), ER_SUCCESS);
    ASSERT_EQ(v->AddIndepVariableRef(a), ER_SUCCESS);
    ASSERT_EQ(v->AddIndepVariableRef(v), ER_SUCCESS);
    EXPECT_EQ(v->GetIndepCount(), 3);
    EXPECT_EQ(indepAt(*v, 1), a);
    EXPECT_EQ(indepAt(*v, 2), v);
}

TEST_F(Axes, AdditionOfNullChangesNothing)
{
    makeClean(*v);
    EXPECT_EQ(v->AddIndepVariableRef(nullptr), ER_INVALID_ARGUMENT);
    EXPECT_TRUE(v->getDirtyTracker()->isClean());
    EXPECT_FALSE(v->HasProperty(folderName));
}

TEST_F(Axes, AdditionMarksTheVariableDirty)
{
    makeClean(*v);
    ASSERT_EQ(v->AddIndepVariableRef(a), ER_SUCCESS);
    EXPECT_TRUE(v->getDirtyTracker()->isDirty());
}

TEST_F(Axes, AdditionLeavesStrategyAndDataAlone)
{
    v->UpdateData(numbers({1, 2}));
    const auto strategy = v->GetStrategyPtr().lock();
    addAll();
    EXPECT_EQ(v->GetStrategyPtr().lock(), strategy);
    EXPECT_EQ(ToDoubles(v->GetData()), (Doubles{1, 2}));
}

TEST_F(Axes, AdditionThatTheTreeRefusesHandsItsCodeThroughAndStillMarks)
{
    Variable* deepest = insertDeepest(top);
    ASSERT_NE(deepest, nullptr);
    makeClean(*deepest);
    EXPECT_EQ(deepest->AddIndepVariableRef(a), ER_FAILED);
    EXPECT_EQ(deepest->GetIndepCount(), 0);
    EXPECT_TRUE(deepest->getDirtyTracker()->isDirty()); // marked before the tree is asked
}

TEST_F(Axes, AdditionPastTheLargestNumberFails)
{
    PropertyObject* folder = insertFolder(*v, folderName);
    ASSERT_NE(folder, nullptr);
    ASSERT_EQ(folder->SetProperty(QStringLiteral("9223372036854775807"), 1.0), ER_SUCCESS);
    EXPECT_EQ(v->AddIndepVariableRef(a), ER_FAILED);
    EXPECT_EQ(v->GetIndepCount(), 1);
}

TEST_F(Axes, AdditionOfAVariableThatIsBeingDestroyedFailsAndLeavesNoEntry)
{
    ConnectedClient client(*a);
    ERESULT code = ER_SUCCESS;
    client.onRemoved = [&] { code = v->AddIndepVariableRef(a); };
    delete a; // which leaves the tree only after it has said so
    EXPECT_EQ(code, ER_INVALID_ARGUMENT);
    EXPECT_EQ(v->GetIndepCount(), 0);
}

TEST_F(Axes, AdditionOfAVariableOnItsWayOutOfTheTreeLeadsNowhereAfterwards)
{
    ConnectedClient client(*a);
    ERESULT code = ER_FAILED;
    client.onRemoved = [&] { code = v->AddIndepVariableRef(a); };
    top.DeleteProperty(QStringLiteral("a")); // taken out first, hence bound late
    EXPECT_EQ(code, ER_SUCCESS);
    EXPECT_EQ(v->GetIndepCount(), 1);
    const MessageCapture log;
    EXPECT_EQ(indepAt(*v, 0), nullptr);
    EXPECT_EQ(log.warnings(), QStringList(leadsNowhere()));
}

// --- a hostile folder

TEST_F(Axes, ClearAValueInTheirFoldersPlaceWithAWarning)
{
    ASSERT_EQ(v->SetProperty(folderName, 5.0), ER_SUCCESS);
    {
        const MessageCapture log;
        EXPECT_EQ(v->GetIndepCount(), 0);
        Variable* found = c;
        EXPECT_EQ(v->GetIndepVariable(&found, 0), ER_NOT_FOUND);
        EXPECT_EQ(found, c);
        EXPECT_EQ(log.warnings(), noLines);
    }
    const MessageCapture log;
    EXPECT_EQ(v->AddIndepVariableRef(a), ER_SUCCESS);
    EXPECT_EQ(log.warnings(), QStringList("invalid pIndepGroup, is not a property object; clearing it..."));
    EXPECT_EQ(log.debug(), noLines);
    EXPECT_EQ(v->GetIndepCount(), 1);
    EXPECT_EQ(indepAt(*v, 0), a);
}

TEST_F(Axes, ClearAReferenceInTheirFoldersPlaceWithAWarning)
{
    ASSERT_EQ(v->SetPropertyRef(folderName, &top), ER_SUCCESS);
    const MessageCapture log;
    EXPECT_EQ(v->AddIndepVariableRef(a), ER_SUCCESS);
    EXPECT_EQ(log.warnings(), QStringList("invalid pIndepGroup, is not a property object; clearing it..."));
    EXPECT_EQ(entryNames(*v), QStringList("0"));
}

TEST_F(Axes, CountEveryChildOfTheirFolderButFindOnlyNumberedOnes)
{
    addAll();
    ASSERT_EQ(indepFolder(*v)->SetProperty(QStringLiteral("note"), QStringLiteral("x")), ER_SUCCESS);
    EXPECT_EQ(v->GetIndepCount(), 4);
    EXPECT_EQ(mapOf(*v), (QVector<int>{0, 0, 0, 0}));
    const MessageCapture log;
    EXPECT_EQ(indepAt(*v, 3), nullptr);
    EXPECT_EQ(log.warnings(), noLines);
}

TEST_F(Axes, PastTheEndAreNotFoundWithoutALogLine)
{
    addAll();
    const MessageCapture log;
    Variable* found = a;
    EXPECT_EQ(v->GetIndepVariable(&found, 3), ER_NOT_FOUND);
    EXPECT_EQ(v->GetIndepVariable(&found, 1 << 30), ER_NOT_FOUND);
    EXPECT_EQ(found, a);
    EXPECT_EQ(log.warnings(), noLines);
}

TEST_F(Axes, AtANegativeIndexAreNotFound)
{
    addAll();
    Variable* found = a;
    EXPECT_LT(v->GetIndepVariable(&found, -1), 0);
    EXPECT_LT(v->GetIndepVariable(&found, INT_MIN), 0);
    EXPECT_EQ(found, a);
    EXPECT_LT(Variable().GetIndepVariable(&found, -1), 0);
}

TEST_F(Axes, RefuseANullResult)
{
    addAll();
    EXPECT_EQ(v->GetIndepVariable(nullptr, 0), ER_INVALID_ARGUMENT);
    EXPECT_EQ(v->GetIndependentMap(nullptr), ER_INVALID_ARGUMENT);
}

/// What stands at "0" in the folder, and whether it is an axis.
struct EntryCase
{
    const char* name;
    void (*put)(PropertyObject& folder, PropertyObject& top);
};

class AxisEntry : public testing::TestWithParam<EntryCase>
{
};

TEST_P(AxisEntry, ThatLeadsToNoVariableIsCountedAndNotFoundWithAWarning)
{
    PropertyObject top;
    Variable* v = insertVariable(top, QStringLiteral("v"));
    PropertyObject* folder = insertFolder(*v, folderName);
    GetParam().put(*folder, top);
    ASSERT_EQ(v->GetIndepCount(), 1);

    const MessageCapture log;
    Variable* found = v;
    EXPECT_EQ(v->GetIndepVariable(&found, 0), ER_NOT_FOUND);
    EXPECT_EQ(found, v);
    EXPECT_EQ(log.warnings(), QStringList(leadsNowhere()));
    EXPECT_EQ(log.debug(), noLines);
}

const QString zero = QStringLiteral("0");

INSTANTIATE_TEST_SUITE_P(
    Kinds, AxisEntry,
    testing::Values(
        EntryCase{"Value", [](PropertyObject& folder, PropertyObject&) { folder.SetProperty(zero, 1.0); }},
        EntryCase{"Folder", [](PropertyObject& folder, PropertyObject&) { insertFolder(folder, zero); }},
        EntryCase{"UnsetReference",
                  [](PropertyObject& folder, PropertyObject&) {
                      insert(folder, std::make_unique<PropertyReference>(zero));
                  }},
        EntryCase{"PathToNowhere",
                  [](PropertyObject& folder, PropertyObject&) {
                      insert(folder, std::make_unique<PropertyReference>(zero))
                          ->RestorePath(QStringLiteral("../../../gone"));
                  }},
        EntryCase{"FileThatIsMissing",
                  [](PropertyObject& folder, PropertyObject&) {
                      insert(folder, std::make_unique<PropertyReference>(zero))
                          ->RestorePath(QStringLiteral("/x"), QString(), QStringLiteral("NoSuchType"));
                  }},
        EntryCase{"ReferenceToAFolder",
                  [](PropertyObject& folder, PropertyObject& top) { folder.SetPropertyRef(zero, &top); }},
        EntryCase{"ReferenceToAValue",
                  [](PropertyObject& folder, PropertyObject& top) {
                      top.SetProperty(QStringLiteral("value"), 1.0);
                      folder.SetPropertyRef(zero, top.GetPropertyPtr(QStringLiteral("value")));
                  }},
        EntryCase{"ReferenceToAReference",
                  [](PropertyObject& folder, PropertyObject& top) {
                      top.SetPropertyRef(QStringLiteral("alias"), top.GetPropertyPtr(QStringLiteral("v")));
                      folder.SetPropertyRef(zero, top.GetPropertyPtr(QStringLiteral("alias")));
                  }},
        EntryCase{"ReferenceToADestroyedVariable",
                  [](PropertyObject& folder, PropertyObject& top) {
                      folder.SetPropertyRef(zero, insertVariable(top, QStringLiteral("short")));
                      top.DeleteProperty(QStringLiteral("short"));
                  }}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(Axes, MayBeAVariableStandingInTheFolderItself)
{
    PropertyObject* folder = insertFolder(*v, folderName);
    auto* inside = insert(*folder, std::make_unique<ExplicitDataVar>(zero));
    EXPECT_EQ(indepAt(*v, 0), inside);
    ASSERT_EQ(v->AddIndepVariableRef(a), ER_SUCCESS);
    EXPECT_EQ(entryNames(*v), (QStringList{"0", "1"}));
    EXPECT_EQ(indepAt(*v, 1), a);
}

TEST_F(Axes, MayBePlainReferences)
{
    PropertyObject* folder = insertFolder(*v, folderName);
    ASSERT_EQ(folder->SetPropertyRef(QStringLiteral("7"), b), ER_SUCCESS);
    EXPECT_EQ(indepAt(*v, 0), b); // a position, not a number
    EXPECT_EQ(indepAt(*v, 7), nullptr);
}

// --- the only axis

TEST_F(Axes, AreReplacedByTheOnlyOne)
{
    addAll();
    ASSERT_EQ(v->SetIndepVariableRef(b), ER_SUCCESS);
    EXPECT_EQ(entryNames(*v), QStringList("0"));
    EXPECT_EQ(indepAt(*v, 0), b);
    EXPECT_EQ(a->GetParent(), &top);
}

TEST_F(Axes, AreSetWithoutAFolderAsWell)
{
    makeClean(*v);
    ASSERT_EQ(v->SetIndepVariableRef(b), ER_SUCCESS);
    EXPECT_EQ(v->GetIndepCount(), 1);
    EXPECT_TRUE(v->getDirtyTracker()->isDirty());
}

TEST_F(Axes, AreGoneWhenTheOnlyOneIsNull)
{
    addAll();
    makeClean(*v);
    EXPECT_EQ(v->SetIndepVariableRef(nullptr), ER_INVALID_ARGUMENT);
    EXPECT_FALSE(v->HasProperty(folderName));
    EXPECT_EQ(v->GetIndepCount(), 0);
    EXPECT_TRUE(v->getDirtyTracker()->isClean());
}

TEST_F(Axes, SetOverAValueInTheirFoldersPlaceGiveNoWarning)
{
    ASSERT_EQ(v->SetProperty(folderName, 5.0), ER_SUCCESS);
    const MessageCapture log;
    EXPECT_EQ(v->SetIndepVariableRef(a), ER_SUCCESS); // deleted before the addition looks
    EXPECT_EQ(log.warnings(), noLines);
    EXPECT_EQ(indepAt(*v, 0), a);
}

TEST_F(Axes, MayBeReplacedByOneThatLivesInTheirFolder)
{
    PropertyObject* folder = insertFolder(*v, folderName);
    Variable* inside = insertVariable(*folder, zero);
    ASSERT_NE(inside, nullptr);
    const Variable* other = indepAt(*v, 0);
    ASSERT_EQ(other, inside);
    ASSERT_EQ(v->SetIndepVariableRef(b), ER_SUCCESS); // destroys it with the folder
    EXPECT_EQ(indepAt(*v, 0), b);
}

TEST_F(Axes, CannotBeReplacedByTheOneThatGoesWithTheirFolder)
{
    PropertyObject* folder = insertFolder(*v, folderName);
    const Variable* inside = insertVariable(*folder, zero);
    ASSERT_NE(inside, nullptr);
    EXPECT_LT(v->SetIndepVariableRef(inside), 0);
    EXPECT_EQ(v->GetIndepCount(), 0);
}

// --- outside the tree

TEST_F(Axes, OutsideTheTreeAreBoundLate)
{
    auto loose = std::make_unique<Variable>(QStringLiteral("t"));
    makeClean(*v);
    {
        const MessageCapture log;
        ASSERT_EQ(v->AddIndepVariableRef(loose.get()), ER_SUCCESS);
        EXPECT_EQ(log.debug(), QStringList("used observer to delay reference binding!"));
        EXPECT_EQ(log.warnings(), noLines);
    }
    EXPECT_TRUE(v->getDirtyTracker()->isDirty());
    EXPECT_EQ(v->GetIndepCount(), 1);
    EXPECT_EQ(indepAt(*v, 0), loose.get());

    const auto* entry = indepFolder(*v)->GetPtr<PropertyReference>(zero);
    ASSERT_NE(entry, nullptr);
    const Variable* placed = insert(top, std::move(loose));
    EXPECT_EQ(indepAt(*v, 0), placed);
    EXPECT_EQ(entry->ReferencePath(), QStringLiteral("../../../t"));
}

TEST_F(Axes, InTheTreeAreBoundAtOnce)
{
    const MessageCapture log;
    ASSERT_EQ(v->AddIndepVariableRef(a), ER_SUCCESS);
    EXPECT_EQ(log.debug(), noLines);
    EXPECT_EQ(a->getObserver(), nullptr);
    EXPECT_EQ(indepFolder(*v)->GetPtr<PropertyReference>(zero)->ReferencePath(),
              QStringLiteral("../../../a"));
}

TEST_F(Axes, OutsideTheTreeAreFollowedIntoIt)
{
    auto loose = std::make_unique<Variable>(QStringLiteral("t"), numbers({4}));
    ASSERT_EQ(v->AddIndepVariableRef(loose.get()), ER_SUCCESS);
    Variable* placed = insertVariable(top, QStringLiteral("t"));
    *placed = std::move(*loose);
    EXPECT_EQ(indepAt(*v, 0), placed);
    loose.reset();
    EXPECT_EQ(indepAt(*v, 0), placed);
}

TEST_F(Axes, OfAVariableWithoutATreeAreFoundBeforeAndAfterItGetsOne)
{
    auto loose = std::make_unique<Variable>(QStringLiteral("w"));
    ASSERT_EQ(loose->AddIndepVariableRef(a), ER_SUCCESS);
    EXPECT_EQ(indepAt(*loose, 0), a);
    const Variable* placed = insert(top, std::move(loose));
    EXPECT_EQ(indepAt(*placed, 0), a);
}

TEST_F(Axes, OutsideTheTreeShareOneObserver)
{
    const Variable loose(QStringLiteral("t"));
    ASSERT_EQ(v->AddIndepVariableRef(&loose), ER_SUCCESS);
    const auto observer = loose.getObserver();
    EXPECT_NE(observer, nullptr);
    ASSERT_EQ(b->AddIndepVariableRef(&loose), ER_SUCCESS);
    EXPECT_EQ(loose.getObserver(), observer);
}

TEST_F(Axes, OutsideTheTreeThatWereDestroyedLeadNowhere)
{
    auto loose = std::make_unique<Variable>(QStringLiteral("t"));
    ASSERT_EQ(v->AddIndepVariableRef(loose.get()), ER_SUCCESS);
    loose.reset();
    const MessageCapture log;
    EXPECT_EQ(indepAt(*v, 0), nullptr);
    EXPECT_EQ(log.warnings(), QStringList(leadsNowhere()));
    EXPECT_EQ(v->GetIndepCount(), 1);
}

TEST_F(Axes, OutsideTheTreePastTheLargestNumberFailAndAreNotWaitedFor)
{
    PropertyObject* folder = insertFolder(*v, folderName);
    ASSERT_EQ(folder->SetProperty(QStringLiteral("9223372036854775807"), 1.0), ER_SUCCESS);
    const Variable loose(QStringLiteral("t"));
    EXPECT_EQ(v->AddIndepVariableRef(&loose), ER_FAILED);
    EXPECT_EQ(v->GetIndepCount(), 1);
}

TEST_F(Axes, FollowRenamedAndMovedVariables)
{
    addAll();
    ASSERT_EQ(a->SetName(QStringLiteral("renamed")), ER_SUCCESS);
    PropertyObject* sub = insertFolder(top, QStringLiteral("sub"));
    ASSERT_EQ(top.RemoveProperty(QStringLiteral("b")), ER_SUCCESS);
    ASSERT_EQ(sub->InsertProperty(b), ER_SUCCESS);
    ASSERT_EQ(top.RemoveProperty(QStringLiteral("v")), ER_SUCCESS);
    ASSERT_EQ(sub->InsertProperty(v), ER_SUCCESS);
    EXPECT_EQ(indepAt(*v, 0), a);
    EXPECT_EQ(indepAt(*v, 1), b);
}

// --- copies

TEST_F(Axes, OfACloneResolveFromItsPlace)
{
    addAll();
    std::unique_ptr<AbstractProperty> clone(v->Clone());
    auto* copy = static_cast<Variable*>(clone.get());
    EXPECT_EQ(copy->GetIndepCount(), 3);
    {
        const MessageCapture log;
        EXPECT_EQ(indepAt(*copy, 0), nullptr);
        EXPECT_EQ(log.warnings(), QStringList(leadsNowhere()));
    }
    ASSERT_EQ(copy->SetName(QStringLiteral("copy")), ER_SUCCESS);
    ASSERT_EQ(top.InsertProperty(copy), ER_SUCCESS);
    clone.release();
    EXPECT_EQ(indepAt(*copy, 0), a);
    EXPECT_EQ(indepAt(*copy, 2), c);
}

TEST_F(Axes, BoundLateAreSharedWithAClone)
{
    const Variable loose(QStringLiteral("t"));
    ASSERT_EQ(v->AddIndepVariableRef(&loose), ER_SUCCESS);
    const std::unique_ptr<AbstractProperty> clone(v->Clone());
    EXPECT_EQ(indepAt(*static_cast<Variable*>(clone.get()), 0), &loose);
}

TEST_F(Axes, BelowTheVariableAreThoseOfTheCloneInAClone)
{
    Variable* own = insertVariable(*v, QStringLiteral("own"));
    ASSERT_EQ(v->AddIndepVariableRef(own), ER_SUCCESS);
    const std::unique_ptr<AbstractProperty> clone(v->Clone());
    auto* copy = static_cast<Variable*>(clone.get());
    EXPECT_EQ(indepAt(*copy, 0), copy->GetPtr<Variable>(QStringLiteral("own")));
    EXPECT_NE(indepAt(*copy, 0), nullptr);
}

TEST_F(Axes, AreReplacedByACopyAssignment)
{
    addAll();
    ASSERT_EQ(v->SetIndependentMap({0, 1, 2}), ER_SUCCESS);
    ASSERT_EQ(b->AddIndepVariableRef(c), ER_SUCCESS);
    *b = *v;
    EXPECT_EQ(b->GetIndepCount(), 3);
    EXPECT_EQ(indepAt(*b, 1), b);
    EXPECT_EQ(mapOf(*b), (QVector<int>{0, 1, 2}));
}

// --- the map

TEST_F(Axes, WithoutAMapHaveAZeroEach)
{
    ASSERT_EQ(v->AddIndepVariableRef(a), ER_SUCCESS);
    ASSERT_EQ(v->AddIndepVariableRef(b), ER_SUCCESS);
    EXPECT_EQ(mapOf(*v), (QVector<int>{0, 0}));
    EXPECT_TRUE(v->IsExpanded());
}

TEST_F(Axes, WithAMapAreExpandedWhileAllItsEntriesAreZero)
{
    ASSERT_EQ(v->SetIndependentMap({0, 1}), ER_SUCCESS);
    EXPECT_FALSE(v->IsExpanded());
    EXPECT_EQ(mapOf(*v), (QVector<int>{0, 1}));
    ASSERT_EQ(v->SetIndependentMap({0, 0}), ER_SUCCESS);
    EXPECT_TRUE(v->IsExpanded());
    ASSERT_EQ(v->SetIndependentMap({-1}), ER_SUCCESS);
    EXPECT_FALSE(v->IsExpanded());
}

TEST(IndependentMap, IsAppendedIfStoredAndElseReplacesWhatTheVectorHeld)
{
    Variable variable;
    QVector<int> map{7};
    ASSERT_EQ(variable.SetIndependentMap({0, 1}), ER_SUCCESS);
    EXPECT_EQ(variable.GetIndependentMap(&map), ER_SUCCESS);
    EXPECT_EQ(map, (QVector<int>{7, 0, 1}));

    PropertyObject top;
    Variable* other = insertVariable(top, QStringLiteral("other"));
    ASSERT_EQ(other->AddIndepVariableRef(other), ER_SUCCESS);
    map = {7};
    EXPECT_EQ(other->GetIndependentMap(&map), ER_SUCCESS);
    EXPECT_EQ(map, (QVector<int>{0}));
}

TEST(IndependentMap, IsStoredAsOneVectorOfIntegersAndMarksNothing)
{
    Variable variable;
    makeClean(variable);
    ASSERT_EQ(variable.SetIndependentMap({3, -1, 2147483647}), ER_SUCCESS);
    auto* stored = variable.GetPtr<SimpleProperty>(mapName);
    ASSERT_NE(stored, nullptr);
    EXPECT_EQ(TestSupport::ToElements<std::int32_t>(stored->GetValue()),
              (std::vector<std::int32_t>{3, -1, 2147483647}));
    EXPECT_EQ(ToDimensions(stored->GetValue()), (std::vector<std::uint64_t>{3}));
    EXPECT_EQ(stored->GetValueIsCellArray(), IsCellArrayFalse);
    EXPECT_TRUE(variable.getDirtyTracker()->isClean());
}

TEST(IndependentMap, MayHaveAnyLength)
{
    Variable variable;
    ASSERT_EQ(variable.SetIndependentMap(QVector<int>(1000, 1)), ER_SUCCESS);
    EXPECT_EQ(mapOf(variable).size(), 1000);
    EXPECT_EQ(variable.GetIndepCount(), 0);
}

TEST(IndependentMap, IsExpandedWhenItIsEmpty)
{
    Variable variable;
    ASSERT_EQ(variable.SetIndependentMap({0, 1}), ER_SUCCESS);
    ASSERT_EQ(variable.SetIndependentMap({}), ER_SUCCESS);
    EXPECT_TRUE(variable.IsExpanded());
    QVector<int> map{7};
    variable.GetIndependentMap(&map);
    EXPECT_EQ(map, QVector<int>{7});
}

TEST(IndependentMap, ReplacesWhateverStandsInItsPlace)
{
    Variable variable;
    ASSERT_NE(insertFolder(variable, mapName), nullptr);
    EXPECT_EQ(mapOf(variable), QVector<int>()); // a folder is no map
    ASSERT_EQ(variable.SetIndependentMap({1}), ER_SUCCESS);
    EXPECT_EQ(mapOf(variable), QVector<int>{1});
}

struct MapCase
{
    const char* name;
    BVariant value;
    std::vector<int> map; ///< none for a value that is no map
};

class StoredMap : public testing::TestWithParam<MapCase>
{
};

TEST_P(StoredMap, IsReadAsIntegersOrFails)
{
    Variable variable;
    ASSERT_EQ(variable.SetProperty(mapName, GetParam().value), ER_SUCCESS);
    const std::vector<int>& expected = GetParam().map;
    QVector<int> map;
    EXPECT_EQ(variable.GetIndependentMap(&map), expected.empty() ? ER_FAILED : ER_SUCCESS);
    EXPECT_EQ(std::vector<int>(map.begin(), map.end()), expected);
    EXPECT_EQ(variable.IsExpanded(), expected.empty());
}

INSTANTIATE_TEST_SUITE_P(Values, StoredMap,
                         testing::Values(MapCase{"Doubles", MakeVector<double>({0, 1}), {0, 1}},
                                         MapCase{"Scalar", BVariant(4), {4}},
                                         MapCase{"RowMajorMatrix", MakeCounting<int>({2, 2}), {0, 1, 2, 3}},
                                         MapCase{"ColumnMajorMatrix",
                                                 MakeCounting<int>({2, 2}, DataOrdering::ColumnMajor),
                                                 {0, 2, 1, 3}},
                                         MapCase{"Text", BVariant(std::string("one")), {}},
                                         MapCase{"Null", BVariant(), {}}),
                         [](const auto& test) { return std::string(test.param.name); });

// --- files

using StorageTest::Open;
using StorageTest::SaveNew;
using StorageTest::ScratchFolder;

void buildTreeWithAxes(PropertyObject& root)
{
    Variable* v = insertVariable(root, QStringLiteral("v"));
    v->UpdateData(numbers({1, 2, 3}));
    Variable* t = insertVariable(root, QStringLiteral("t"));
    t->UpdateData(numbers({10, 20, 30}));
    PropertyObject* sub = insertFolder(root, QStringLiteral("sub"));
    Variable* s = insertVariable(*sub, QStringLiteral("s"));
    v->AddIndepVariableRef(t);
    v->AddIndepVariableRef(s);
    v->SetIndependentMap({0, 1});
}

TEST(SavedAxes, ComeBackAsTheyWere)
{
    EXPECT_EQ(StorageTest::RoundTrip(&buildTreeWithAxes), std::string());
}

TEST(SavedAxes, ComeBackAsPlainReferencesThatResolve)
{
    const ScratchFolder disk;
    const QString path = disk.Path(QStringLiteral("axes.h5"));
    SaveNew(path, &buildTreeWithAxes).reset();
    const auto file = Open(path);
    PropertyObject& root = *file->GetRoot();
    auto* v = root.GetPtr<Variable>(QStringLiteral("v"));
    ASSERT_NE(v, nullptr);
    ASSERT_EQ(v->GetIndepCount(), 2);
    EXPECT_TRUE(isExactly<PropertyReference>(*indepFolder(*v)->GetPropertyPtr(zero)));
    EXPECT_EQ(indepAt(*v, 0), root.GetPtr<Variable>(QStringLiteral("t")));
    EXPECT_EQ(indepAt(*v, 1),
              root.GetPtr<PropertyObject>(QStringLiteral("sub"))->GetPtr<Variable>(QStringLiteral("s")));
    EXPECT_EQ(ToDoubles(indepAt(*v, 0)->GetData()), (Doubles{10, 20, 30}));
    EXPECT_EQ(mapOf(*v), (QVector<int>{0, 1}));
    EXPECT_FALSE(v->IsExpanded());

    ASSERT_EQ(v->AddIndepVariableRef(v), ER_SUCCESS);
    EXPECT_EQ(entryNames(*v), (QStringList{"0", "1", "2"}));
}

TEST(SavedAxes, BoundLateAreSavedWithThePathAtTheTimeOfSaving)
{
    const ScratchFolder disk;
    const QString path = disk.Path(QStringLiteral("late.h5"));
    SaveNew(path, [](PropertyObject& root) {
        auto loose = std::make_unique<Variable>(QStringLiteral("t"));
        Variable* v = insertVariable(root, QStringLiteral("v"));
        v->AddIndepVariableRef(loose.get());
        insert(*insertFolder(root, QStringLiteral("sub")), std::move(loose));
    }).reset();
    const auto file = Open(path);
    const auto* v = file->GetRoot()->GetPtr<Variable>(QStringLiteral("v"));
    ASSERT_NE(v, nullptr);
    ASSERT_NE(indepAt(*v, 0), nullptr);
    EXPECT_EQ(indepAt(*v, 0)->GetFullPath(), QStringLiteral("/sub/t"));
}

TEST(SavedAxes, InAnotherFileAreFoundThere)
{
    const ScratchFolder disk;
    const QString axisPath = disk.Path(QStringLiteral("axis.h5"));
    const QString dataPath = disk.Path(QStringLiteral("data.h5"));
    {
        const auto axisFile = SaveNew(axisPath, [](PropertyObject& root) {
            insertVariable(root, QStringLiteral("t"))->UpdateData(numbers({5, 6}));
        });
        auto* t = axisFile->GetRoot()->GetPtr<Variable>(QStringLiteral("t"));
        const MessageCapture log;
        const auto dataFile = SaveNew(dataPath, [t](PropertyObject& root) {
            Variable* v = insertVariable(root, QStringLiteral("v"));
            v->AddIndepVariableRef(t);
        });
        EXPECT_EQ(log.debug(), noLines); // files can refer to one another at once
        const auto* v = dataFile->GetRoot()->GetPtr<Variable>(QStringLiteral("v"));
        EXPECT_EQ(indepAt(*v, 0), t);
    }
    const auto dataFile = Open(dataPath);
    const auto* v = dataFile->GetRoot()->GetPtr<Variable>(QStringLiteral("v"));
    ASSERT_NE(v, nullptr);
    Variable* t = indepAt(*v, 0);
    ASSERT_NE(t, nullptr);
    EXPECT_NE(t->GetRootProperty(), v->GetRootProperty());
    EXPECT_EQ(ToDoubles(t->GetData()), (Doubles{5, 6}));
}

} // namespace
} // namespace Orrery
