#include "tests/foundations/property/TreeNodes.h"

#include <gtest/gtest.h>

#include <pthread.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace Orrery {
namespace {

using namespace TreeTest;

constexpr int s_most = 1000;

/// A chain of `depth` folders, the root included; its ends.
struct Chain
{
    std::unique_ptr<HostFolder> top;
    HostFolder* bottom;
};

Chain makeChain(int depth, LifeCount* life = nullptr)
{
    // From the bottom upward, as a loader might, so that each insertion has to know the depth of a subtree.
    Chain chain{std::make_unique<HostFolder>(QStringLiteral("d"), life), nullptr};
    chain.bottom = chain.top.get();
    for (int i = 1; i < depth; ++i) {
        auto above = std::make_unique<HostFolder>(QStringLiteral("d"), life);
        EXPECT_EQ(above->InsertProperty(chain.top.get()), ER_SUCCESS) << i;
        chain.top.release();
        chain.top = std::move(above);
    }
    return chain;
}

TEST(Depth, OfTheMostFoldersWorks)
{
    EXPECT_EQ(PropertyObject::MaxDepth, s_most);
    auto top = std::make_unique<HostFolder>(QStringLiteral("top"));
    HostFolder* bottom = top.get();
    for (int i = 1; i < s_most; ++i)
        bottom = addFolder(*bottom, QStringLiteral("d"));
    ASSERT_NE(bottom, nullptr);
    const SimpleProperty* leaf = addValue(*bottom, QStringLiteral("x"), 2.0); // a leaf is no folder
    ASSERT_NE(leaf, nullptr);
    const PropertyReference* reference = addReference(*bottom, QStringLiteral("r"), *top);
    ASSERT_NE(reference, nullptr);
    EXPECT_EQ(reference->Resolve(), top.get());
    EXPECT_EQ(leaf->GetFullPath().count(QLatin1Char('/')), s_most);
    EXPECT_EQ(Property::FindProperty(top.get(), leaf->GetFullPath()), leaf);
    EXPECT_EQ(leaf->GetRootProperty(), top.get());
}

TEST(Depth, BeyondTheMostFoldersIsRefused)
{
    LifeCount life;
    const Chain chain = makeChain(s_most, &life);
    const auto extra = std::make_unique<HostFolder>(QStringLiteral("extra"), &life);
    EXPECT_EQ(chain.bottom->InsertProperty(extra.get()), ER_FAILED);
    EXPECT_EQ(chain.bottom->InsertOrReplaceProperty(extra.get()), ER_FAILED);
    EXPECT_EQ(extra->GetParent(), nullptr);
    EXPECT_EQ(chain.bottom->GetPropertyCount(), 0);
    EXPECT_EQ(extra->InsertProperty(chain.top.get()), ER_FAILED); // nor by one more above
    EXPECT_EQ(chain.top->GetParent(), nullptr);
    EXPECT_EQ(life.destroyed, 0);
}

TEST(Depth, OfAnInsertedSubtreeCountsWhole)
{
    Chain upper = makeChain(600);
    Chain tooDeep = makeChain(401);
    EXPECT_EQ(upper.bottom->InsertProperty(tooDeep.top.get()), ER_FAILED);
    EXPECT_EQ(upper.bottom->GetPropertyCount(), 0);
    Chain fits = makeChain(400);
    ASSERT_EQ(upper.bottom->InsertProperty(fits.top.get()), ER_SUCCESS);
    fits.top.release();
    EXPECT_EQ(fits.bottom->InsertProperty(tooDeep.top.get()), ER_FAILED);
}

TEST(Depth, OfTheDeepestBranchCounts)
{
    HostFolder subtree(QStringLiteral("subtree"));
    for (int i = 0; i < 50; ++i)
        addFolder(subtree, QString::number(i));
    Chain branch = makeChain(500);
    ASSERT_EQ(subtree.GetPtr<HostFolder>(QStringLiteral("25"))->InsertProperty(branch.top.get()), ER_SUCCESS);
    branch.top.release();
    Chain upper = makeChain(499); // with subtree and "25": 499 + 2 + 500
    EXPECT_EQ(upper.bottom->InsertProperty(&subtree), ER_FAILED);
    EXPECT_EQ(subtree.GetParent(), nullptr);
}

TEST(Depth, AFailedReplacementKeepsTheFormerChild)
{
    LifeCount life;
    Chain chain = makeChain(s_most - 1);
    const HostFolder* former = addFolder(*chain.bottom, QStringLiteral("d"), &life);
    Chain two = makeChain(2, &life);
    EXPECT_EQ(chain.bottom->InsertOrReplaceProperty(two.top.get()), ER_FAILED);
    EXPECT_EQ(chain.bottom->GetPropertyPtr(QStringLiteral("d")), former);
    EXPECT_EQ(life.destroyed, 0);
}

TEST(Depth, ShrinksWhenTheDeepPartIsRemoved)
{
    Chain chain = makeChain(s_most);
    const std::unique_ptr<AbstractProperty> taken(chain.top->TakeProperty(QStringLiteral("d")));
    HostFolder above(QStringLiteral("above"));
    ASSERT_EQ(above.InsertProperty(chain.top.get()), ER_SUCCESS);
    HostFolder* child = chain.top.release();
    EXPECT_EQ(child->InsertProperty(taken.get()), ER_FAILED); // 1001 now
    EXPECT_NE(addFolder(*child, QStringLiteral("d")), nullptr);
}

TEST(Depth, BeyondTheMostFoldersStopsAnAssignment)
{
    LifeCount life;
    Chain target = makeChain(s_most - 1);
    addFolder(*target.bottom, QStringLiteral("kept"), &life);
    const Chain source = makeChain(3);
    try {
        target.bottom->PropertyObject::operator=(*source.top);
        ADD_FAILURE() << "the assignment went through";
    } catch (const OrreryException& exception) {
        EXPECT_EQ(exception.GetResult(), ER_FAILED);
    }
    EXPECT_EQ(childNames(*target.bottom), QStringList{QStringLiteral("kept")});
    EXPECT_EQ(life.destroyed, 0);
    const Chain fits = makeChain(2);
    target.bottom->PropertyObject::operator=(*fits.top);
    EXPECT_EQ(childNames(*target.bottom), QStringList{QStringLiteral("d")});
}

TEST(Depth, OfSelfAssignmentsFromAboveEndsWithAnError)
{
    HostFolder top(QStringLiteral("top"));
    HostFolder* child = addFolder(top, QStringLiteral("d"));
    // Each round hangs all that is there below the deepest folder's place: the depth grows until it may not.
    bool stopped = false;
    for (int round = 0; round < 20 && !stopped; ++round) {
        try {
            HostFolder* deepest = child;
            while (auto* below = deepest->GetPtr<HostFolder>(QStringLiteral("d")))
                deepest = below;
            deepest->PropertyObject::operator=(top);
        } catch (const OrreryException&) {
            stopped = true;
        }
    }
    EXPECT_TRUE(stopped);
}

// The frames of a build with sanitizers, or without optimisation, are several times as large.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t s_stackSize = std::size_t{8} << 20;
#elif defined(__OPTIMIZE__)
constexpr std::size_t s_stackSize = std::size_t{256} << 10;
#else
constexpr std::size_t s_stackSize = std::size_t{1} << 20;
#endif

void runOnSmallStack(const std::function<void()>& work)
{
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, s_stackSize), 0);
    pthread_t thread;
    const auto enter = [](void* argument) -> void* {
        (*static_cast<const std::function<void()>*>(argument))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, enter, const_cast<std::function<void()>*>(&work)), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attributes);
}

TEST(Depth, OfTheMostFoldersFitsASmallStack)
{
    LifeCount life;
    runOnSmallStack([&life] {
        Chain chain = makeChain(s_most - 1, &life);
        addValue(*chain.bottom, QStringLiteral("x"));
        const std::unique_ptr<AbstractProperty> clone(chain.top->Clone());
        EXPECT_EQ(life.alive(), 2 * (s_most - 1));
        HostFolder above(QStringLiteral("above"), &life);
        ASSERT_EQ(above.InsertProperty(chain.top.get()), ER_SUCCESS);
        HostFolder* moved = chain.top.release();
        chain.bottom->pathChanges = 0;
        ASSERT_EQ(moved->SetName(QStringLiteral("renamed")), ER_SUCCESS);
        EXPECT_EQ(chain.bottom->pathChanges, 1);
        moved->PropertyObject::operator=(dynamic_cast<const PropertyObject&>(*clone));
        const std::unique_ptr<AbstractProperty> taken(above.TakeProperty(QStringLiteral("renamed")));
        EXPECT_EQ(life.alive(), 2 * (s_most - 1) + 1);
    });
    EXPECT_EQ(life.alive(), 0);
}

} // namespace
} // namespace Orrery
