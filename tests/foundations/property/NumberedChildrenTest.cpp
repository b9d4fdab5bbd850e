#include "tests/foundations/property/TreeNodes.h"
#include "tests/support/RandomSeed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <random>
#include <utility>

namespace Orrery {
namespace {

using namespace TreeTest;

QStringList numbers(int first, int last)
{
    QStringList names;
    for (int i = first; i <= last; ++i)
        names.append(QString::number(i));
    return names;
}

const QString s_largest = QStringLiteral("9223372036854775807");
const QString s_pastLargest = QStringLiteral("9223372036854775808");

TEST(NumberedChildren, AreListedByNumberNotByName)
{
    PropertyObject folder;
    QStringList names = numbers(0, 11);
    std::reverse(names.begin(), names.end());
    for (const QString& name : names)
        addFolder(folder, name);
    EXPECT_EQ(numberedNames(folder), numbers(0, 11));
    EXPECT_EQ(numberedNames(folder).mid(10), (QStringList{QStringLiteral("10"), QStringLiteral("11")}));
    EXPECT_EQ(childNames(folder).at(2), QStringLiteral("10")); // map order is another one
}

TEST(NumberedChildren, StandAmongOthersThatDoNotCount)
{
    PropertyObject folder;
    for (const char* name : {"VariableStrategy", "Data", "1", "0", "1a", "a1", " 2", "2 ", "+3", "-4", "0x5",
                             "1.0", "1e3", "", "٣"})
        addFolder(folder, QString::fromUtf8(name));
    addFolder(folder, QString::fromUtf8("\xef\xbc\x97"));   // a full-width seven
    addFolder(folder, QStringLiteral("1") + QChar(0));      // a digit and more
    addFolder(folder, QStringLiteral("5") + QChar(0x0301)); // a digit with an accent
    addFolder(folder, QStringLiteral("1,000"));
    EXPECT_EQ(numberedNames(folder), numbers(0, 1));
}

TEST(NumberedChildren, OfEqualNumbersComeInMapOrder)
{
    PropertyObject folder;
    for (const char* name : {"7", "007", "6", "07", "8", "0", "00"})
        addFolder(folder, QLatin1String(name));
    EXPECT_EQ(
        numberedNames(folder),
        (QStringList{QStringLiteral("0"), QStringLiteral("00"), QStringLiteral("6"), QStringLiteral("007"),
                     QStringLiteral("07"), QStringLiteral("7"), QStringLiteral("8")}));
    ASSERT_EQ(folder.DeleteProperty(QStringLiteral("07")), ER_SUCCESS);
    ASSERT_EQ(folder.DeleteProperty(QStringLiteral("0")), ER_SUCCESS);
    EXPECT_EQ(numberedNames(folder),
              (QStringList{QStringLiteral("00"), QStringLiteral("6"), QStringLiteral("007"),
                           QStringLiteral("7"), QStringLiteral("8")}));
}

TEST(NumberedChildren, MustFitASigned64BitNumber)
{
    PropertyObject folder;
    const QString manyZeros = QString(100, QLatin1Char('0'));
    addFolder(folder, s_largest);
    addFolder(folder, s_pastLargest);
    addFolder(folder, QStringLiteral("18446744073709551616")); // 2^64
    addFolder(folder, QStringLiteral("18446744073709551617"));
    addFolder(folder, QString(40, QLatin1Char('9')));
    addFolder(folder, manyZeros + QStringLiteral("2"));
    addFolder(folder, manyZeros);
    EXPECT_EQ(numberedNames(folder), (QStringList{manyZeros, manyZeros + QStringLiteral("2"), s_largest}));
}

TEST(NumberedChildren, OfAPrefix)
{
    PropertyObject folder;
    for (const char* name :
         {"run10", "run9", "run", "run1a", "Run3", "run-1", "run 2", "10", "9", "running5", "run009"})
        addFolder(folder, QLatin1String(name));
    EXPECT_EQ(numberedNames(folder, QStringLiteral("run")),
              (QStringList{QStringLiteral("run009"), QStringLiteral("run9"), QStringLiteral("run10")}));
    EXPECT_EQ(numberedNames(folder, QStringLiteral("running")), QStringList{QStringLiteral("running5")});
    EXPECT_EQ(numberedNames(folder), (QStringList{QStringLiteral("9"), QStringLiteral("10")}));
    EXPECT_TRUE(numberedNames(folder, QStringLiteral("none")).isEmpty());
}

TEST(NumberedChildren, OfAPrefixThatEndsInADigit)
{
    PropertyObject folder;
    for (const char* name : {"1", "10", "12", "102", "111", "2", "1x"})
        addFolder(folder, QLatin1String(name));
    // What counts is the number after the prefix: 0, 02, 2, 11.
    EXPECT_EQ(numberedNames(folder, QStringLiteral("1")),
              (QStringList{QStringLiteral("10"), QStringLiteral("102"), QStringLiteral("12"),
                           QStringLiteral("111")}));
}

TEST(NumberedChildren, OfAPrefixAreFoundAmongAwkwardNames)
{
    for (const QString& prefix : awkwardNames()) {
        PropertyObject folder;
        addFolder(folder, prefix + QStringLiteral("10"));
        addFolder(folder, prefix + QStringLiteral("9"));
        addFolder(folder, prefix + QStringLiteral("x"));
        EXPECT_EQ(numberedNames(folder, prefix),
                  (QStringList{prefix + QStringLiteral("9"), prefix + QStringLiteral("10")}))
            << prefix.toStdString();
    }
}

TEST(NumberedChildren, FollowRemovalRenamingAndReplacement)
{
    PropertyObject folder;
    for (const QString& name : numbers(0, 5))
        addFolder(folder, name);
    ASSERT_EQ(folder.DeleteProperty(QStringLiteral("5")), ER_SUCCESS);
    EXPECT_EQ(numberedNames(folder), numbers(0, 4));
    delete folder.TakeProperty(QStringLiteral("2"));
    EXPECT_EQ(numberedNames(folder), (QStringList{QStringLiteral("0"), QStringLiteral("1"),
                                                  QStringLiteral("3"), QStringLiteral("4")}));
    ASSERT_EQ(folder.GetPropertyPtr(QStringLiteral("0"))->SetName(QStringLiteral("20")), ER_SUCCESS);
    ASSERT_EQ(folder.GetPropertyPtr(QStringLiteral("3"))->SetName(QStringLiteral("three")), ER_SUCCESS);
    EXPECT_EQ(numberedNames(folder),
              (QStringList{QStringLiteral("1"), QStringLiteral("4"), QStringLiteral("20")}));
    ASSERT_EQ(folder.GetPropertyPtr(QStringLiteral("three"))->SetName(QStringLiteral("2")), ER_SUCCESS);
    ASSERT_EQ(folder.InsertOrReplaceProperty(new SimpleProperty(QStringLiteral("4"))), ER_SUCCESS);
    QList<AbstractProperty*> list;
    folder.GetPrefixedChildrenProperties(&list, QString());
    EXPECT_EQ(namesOf(list), (QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("4"),
                                          QStringLiteral("20")}));
    EXPECT_TRUE(list.at(2)->IsSimpleProperty());
}

TEST(NumberedChildren, ComeAlongInCopies)
{
    PropertyObject folder;
    for (const QString& name : numbers(0, 11))
        addFolder(folder, name);
    PropertyObject copy;
    addFolder(copy, QStringLiteral("77"));
    copy = folder;
    EXPECT_EQ(numberedNames(copy), numbers(0, 11));
    QList<AbstractProperty*> list;
    copy.GetPrefixedChildrenProperties(&list, QString());
    for (const AbstractProperty* child : list)
        EXPECT_EQ(child->GetParent(), &copy);
}

/// What a random folder should list: by number, then by name.
using Picture = std::map<std::pair<std::int64_t, QString>, AbstractProperty*>;

void expectListed(const PropertyObject& folder, const Picture& picture)
{
    QList<AbstractProperty*> expected;
    for (const auto& entry : picture)
        expected.append(entry.second);
    QList<AbstractProperty*> list;
    folder.GetPrefixedChildrenProperties(&list, QString());
    ASSERT_EQ(list, expected);
    ASSERT_EQ(folder.lastNumberedChild(), expected.isEmpty() ? nullptr : expected.last());
    QString next;
    ASSERT_EQ(folder.nextNumberedChildName(&next), ER_SUCCESS);
    ASSERT_EQ(next, QString::number(picture.empty() ? 0 : picture.rbegin()->first.first + 1));
}

class RandomNumberedChildren : public ::testing::TestWithParam<std::uint64_t>
{
};

TEST_P(RandomNumberedChildren, AreListedAsANaivePictureSays)
{
    const TestSupport::RandomSeed seed{GetParam()};
    SCOPED_TRACE(seed);
    std::mt19937_64 random = seed.engine();
    const auto below = [&random](std::uint64_t bound) { return TestSupport::randomBelow(random, bound); };
    PropertyObject folder;
    Picture picture;
    std::int64_t range = 200;
    for (int step = 0; step < 6000; ++step) {
        if (step % 1000 == 0)
            range = range * 3 % 1000 + 10; // dense and sparse, growing and shrinking
        const auto number = static_cast<std::int64_t>(below(static_cast<std::uint64_t>(range)));
        const QString name = QString(static_cast<int>(below(3)), QLatin1Char('0')) + QString::number(number);
        const std::pair<std::int64_t, QString> key{number, name};
        const auto present = picture.find(key);
        const std::uint64_t choice = below(step / 1000 % 2 == 0 ? 5 : 8);
        if (choice < 3 && present == picture.end()) {
            picture[key] = addValue(folder, name);
        } else if (choice == 3 && !picture.empty()) {
            AbstractProperty* const moved = picture.begin()->second;
            if (moved->SetName(name) >= 0) {
                picture.erase(picture.begin());
                picture[key] = moved;
            }
        } else if (choice == 4) { // the usual road: behind the last one
            QString next;
            ASSERT_EQ(folder.nextNumberedChildName(&next), ER_SUCCESS);
            picture[{next.toLongLong(), next}] = addValue(folder, next);
        } else if (present != picture.end()) {
            ASSERT_EQ(folder.DeleteProperty(name), ER_SUCCESS);
            picture.erase(present);
        } else if (!picture.empty()) {
            const auto last = std::prev(picture.end());
            delete last->second;
            picture.erase(last);
        }
        expectListed(folder, picture);
        if (HasFatalFailure())
            FAIL() << "after step " << step;
    }
    while (!picture.empty()) { // from the front, so that nothing but gaps is left behind
        ASSERT_EQ(folder.DeleteProperty(picture.begin()->first.second), ER_SUCCESS);
        picture.erase(picture.begin());
        expectListed(folder, picture);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomNumberedChildren, ::testing::Values(1, 2, 3, 4));

TEST(NumberedChildren, ComeInAnyOrderInGreatNumber)
{
    PropertyObject descending;
    for (int i = 2000; i > 0; --i)
        addValue(descending, QString::number(i - 1));
    EXPECT_EQ(numberedNames(descending), numbers(0, 1999));
    PropertyObject interleaved;
    for (int i = 0; i < 2000; i += 2)
        addValue(interleaved, QString::number(i));
    for (int i = 1; i < 2000; i += 2)
        addValue(interleaved, QString::number(i));
    EXPECT_EQ(numberedNames(interleaved), numbers(0, 1999));
    for (int i = 0; i < 1900; ++i)
        ASSERT_EQ(interleaved.DeleteProperty(QString::number(i)), ER_SUCCESS);
    EXPECT_EQ(numberedNames(interleaved), numbers(1900, 1999));
    EXPECT_EQ(interleaved.lastNumberedChild()->GetName(), QStringLiteral("1999"));
}

QString nextName(const PropertyObject& folder)
{
    QString name;
    EXPECT_EQ(folder.nextNumberedChildName(&name), ER_SUCCESS);
    return name;
}

TEST(LastNumberedChild, IsNullWithoutNumberedChildren)
{
    PropertyObject folder;
    EXPECT_EQ(folder.lastNumberedChild(), nullptr);
    EXPECT_EQ(nextName(folder), QStringLiteral("0"));
    addFolder(folder, QStringLiteral("Data"));
    addFolder(folder, s_pastLargest);
    EXPECT_EQ(folder.lastNumberedChild(), nullptr);
    EXPECT_EQ(nextName(folder), QStringLiteral("0"));
}

TEST(LastNumberedChild, IsTheOneWithTheLargestNumber)
{
    PropertyObject folder;
    const HostFolder* ten = addFolder(folder, QStringLiteral("10"));
    addFolder(folder, QStringLiteral("9"));
    EXPECT_EQ(folder.lastNumberedChild(), ten);
    EXPECT_EQ(nextName(folder), QStringLiteral("11"));
    const HostFolder* seventeen = addFolder(folder, QStringLiteral("0017"));
    EXPECT_EQ(folder.lastNumberedChild(), seventeen);
    EXPECT_EQ(nextName(folder), QStringLiteral("18"));
    const HostFolder* same = addFolder(folder, QStringLiteral("17"));
    EXPECT_EQ(folder.lastNumberedChild(), same); // map order among equal numbers
}

TEST(LastNumberedChild, FollowsDeletionAndRenaming)
{
    PropertyObject folder;
    for (const QString& name : numbers(0, 3))
        addFolder(folder, name);
    ASSERT_EQ(folder.DeleteProperty(QStringLiteral("3")), ER_SUCCESS);
    EXPECT_EQ(folder.lastNumberedChild(), folder.GetPropertyPtr(QStringLiteral("2")));
    EXPECT_EQ(nextName(folder), QStringLiteral("3"));
    ASSERT_EQ(folder.GetPropertyPtr(QStringLiteral("0"))->SetName(QStringLiteral("8")), ER_SUCCESS);
    EXPECT_EQ(folder.lastNumberedChild()->GetName(), QStringLiteral("8"));
    delete folder.lastNumberedChild();
    EXPECT_EQ(folder.lastNumberedChild()->GetName(), QStringLiteral("2"));
    ASSERT_EQ(folder.GetPropertyPtr(QStringLiteral("2"))->SetName(QStringLiteral("two")), ER_SUCCESS);
    EXPECT_EQ(folder.lastNumberedChild()->GetName(), QStringLiteral("1"));
    ASSERT_EQ(folder.DeleteProperty(QStringLiteral("1")), ER_SUCCESS);
    EXPECT_EQ(folder.lastNumberedChild(), nullptr);
    EXPECT_EQ(nextName(folder), QStringLiteral("0"));
}

TEST(LastNumberedChild, EndsAtTheLargestNumber)
{
    PropertyObject folder;
    HostFolder* last = addFolder(folder, QStringLiteral("9223372036854775806"));
    EXPECT_EQ(nextName(folder), s_largest);
    ASSERT_EQ(last->SetName(s_largest), ER_SUCCESS);
    QString name = QStringLiteral("untouched");
    EXPECT_EQ(folder.nextNumberedChildName(&name), ER_FAILED);
    EXPECT_EQ(name, QStringLiteral("untouched"));
    EXPECT_EQ(folder.lastNumberedChild(), last);
    EXPECT_EQ(folder.nextNumberedChildName(nullptr), ER_INVALID_ARGUMENT);
    ASSERT_EQ(folder.DeleteProperty(s_largest), ER_SUCCESS);
    EXPECT_EQ(nextName(folder), QStringLiteral("0"));
}

TEST(NumberedChildren, AreOfAnyKind)
{
    PropertyObject folder;
    const HostFolder* target = addFolder(folder, QStringLiteral("0"));
    addValue(folder, QStringLiteral("1"));
    addReference(folder, QStringLiteral("2"), *target);
    EXPECT_EQ(numberedNames(folder), numbers(0, 2));
}

} // namespace
} // namespace Orrery
