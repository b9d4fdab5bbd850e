// Hosts' code that changes the tree while it is read, and nests that take too much time or memory.
#include "foundations/property/PropertyReference.h"
#include "tests/variables/JoinedVariableTestSupport.h"
#include "variables/ConcatVar.h"
#include "variables/SweptVariable.h"

#include <gtest/gtest.h>

#include <new>

namespace Orrery {
namespace {

using namespace JoinTest;

/// A host's reference, which runs its code whenever it is resolved.
class HostReference : public PropertyReference
{
public:
    HostReference(const QString& name, AbstractProperty* found, std::function<void()> reaction)
        : PropertyReference(name)
        , m_found(found)
        , m_reaction(std::move(reaction))
    {
    }

protected:
    AbstractProperty* GetPropertyRef() const override { return find(); }
    const AbstractProperty* GetPropertyConstRef() const override { return find(); }

private:
    AbstractProperty* find() const
    {
        AbstractProperty* const found = m_found; // this may be gone after the reaction
        const auto reaction = m_reaction;
        reaction();
        return found;
    }

    AbstractProperty* m_found;
    std::function<void()> m_reaction;
};

/// A host's node, which runs its code when it is destroyed.
class HostLeaf : public AbstractProperty
{
public:
    HostLeaf(const QString& name, std::function<void()> onEnd)
        : AbstractProperty(name)
        , m_onEnd(std::move(onEnd))
    {
    }
    HostLeaf(const HostLeaf&) = delete;
    HostLeaf& operator=(const HostLeaf&) = delete;
    ~HostLeaf() override { m_onEnd(); }

    const QString& PropertyObjType() const override
    {
        static const QString type = QStringLiteral("HostLeaf");
        return type;
    }
    unsigned int GetTypeFlags() const override { return 0; }
    AbstractProperty* DoClone() const override
    {
        return new HostLeaf(GetName(), [] {});
    }

private:
    std::function<void()> m_onEnd;
};

/// What the process asks for nodes of other files, as long as it lives: its code.
class HostResolver
{
public:
    explicit HostResolver(std::function<AbstractProperty*()> reaction)
    {
        s_reaction = std::move(reaction);
        PropertyReference::SetExternalResolver(&resolve);
    }
    HostResolver(const HostResolver&) = delete;
    HostResolver& operator=(const HostResolver&) = delete;
    ~HostResolver()
    {
        PropertyReference::SetExternalResolver(m_former);
        s_reaction = nullptr;
    }

private:
    static AbstractProperty* resolve(const PropertyReference& /*reference*/) { return s_reaction(); }

    const PropertyReference::ExternalResolver m_former = PropertyReference::GetExternalResolver();

    static inline std::function<AbstractProperty*()> s_reaction;
};

class HostileJoins : public testing::Test
{
protected:
    static constexpr std::uint64_t memberCount = 20; // more than are looked up ahead

    PropertyObject top{QStringLiteral("top")};
    ConcatVar* c = insert(top, std::make_unique<ConcatVar>(QStringLiteral("c")));
    SweptVariable* s = insert(top, std::make_unique<SweptVariable>(QStringLiteral("s")));
    HostVariable* host = insertHost(top, QStringLiteral("host"));

    static void fill(ConcatVar* joined, std::initializer_list<const Variable*> members)
    {
        for (const Variable* member : members)
            ASSERT_EQ(joined->AddVariable(member), ER_SUCCESS);
    }

    ConcatVar* insertConcat(const QString& name) { return insert(top, std::make_unique<ConcatVar>(name)); }

    /// Members m0 to m19 of c, two offsets each.
    void fillWithMany()
    {
        for (std::uint64_t i = 0; i < memberCount; ++i)
            fill(c, {insertData(top, numbered("m", i), numbers({1, 2}))});
    }

    void destroyTargets()
    {
        for (std::uint64_t i = 1; i < memberCount; ++i)
            top.DeleteProperty(numbered("m", i));
    }

    void destroyReferences() const
    {
        for (std::uint64_t i = 1; i < memberCount; ++i)
            c->DeleteProperty(QString::number(i));
    }

    void replace(std::uint64_t number, std::unique_ptr<PropertyReference> reference) const
    {
        c->DeleteProperty(QString::number(number));
        ASSERT_NE(insert(*c, std::move(reference)), nullptr);
    }

    /// The member with that number leads to another file, for which the process is asked.
    void replaceByOutside(std::uint64_t number) const
    {
        auto outside = std::make_unique<PropertyReference>(QString::number(number));
        outside->RestorePath(QStringLiteral("/x"), QStringLiteral("/other"), QStringLiteral("HDF5"));
        replace(number, std::move(outside));
    }

    /// A sweep over c whose parameter is the host's, and does that at the second value it is asked for.
    void sweepByHost(std::function<void()> reaction)
    {
        ASSERT_EQ(s->SetParameter(host), ER_SUCCESS);
        ASSERT_EQ(s->SetConcatVar(c), ER_SUCCESS);
        host->at = [reaction = std::move(reaction), values = 0](BVariant* out, std::uint64_t) mutable {
            *out = BVariant(3.0);
            if (++values == 2)
                reaction();
            return ER_SUCCESS;
        };
    }

    /// `count` concatenations that all hold one another, and x at the end of each.
    std::vector<ConcatVar*> insertClique(std::uint64_t count)
    {
        const Variable* const x = insertData(top, QStringLiteral("x"), numbers({1}));
        std::vector<ConcatVar*> all;
        for (std::uint64_t i = 0; i < count; ++i)
            all.push_back(insertConcat(numbered("k", i)));
        for (ConcatVar* one : all) {
            for (const ConcatVar* other : all) {
                if (other != one)
                    fill(one, {other});
            }
            fill(one, {x});
        }
        return all;
    }
};

// --- code of a host that destroys members

TEST_F(HostileJoins, AParameterMayDestroyTheReferencesToMembersToCome)
{
    fillWithMany();
    sweepByHost([this] { destroyReferences(); });
    EXPECT_EQ(readRange(*s, 0, 4).code, ER_FAILED);
    EXPECT_EQ(c->GetMaxIndepOffset(), 2u);
}

TEST_F(HostileJoins, AParameterMayDestroyTheMembersToCome)
{
    fillWithMany();
    sweepByHost([this] { destroyTargets(); });
    EXPECT_EQ(readRange(*s, 0, 4).code, ER_FAILED);
    EXPECT_EQ(c->GetMaxIndepOffset(), 2u);
}

TEST_F(HostileJoins, AResolverMayDestroyTheMembersToCome)
{
    fillWithMany();
    replaceByOutside(0);
    const HostResolver resolver([this] {
        destroyReferences();
        destroyTargets();
        return nullptr;
    });
    EXPECT_EQ(c->GetMaxIndepOffset(), 0u);
    EXPECT_EQ(numberedNames(*c), QStringList(QStringLiteral("0")));
}

TEST_F(HostileJoins, AResolverInTheMiddleMayDestroyAllMembers)
{
    fillWithMany();
    replaceByOutside(5);
    const HostResolver resolver([this] {
        destroyReferences();
        c->DeleteProperty(QStringLiteral("0"));
        destroyTargets();
        return nullptr;
    });
    EXPECT_EQ(readRange(*c, 0, 30), stopped(ER_FAILED, numbers({1, 2, 1, 2, 1, 2, 1, 2, 1, 2})));
    EXPECT_EQ(c->GetMaxIndepOffset(), 0u);
}

TEST_F(HostileJoins, AHostsReferenceMayDestroyTheMembersToCome)
{
    fillWithMany();
    replace(0, std::make_unique<HostReference>(QStringLiteral("0"), top.GetPropertyPtr(QStringLiteral("m0")),
                                               [this] { destroyReferences(); }));
    EXPECT_EQ(c->GetMaxIndepOffset(), 2u);
    EXPECT_EQ(numberedNames(*c), QStringList(QStringLiteral("0")));
}

TEST_F(HostileJoins, WhatStandsInTheDataOfAMemberMayDestroyTheMembersToCome)
{
    fillWithMany();
    auto* const first = top.GetPtr<Variable>(QStringLiteral("m0"));
    first->DeleteProperty(QStringLiteral("Data"));
    ASSERT_NE(
        insert(*first, std::make_unique<HostLeaf>(QStringLiteral("Data"), [this] { destroyTargets(); })),
        nullptr);
    EXPECT_EQ(c->GetMaxIndepOffset(), 0u);
    EXPECT_EQ(c->GetMaxIndepOffset(), 0u);
}

TEST_F(HostileJoins, AReferenceTellsWhatItIsBoundToWithoutALookUp)
{
    Variable* const x = insertData(top, QStringLiteral("x"), numbers({1, 2}));
    auto* const reference = insert(top, std::make_unique<PropertyReference>(QStringLiteral("r")));
    EXPECT_EQ(reference->BoundTarget(), nullptr);
    reference->RestorePath(QStringLiteral("../x"));
    EXPECT_EQ(reference->BoundTarget(), nullptr);
    ASSERT_EQ(reference->Resolve(), x); // which binds it
    EXPECT_EQ(reference->BoundTarget(), x);
    top.DeleteProperty(QStringLiteral("x"));
    insertData(top, QStringLiteral("x"), numbers({3}));
    EXPECT_EQ(reference->BoundTarget(), nullptr);
}

TEST_F(HostileJoins, ASweepReadsItsParameterBeforeTheNextMemberIsLookedUp)
{
    fillWithMany();
    replaceByOutside(2);
    Variable* const p = insertData(top, QStringLiteral("p"), numbers({10, 20, 30, 40}));
    ASSERT_EQ(s->SetParameter(p), ER_SUCCESS);
    ASSERT_EQ(s->SetConcatVar(c), ER_SUCCESS);
    const HostResolver resolver([this, p] {
        p->UpdateData(numbers({50, 60, 70, 80}));
        return top.GetPropertyPtr(QStringLiteral("m2"));
    });
    EXPECT_EQ(readRange(*s, 0, 8), gotNumbers({10, 10, 20, 20, 70, 70, 80, 80}));
}

// --- code of a host that destroys the sweep

TEST_F(HostileJoins, ResolvingTheParameterMayDestroyTheSweep)
{
    Variable* const x = insertData(top, QStringLiteral("x"), numbers({1, 2}));
    fill(c, {x});
    for (const bool isRange : {false, true}) {
        auto* const sweep = insert(top, std::make_unique<SweptVariable>(QStringLiteral("sweep")));
        ASSERT_EQ(sweep->SetConcatVar(c), ER_SUCCESS);
        insert(*sweep, std::make_unique<HostReference>(QStringLiteral("Param"), x, [this] {
            top.DeleteProperty(QStringLiteral("sweep"));
        }));
        EXPECT_EQ(isRange ? readRange(*sweep, 0, 2) : readAt(*sweep, 0), refused(ER_FAILED));
        EXPECT_FALSE(top.HasProperty(QStringLiteral("sweep")));
    }
}

TEST_F(HostileJoins, ResolvingTheConcatenationMayDestroyTheSweep)
{
    Variable* const x = insertData(top, QStringLiteral("x"), numbers({1, 2}));
    fill(c, {x});
    for (const bool isRange : {false, true}) {
        auto* const sweep = insert(top, std::make_unique<SweptVariable>(QStringLiteral("sweep")));
        ASSERT_EQ(sweep->SetParameter(x), ER_SUCCESS);
        insert(*sweep, std::make_unique<HostReference>(QStringLiteral("DependVar"), c, [this] {
            top.DeleteProperty(QStringLiteral("sweep"));
        }));
        EXPECT_EQ(isRange ? readRange(*sweep, 0, 2) : readAt(*sweep, 0), refused(ER_FAILED));
        EXPECT_FALSE(top.HasProperty(QStringLiteral("sweep")));
    }
}

// --- code of a host while offsets are counted

TEST_F(HostileJoins, WhatAHostChangesWhileItIsCountedIsSeenByItAtOnce)
{
    Variable* const x = insertData(top, QStringLiteral("x"), numbers({1, 2}));
    ConcatVar* const a = insertConcat(QStringLiteral("a"));
    fill(a, {x});
    fill(c, {a, host});
    Sizes seen;
    host->count = [&]() -> std::uint64_t {
        seen = {a->GetMaxIndepOffset()};
        a->AddVariable(x);
        seen.push_back(a->GetMaxIndepOffset());
        seen.push_back(a->GetData().elementCount());
        return 1;
    };
    EXPECT_EQ(c->GetMaxIndepOffset(), 3u);
    EXPECT_EQ(seen, (Sizes{2, 4, 4}));
}

TEST_F(HostileJoins, WhatAHostHasChangedWhileItWasCountedIsCountedAnew)
{
    Variable* const x = insertData(top, QStringLiteral("x"), numbers({1, 2}));
    ConcatVar* const a = insertConcat(QStringLiteral("a"));
    fill(a, {x});
    fill(c, {a, host, a});
    host->count = [&]() -> std::uint64_t {
        a->AddVariable(x);
        return 1;
    };
    EXPECT_EQ(c->GetMaxIndepOffset(), 2u + 1u + 4u);
}

TEST_F(HostileJoins, WhatAResolverHasChangedIsCountedAnew)
{
    Variable* const x = insertData(top, QStringLiteral("x"), numbers({1, 2}));
    ConcatVar* const a = insertConcat(QStringLiteral("a"));
    fill(a, {x});
    fill(c, {a, x, a});
    replaceByOutside(1);
    const HostResolver resolver([a, x] {
        a->AddVariable(x);
        return nullptr;
    });
    EXPECT_EQ(c->GetMaxIndepOffset(), 2u + 4u);
}

TEST_F(HostileJoins, WhatTheReferenceOfASweepHasChangedIsCountedAnew)
{
    Variable* const x = insertData(top, QStringLiteral("x"), numbers({1, 2}));
    ConcatVar* const a = insertConcat(QStringLiteral("a"));
    fill(a, {x});
    fill(c, {a, s, a});
    insert(*s, std::make_unique<HostReference>(QStringLiteral("DependVar"), nullptr,
                                               [a, x] { a->AddVariable(x); }));
    EXPECT_EQ(c->GetMaxIndepOffset(), 2u + 4u);
}

TEST_F(HostileJoins, ANewConcatenationIsNotTakenForOneThatWasCounted)
{
    Variable* const x = insertData(top, QStringLiteral("x"), numbers({1, 2}));
    fill(insertConcat(QStringLiteral("a")), {x});
    fill(c, {top.GetPtr<Variable>(QStringLiteral("a")), host});
    std::uint64_t count = largest;
    host->count = [&]() -> std::uint64_t {
        top.DeleteProperty(QStringLiteral("a"));
        count = insertConcat(QStringLiteral("next"))->GetMaxIndepOffset(); // where a was, as it may be
        return 1;
    };
    EXPECT_EQ(c->GetMaxIndepOffset(), 3u);
    EXPECT_EQ(count, 0u);
}

TEST_F(HostileJoins, NorForOneThatWasDestroyedByItsOwnCount)
{
    fill(insertConcat(QStringLiteral("a")), {host});
    ConcatVar* const b = insertConcat(QStringLiteral("b"));
    fill(c, {top.GetPtr<Variable>(QStringLiteral("a")), b});
    host->count = [&]() -> std::uint64_t {
        top.DeleteProperty(QStringLiteral("a"));
        fill(b, {insertConcat(QStringLiteral("next"))});
        return 5;
    };
    EXPECT_EQ(c->GetMaxIndepOffset(), 5u);
}

TEST_F(HostileJoins, ACountIsThatOfTheMembersAloneWhereTheyContainOneAnother)
{
    Variable* const x = insertData(top, QStringLiteral("x"), numbers({1, 2}));
    ConcatVar* const a = insertConcat(QStringLiteral("a"));
    ConcatVar* const b = insertConcat(QStringLiteral("b"));
    fill(a, {b});
    fill(b, {a, x});
    fill(c, {a, b});
    EXPECT_EQ(a->GetMaxIndepOffset(), 2u);
    EXPECT_EQ(b->GetMaxIndepOffset(), 2u);
    EXPECT_EQ(c->GetMaxIndepOffset(), 4u);
}

TEST_F(HostileJoins, SoItIsWhereTheyDoByWayOfAHost)
{
    Variable* const x = insertData(top, QStringLiteral("x"), numbers({1, 2}));
    ConcatVar* const b = insertConcat(QStringLiteral("b"));
    ConcatVar* const a = insertConcat(QStringLiteral("a"));
    fill(a, {host});
    host->count = [b] { return b->GetMaxIndepOffset(); };
    fill(b, {a, x});
    fill(c, {a, b});
    EXPECT_EQ(a->GetMaxIndepOffset(), 2u);
    EXPECT_EQ(b->GetMaxIndepOffset(), 2u);
    EXPECT_EQ(c->GetMaxIndepOffset(), 4u);
}

// --- time: without a limit for the whole read these take minutes

TEST_F(HostileJoins, AThousandMembersThatHoldOneAnotherAreReadPastTheEnd)
{
    const std::vector<ConcatVar*> all = insertClique(12);
    for (std::size_t i = 0; i < 5000; ++i)
        fill(c, {all[i % all.size()]});
    EXPECT_EQ(readAt(*c, largest), refused(ER_INVALID_ARGUMENT));
    ASSERT_EQ(s->SetParameter(host), ER_SUCCESS);
    ASSERT_EQ(s->SetConcatVar(c), ER_SUCCESS);
    EXPECT_EQ(readAt(*s, largest), refused(ER_INVALID_ARGUMENT));
    EXPECT_EQ(readRange(*c, largest - 1, largest), stopped(ER_INVALID_ARGUMENT));
}

TEST_F(HostileJoins, MembersBetweenWhichHostsAreAskedAreCountedInTimeToo)
{
    host->count = [] { return 1; };
    const Variable* former = host;
    std::uint64_t count = 1;
    for (std::uint64_t i = 0; i < 50; ++i) {
        ConcatVar* const next = insertConcat(numbered("k", i));
        fill(next, {former, host, former});
        former = next;
        count = 2 * count + 1;
    }
    EXPECT_EQ(former->GetMaxIndepOffset(), count);
}

// --- memory

TEST_F(HostileJoins, LevelsOfANestDoNotAddUp)
{
    // Together they expect hundreds of gigabytes, and each of them a fraction of one.
    host->count = [] { return std::uint64_t{1} << 24U; };
    host->range = [](BVariant* out, std::uint64_t, std::uint64_t) {
        *out = numbers({8, 9});
        return ER_SUCCESS;
    };
    const Variable* const x = insertData(top, QStringLiteral("x"), numbers({1}));
    const Variable* former = host;
    for (std::uint64_t i = 0; i < 900; ++i) {
        ConcatVar* const next = insertConcat(numbered("k", i));
        fill(next, {former, x});
        former = next;
    }
    EXPECT_EQ(readRange(*former, 0, 0).out.elementCount(), 902u);
}

TEST_F(HostileJoins, ANestThatDoublesAtEachLevelEndsAtOnce)
{
    const Variable* former = insertData(top, QStringLiteral("x"), numbers({1}));
    for (std::uint64_t i = 0; i < 60; ++i) {
        ConcatVar* const next = insertConcat(numbered("k", i));
        fill(next, {former, former});
        former = next;
    }
    BVariant out;
    EXPECT_THROW(former->GetValueRange(&out, 0, 0), std::bad_alloc);
}

TEST_F(HostileJoins, AMemberThatClaimsMoreThanItGivesIsReadInAnotherConcatenationAsAlone)
{
    host->count = [] { return std::uint64_t{1} << 60U; };
    host->range = [](BVariant* out, std::uint64_t, std::uint64_t) {
        *out = numbers({8, 9});
        return ER_SUCCESS;
    };
    ConcatVar* const inner = insertConcat(QStringLiteral("inner"));
    fill(inner, {insertData(top, QStringLiteral("x"), numbers({1, 2, 3})), host});
    fill(c, {inner});
    EXPECT_EQ(readRange(*inner, 0, 0), gotNumbers({1, 2, 3, 8, 9}));
    EXPECT_EQ(readRange(*c, 0, 0), gotNumbers({1, 2, 3, 8, 9}));
}

} // namespace
} // namespace Orrery
