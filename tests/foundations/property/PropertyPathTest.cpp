#include "foundations/property/PropertyPath.h"

#include "tests/foundations/property/TreeNodes.h"
#include "tests/support/RandomSeed.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Orrery {
namespace {

using namespace TreeTest;
using TestSupport::randomBelow;
using TestSupport::RandomSeed;

QString utf8(const char* text)
{
    return QString::fromUtf8(text);
}

struct NameCase
{
    const char* name;
    const char* step;
};

class EncodedName : public ::testing::TestWithParam<NameCase>
{
};

TEST_P(EncodedName, IsEncodedWhereItMustBeAndComesBack)
{
    EXPECT_EQ(Property::EncodeName(utf8(GetParam().name)), utf8(GetParam().step));
    EXPECT_EQ(Property::DecodeName(utf8(GetParam().step)), utf8(GetParam().name));
}

INSTANTIATE_TEST_SUITE_P(Names, EncodedName,
                         ::testing::Values(NameCase{"run0", "run0"}, NameCase{"", "%"}, NameCase{"/", "%2F"},
                                           NameCase{"a/b", "a%2Fb"}, NameCase{"%", "%25"},
                                           NameCase{"100%", "100%25"}, NameCase{"%2F", "%252F"},
                                           NameCase{".", "%2E"}, NameCase{"..", "%2E%2E"},
                                           NameCase{"...", "..."}, NameCase{".a", ".a"}, NameCase{"a.", "a."},
                                           NameCase{" ", " "}, NameCase{"a b\n", "a b\n"},
                                           NameCase{"\xce\xa9", "\xce\xa9"},
                                           NameCase{"\xf0\x9f\x98\x80", "\xf0\x9f\x98\x80"}));

TEST(DecodeName, TakesAnyText)
{
    EXPECT_EQ(Property::DecodeName(utf8("%2f")), utf8("/")); // hex digits of either case
    EXPECT_EQ(Property::DecodeName(utf8("%41")), utf8("A"));
    EXPECT_EQ(Property::DecodeName(utf8("%zz")), utf8("%zz"));
    EXPECT_EQ(Property::DecodeName(utf8("%2")), utf8("%2"));
    EXPECT_EQ(Property::DecodeName(utf8("a%")), utf8("a%"));
    EXPECT_EQ(Property::DecodeName(utf8("%%")), utf8("%%"));
    EXPECT_EQ(Property::DecodeName(utf8("%252F")), utf8("%2F")); // once only
    EXPECT_EQ(Property::DecodeName(utf8("%00")), QString(1, QChar(0)));
}

TEST(EncodeName, LeavesNoSeparatorAndNoStepOfItsOwn)
{
    for (const QString& name : awkwardNames()) {
        const QString step = Property::EncodeName(name);
        EXPECT_FALSE(step.isEmpty());
        EXPECT_FALSE(step.contains(QLatin1Char('/')));
        EXPECT_NE(step, utf8("."));
        EXPECT_NE(step, utf8(".."));
        EXPECT_EQ(Property::DecodeName(step), name);
    }
}

struct RelativeCase
{
    const char* from;
    const char* to;
    const char* path;
};

class RelativePath : public ::testing::TestWithParam<RelativeCase>
{
};

TEST_P(RelativePath, LeadsFromNodeToNode)
{
    const RelativeCase& c = GetParam();
    EXPECT_EQ(Property::GetRelativePath(utf8(c.from), utf8(c.to)), utf8(c.path));
    EXPECT_EQ(Property::ResolvePath(utf8(c.from), utf8(c.path)), utf8(c.to));
}

INSTANTIATE_TEST_SUITE_P(
    Pairs, RelativePath,
    ::testing::Values(RelativeCase{"/", "/", "."}, RelativeCase{"/a", "/a", "."},
                      RelativeCase{"/a/b", "/a/b", "."}, RelativeCase{"/", "/a", "a"},
                      RelativeCase{"/", "/a/b", "a/b"}, RelativeCase{"/a", "/", ".."},
                      RelativeCase{"/a/b", "/", "../.."}, RelativeCase{"/a/b", "/a", ".."},
                      RelativeCase{"/a", "/a/b", "b"}, RelativeCase{"/a/b", "/a/c", "../c"},
                      RelativeCase{"/a/b", "/c", "../../c"}, RelativeCase{"/a/b", "/c/d", "../../c/d"},
                      RelativeCase{"/ab", "/a", "../a"}, RelativeCase{"/a", "/ab", "../ab"},
                      RelativeCase{"/a/x", "/A/x", "../../A/x"}, RelativeCase{"/%", "/%2E", "../%2E"},
                      RelativeCase{"/a%2Fb", "/a/b", "../a/b"}));

TEST(ResolvePath, TakesFullPathsFromAnywhere)
{
    EXPECT_EQ(Property::ResolvePath(utf8("/a/b"), utf8("/c")), utf8("/c"));
    EXPECT_EQ(Property::ResolvePath(utf8("/a/b"), utf8("/")), utf8("/"));
}

TEST(ResolvePath, IsEmptyForAnEmptyPathAndOneThatLeadsOutOfTheTree)
{
    EXPECT_EQ(Property::ResolvePath(utf8("/a"), QString()), QString());
    EXPECT_EQ(Property::ResolvePath(utf8("/a"), utf8("../..")), QString());
    EXPECT_EQ(Property::ResolvePath(utf8("/"), utf8("..")), QString());
    EXPECT_EQ(Property::ResolvePath(utf8("/a"), utf8("../../a")), QString());
}

TEST(ResolvePath, PassesOverEmptySteps)
{
    EXPECT_EQ(Property::ResolvePath(utf8("/a"), utf8("b//c/")), utf8("/a/b/c"));
    EXPECT_EQ(Property::ResolvePath(utf8("//a/"), utf8("./b/./.")), utf8("/a/b"));
}

TEST(SplitPath, GivesTheNamesFromTheRootsChildDownward)
{
    EXPECT_EQ(Property::SplitPath(utf8("/")), QStringList());
    EXPECT_EQ(Property::SplitPath(utf8("/a/b%2Fc/%/%2E%2E")),
              (QStringList{utf8("a"), utf8("b/c"), utf8(""), utf8("..")}));
    EXPECT_EQ(Property::SplitPath(utf8("//a/")), QStringList{utf8("a")});
    EXPECT_EQ(Property::SplitPath(utf8("/a/./b/../c")), (QStringList{utf8("a"), utf8("c")}));
    EXPECT_EQ(Property::SplitPath(utf8("/../a")), QStringList{utf8("a")});
}

TEST(BuildPath, PutsASlashBeforeEachName)
{
    EXPECT_EQ(Property::BuildPath({}), utf8("/"));
    EXPECT_EQ(Property::BuildPath({utf8("a")}), utf8("/a"));
    EXPECT_EQ(Property::BuildPath({utf8(""), utf8(".."), utf8("a/b")}), utf8("/%/%2E%2E/a%2Fb"));
}

/// Names of a few characters out of those that matter to a path, and any other UTF-16 unit now and then.
QString randomName(std::mt19937_64& random)
{
    static const QString s_units = QStringLiteral("ab/%.2EeFf0 ") + QChar(0) + QChar(0xD800) + QChar(0xDC00);
    QString name;
    const std::uint64_t length = randomBelow(random, 5);
    for (std::uint64_t i = 0; i < length; ++i) {
        const std::uint64_t pick = randomBelow(random, static_cast<std::uint64_t>(s_units.size()) + 1);
        name += pick < static_cast<std::uint64_t>(s_units.size())
                    ? s_units.at(static_cast<int>(pick))
                    : QChar(static_cast<ushort>(randomBelow(random, 0x10000)));
    }
    return name;
}

class RandomPaths : public ::testing::TestWithParam<std::uint64_t>
{
};

TEST_P(RandomPaths, SplitIntoTheNamesThatTheyWereBuiltOf)
{
    const RandomSeed seed{GetParam()};
    SCOPED_TRACE(seed);
    std::mt19937_64 random = seed.engine();
    for (int round = 0; round < 2000; ++round) {
        QStringList names;
        for (std::uint64_t i = randomBelow(random, 6); i > 0; --i)
            names.append(randomName(random));
        ASSERT_EQ(Property::SplitPath(Property::BuildPath(names)), names) << round;
    }
}

TEST_P(RandomPaths, OfOneTreeLeadFromEachNodeToEachOther)
{
    const RandomSeed seed{GetParam()};
    SCOPED_TRACE(seed);
    std::mt19937_64 random = seed.engine();
    PropertyObject root;
    std::vector<PropertyObject*> nodes{&root};
    while (nodes.size() < 60) {
        PropertyObject* parent = nodes[randomBelow(random, nodes.size())];
        const QString name = randomName(random);
        if (!parent->HasProperty(name))
            nodes.push_back(addFolder(*parent, name));
    }
    for (PropertyObject* from : nodes) {
        EXPECT_EQ(Property::FindProperty(from, from->GetFullPath()), from);
        for (PropertyObject* to : nodes) {
            const QString path = Property::GetRelativePath(from->GetFullPath(), to->GetFullPath());
            ASSERT_EQ(Property::FindProperty(from, path), to) << path.toStdString();
            ASSERT_EQ(Property::ResolvePath(from->GetFullPath(), path), to->GetFullPath())
                << path.toStdString();
            ASSERT_EQ(Property::FindProperty(from, to->GetFullPath()), to);
        }
    }
}

TEST_P(RandomPaths, OfAnyTextAreAnsweredWithoutHarm)
{
    const RandomSeed seed{GetParam()};
    SCOPED_TRACE(seed);
    std::mt19937_64 random = seed.engine();
    PropertyObject root;
    HostFolder* child = addFolder(root, QStringLiteral("a"));
    addFolder(*child, QStringLiteral("b"));
    for (int round = 0; round < 2000; ++round) {
        const QString path = randomName(random) + randomName(random) + randomName(random);
        const AbstractProperty* found = Property::FindProperty(child, path);
        const QString resolved = Property::ResolvePath(child->GetFullPath(), path);
        if (found) {
            ASSERT_EQ(found->GetFullPath(), resolved) << path.toStdString();
        } else if (!resolved.isEmpty() && !path.contains(QLatin1String(".."))) {
            // A path that climbs may pass through what doesn't exist and be plain text to ResolvePath.
            ASSERT_EQ(Property::FindProperty(&root, resolved), nullptr) << path.toStdString();
        }
        const QStringList names = Property::SplitPath(path);
        ASSERT_EQ(Property::SplitPath(Property::BuildPath(names)), names);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomPaths, ::testing::Values(1, 2, 3));

TEST(FullPath, ListsEncodedNames)
{
    HostFolder top(QStringLiteral("the root's name is not in it"));
    EXPECT_EQ(top.GetFullPath(), utf8("/"));
    HostFolder* first = addFolder(top, QStringLiteral("a/b"));
    EXPECT_EQ(first->GetFullPath(), utf8("/a%2Fb"));
    HostFolder* second = addFolder(*first, QString());
    EXPECT_EQ(second->GetFullPath(), utf8("/a%2Fb/%"));
    EXPECT_EQ(addFolder(*second, QStringLiteral(".."))->GetFullPath(), utf8("/a%2Fb/%/%2E%2E"));
    EXPECT_EQ(addFolder(*second, QStringLiteral("50%"))->GetFullPath(), utf8("/a%2Fb/%/50%25"));
}

TEST(FindProperty, FindsNodesOfEveryName)
{
    PropertyObject root;
    for (const QString& name : awkwardNames()) {
        const SimpleProperty* leaf = addValue(*addFolder(root, name), name);
        EXPECT_EQ(Property::FindProperty(&root, leaf->GetFullPath()), leaf);
        EXPECT_EQ(Property::SplitPath(leaf->GetFullPath()), (QStringList{name, name}));
    }
}

TEST(FindProperty, IsNullWithoutANode)
{
    PropertyObject root;
    HostFolder* child = addFolder(root, QStringLiteral("a"));
    const SimpleProperty* leaf = addValue(*child, QStringLiteral("x"));
    addReference(root, QStringLiteral("r"), *child);
    EXPECT_EQ(Property::FindProperty(nullptr, utf8("/")), nullptr);
    EXPECT_EQ(Property::FindProperty(child, QString()), nullptr);
    EXPECT_EQ(Property::FindProperty(child, utf8("b")), nullptr);
    EXPECT_EQ(Property::FindProperty(child, utf8("../..")), nullptr);
    EXPECT_EQ(Property::FindProperty(child, utf8("../../a")), nullptr);
    EXPECT_EQ(Property::FindProperty(leaf, utf8("y")), nullptr); // below a leaf
    EXPECT_EQ(Property::FindProperty(&root, utf8("/a/x/y")), nullptr);
    EXPECT_EQ(Property::FindProperty(&root, utf8("r/x")), nullptr); // a reference isn't followed
    EXPECT_EQ(Property::FindProperty(leaf, utf8("..")), child);
    EXPECT_EQ(Property::FindProperty(leaf, utf8(".")), leaf);
}

} // namespace
} // namespace Orrery
