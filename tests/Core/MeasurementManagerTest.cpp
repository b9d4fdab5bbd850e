#include "Core/MeasurementManager.h"

#include "Core/FunctionProperty.h"
#include "tests/Core/MeasurementTestSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <type_traits>
#include <utility>
#include <vector>

namespace Orrery {
namespace {

static_assert(!std::is_default_constructible_v<Manager>);
static_assert(!std::is_destructible_v<Manager>);

// Two categories with the built-in one between them.
const QString s_early = QStringLiteral("Acoustics");
const QString s_late = QStringLiteral("Optics");
const QString s_name = QStringLiteral("level");

class MeasurementManagerTest : public RegistryTest
{
protected:
    static QStringList ownCategories()
    {
        QStringList own = manager().GetCategories();
        own.removeAll(QStringLiteral("Math"));
        return own;
    }

    static MeasurementList remove(QList<QString> names) { return manager().RemoveMeasurements(names); }
};

TEST_F(MeasurementManagerTest, IsOneForTheProcess)
{
    ASSERT_NE(Manager::Instance(), nullptr);
    EXPECT_EQ(Manager::Instance(), Manager::Instance());
}

TEST_F(MeasurementManagerTest, FindsWhatIsRegistered)
{
    HostMeasurement* const level = add(s_early, s_name);
    EXPECT_EQ(manager().GetMeasurements(s_early), listOf({level}));
    EXPECT_EQ(manager().GetMeasurement(s_early, s_name), level);
    EXPECT_EQ(manager().FindMeasurement(s_name), level);
    EXPECT_EQ(ownCategories(), QStringList{s_early});
}

TEST_F(MeasurementManagerTest, TakesOverTheObjectItselfWithoutAClone)
{
    add(s_early, s_name);
    EXPECT_EQ(liveCount(), 1);
}

TEST_F(MeasurementManagerTest, ListsACategoryInTheOrderOfRegistration)
{
    HostMeasurement* const c = add(s_early, QStringLiteral("c"));
    HostMeasurement* const a = add(s_early, QStringLiteral("a"));
    HostMeasurement* const b = add(s_early, QStringLiteral("b"));
    EXPECT_EQ(manager().GetMeasurements(s_early), listOf({c, a, b}));
}

TEST_F(MeasurementManagerTest, ListsCategoriesAscendingByUtf16Unit)
{
    const QString plane1 = QString::fromUtf8("\xF0\x90\x80\x80"); // a surrogate pair, hence below U+FF21
    const QStringList ascending = {QString(),
                                   QStringLiteral("AZ"),
                                   QStringLiteral("Aa"),
                                   QStringLiteral("a"),
                                   QString::fromUtf8("\xC3\x84"),
                                   plane1,
                                   QString::fromUtf8("\xEF\xBC\xA1")};
    for (const int i : {4, 0, 6, 2, 5, 3, 1})
        add(ascending[i], s_name);
    EXPECT_EQ(ownCategories(), ascending);
}

TEST_F(MeasurementManagerTest, TellsUpperFromLowerCase)
{
    HostMeasurement* const upper = add(QStringLiteral("Case"), QStringLiteral("Name"));
    EXPECT_EQ(manager().GetMeasurement(QStringLiteral("case"), QStringLiteral("Name")), nullptr);
    EXPECT_EQ(manager().GetMeasurement(QStringLiteral("Case"), QStringLiteral("name")), nullptr);
    EXPECT_EQ(manager().FindMeasurement(QStringLiteral("NAME")), nullptr);
    EXPECT_EQ(manager().FindMeasurement(QStringLiteral("Name")), upper);
}

TEST_F(MeasurementManagerTest, TakesEmptyTextsAsCategoryAndName)
{
    HostMeasurement* const nameless = add(QString(), QString());
    EXPECT_EQ(manager().GetCategories().first(), QString());
    EXPECT_EQ(manager().GetMeasurement(QString(), QString()), nameless);
    EXPECT_EQ(manager().GetMeasurement(QLatin1String(""), QLatin1String("")), nameless);
    EXPECT_EQ(manager().FindMeasurement(QString()), nameless);
}

TEST_F(MeasurementManagerTest, HandsOutACopyOfTheList)
{
    HostMeasurement* const level = add(s_early, s_name);
    MeasurementList list = manager().GetMeasurements(s_early);
    list.clear();
    EXPECT_EQ(manager().GetMeasurements(s_early), listOf({level}));
}

TEST_F(MeasurementManagerTest, ListsACategoryFromTheFirstRequestForItsMeasurements)
{
    ASSERT_FALSE(manager().GetCategories().contains(s_late));
    EXPECT_TRUE(manager().GetMeasurements(s_late).isEmpty());
    EXPECT_TRUE(manager().GetCategories().contains(s_late));
    EXPECT_TRUE(manager().GetMeasurements(s_late).isEmpty());
}

TEST_F(MeasurementManagerTest, ListsNoCategoryForARequestByName)
{
    const QStringList before = manager().GetCategories();
    EXPECT_EQ(manager().GetMeasurement(s_late, s_name), nullptr);
    EXPECT_EQ(manager().GetCategories(), before);
    EXPECT_EQ(manager().FindMeasurement(s_name), nullptr);
    EXPECT_EQ(manager().GetCategories(), before);
}

TEST_F(MeasurementManagerTest, RegistersInACategoryThatARequestHasMade)
{
    manager().GetMeasurements(s_late);
    manager().GetMeasurement(s_early, s_name);
    HostMeasurement* const late = add(s_late, s_name);
    HostMeasurement* const early = add(s_early, s_name);
    EXPECT_EQ(manager().GetMeasurements(s_late), listOf({late}));
    EXPECT_EQ(manager().GetMeasurement(s_late, s_name), late);
    EXPECT_EQ(manager().GetMeasurements(s_early), listOf({early}));
    EXPECT_EQ(manager().GetMeasurement(s_early, s_name), early);
}

TEST_F(MeasurementManagerTest, AnswersNullForAnUnknownNameOfAKnownCategory)
{
    HostMeasurement* const level = add(s_early, s_name);
    EXPECT_EQ(manager().GetMeasurement(s_early, QStringLiteral("other")), nullptr);
    EXPECT_EQ(manager().FindMeasurement(QStringLiteral("other")), nullptr);
    EXPECT_EQ(manager().GetMeasurements(s_early), listOf({level}));
}

TEST_F(MeasurementManagerTest, ListsBothOfOneNameAndFindsTheLater)
{
    HostMeasurement* const former = add(s_early, s_name);
    HostMeasurement* const later = add(s_early, s_name);
    EXPECT_EQ(manager().GetMeasurements(s_early), listOf({former, later}));
    EXPECT_EQ(manager().GetMeasurement(s_early, s_name), later);
    EXPECT_EQ(manager().FindMeasurement(s_name), later);
    EXPECT_EQ(liveCount(), 2);
}

TEST_F(MeasurementManagerTest, ListsOneObjectTwiceThatIsRegisteredTwice)
{
    HostMeasurement* const level = add(s_early, s_name);
    EXPECT_EQ(manager().Register(level), ER_SUCCESS);
    EXPECT_EQ(manager().GetMeasurements(s_early), listOf({level, level}));
    EXPECT_EQ(manager().GetMeasurement(s_early, s_name), level);
}

TEST_F(MeasurementManagerTest, KeepsOneNameApartInTwoCategories)
{
    HostMeasurement* const late = add(s_late, s_name);
    HostMeasurement* const early = add(s_early, s_name);
    EXPECT_EQ(manager().GetMeasurement(s_late, s_name), late);
    EXPECT_EQ(manager().GetMeasurement(s_early, s_name), early);
}

TEST_F(MeasurementManagerTest, FindsTheOneInTheCategoryThatSortsFirst)
{
    add(s_late, s_name);
    HostMeasurement* const early = add(s_early, s_name);
    EXPECT_EQ(manager().FindMeasurement(s_name), early);
}

TEST_F(MeasurementManagerTest, FindsByTheNameOfTheTimeOfRegistration)
{
    HostMeasurement* const level = add(s_early, s_name);
    level->name = QStringLiteral("renamed");
    EXPECT_EQ(manager().FindMeasurement(s_name), level);
    EXPECT_EQ(manager().FindMeasurement(QStringLiteral("renamed")), nullptr);
}

TEST_F(MeasurementManagerTest, ForgetsACategoryButLeavesItsMeasurementsAlive)
{
    add(s_early, s_name);
    add(s_early, QStringLiteral("other"));
    const MeasurementList before = manager().GetMeasurements(s_early);
    manager().RemoveCategory(s_early);
    EXPECT_EQ(ownCategories(), QStringList());
    EXPECT_EQ(manager().GetMeasurement(s_early, s_name), nullptr);
    EXPECT_EQ(manager().FindMeasurement(s_name), nullptr);
    ASSERT_EQ(liveCount(), 2);
    EXPECT_EQ(before[0]->get_name(), s_name);
    EXPECT_EQ(before[1]->get_name(), QStringLiteral("other"));
}

TEST_F(MeasurementManagerTest, LeavesOtherCategoriesWhenOneIsForgotten)
{
    add(s_early, s_name);
    HostMeasurement* const late = add(s_late, s_name);
    manager().RemoveCategory(s_early);
    EXPECT_EQ(manager().FindMeasurement(s_name), late);
    EXPECT_EQ(manager().GetMeasurements(QStringLiteral("Math")).size(), 3);
}

TEST_F(MeasurementManagerTest, ChangesNothingForACategoryThatItDoesNotKnow)
{
    add(s_early, s_name);
    const QStringList before = manager().GetCategories();
    manager().RemoveCategory(s_late);
    EXPECT_EQ(manager().GetCategories(), before);
}

TEST_F(MeasurementManagerTest, ForgetsAnEmptyCategory)
{
    manager().GetMeasurements(s_late);
    manager().RemoveCategory(s_late);
    EXPECT_EQ(ownCategories(), QStringList());
}

TEST_F(MeasurementManagerTest, StartsAForgottenCategoryAnew)
{
    add(s_early, s_name);
    manager().RemoveCategory(s_early);
    HostMeasurement* const other = add(s_early, QStringLiteral("other"));
    EXPECT_EQ(manager().GetMeasurements(s_early), listOf({other}));
    EXPECT_EQ(manager().GetMeasurement(s_early, s_name), nullptr);
}

TEST_F(MeasurementManagerTest, AnswersARemovalForEachCategoryInTheirOrder)
{
    add(s_early, QStringLiteral("other"));
    HostMeasurement* const late = add(s_late, s_name);
    ASSERT_EQ(manager().GetCategories(), (QStringList{s_early, QStringLiteral("Math"), s_late}));
    EXPECT_EQ(remove({s_name}), listOf({nullptr, nullptr, late}));
}

TEST_F(MeasurementManagerTest, AnswersARemovalByCategoryFirstAndThenByName)
{
    HostMeasurement* const earlyA = add(s_early, QStringLiteral("a"));
    HostMeasurement* const earlyB = add(s_early, QStringLiteral("b"));
    HostMeasurement* const lateA = add(s_late, QStringLiteral("a"));
    add(s_late, QStringLiteral("kept"));
    const MeasurementList answer = remove({QStringLiteral("b"), QStringLiteral("a")});
    EXPECT_EQ(answer, listOf({earlyB, earlyA, nullptr, nullptr, nullptr, lateA}));
    EXPECT_EQ(ownCategories(), QStringList{s_late});
}

TEST_F(MeasurementManagerTest, HandsRemovedMeasurementsOverAlive)
{
    add(s_early, s_name);
    const MeasurementList answer = remove({s_name});
    ASSERT_EQ(liveCount(), 1);
    ASSERT_NE(answer.first(), nullptr);
    EXPECT_EQ(answer.first()->get_category(), s_early);
}

TEST_F(MeasurementManagerTest, LeavesTheNamesOfARemovalAsTheyAre)
{
    add(s_early, s_name);
    QList<QString> names = {s_name, QStringLiteral("unknown"), s_name};
    manager().RemoveMeasurements(names);
    EXPECT_EQ(names, (QList<QString>{s_name, QStringLiteral("unknown"), s_name}));
}

TEST_F(MeasurementManagerTest, ForgetsTheCategoryOfTheLastNameThatGoes)
{
    add(s_early, QStringLiteral("a"));
    add(s_early, QStringLiteral("b"));
    remove({QStringLiteral("a")});
    EXPECT_EQ(ownCategories(), QStringList{s_early});
    EXPECT_EQ(manager().GetMeasurement(s_early, QStringLiteral("a")), nullptr);
    EXPECT_EQ(manager().GetMeasurements(s_early).size(), 1);
    remove({QStringLiteral("b")});
    EXPECT_EQ(ownCategories(), QStringList());
    EXPECT_EQ(manager().FindMeasurement(QStringLiteral("b")), nullptr);
}

TEST_F(MeasurementManagerTest, AnswersTheSecondOfTwoEqualNamesWithNull)
{
    HostMeasurement* const early = add(s_early, s_name);
    add(s_early, QStringLiteral("kept"));
    EXPECT_EQ(remove({s_name, s_name}), listOf({early, nullptr, nullptr, nullptr}));
}

TEST_F(MeasurementManagerTest, AnswersWithNullsAlsoInACategoryThatTheRemovalEmpties)
{
    HostMeasurement* const early = add(s_early, s_name);
    EXPECT_EQ(remove({s_name, QStringLiteral("x"), s_name}),
              listOf({early, nullptr, nullptr, nullptr, nullptr, nullptr}));
    EXPECT_EQ(ownCategories(), QStringList());
}

TEST_F(MeasurementManagerTest, AnswersUnknownNamesWithNullsAndRemovesNothing)
{
    HostMeasurement* const level = add(s_early, s_name);
    EXPECT_EQ(remove({QStringLiteral("x"), QString()}), listOf({nullptr, nullptr, nullptr, nullptr}));
    EXPECT_EQ(manager().GetMeasurements(s_early), listOf({level}));
    EXPECT_EQ(manager().GetMeasurements(QStringLiteral("Math")).size(), 3);
}

TEST_F(MeasurementManagerTest, DoesNothingForARemovalWithoutNames)
{
    add(s_early, s_name);
    manager().GetMeasurements(s_late); // an empty category, which only a removal with a name would take
    EXPECT_TRUE(remove({}).isEmpty());
    EXPECT_EQ(ownCategories(), (QStringList{s_early, s_late}));
}

TEST_F(MeasurementManagerTest, DropsEmptyCategoriesInARemovalOfAnyName)
{
    manager().GetMeasurements(s_late);
    EXPECT_EQ(remove({QStringLiteral("x")}), listOf({nullptr, nullptr}));
    EXPECT_EQ(ownCategories(), QStringList());
}

TEST_F(MeasurementManagerTest, RemovesEveryOccurrenceOfOneObject)
{
    HostMeasurement* const level = add(s_early, s_name);
    manager().Register(level);
    EXPECT_EQ(remove({s_name}), listOf({level, nullptr}));
    EXPECT_EQ(ownCategories(), QStringList());
}

TEST_F(MeasurementManagerTest, HandsOneObjectOverForEachNameThatLedToIt)
{
    HostMeasurement* const level = add(s_early, s_name);
    level->name = QStringLiteral("alias");
    manager().Register(level);
    EXPECT_EQ(remove({s_name, QStringLiteral("alias")}), listOf({level, level, nullptr, nullptr}));
    EXPECT_EQ(manager().GetMeasurement(s_early, QStringLiteral("alias")), nullptr);
    EXPECT_EQ(ownCategories(), QStringList());
}

// The list holds what the look-up by name has lost sight of.
TEST_F(MeasurementManagerTest, KeepsAHiddenMeasurementAndItsCategoryInARemoval)
{
    HostMeasurement* const hidden = add(s_early, s_name);
    HostMeasurement* const found = add(s_early, s_name);
    EXPECT_EQ(remove({s_name}), listOf({found, nullptr}));
    EXPECT_EQ(manager().GetMeasurements(s_early), listOf({hidden}));
    EXPECT_EQ(manager().GetMeasurement(s_early, s_name), nullptr);
    EXPECT_EQ(manager().FindMeasurement(s_name), nullptr);

    EXPECT_EQ(remove({s_name}), listOf({nullptr, nullptr}));
    EXPECT_EQ(manager().GetMeasurements(s_early), listOf({hidden}));
    const Function function(s_name); // which looks through the list
    EXPECT_NE(function.GetMeasurement(), nullptr);
}

TEST_F(MeasurementManagerTest, StartsACategoryCleanThatARemovalHasEmptied)
{
    const QString alias = QStringLiteral("alias");
    HostMeasurement* const level = add(s_early, s_name);
    level->name = alias;
    manager().Register(level); // one object under two names
    EXPECT_EQ(remove({s_name}), listOf({level, nullptr}));
    ASSERT_EQ(ownCategories(), QStringList());
    EXPECT_EQ(manager().GetMeasurement(s_early, alias), level) << "its entry by name has stayed";
    EXPECT_EQ(manager().FindMeasurement(alias), nullptr) << "but no category leads there";

    HostMeasurement* const other = add(s_early, QStringLiteral("other"));
    EXPECT_EQ(manager().GetMeasurement(s_early, alias), nullptr);
    EXPECT_EQ(manager().GetMeasurement(s_early, QStringLiteral("other")), other);
    EXPECT_EQ(manager().GetMeasurements(s_early), listOf({other}));
}

TEST_F(MeasurementManagerTest, FindsNothingByWhatAnEmptiedCategoryHasLeftBehind)
{
    const QString alias = QStringLiteral("alias");
    HostMeasurement* const level = add(s_late, s_name);
    level->name = alias;
    manager().Register(level);
    remove({s_name});
    ASSERT_EQ(manager().GetMeasurement(s_late, alias), level);
    manager().GetMeasurements(
        QStringLiteral("Optical")); // a category without names, just before what is left
    EXPECT_EQ(manager().FindMeasurement(alias), nullptr);
    HostMeasurement* const other = add(QStringLiteral("Zoology"), alias);
    EXPECT_EQ(manager().FindMeasurement(alias), other);
}

TEST_F(MeasurementManagerTest, RegistersAgainWhatARemovalHandedOver)
{
    add(s_early, s_name);
    Measurement<Variable>* const back = remove({s_name}).first();
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(manager().Register(back), ER_SUCCESS);
    EXPECT_EQ(manager().GetMeasurements(s_early), listOf({back}));
    EXPECT_EQ(manager().FindMeasurement(s_name), back);
}

TEST_F(MeasurementManagerTest, RemovesABuiltInMeasurementWhenAHostAsks)
{
    const QString math = QStringLiteral("Math");
    const MeasurementList before = manager().GetMeasurements(math);
    ASSERT_EQ(before.size(), 3);
    EXPECT_EQ(remove({QStringLiteral("polynomial-2")}), listOf({before[1]}));
    EXPECT_EQ(manager().GetMeasurements(math), listOf({before[0], before[2]}));
    EXPECT_EQ(manager().FindMeasurement(QStringLiteral("polynomial-2")), nullptr);

    // As it was, for the tests that follow in this process.
    remove({QStringLiteral("polynomial-1"), QStringLiteral("polynomial-3")});
    for (Measurement<Variable>* measurement : before)
        manager().Register(measurement);
    EXPECT_EQ(manager().GetMeasurements(math), before);
}

/// Asks the manager for something each time that it is asked for its name.
class Returning : public HostMeasurement
{
public:
    Returning(const QString& newName, std::function<void()> reaction)
        : HostMeasurement(newName, s_early)
        , m_reaction(std::move(reaction))
    {
    }

    QString get_name() override
    {
        m_reaction();
        return name;
    }

private:
    std::function<void()> m_reaction;
};

TEST_F(MeasurementManagerTest, RegistersOneWhoseNameForgetsTheCategory)
{
    add(s_early, QStringLiteral("before"));
    auto* const returning = new Returning(s_name, [] { manager().RemoveCategory(s_early); });
    EXPECT_EQ(manager().Register(returning), ER_SUCCESS);
    EXPECT_EQ(manager().GetMeasurements(s_early), listOf({returning}));
    EXPECT_EQ(manager().GetMeasurement(s_early, s_name), returning);
    EXPECT_EQ(manager().FindMeasurement(s_name), returning);
}

TEST_F(MeasurementManagerTest, RegistersOneWhoseNameRegistersAnother)
{
    HostMeasurement* inner = nullptr;
    auto* const returning = new Returning(s_name, [&inner] {
        if (!inner)
            inner = add(s_early, QStringLiteral("inner"));
    });
    EXPECT_EQ(manager().Register(returning), ER_SUCCESS);
    EXPECT_EQ(manager().GetMeasurements(s_early), listOf({inner, returning}));
    EXPECT_EQ(manager().FindMeasurement(s_name), returning);
    EXPECT_EQ(manager().FindMeasurement(QStringLiteral("inner")), inner);
}

/// Tells of its end on stderr.
class Announcing : public HostMeasurement
{
public:
    using HostMeasurement::HostMeasurement;
    ~Announcing() override { std::fprintf(stderr, "[end of %s]", qPrintable(description)); }
};

Announcing* addAnnouncing(const QString& name, const QString& description)
{
    auto* made = new Announcing(name, s_early);
    made->description = description;
    Manager::Instance()->Register(made);
    return made;
}

void leaveTheProcess()
{
    [[maybe_unused]] static Announcing* const s_hidden = // nobody else holds it at the end, as designed
        addAnnouncing(s_name, QStringLiteral("hidden"));
    addAnnouncing(s_name, QStringLiteral("found"));
    addAnnouncing(QStringLiteral("second"), QStringLiteral("second"));
    static Announcing* const s_removed = addAnnouncing(QStringLiteral("removed"), QStringLiteral("removed"));
    QList<QString> names = {s_removed->name};
    Manager::Instance()->RemoveMeasurements(names);
    std::exit(0);
}

TEST(MeasurementManagerDeathTest, DestroysWhatIsFoundByNameAtTheEndOfTheProcess)
{
    using ::testing::AllOf;
    using ::testing::HasSubstr;
    using ::testing::Not;
    EXPECT_EXIT(leaveTheProcess(), ::testing::ExitedWithCode(0),
                AllOf(HasSubstr("[end of found]"), HasSubstr("[end of second]"),
                      Not(HasSubstr("[end of hidden]")), Not(HasSubstr("[end of removed]"))));
}

// Made so that their addresses descend while their places in the catalogue ascend.
void leaveTheProcessWithDescendingAddresses()
{
    std::vector<Announcing*> made;
    for (int i = 0; i < 5; ++i)
        made.push_back(new Announcing);
    std::sort(made.begin(), made.end(), std::greater<>());
    const char* const places[] = {"A-a", "A-b", "B-a", "B-b", "B-c"};
    for (std::size_t i = 0; i < made.size(); ++i) {
        const QString place = QString::fromLatin1(places[i]);
        made[i]->category = place.left(1);
        made[i]->name = place.mid(2);
        made[i]->description = place;
    }
    for (const std::size_t i : {3u, 0u, 4u, 2u, 1u})
        Manager::Instance()->Register(made[i]);
    std::exit(0);
}

TEST(MeasurementManagerDeathTest, DestroysByCategoryAndNameAtTheEndOfTheProcess)
{
    EXPECT_EXIT(leaveTheProcessWithDescendingAddresses(), ::testing::ExitedWithCode(0),
                ::testing::HasSubstr("[end of A-a][end of A-b][end of B-a][end of B-b][end of B-c]"));
}

} // namespace
} // namespace Orrery
