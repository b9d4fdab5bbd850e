#include "tracking/ObservablePropertyReference.h"

#include "foundations/property/PropertyPath.h"
#include "foundations/storage/DataFile.h"
#include "foundations/storage/DataFileFactory.h"
#include "tests/tracking/ChangeTestSupport.h"
#include "tracking/DataObserver.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <stdexcept>

namespace Orrery {
namespace {

/// Opens the protected look-ups to a test.
class Reference : public ObservablePropertyReference
{
public:
    using ObservablePropertyReference::GetPropertyConstRef;
    using ObservablePropertyReference::GetPropertyRef;
    using ObservablePropertyReference::ObservablePropertyReference;
    using ObservablePropertyReference::ResolveExternalRef;
};

std::unique_ptr<Reference> delayedTo(Variable& variable, const QString& name = QStringLiteral("ref"))
{
    auto reference = std::make_unique<Reference>(name);
    reference->setObserver(ensureObserver(&variable));
    return reference;
}

QString thirdCaseMessage(const QString& name, const void* address)
{
    return QStringLiteral("Can't set reference to ") + name + QStringLiteral("@") +
           QString::asprintf("%8p", address);
}

/// A folder on the disk with data files in it.
class DataFiles : public testing::Test
{
protected:
    QString pathOf(const QString& name) const { return m_folder.filePath(name); }

    std::shared_ptr<DataFile> open(const QString& name, DataFile::OpenMode mode) const
    {
        std::shared_ptr<DataFile> file;
        QString why;
        if (DataFileFactory::Instance().Open(pathOf(name), mode, &file, &why) < 0)
            throw std::runtime_error(why.toStdString());
        return file;
    }

    std::shared_ptr<DataFile> create(const QString& name) const { return open(name, DataFile::Create); }

    /// Save, let go of the file, and open it again.
    std::shared_ptr<DataFile> reload(std::shared_ptr<DataFile> file, const QString& name) const
    {
        QString why;
        if (file->Save(&why) < 0)
            throw std::runtime_error(why.toStdString());
        file.reset();
        return open(name, DataFile::ReadOnly);
    }

private:
    QTemporaryDir m_folder;
};

PropertyReference& referenceIn(PropertyObject& folder, const QString& name)
{
    auto* reference = folder.GetPtr<PropertyReference>(name);
    if (!reference)
        throw std::runtime_error("no reference " + name.toStdString());
    return *reference;
}

// --- without an observer

TEST(DelayedReference, IsAPlainReferenceWithoutAnObserver)
{
    const MessageCapture log;
    PropertyObject top;
    Variable* variable = insertVariable(top, QStringLiteral("x"));
    auto* reference = insert(top, std::make_unique<Reference>(QStringLiteral("ref")));
    EXPECT_EQ(reference->PropertyObjType(), PropertyReference::StaticType());
    EXPECT_EQ(reference->GetTypeFlags(), unsigned(PropertyTypeFlagReference));
    EXPECT_EQ(reference->GetPropertyRef(), nullptr);
    EXPECT_EQ(reference->ReferencePath(), QString());

    ASSERT_GE(reference->SetPropertyRef(variable), 0);
    EXPECT_EQ(reference->GetPropertyRef(), variable);
    EXPECT_EQ(reference->GetPropertyConstRef(), variable);
    EXPECT_EQ(reference->ReferencePath(), QStringLiteral("../x"));
    EXPECT_EQ(reference->ReferenceFilePath(), QString());
    EXPECT_EQ(reference->ReferenceFileType(), QString());
    EXPECT_EQ(reference->ResolveExternalRef(), nullptr);
    EXPECT_TRUE(reference->IsRefVariable());
    EXPECT_EQ(log.debug(), QStringList());
}

TEST(DelayedReference, AsksTheBaseClassForTheFileWithoutAnObserver)
{
    Reference reference(QStringLiteral("ref"));
    reference.RestorePath(QStringLiteral("/x"), QStringLiteral("other.orr"), QStringLiteral("HDF5"));
    EXPECT_EQ(reference.ReferencePath(), QStringLiteral("/x"));
    EXPECT_EQ(reference.ReferenceFilePath(), QStringLiteral("other.orr"));
    EXPECT_EQ(reference.ReferenceFileType(), QStringLiteral("HDF5"));
}

// --- the look-ups

TEST(DelayedReference, GivesItsVariableThoughNoPathWasEverStored)
{
    Variable variable(QStringLiteral("x"));
    const auto reference = delayedTo(variable);
    EXPECT_EQ(reference->GetPropertyRef(), &variable);
    EXPECT_EQ(reference->Resolve(), &variable);
    EXPECT_EQ(reference->ResolveExternalRef(), &variable);
}

TEST(DelayedReference, GivesNothingForReading)
{
    PropertyObject top;
    Variable* variable = insertVariable(top, QStringLiteral("x"));
    const auto* reference = insert(top, delayedTo(*variable));
    EXPECT_EQ(reference->GetPropertyConstRef(), nullptr);
    EXPECT_EQ(reference->ResolveConst(), nullptr);
    EXPECT_FALSE(reference->IsRefVariable());
    EXPECT_FALSE(reference->IsRefPropertyObject());
    EXPECT_FALSE(reference->IsRefMetadata());
}

TEST(DelayedReference, DoesNotAskTheBaseClassWhileItHasAnObserver)
{
    PropertyObject top;
    Variable* variable = insertVariable(top, QStringLiteral("x"));
    auto* reference = insert(top, std::make_unique<Reference>(QStringLiteral("ref")));
    ASSERT_GE(reference->SetPropertyRef(variable), 0);
    const auto observer = std::make_shared<DataObserver>();
    reference->setObserver(observer);
    EXPECT_EQ(reference->GetPropertyRef(), nullptr);
    EXPECT_EQ(reference->ResolveExternalRef(), nullptr);
    EXPECT_EQ(reference->GetPropertyConstRef(), variable);

    reference->setObserver(nullptr);
    EXPECT_EQ(reference->GetPropertyRef(), variable);
}

// --- the paths

TEST(DelayedReference, TellsARelativePathInOneTree)
{
    const MessageCapture log;
    PropertyObject top;
    PropertyObject* left = insertFolder(top, QStringLiteral("left"));
    PropertyObject* right = insertFolder(top, QStringLiteral("right"));
    Variable* variable = insertVariable(*left, QStringLiteral("x"));
    const auto* reference = insert(*right, delayedTo(*variable));
    EXPECT_EQ(reference->ReferencePath(), QStringLiteral("../../left/x"));
    EXPECT_EQ(Property::FindProperty(reference, reference->ReferencePath()), variable);
    EXPECT_EQ(reference->ReferenceFilePath(), QString());
    EXPECT_EQ(reference->ReferenceFileType(), QString());
    EXPECT_EQ(log.debug(), QStringList());

    ASSERT_GE(left->SetName(QStringLiteral("elsewhere")), 0); // worked out afresh on each request
    EXPECT_EQ(reference->ReferencePath(), QStringLiteral("../../elsewhere/x"));
}

TEST(DelayedReference, CantTellThePathBeforeTheTwoMeetUnderOneRoot)
{
    PropertyObject top;
    auto owned = std::make_unique<Variable>(QStringLiteral("x"));
    Variable* variable = owned.get();
    const auto* reference = insert(top, delayedTo(*variable));
    {
        const MessageCapture log;
        EXPECT_EQ(reference->ReferencePath(), QString());
        EXPECT_EQ(log.debug(), QStringList(thirdCaseMessage(QStringLiteral("x"), variable)));
        EXPECT_EQ(reference->ReferenceFilePath(), QString());
        EXPECT_EQ(reference->ReferenceFileType(), QString());
        EXPECT_EQ(log.debug().size(), 3);
        EXPECT_EQ(log.warnings(), QStringList());
    }
    ASSERT_NE(insert(top, std::move(owned)), nullptr);
    const MessageCapture log;
    EXPECT_EQ(reference->ReferencePath(), QStringLiteral("../x"));
    EXPECT_EQ(log.debug(), QStringList());
}

TEST(DelayedReference, GivesTheAnswersOfTheBaseClassWhereItCantTell)
{
    const MessageCapture log;
    Variable variable(QStringLiteral("x"));
    const auto reference = delayedTo(variable);
    reference->RestorePath(QStringLiteral("/old/x"), QStringLiteral("old.orr"), QStringLiteral("HDF5"));
    EXPECT_EQ(reference->ReferencePath(), QStringLiteral("/old/x"));
    EXPECT_EQ(reference->ReferenceFilePath(), QStringLiteral("old.orr"));
    EXPECT_EQ(reference->ReferenceFileType(), QStringLiteral("HDF5"));
    EXPECT_EQ(log.debug().size(), 3);
}

TEST(DelayedReference, PrintsNoNameForAnObserverWithoutAVariable)
{
    const MessageCapture log;
    Reference reference(QStringLiteral("ref"));
    reference.setObserver(std::make_shared<DataObserver>());
    EXPECT_EQ(reference.ReferencePath(), QString());
    EXPECT_EQ(log.debug(), QStringList(thirdCaseMessage(QString(), nullptr)));
    EXPECT_EQ(reference.GetPropertyRef(), nullptr);
}

TEST(DelayedReference, FormatsTheAddressToEightPlaces)
{
    EXPECT_EQ(QString::asprintf("%8p", static_cast<const void*>(nullptr)), QStringLiteral("     0x0"));
    EXPECT_EQ(QString::asprintf("%8p", reinterpret_cast<const void*>(0x1234abcdef)),
              QStringLiteral("0x1234abcdef"));
}

TEST_F(DataFiles, AreToldWithPathAndTypeByADelayedReferenceFromOutside)
{
    const MessageCapture log;
    const auto file = create(QStringLiteral("a.orr"));
    PropertyObject* folder = insertFolder(*file->GetRoot(), QStringLiteral("results"));
    Variable* variable = insertVariable(*folder, QStringLiteral("x"));
    PropertyObject other;
    const auto* reference = insert(other, delayedTo(*variable));
    EXPECT_EQ(reference->ReferencePath(), QStringLiteral("/results/x"));
    EXPECT_EQ(reference->ReferenceFilePath(), file->GetPath());
    EXPECT_EQ(reference->ReferenceFileType(), QStringLiteral("HDF5"));
    EXPECT_EQ(log.debug(), QStringList());
}

TEST_F(DataFiles, AreNotToldByADelayedReferenceInTheSameFile)
{
    const auto file = create(QStringLiteral("a.orr"));
    Variable* variable = insertVariable(*file->GetRoot(), QStringLiteral("x"));
    const auto* reference = insert(*file->GetRoot(), delayedTo(*variable));
    EXPECT_EQ(reference->ReferencePath(), QStringLiteral("../x"));
    EXPECT_EQ(reference->ReferenceFilePath(), QString());
    EXPECT_EQ(reference->ReferenceFileType(), QString());
}

TEST(DelayedReference, KnowsNoFileBehindAFileRootWithoutOne)
{
    DataFile::RootProperty root(nullptr);
    Variable* variable = insertVariable(root, QStringLiteral("x"));
    const auto reference = delayedTo(*variable);
    EXPECT_EQ(reference->ReferencePath(), QStringLiteral("/x"));
    EXPECT_EQ(reference->ReferenceFilePath(), QString());
    EXPECT_EQ(reference->ReferenceFileType(), QString());
}

// --- dead, moved and copied

TEST(DelayedReference, TreatsADestroyedVariableAsNone)
{
    PropertyObject top;
    Variable* variable = insertVariable(top, QStringLiteral("x"));
    const auto* reference = insert(top, delayedTo(*variable));
    ASSERT_GE(top.DeleteProperty(QStringLiteral("x")), 0);
    const MessageCapture log;
    EXPECT_EQ(reference->GetPropertyRef(), nullptr);
    EXPECT_EQ(reference->ResolveExternalRef(), nullptr);
    EXPECT_EQ(reference->ReferencePath(), QString());
    EXPECT_EQ(reference->ReferenceFilePath(), QString());
    EXPECT_EQ(reference->ReferenceFileType(), QString());
    EXPECT_EQ(log.debug().front(), thirdCaseMessage(QString(), nullptr));
}

TEST(DelayedReference, FollowsAVariableThatIsMovedIntoItsPlace)
{
    PropertyObject top;
    auto loose = std::make_unique<Variable>(QStringLiteral("x"));
    const auto* reference = insert(top, delayedTo(*loose));
    Variable* place = insertVariable(top, QStringLiteral("place"));
    *place = std::move(*loose);
    loose.reset();
    EXPECT_EQ(reference->GetPropertyRef(), place);
    EXPECT_EQ(reference->ReferencePath(), QStringLiteral("../place"));
}

TEST(DelayedReference, SharesItsObserverWithCopiesAndClones)
{
    PropertyObject top;
    Variable* variable = insertVariable(top, QStringLiteral("x"));
    PropertyObject* folder = insertFolder(top, QStringLiteral("folder"));
    const auto* reference = insert(*folder, delayedTo(*variable));
    const auto observer = variable->getObserver();
    const long holders = observer.use_count();

    const std::unique_ptr<AbstractProperty> clone(reference->Clone());
    auto* cloned = dynamic_cast<ObservablePropertyReference*>(clone.get());
    ASSERT_NE(cloned, nullptr);
    EXPECT_EQ(cloned->GetName(), QStringLiteral("ref"));
    EXPECT_EQ(cloned->Resolve(), variable);

    ObservablePropertyReference copy(*reference);
    EXPECT_EQ(copy.Resolve(), variable);
    ObservablePropertyReference assigned(QStringLiteral("other"));
    assigned = *reference;
    EXPECT_EQ(assigned.GetName(), QStringLiteral("other"));
    EXPECT_EQ(assigned.Resolve(), variable);
    EXPECT_EQ(observer.use_count(), holders + 3);

    auto moved = std::make_unique<Variable>(std::move(*variable)); // into the place of the first
    EXPECT_EQ(cloned->Resolve(), moved.get());
    EXPECT_EQ(copy.Resolve(), moved.get());
    moved.release(); // the folder's
    delete variable;
}

TEST(DelayedReference, InAClonedFolderStandsForTheOriginalVariable)
{
    PropertyObject top;
    PropertyObject* folder = insertFolder(top, QStringLiteral("folder"));
    Variable* variable = insertVariable(*folder, QStringLiteral("x"));
    ASSERT_NE(insert(*folder, delayedTo(*variable)), nullptr);
    auto* clone = static_cast<PropertyObject*>(folder->Clone());
    ASSERT_GE(clone->SetName(QStringLiteral("copy")), 0);
    ASSERT_GE(top.InsertProperty(clone), 0);
    auto& reference = referenceIn(*clone, QStringLiteral("ref"));
    EXPECT_EQ(reference.Resolve(), variable);
    EXPECT_EQ(reference.ReferencePath(), QStringLiteral("../../folder/x"));
}

TEST(DelayedReference, TwoTowardsOneVariableShareItsObserver)
{
    Variable variable(QStringLiteral("x"));
    const auto first = delayedTo(variable);
    const auto second = delayedTo(variable);
    EXPECT_EQ(variable.getObserver().use_count(), 1 + 3); // the notifier, the two, and this look
    EXPECT_EQ(variable.getDirtyTracker()->getObservers().nodes().size(), 1u);
}

// --- the course of a delayed binding

TEST(DelayedBinding, BindsAtOnceInOneTree)
{
    const MessageCapture log;
    PropertyObject top;
    Variable* variable = insertVariable(top, QStringLiteral("x"));
    PropertyObject* folder = insertFolder(top, QStringLiteral("folder"));
    EXPECT_EQ(insertVariableReference(*folder, QStringLiteral("0"), variable), ER_SUCCESS);
    const auto& reference = referenceIn(*folder, QStringLiteral("0"));
    EXPECT_EQ(reference.Resolve(), variable);
    EXPECT_EQ(reference.ResolveConst(), variable);
    EXPECT_EQ(variable->getObserver(), nullptr);
    EXPECT_EQ(log.debug(), QStringList());
}

TEST(DelayedBinding, GoesThroughTheObserverOfAVariableElsewhere)
{
    Variable variable(QStringLiteral("x"));
    PropertyObject folder;
    {
        const MessageCapture log;
        EXPECT_EQ(insertVariableReference(folder, QStringLiteral("0"), &variable), ER_SUCCESS);
        EXPECT_EQ(log.debug(), QStringList(QStringLiteral("used observer to delay reference binding!")));
    }
    EXPECT_EQ(insertVariableReference(folder, QStringLiteral("1"), &variable), ER_SUCCESS);
    ASSERT_NE(variable.getObserver(), nullptr);
    EXPECT_EQ(variable.getObserver().use_count(), 1 + 3); // the notifier, the two, and this look
    for (const QString& name : {QStringLiteral("0"), QStringLiteral("1")}) {
        EXPECT_NE(dynamic_cast<ObservablePropertyReference*>(folder.GetPropertyPtr(name)), nullptr);
        EXPECT_EQ(referenceIn(folder, name).Resolve(), &variable);
        EXPECT_EQ(referenceIn(folder, name).ResolveConst(), nullptr);
    }
}

TEST(DelayedBinding, FailsAsTheInsertionDoesAndLeavesTheFolderAsItWas)
{
    PropertyObject top;
    Variable* near = insertVariable(top, QStringLiteral("x"));
    Variable far(QStringLiteral("y"));
    EXPECT_EQ(insertVariableReference(top, QStringLiteral("x"), near), ER_ALREADY_EXISTS);
    EXPECT_EQ(insertVariableReference(top, QStringLiteral("x"), &far), ER_ALREADY_EXISTS);
    EXPECT_EQ(top.GetPropertyCount(), 1);
    EXPECT_EQ(top.GetPropertyPtr(QStringLiteral("x")), near);
    EXPECT_EQ(far.getObserver().use_count(), 1 + 1);
}

TEST(DelayedBinding, TakesTheReferenceOutAgainIfItCantBeSet)
{
    PropertyObject top;
    Variable* variable = insertVariable(top, QStringLiteral("x"));
    int seen = 0;
    ConnectedClient client(*variable);
    // A Variable whose end has begun is in the tree still and can't be referenced any more.
    client.onRemoved = [&] {
        ++seen;
        ASSERT_TRUE(top.CanReferenceProperty(variable));
        EXPECT_EQ(insertVariableReference(top, QStringLiteral("0"), variable), ER_INVALID_ARGUMENT);
        EXPECT_FALSE(top.HasProperty(QStringLiteral("0")));
    };
    delete variable;
    EXPECT_EQ(seen, 1);
    EXPECT_EQ(top.GetPropertyCount(), 0);
}

TEST(DelayedBinding, RefusesNoTarget)
{
    PropertyObject folder;
    EXPECT_EQ(insertVariableReference(folder, QStringLiteral("0"), nullptr), ER_INVALID_ARGUMENT);
    EXPECT_EQ(folder.GetPropertyCount(), 0);
}

// --- through save and reload

TEST_F(DataFiles, BringADelayedReferenceInOneTreeBackAsAPlainRelativeOne)
{
    auto file = create(QStringLiteral("a.orr"));
    auto loose = std::make_unique<Variable>(QStringLiteral("x"), numbers({1, 2}));
    PropertyObject* folder = insertFolder(*file->GetRoot(), QStringLiteral("folder"));
    ASSERT_EQ(insertVariableReference(*folder, QStringLiteral("0"), loose.get()), ER_SUCCESS);
    ASSERT_NE(insert(*file->GetRoot(), std::move(loose)), nullptr);

    const MessageCapture log;
    file = reload(std::move(file), QStringLiteral("a.orr"));
    auto* reloaded = file->GetRoot()->GetPtr<PropertyObject>(QStringLiteral("folder"));
    ASSERT_NE(reloaded, nullptr);
    const auto& reference = referenceIn(*reloaded, QStringLiteral("0"));
    EXPECT_EQ(dynamic_cast<const ObservablePropertyReference*>(&reference), nullptr);
    EXPECT_EQ(reference.ReferencePath(), QStringLiteral("../../x"));
    EXPECT_EQ(reference.Resolve(), file->GetRoot()->GetPropertyPtr(QStringLiteral("x")));
    EXPECT_NE(reference.ResolveConst(), nullptr);
    EXPECT_EQ(log.debug() + log.warnings(), QStringList());
}

TEST_F(DataFiles, BringADelayedReferenceToAnotherFileBackWithItsFile)
{
    auto from = create(QStringLiteral("from.orr"));
    auto to = create(QStringLiteral("to.orr"));
    auto loose = std::make_unique<Variable>(QStringLiteral("x"), numbers({1, 2, 3}));
    ASSERT_EQ(insertVariableReference(*from->GetRoot(), QStringLiteral("0"), loose.get()), ER_SUCCESS);
    PropertyObject* folder = insertFolder(*to->GetRoot(), QStringLiteral("folder"));
    ASSERT_NE(insert(*folder, std::move(loose)), nullptr);

    ASSERT_GE(to->Save(), 0);
    from = reload(std::move(from), QStringLiteral("from.orr"));
    auto& reference = referenceIn(*from->GetRoot(), QStringLiteral("0"));
    EXPECT_EQ(reference.ReferencePath(), QStringLiteral("/folder/x"));
    EXPECT_EQ(reference.ReferenceFilePath(), to->GetPath());
    EXPECT_EQ(reference.ReferenceFileType(), QStringLiteral("HDF5"));
}

TEST_F(DataFiles, SaveADelayedReferenceThatCantTellItsPathAsUnresolvedWithAWarning)
{
    auto file = create(QStringLiteral("a.orr"));
    Variable loose(QStringLiteral("x"));
    ASSERT_EQ(insertVariableReference(*file->GetRoot(), QStringLiteral("0"), &loose), ER_SUCCESS);

    const MessageCapture log;
    ASSERT_GE(file->Save(), 0);
    EXPECT_EQ(log.debug().front(), thirdCaseMessage(QStringLiteral("x"), &loose));
    EXPECT_EQ(log.warnings().size(), 1);
    EXPECT_TRUE(log.warnings().join(QString()).contains(QStringLiteral("/0")));

    file = reload(std::move(file), QStringLiteral("a.orr"));
    const auto& reference = referenceIn(*file->GetRoot(), QStringLiteral("0"));
    EXPECT_EQ(reference.Resolve(), nullptr);
    EXPECT_EQ(reference.ReferencePath(), QString());
}

TEST_F(DataFiles, SaveADelayedReferenceWhoseVariableWasDestroyed)
{
    auto file = create(QStringLiteral("a.orr"));
    auto loose = std::make_unique<Variable>(QStringLiteral("x"));
    ASSERT_EQ(insertVariableReference(*file->GetRoot(), QStringLiteral("0"), loose.get()), ER_SUCCESS);
    loose.reset();
    file = reload(std::move(file), QStringLiteral("a.orr"));
    EXPECT_EQ(referenceIn(*file->GetRoot(), QStringLiteral("0")).Resolve(), nullptr);
}

TEST_F(DataFiles, BringADelayedReferenceBackThatHasFollowedAMove)
{
    auto file = create(QStringLiteral("a.orr"));
    auto loose = std::make_unique<Variable>(QStringLiteral("x"));
    ASSERT_EQ(insertVariableReference(*file->GetRoot(), QStringLiteral("0"), loose.get()), ER_SUCCESS);
    auto* place = new Variable(QStringLiteral("place"));
    *place = std::move(*loose);
    loose.reset();
    ASSERT_GE(file->GetRoot()->InsertProperty(place), 0);
    file = reload(std::move(file), QStringLiteral("a.orr"));
    EXPECT_EQ(referenceIn(*file->GetRoot(), QStringLiteral("0")).Resolve(),
              file->GetRoot()->GetPropertyPtr(QStringLiteral("place")));
}

TEST_F(DataFiles, BringACloneOfADelayedReferenceBackWithItsOwnPath)
{
    auto file = create(QStringLiteral("a.orr"));
    auto loose = std::make_unique<Variable>(QStringLiteral("x"));
    PropertyObject* folder = insertFolder(*file->GetRoot(), QStringLiteral("folder"));
    ASSERT_EQ(insertVariableReference(*folder, QStringLiteral("0"), loose.get()), ER_SUCCESS);
    PropertyObject* deeper = insertFolder(*folder, QStringLiteral("deeper"));
    ASSERT_GE(deeper->InsertProperty(folder->GetPropertyPtr(QStringLiteral("0"))->Clone()), 0);
    ASSERT_NE(insert(*file->GetRoot(), std::move(loose)), nullptr);

    file = reload(std::move(file), QStringLiteral("a.orr"));
    auto* reloaded = file->GetRoot()->GetPtr<PropertyObject>(QStringLiteral("folder"));
    ASSERT_NE(reloaded, nullptr);
    deeper = reloaded->GetPtr<PropertyObject>(QStringLiteral("deeper"));
    ASSERT_NE(deeper, nullptr);
    const AbstractProperty* variable = file->GetRoot()->GetPropertyPtr(QStringLiteral("x"));
    EXPECT_EQ(referenceIn(*reloaded, QStringLiteral("0")).ReferencePath(), QStringLiteral("../../x"));
    EXPECT_EQ(referenceIn(*deeper, QStringLiteral("0")).ReferencePath(), QStringLiteral("../../../x"));
    EXPECT_EQ(referenceIn(*reloaded, QStringLiteral("0")).Resolve(), variable);
    EXPECT_EQ(referenceIn(*deeper, QStringLiteral("0")).Resolve(), variable);
}

} // namespace
} // namespace Orrery
