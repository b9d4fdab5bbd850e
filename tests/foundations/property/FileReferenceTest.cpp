#include "foundations/property/PropertyReference.h"
#include "foundations/storage/DataFile.h"

#include "tests/foundations/property/TreeNodes.h"

#include <gtest/gtest.h>

#include <memory>

// References from the tree of one file into that of another, and what nodes tell of their file.

namespace Orrery {
namespace {

using namespace TreeTest;

/// A file of a host's own type that is never written.
class MemoryFile : public DataFile
{
public:
    explicit MemoryFile(const QString& path)
        : DataFile(path, Create)
    {
    }
    ERESULT Load(QString*) override { return ER_FAILED; }
    ERESULT Save(QString*) override { return ER_FAILED; }
    ERESULT Close() override
    {
        DropRoot();
        return ER_SUCCESS;
    }
    QString GetFileType() const override { return QStringLiteral("Memory"); }
};

class FileReference : public ::testing::Test
{
protected:
    FileReference()
    {
        PropertyReference::SetExternalResolver(nullptr);
        target = addFolder(*there.GetRoot(), QStringLiteral("target"));
        reference = addReference(*here.GetRoot(), QStringLiteral("r"), *target);
    }
    ~FileReference() override { PropertyReference::SetExternalResolver(m_former); }

    MemoryFile here{QStringLiteral("here.mem")};
    MemoryFile there{QStringLiteral("there.mem")};
    HostFolder* target;
    PropertyReference* reference;

private:
    const PropertyReference::ExternalResolver m_former = PropertyReference::GetExternalResolver();
};

TEST_F(FileReference, RootsHaveTheTypeFlagsOfAFileRoot)
{
    EXPECT_EQ(here.GetRoot()->GetTypeFlags(), 9U);
    EXPECT_TRUE(here.GetRoot()->IsFileRoot());
    EXPECT_TRUE(here.GetRoot()->IsPropertyObject());
    EXPECT_EQ(here.GetRoot()->GetName(), QStringLiteral("Root"));
    EXPECT_EQ(here.GetRoot()->GetParentFile(), &here);
}

TEST_F(FileReference, NodesKnowTheirFile)
{
    EXPECT_TRUE(target->HasFileRoot());
    EXPECT_EQ(target->GetDataFile(), &there);
    EXPECT_EQ(reference->GetDataFile(), &here);
    EXPECT_EQ(here.GetRoot()->GetDataFile(), &here);
    const std::unique_ptr<AbstractProperty> taken(there.GetRoot()->TakeProperty(QStringLiteral("target")));
    EXPECT_EQ(target->GetDataFile(), nullptr);
    EXPECT_FALSE(target->HasFileRoot());
}

TEST_F(FileReference, TellsAnAbsolutePathAndTheFile)
{
    EXPECT_EQ(reference->Resolve(), target);
    EXPECT_EQ(reference->ReferencePath(), QStringLiteral("/target"));
    EXPECT_EQ(reference->ReferenceFilePath(), QStringLiteral("there.mem"));
    EXPECT_EQ(reference->ReferenceFileType(), QStringLiteral("Memory"));
    ASSERT_EQ(target->SetName(QStringLiteral("renamed")), ER_SUCCESS);
    EXPECT_EQ(reference->ReferencePath(), QStringLiteral("/renamed"));
    EXPECT_TRUE(reference->IsRefPropertyObject());
}

TEST_F(FileReference, TellsARelativePathOnceTheTargetHasComeIntoItsOwnTree)
{
    ASSERT_EQ(there.GetRoot()->RemoveProperty(QStringLiteral("target")), ER_SUCCESS);
    EXPECT_EQ(reference->Resolve(), nullptr);
    ASSERT_EQ(here.GetRoot()->InsertProperty(target), ER_SUCCESS);
    EXPECT_EQ(reference->Resolve(), target);
    EXPECT_EQ(reference->ReferencePath(), QStringLiteral("../target"));
    EXPECT_TRUE(reference->ReferenceFilePath().isEmpty());
    EXPECT_TRUE(reference->ReferenceFileType().isEmpty());
}

TEST_F(FileReference, KeepsWhatItKnowsWhenTheOtherFileIsClosed)
{
    ASSERT_EQ(there.Close(), ER_SUCCESS);
    EXPECT_EQ(reference->Resolve(), nullptr);
    EXPECT_EQ(reference->ReferencePath(), QStringLiteral("/target"));
    EXPECT_EQ(reference->ReferenceFilePath(), QStringLiteral("there.mem"));
    EXPECT_EQ(reference->ReferenceFileType(), QStringLiteral("Memory"));
    // The same path in its own tree is something else.
    addFolder(*here.GetRoot(), QStringLiteral("target"));
    EXPECT_EQ(reference->Resolve(), nullptr);
}

TEST_F(FileReference, KeepsTheLastPathOfATargetThatWasRenamedAndDestroyed)
{
    ASSERT_EQ(target->SetName(QStringLiteral("renamed")), ER_SUCCESS);
    delete target;
    EXPECT_EQ(reference->Resolve(), nullptr);
    EXPECT_EQ(reference->ReferencePath(), QStringLiteral("/renamed"));
    EXPECT_EQ(reference->ReferenceFilePath(), QStringLiteral("there.mem"));
}

TEST_F(FileReference, KeepsThePathInTheFileOfATargetThatDiedElsewhere)
{
    PropertyObject loose;
    HostFolder* middle = addFolder(loose, QStringLiteral("middle"));
    ASSERT_EQ(target->SetName(QStringLiteral("renamed")), ER_SUCCESS);
    ASSERT_EQ(there.GetRoot()->RemoveProperty(QStringLiteral("renamed")), ER_SUCCESS);
    ASSERT_EQ(middle->InsertProperty(target), ER_SUCCESS);
    ASSERT_EQ(middle->DeleteProperty(QStringLiteral("renamed")), ER_SUCCESS);
    EXPECT_EQ(reference->Resolve(), nullptr);
    EXPECT_EQ(reference->ReferencePath(), QStringLiteral("/renamed"));
    EXPECT_EQ(reference->ReferenceFilePath(), QStringLiteral("there.mem"));
    EXPECT_EQ(reference->ReferenceFileType(), QStringLiteral("Memory"));
}

TEST_F(FileReference, KeepsTheFileThatItsTargetHasLeftLast)
{
    MemoryFile third(QStringLiteral("third.mem"));
    ASSERT_EQ(there.GetRoot()->RemoveProperty(QStringLiteral("target")), ER_SUCCESS);
    ASSERT_EQ(third.GetRoot()->InsertProperty(target), ER_SUCCESS);
    ASSERT_EQ(target->SetName(QStringLiteral("renamed")), ER_SUCCESS);
    delete target;
    EXPECT_EQ(reference->ReferencePath(), QStringLiteral("/renamed"));
    EXPECT_EQ(reference->ReferenceFilePath(), QStringLiteral("third.mem"));
    ASSERT_EQ(third.Close(), ER_SUCCESS);
}

TEST_F(FileReference, KeepsTheLastPathOfATargetWhoseFileWasClosed)
{
    ASSERT_EQ(target->SetName(QStringLiteral("renamed")), ER_SUCCESS);
    ASSERT_EQ(there.Close(), ER_SUCCESS);
    EXPECT_EQ(reference->ReferencePath(), QStringLiteral("/renamed"));
    EXPECT_EQ(reference->ReferenceFilePath(), QStringLiteral("there.mem"));
}

TEST_F(FileReference, KeepsTheLastPathAndTheTypeWhenAFileIsDestroyedThatWasNotClosed)
{
    auto third = std::make_unique<MemoryFile>(QStringLiteral("third.mem"));
    HostFolder* const inside = addFolder(*third->GetRoot(), QStringLiteral("inside"));
    const PropertyReference* const across = addReference(*here.GetRoot(), QStringLiteral("across"), *inside);
    ASSERT_EQ(inside->SetName(QStringLiteral("renamed")), ER_SUCCESS);
    third.reset(); // from its destructor on nobody can ask it for its type
    EXPECT_EQ(across->Resolve(), nullptr);
    EXPECT_EQ(across->ReferencePath(), QStringLiteral("/renamed"));
    EXPECT_EQ(across->ReferenceFilePath(), QStringLiteral("third.mem"));
    EXPECT_EQ(across->ReferenceFileType(), QStringLiteral("Memory"));
}

TEST_F(FileReference, KeepsTheLastPathWhenAHostDestroysTheRoot)
{
    ASSERT_EQ(target->SetName(QStringLiteral("renamed")), ER_SUCCESS);
    delete there.GetRoot();
    EXPECT_EQ(there.GetRoot(), nullptr);
    EXPECT_EQ(reference->ReferencePath(), QStringLiteral("/renamed"));
    EXPECT_EQ(reference->ReferenceFileType(), QStringLiteral("Memory"));
}

TEST_F(FileReference, KnowsAsMuchAsItWasRestoredWith)
{
    const PropertyReference::TargetFile file{QStringLiteral("/a/x.mem"), QStringLiteral("/b/x.mem"),
                                             QStringLiteral("Memory"), QStringLiteral("uid")};
    reference->RestorePath(QStringLiteral("/x"), file);
    const auto expectAll = [&file](const PropertyReference& known) {
        EXPECT_EQ(known.ReferencePath(), QStringLiteral("/x"));
        EXPECT_EQ(known.ReferenceFilePath(), file.path) << "as long as there is nothing at either path";
        EXPECT_EQ(known.ReferenceFile().path, file.path);
        EXPECT_EQ(known.ReferenceFile().otherPath, file.otherPath);
        EXPECT_EQ(known.ReferenceFile().type, file.type);
        EXPECT_EQ(known.ReferenceFile().uid, file.uid);
    };
    expectAll(*reference);
    const std::unique_ptr<AbstractProperty> clone(reference->Clone());
    expectAll(*dynamic_cast<PropertyReference*>(clone.get()));
    ASSERT_EQ(reference->SetPropertyRef(target), ER_SUCCESS);
    EXPECT_EQ(reference->ReferenceFile().path, QStringLiteral("there.mem"));
    EXPECT_EQ(reference->ReferenceFile().otherPath, QString());
    EXPECT_EQ(reference->ReferenceFile().uid, QString());
}

TEST_F(FileReference, CopiesKeepTheFile)
{
    const std::unique_ptr<AbstractProperty> clone(reference->Clone());
    auto* copy = dynamic_cast<PropertyReference*>(clone.get());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->ReferencePath(), QStringLiteral("/target"));
    EXPECT_EQ(copy->ReferenceFilePath(), QStringLiteral("there.mem"));
    EXPECT_EQ(copy->ReferenceFileType(), QStringLiteral("Memory"));
    auto* assigned = new PropertyReference(QStringLiteral("assigned"));
    ASSERT_EQ(here.GetRoot()->InsertProperty(assigned), ER_SUCCESS);
    *assigned = *reference;
    EXPECT_EQ(assigned->Resolve(), target);
}

TEST_F(FileReference, IsMadeByFolders)
{
    EXPECT_TRUE(here.GetRoot()->CanReferenceProperty(target));
    EXPECT_EQ(here.GetRoot()->SetPropertyRef(QStringLiteral("second"), target), ER_SUCCESS);
    const auto* second = here.GetRoot()->GetPtr<PropertyReference>(QStringLiteral("second"));
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->Resolve(), target);
    PropertyObject outside;
    EXPECT_EQ(outside.SetPropertyRef(QStringLiteral("r"), target), ER_INVALID_ARGUMENT);
    EXPECT_EQ(outside.GetPropertyCount(), 0);
}

TEST_F(FileReference, TellsNoPathToARootThatItsFileHasLetGo)
{
    const std::unique_ptr<PropertyObject> kept(there.GetRoot());
    there.SetOwnsFileContents(false);
    ASSERT_EQ(there.Close(), ER_SUCCESS);
    EXPECT_EQ(reference->Resolve(), target);
    EXPECT_TRUE(reference->ReferencePath().isEmpty());
    EXPECT_TRUE(reference->ReferenceFilePath().isEmpty());
    EXPECT_TRUE(reference->ReferenceFileType().isEmpty());
}

TEST_F(FileReference, WorksBetweenRootsWithoutAFile)
{
    RootLikeFolder first(QStringLiteral("Root"));
    RootLikeFolder second(QStringLiteral("Root"));
    const HostFolder* inside = addFolder(second, QStringLiteral("inside"));
    const PropertyReference* across = addReference(first, QStringLiteral("r"), *inside);
    EXPECT_EQ(across->Resolve(), inside);
    EXPECT_TRUE(across->ReferencePath().isEmpty()); // "/inside" would be looked up in the reference's tree
    EXPECT_TRUE(across->ReferenceFilePath().isEmpty());
    delete inside;
    EXPECT_TRUE(across->ReferencePath().isEmpty());
    EXPECT_EQ(across->Resolve(), nullptr);
}

} // namespace
} // namespace Orrery
