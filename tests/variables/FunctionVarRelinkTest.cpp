// Function variables after a reload and in a clone: nothing tells them of changes until they are linked again.
#include "foundations/property/PropertyReference.h"
#include "tests/foundations/storage/DataFiles.h"
#include "tests/variables/FunctionVarTestSupport.h"

#include <QFile>

#include <gtest/gtest.h>

namespace Orrery {
namespace {

using Doubles = std::vector<double>;

const QString argumentsName = QStringLiteral("Arguments");
const QStringList noLines;

template <class T = Variable>
T* childOf(PropertyObject& folder, const char* name)
{
    auto* found = folder.GetPtr<T>(QString::fromLatin1(name));
    if (!found)
        throw std::runtime_error(std::string("no ") + name);
    return found;
}

/// Folder "sub" with f = x + y + 0.5, read once: 11.5.
void buildSum(PropertyObject& root, const RegisteredMeasurement& total)
{
    auto* x = insert(root, std::make_unique<Variable>(QStringLiteral("x"), numbers({1})));
    auto* y = insert(root, std::make_unique<Variable>(QStringLiteral("y"), numbers({10})));
    PropertyObject* sub = insertFolder(root, QStringLiteral("sub"));
    auto* f = insert(*sub, std::make_unique<FunctionVar>(QStringLiteral("f")));
    total.giveTo(*f, {BVariant(0.5)});
    f->AddArgumentRef(x);
    f->AddArgumentRef(y);
    f->GetData();
}

/// A tree that was saved and loaded again.
class ReloadedFunctionVar : public testing::Test
{
protected:
    RegisteredMeasurement total{&storeTotal};
    PropertyObject* root = nullptr;

    void reload(const StorageTest::Builder& build)
    {
        const QString path = m_disk.Path(QStringLiteral("tree%1.h5").arg(++m_files));
        StorageTest::SaveNew(path, build).reset();
        m_file = StorageTest::Open(path);
        root = m_file->GetRoot();
    }

    void reloadSum()
    {
        reload([this](PropertyObject& top) { buildSum(top, total); });
        f = childOf<FunctionVar>(*childOf<PropertyObject>(*root, "sub"), "f");
        x = childOf(*root, "x");
        y = childOf(*root, "y");
    }

    FunctionVar* f = nullptr;
    Variable* x = nullptr;
    Variable* y = nullptr;

private:
    StorageTest::ScratchFolder m_disk;
    std::shared_ptr<DataFile> m_file;
    int m_files = 0;
};

// --- a reload

TEST_F(ReloadedFunctionVar, ComesBackAsItWas)
{
    EXPECT_EQ(StorageTest::RoundTrip([this](PropertyObject& top) { buildSum(top, total); }), std::string());
}

TEST_F(ReloadedFunctionVar, IsDirtyAndBoundToNothing)
{
    reloadSum();
    EXPECT_TRUE(isExactly<FunctionVar>(*f));
    EXPECT_NE(functionStrategyOf(*f), nullptr);
    EXPECT_EQ(stored(*f), Doubles{11.5});
    EXPECT_TRUE(isDirty(*f));
    EXPECT_EQ(sourceCount(*f), 0u);

    QList<AbstractProperty*> arguments;
    ASSERT_EQ(f->GetArguments(&arguments), ER_SUCCESS);
    ASSERT_EQ(arguments.size(), 2);
    EXPECT_TRUE(isExactly<PropertyReference>(*arguments.at(0)));
    EXPECT_EQ(static_cast<PropertyReference*>(arguments.at(1))->Resolve(), y);
    ASSERT_NE(f->GetFunction(), nullptr);
    EXPECT_NE(f->GetFunction()->GetMeasurement(), nullptr);
}

TEST_F(ReloadedFunctionVar, ComputesOnceAndHearsOfNoChange)
{
    reloadSum();
    const int runs = total.runs();
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{11.5});
    EXPECT_EQ(total.runs(), runs + 1);
    x->UpdateData(numbers({2}));
    f->GetFunction()->SetParameters({});
    EXPECT_TRUE(isClean(*f));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{11.5});
    const ConnectedClient client(*f);
    x->getNotifier()->Remove();
    EXPECT_EQ(client.removals, 0);
}

TEST_F(ReloadedFunctionVar, HearsOfChangesOnceItIsLinkedAgain)
{
    reloadSum();
    f->GetData();
    const MessageCapture log;
    EXPECT_EQ(functionStrategyOf(*f)->Relink(), ER_SUCCESS);
    EXPECT_EQ(log.warnings(), noLines);
    EXPECT_TRUE(isDirty(*f)); // something may have changed unnoticed
    EXPECT_EQ(sourceCount(*f), 3u);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{11.5});

    x->UpdateData(numbers({2}));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{12.5});
    y->UpdateData(numbers({20}));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{22.5});
    f->GetFunction()->SetParameters({BVariant(0.0)});
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{22});
    const ConnectedClient client(*f);
    y->getNotifier()->Remove();
    EXPECT_EQ(client.removals, 1);
}

TEST_F(ReloadedFunctionVar, ComputesWhatHasChangedBeforeItWasLinkedAgain)
{
    reloadSum();
    f->GetData();
    x->UpdateData(numbers({2}));
    ASSERT_EQ(functionStrategyOf(*f)->Relink(), ER_SUCCESS);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{12.5});
}

TEST_F(ReloadedFunctionVar, MayBeLinkedAgainAndAgain)
{
    reloadSum();
    ASSERT_EQ(functionStrategyOf(*f)->Relink(), ER_SUCCESS);
    f->GetData();
    const MessageCapture log;
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(functionStrategyOf(*f)->Relink(), ER_SUCCESS);
        EXPECT_TRUE(isClean(*f)); // nothing was bound anew
    }
    EXPECT_EQ(log.warnings(), noLines);
    EXPECT_EQ(log.debug(), noLines);
    EXPECT_EQ(sourceCount(*f), 3u);
    const ConnectedClient client(*f);
    x->getNotifier()->Remove();
    EXPECT_EQ(client.removals, 1);
}

TEST_F(ReloadedFunctionVar, IsMarkedWhenOnlySomethingIsBoundAnew)
{
    reloadSum();
    ASSERT_EQ(functionStrategyOf(*f)->Relink(), ER_SUCCESS);
    f->GetData();
    auto* folder = childOf<PropertyObject>(*f, "Arguments");
    Variable* z = insertVariable(*root, QStringLiteral("z"));
    ASSERT_EQ(folder->SetPropertyRef(QStringLiteral("2"), z), ER_SUCCESS); // past AddArgumentRef()
    EXPECT_TRUE(isClean(*f));
    ASSERT_EQ(functionStrategyOf(*f)->Relink(), ER_SUCCESS);
    EXPECT_TRUE(isDirty(*f));
    EXPECT_EQ(sourceCount(*f), 4u);
}

TEST_F(ReloadedFunctionVar, LinksTheOthersWhenAnArgumentCannotBeResolved)
{
    reloadSum();
    ASSERT_EQ(root->DeleteProperty(QStringLiteral("x")), ER_SUCCESS);
    EXPECT_EQ(functionStrategyOf(*f)->Relink(), ER_NOT_FOUND);
    EXPECT_EQ(sourceCount(*f), 2u);
    EXPECT_THROW(f->GetData(), std::logic_error);
    y->UpdateData(numbers({20}));
    EXPECT_TRUE(isDirty(*f));

    insert(*root,
           std::make_unique<Variable>(QStringLiteral("x"), numbers({3}))); // takes the place of the former
    EXPECT_EQ(functionStrategyOf(*f)->Relink(), ER_SUCCESS);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{23.5});
}

TEST_F(ReloadedFunctionVar, OfAMeasurementThatThisProcessDoesNotKnowKeepsItsData)
{
    reload([this](PropertyObject& top) {
        buildSum(top, total);
        total.forget();
    });
    f = childOf<FunctionVar>(*childOf<PropertyObject>(*root, "sub"), "f");
    const MessageCapture log;
    EXPECT_EQ(functionStrategyOf(*f)->Relink(), ER_SUCCESS);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{11.5});
    EXPECT_EQ(log.debug().size(), 1);
    EXPECT_EQ(f->GetFunction()->GetFunctionName(), total.name());
}

TEST_F(ReloadedFunctionVar, OfANewOneWorksAsAPlainVariable)
{
    reload([this](PropertyObject& top) {
        auto* x_ = insert(top, std::make_unique<Variable>(QStringLiteral("x"), numbers({1})));
        auto* n = insert(top, std::unique_ptr<Variable>(FunctionVar::New(QStringLiteral("n"))));
        total.giveTo(*functionStrategyOf(*n));
        functionStrategyOf(*n)->AddArgumentRef(x_);
    });
    Variable* n = childOf(*root, "n");
    EXPECT_TRUE(isExactly<Variable>(*n));
    ASSERT_NE(functionStrategyOf(*n), nullptr);
    EXPECT_TRUE(isDirty(*n));
    EXPECT_EQ(ToDoubles(n->GetData()), Doubles{1});
    ASSERT_EQ(functionStrategyOf(*n)->Relink(), ER_SUCCESS);
    childOf(*root, "x")->UpdateData(numbers({2}));
    EXPECT_EQ(ToDoubles(n->GetData()), Doubles{2});
}

// A copy says that its data are explicit, and so they are after a reload.
TEST_F(ReloadedFunctionVar, OfACloneIsAnExplicitVariable)
{
    reload([this](PropertyObject& top) {
        buildSum(top, total);
        auto& sub = *childOf<PropertyObject>(top, "sub");
        std::unique_ptr<AbstractProperty> clone(childOf(sub, "f")->Clone());
        clone->SetName(QStringLiteral("copy"));
        if (sub.InsertProperty(clone.get()) >= 0)
            clone.release();
    });
    Variable* copy = childOf(*childOf<PropertyObject>(*root, "sub"), "copy");
    EXPECT_EQ(functionStrategyOf(*copy), nullptr);
    const int runs = total.runs();
    EXPECT_EQ(ToDoubles(copy->GetData()), Doubles{11.5});
    EXPECT_EQ(total.runs(), runs);
}

TEST_F(ReloadedFunctionVar, BoundLateToAnArgumentFindsIt)
{
    reload([this](PropertyObject& top) {
        auto loose = std::make_unique<Variable>(QStringLiteral("t"), numbers({7}));
        auto* late = insert(top, std::make_unique<FunctionVar>(QStringLiteral("late")));
        total.giveTo(*late);
        late->AddArgumentRef(loose.get());
        insert(*insertFolder(top, QStringLiteral("sub")), std::move(loose));
    });
    auto* late = childOf<FunctionVar>(*root, "late");
    EXPECT_EQ(RelinkFunctionVariables(*root), ER_SUCCESS);
    EXPECT_EQ(ToDoubles(late->GetData()), Doubles{7});
    childOf(*childOf<PropertyObject>(*root, "sub"), "t")->UpdateData(numbers({8}));
    EXPECT_EQ(ToDoubles(late->GetData()), Doubles{8});
}

TEST_F(ReloadedFunctionVar, ThatIsItsOwnArgumentDirectlyTwiceAndThroughAnotherIsRead)
{
    reload([this](PropertyObject& top) {
        auto* self = insert(top, std::make_unique<FunctionVar>(QStringLiteral("self")));
        auto* other = insert(top, std::make_unique<FunctionVar>(QStringLiteral("other")));
        auto* x_ = insert(top, std::make_unique<Variable>(QStringLiteral("x"), numbers({1})));
        total.giveTo(*self);
        total.giveTo(*other);
        const MessageCapture log; // of the duplicate
        for (const Variable* argument :
             {static_cast<Variable*>(self), static_cast<Variable*>(self), static_cast<Variable*>(other), x_})
            self->AddArgumentRef(argument);
        other->AddArgumentRef(self);
        self->UpdateData(numbers({5}));
        other->UpdateData(numbers({100}));
    });
    auto* self = childOf<FunctionVar>(*root, "self");
    auto* other = childOf<FunctionVar>(*root, "other");
    EXPECT_EQ(ToDoubles(self->GetData()), Doubles{5 + 5 + 100 + 1});
    EXPECT_TRUE(isClean(*other));
    EXPECT_EQ(ToDoubles(other->GetData()), Doubles{100});

    EXPECT_EQ(RelinkFunctionVariables(*root), ER_SUCCESS);
    EXPECT_TRUE(isDirty(*self));
    EXPECT_TRUE(isDirty(*other));
    EXPECT_EQ(ToDoubles(other->GetData()), Doubles{111});
    const MessageCapture log;
    EXPECT_EQ(RelinkFunctionVariables(*root), ER_SUCCESS);
    EXPECT_EQ(log.warnings(), noLines);
    EXPECT_EQ(ToDoubles(self->GetData()), Doubles{111}); // marked clean as an argument of the other
}

TEST_F(ReloadedFunctionVar, InAnotherFileThanItsArgumentIsLinkedToIt)
{
    const StorageTest::ScratchFolder disk;
    const QString inputs = disk.Path(QStringLiteral("inputs.h5"));
    const QString results = disk.Path(QStringLiteral("results.h5"));
    {
        const auto from = StorageTest::SaveNew(inputs, [](PropertyObject& top) {
            insert(top, std::make_unique<Variable>(QStringLiteral("t"), numbers({7})));
        });
        StorageTest::SaveNew(results, [&](PropertyObject& top) {
            auto* far = insert(top, std::make_unique<FunctionVar>(QStringLiteral("far")));
            total.giveTo(*far);
            far->AddArgumentRef(childOf(*from->GetRoot(), "t"));
        });
    }
    const auto file = StorageTest::Open(results);
    auto* far = childOf<FunctionVar>(*file->GetRoot(), "far");
    ASSERT_EQ(RelinkFunctionVariables(*file->GetRoot()), ER_SUCCESS);
    EXPECT_EQ(ToDoubles(far->GetData()), Doubles{7});
    const auto from = StorageTest::Open(inputs); // the one that is open already
    childOf(*from->GetRoot(), "t")->UpdateData(numbers({8}));
    EXPECT_EQ(ToDoubles(far->GetData()), Doubles{8});
}

TEST_F(ReloadedFunctionVar, IsLinkedToAnArgumentWhoseFileHasComeBack)
{
    const StorageTest::ScratchFolder disk;
    const QString inputs = disk.Path(QStringLiteral("inputs.h5"));
    const QString away = disk.Path(QStringLiteral("away.h5"));
    const QString results = disk.Path(QStringLiteral("results.h5"));
    {
        const auto from = StorageTest::SaveNew(inputs, [](PropertyObject& top) {
            insert(top, std::make_unique<Variable>(QStringLiteral("t"), numbers({7})));
        });
        StorageTest::SaveNew(results, [&](PropertyObject& top) {
            auto* far = insert(top, std::make_unique<FunctionVar>(QStringLiteral("far")));
            total.giveTo(*far);
            far->AddArgumentRef(childOf(*from->GetRoot(), "t"));
        });
    }
    ASSERT_TRUE(QFile::rename(inputs, away));
    const auto file = StorageTest::Open(results);
    auto* far = childOf<FunctionVar>(*file->GetRoot(), "far");
    {
        const MessageCapture log;
        EXPECT_LT(RelinkFunctionVariables(*file->GetRoot()), 0);
        EXPECT_EQ(log.warnings().filter(inputs).size(), 1);
    }
    ASSERT_TRUE(QFile::rename(away, inputs));
    ASSERT_EQ(RelinkFunctionVariables(*file->GetRoot()), ER_SUCCESS);
    EXPECT_EQ(ToDoubles(far->GetData()), Doubles{7});
}

// --- a whole tree

TEST_F(ReloadedFunctionVar, IsLinkedWithItsWholeTree)
{
    reload([this](PropertyObject& top) {
        buildSum(top, total);
        Variable* holder = insertVariable(top, QStringLiteral("holder"));
        auto* inside = insert(*holder, std::make_unique<FunctionVar>(QStringLiteral("inside")));
        total.giveTo(*inside);
        inside->AddArgumentRef(childOf(top, "x"));
        auto* below = insert(*inside, std::unique_ptr<Variable>(FunctionVar::New(QStringLiteral("below"))));
        total.giveTo(*functionStrategyOf(*below));
        functionStrategyOf(*below)->AddArgumentRef(childOf(top, "y"));
    });
    f = childOf<FunctionVar>(*childOf<PropertyObject>(*root, "sub"), "f");
    auto* inside = childOf<FunctionVar>(*childOf(*root, "holder"), "inside");
    Variable* below = childOf(*inside, "below");
    EXPECT_EQ(RelinkFunctionVariables(*root), ER_SUCCESS);
    EXPECT_EQ(sourceCount(*f), 3u);
    EXPECT_EQ(sourceCount(*inside), 2u);
    EXPECT_EQ(sourceCount(*below), 2u);
    for (const Variable* variable : {static_cast<Variable*>(f), static_cast<Variable*>(inside), below})
        variable->GetData();
    EXPECT_EQ(RelinkFunctionVariables(*root), ER_SUCCESS);
    EXPECT_TRUE(isClean(*f) && isClean(*inside) && isClean(*below));
}

TEST_F(ReloadedFunctionVar, IsLinkedByTheFirstFailingCodeLast)
{
    reload([this](PropertyObject& top) {
        auto* gone = insertVariable(top, QStringLiteral("gone"));
        auto* a = insert(top, std::make_unique<FunctionVar>(QStringLiteral("a")));
        total.giveTo(*a);
        a->AddArgumentRef(gone);
        buildSum(top, total);
        top.DeleteProperty(QStringLiteral("gone"));
    });
    EXPECT_EQ(RelinkFunctionVariables(*root), ER_NOT_FOUND);
    f = childOf<FunctionVar>(*childOf<PropertyObject>(*root, "sub"), "f");
    EXPECT_EQ(sourceCount(*f), 3u); // behind the failing one, and done all the same
    EXPECT_EQ(sourceCount(*childOf(*root, "a")), 1u);
}

TEST(RelinkedTree, MayBeAFunctionVariableItselfOrHoldNone)
{
    const RegisteredMeasurement total(&storeTotal);
    PropertyObject top;
    buildSum(top, total);
    std::unique_ptr<AbstractProperty> clone(childOf(*childOf<PropertyObject>(top, "sub"), "f")->Clone());
    auto* copy = static_cast<Variable*>(clone.get());
    ASSERT_EQ(copy->SetName(QStringLiteral("copy")), ER_SUCCESS);
    ASSERT_EQ(childOf<PropertyObject>(top, "sub")->InsertProperty(copy), ER_SUCCESS);
    clone.release();
    EXPECT_EQ(RelinkFunctionVariables(*copy), ER_SUCCESS);
    EXPECT_EQ(sourceCount(*copy), 3u);

    PropertyObject empty;
    EXPECT_EQ(RelinkFunctionVariables(empty), ER_SUCCESS);
    insertVariable(empty, QStringLiteral("plain"));
    EXPECT_EQ(RelinkFunctionVariables(empty), ER_SUCCESS);
}

// --- clones

TEST(RelinkedClone, HearsOfChangesInItsOwnTree)
{
    const RegisteredMeasurement total(&storeTotal);
    PropertyObject top;
    buildSum(top, total);
    const std::unique_ptr<AbstractProperty> clone(top.Clone());
    auto& copy = static_cast<PropertyObject&>(*clone);
    Variable* f = childOf(*childOf<PropertyObject>(copy, "sub"), "f");
    Variable* x = childOf(copy, "x");
    EXPECT_TRUE(isDirty(*f));
    EXPECT_EQ(sourceCount(*f), 0u);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{11.5});
    x->UpdateData(numbers({2}));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{11.5});

    EXPECT_EQ(RelinkFunctionVariables(copy), ER_SUCCESS);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{12.5});
    x->UpdateData(numbers({3}));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{13.5});
    functionStrategyOf(*f)->GetFunction()->SetParameters({BVariant(0.0)});
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{13});

    childOf(top, "x")->UpdateData(numbers({1000})); // of the original
    EXPECT_TRUE(isClean(*f));
    EXPECT_TRUE(isDirty(*childOf(*childOf<PropertyObject>(top, "sub"), "f")));
}

TEST_F(FunctionVarTest, IsNotMarkedByALinkOfWhatIsLinkedAnyway)
{
    setUpAndRead();
    const MessageCapture log;
    EXPECT_EQ(functionStrategyOf(*f)->Relink(), ER_SUCCESS);
    EXPECT_TRUE(isClean(*f));
    EXPECT_EQ(log.warnings(), noLines);

    FunctionVar empty(QStringLiteral("g"));
    empty.GetData();
    EXPECT_EQ(functionStrategyOf(empty)->Relink(), ER_SUCCESS);
    EXPECT_TRUE(isClean(empty));
}

} // namespace
} // namespace Orrery
