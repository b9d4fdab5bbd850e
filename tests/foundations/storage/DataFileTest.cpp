// The life of one open file: its root, closing it, saving it elsewhere, loading it again.
#include "tests/foundations/storage/CompareTrees.h"
#include "tests/foundations/storage/DataFiles.h"

#include "foundations/variant/VariantOperations.h"

#include <QFile>

#include <gtest/gtest.h>

#include <memory>

namespace Orrery::StorageTest {

using Brindle::Quay::BVariant;

namespace {

int NumberIn(DataFile& file)
{
    return Brindle::Quay::getScalar<int>(ValueOf(*file.GetRoot(), QStringLiteral("number")));
}

Builder Number(int number)
{
    return [number](PropertyObject& root) { AddValue(root, QStringLiteral("number"), BVariant(number)); };
}

class File : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_path = m_folder.Path(QStringLiteral("tree.h5"));
        SaveNew(m_path, Number(1)).reset();
    }

    ScratchFolder m_folder;
    QString m_path;
    DataFileFactory& m_factory = DataFileFactory::Instance();
};

} // namespace

TEST_F(File, TellsHowItWasOpened)
{
    const auto file = Open(m_path, DataFile::ReadWrite);
    EXPECT_EQ(file->GetPath(), m_path);
    EXPECT_EQ(file->GetMode(), DataFile::ReadWrite);
    EXPECT_EQ(file->GetFileType(), QStringLiteral("HDF5"));
    EXPECT_TRUE(file->OwnsFileContents());
}

TEST_F(File, HasARootThatLeadsBackToIt)
{
    const auto file = Open(m_path);
    const DataFile& constFile = *file;
    DataFile::RootProperty* const root = file->GetRoot();
    EXPECT_EQ(constFile.GetRoot(), root);
    EXPECT_EQ(root->GetName(), QStringLiteral("Root"));
    EXPECT_EQ(root->GetTypeFlags(), 9U);
    EXPECT_EQ(root->PropertyObjType(), DataFile::RootProperty::StaticType());
    EXPECT_EQ(root->GetParentFile(), file.get());
    const AbstractProperty* const child = root->GetPropertyConstPtr(QStringLiteral("number"));
    ASSERT_TRUE(child);
    EXPECT_TRUE(child->HasFileRoot());
    EXPECT_EQ(child->GetDataFile(), file.get());
}

TEST_F(File, GivesItsRootsCloneNoFile)
{
    const auto file = Open(m_path, DataFile::ReadWrite);
    const std::unique_ptr<AbstractProperty> clone(file->GetRoot()->Clone());
    auto* const root = dynamic_cast<DataFile::RootProperty*>(clone.get());
    ASSERT_TRUE(root);
    EXPECT_EQ(root->GetParentFile(), nullptr);
    EXPECT_EQ(root->GetName(), QStringLiteral("Root"));
    EXPECT_EQ(CompareTrees(*file->GetRoot(), *root), "");
}

TEST_F(File, LetsGoOfItsTreeWhenItIsClosed)
{
    const auto file = Open(m_path, DataFile::ReadWrite);
    EXPECT_EQ(file->Close(), ER_SUCCESS);
    EXPECT_EQ(file->GetRoot(), nullptr);
    EXPECT_EQ(file->Close(), ER_SUCCESS);
    const Outcome saved = TrySave(*file);
    EXPECT_EQ(saved.code, ER_FAILED);
    EXPECT_TRUE(IsOneLineAbout(saved.why, m_path)) << saved.why.toStdString();
    EXPECT_TRUE(saved.why.contains(QStringLiteral("closed"))) << saved.why.toStdString();
    EXPECT_EQ(NumberIn(*Open(m_path)), 1);
}

TEST_F(File, LeavesATreeThatItDoesNotOwnToItsHolder)
{
    auto file = Open(m_path);
    file->SetOwnsFileContents(false);
    EXPECT_FALSE(file->OwnsFileContents());
    const std::unique_ptr<DataFile::RootProperty> root(file->GetRoot());
    file.reset();
    EXPECT_EQ(root->GetParentFile(), nullptr);
    EXPECT_TRUE(root->HasProperty(QStringLiteral("number")));
    EXPECT_EQ(root->GetDataFile(), nullptr);
}

TEST_F(File, LeavesATreeThatItDoesNotOwnToItsHolderWhenItIsClosed)
{
    const auto file = Open(m_path);
    file->SetOwnsFileContents(false);
    const std::unique_ptr<DataFile::RootProperty> root(file->GetRoot());
    ASSERT_EQ(file->Close(), ER_SUCCESS);
    EXPECT_EQ(file->GetRoot(), nullptr);
    EXPECT_EQ(root->GetParentFile(), nullptr);
    EXPECT_TRUE(root->HasProperty(QStringLiteral("number")));
}

TEST_F(File, BearsThatItsRootIsDestroyed)
{
    auto file = Open(m_path, DataFile::ReadWrite);
    delete file->GetRoot();
    EXPECT_EQ(file->GetRoot(), nullptr);
    EXPECT_EQ(file->Save(), ER_FAILED);
    EXPECT_EQ(file->Close(), ER_SUCCESS);
    file.reset();
    EXPECT_EQ(NumberIn(*Open(m_path)), 1);
}

TEST_F(File, IsAtItsNewPlaceAfterItWasSavedThere)
{
    const QString there = m_folder.Path(QStringLiteral("there.h5"));
    auto file = Open(m_path, DataFile::ReadWrite);
    file->GetRoot()->SetProperty(QStringLiteral("number"), 2);
    ASSERT_EQ(file->SaveAs(there), ER_SUCCESS);
    EXPECT_EQ(file->GetPath(), there);
    EXPECT_EQ(m_factory.FindOpen(there), file);
    EXPECT_EQ(m_factory.FindOpen(m_path), nullptr);
    EXPECT_EQ(NumberIn(*Open(m_path)), 1) << "the file at the former place is as it was";
    file.reset();
    EXPECT_EQ(NumberIn(*Open(there)), 2);
}

TEST_F(File, TakesThePlaceOfAFileThatNobodyHasOpen)
{
    const QString there = m_folder.Path(QStringLiteral("there.h5"));
    WriteFile(there, QByteArrayLiteral("something else"));
    ASSERT_EQ(Open(m_path)->SaveAs(there), ER_SUCCESS);
    EXPECT_EQ(NumberIn(*Open(there)), 1);
}

TEST_F(File, CanBeSavedAtItsNewPlaceThoughItWasOpenedReadOnly)
{
    const QString there = m_folder.Path(QStringLiteral("there.h5"));
    const auto file = Open(m_path);
    ASSERT_EQ(file->SaveAs(there), ER_SUCCESS);
    EXPECT_EQ(file->GetMode(), DataFile::ReadWrite);
    file->GetRoot()->SetProperty(QStringLiteral("number"), 3);
    EXPECT_EQ(file->Save(), ER_SUCCESS);
    EXPECT_EQ(Open(there, DataFile::ReadWrite), file) << "it isn't read anew for its own save";
}

TEST_F(File, IsNotSavedOverTheFileThatItWasOpenedReadOnlyFrom)
{
    const QByteArray before = ReadFile(m_path);
    ASSERT_TRUE(QFile::link(QStringLiteral("tree.h5"), m_folder.Path(QStringLiteral("link.h5"))));
    const auto file = Open(m_path);
    for (const QString& path : {m_path, m_folder.Path(QStringLiteral("link.h5"))}) {
        QString why;
        EXPECT_EQ(file->SaveAs(path, &why), ER_FAILED);
        EXPECT_TRUE(IsOneLineAbout(why, path)) << why.toStdString();
    }
    EXPECT_EQ(file->SaveAs(m_path), ER_FAILED);
    EXPECT_EQ(file->GetMode(), DataFile::ReadOnly);
    EXPECT_EQ(file->GetPath(), m_path);
    EXPECT_TRUE(ReadFile(m_path) == before);
}

TEST_F(File, MayBeSavedToItsOwnPathWhenItIsForWriting)
{
    const auto file = Open(m_path, DataFile::ReadWrite);
    file->GetRoot()->SetProperty(QStringLiteral("number"), 4);
    EXPECT_EQ(file->SaveAs(m_path), ER_SUCCESS);
    EXPECT_EQ(m_factory.FindOpen(m_path), file);
    EXPECT_EQ(file->GetMode(), DataFile::ReadWrite);
}

TEST_F(File, IsNotSavedOverAFileThatIsOpen)
{
    const QString there = m_folder.Path(QStringLiteral("there.h5"));
    const auto other = SaveNew(there, Number(5));
    const auto file = Open(m_path, DataFile::ReadWrite);
    QString why;
    EXPECT_EQ(file->SaveAs(there, &why), ER_ALREADY_EXISTS);
    EXPECT_TRUE(IsOneLineAbout(why, there)) << why.toStdString();
    EXPECT_EQ(file->GetPath(), m_path);
    EXPECT_EQ(m_factory.FindOpen(there), other);
}

TEST_F(File, StaysWhereItWasWhenItCannotBeSavedElsewhere)
{
    const auto file = Open(m_path);
    QString why;
    const QString there = m_folder.Path(QStringLiteral("missing/there.h5"));
    EXPECT_EQ(file->SaveAs(there, &why), ER_NOT_FOUND);
    EXPECT_TRUE(IsOneLineAbout(why, there)) << why.toStdString();
    EXPECT_EQ(file->SaveAs(QString(), &why), ER_INVALID_ARGUMENT);
    EXPECT_FALSE(why.isEmpty());
    EXPECT_EQ(file->GetPath(), m_path);
    EXPECT_EQ(file->GetMode(), DataFile::ReadOnly);
    EXPECT_EQ(m_factory.FindOpen(m_path), file);
    EXPECT_EQ(NumberIn(*file), 1);
}

TEST_F(File, GivesItsTreeUpForTheFilesWhenItIsLoadedAgain)
{
    const auto file = Open(m_path, DataFile::ReadWrite);
    file->GetRoot()->SetProperty(QStringLiteral("number"), 6);
    file->GetRoot()->SetProperty(QStringLiteral("more"), 7);
    ASSERT_EQ(file->Load(), ER_SUCCESS);
    EXPECT_EQ(NumberIn(*file), 1);
    EXPECT_FALSE(file->GetRoot()->HasProperty(QStringLiteral("more")));
    EXPECT_EQ(file->GetRoot()->GetParentFile(), file.get());
}

TEST_F(File, KeepsItsTreeWhenItCannotBeLoadedAgain)
{
    const auto file = Open(m_path, DataFile::ReadWrite);
    file->GetRoot()->SetProperty(QStringLiteral("number"), 6);
    QByteArray bytes = ReadFile(m_path);
    ASSERT_TRUE(QFile::remove(m_path));
    QString why;
    EXPECT_EQ(file->Load(&why), ER_NOT_FOUND);
    EXPECT_TRUE(IsOneLineAbout(why, m_path)) << why.toStdString();
    WriteFile(m_path, bytes.left(bytes.size() / 2));
    EXPECT_EQ(file->Load(), ER_FAILED);
    EXPECT_EQ(NumberIn(*file), 6);
    EXPECT_EQ(file->Save(), ER_SUCCESS) << "and can still save it";
}

TEST_F(File, OfAnUnsavedTreeHasNothingToLoad)
{
    const auto file = Open(m_folder.Path(QStringLiteral("new.h5")), DataFile::Create);
    Number(8)(*file->GetRoot());
    EXPECT_EQ(file->Load(), ER_NOT_FOUND);
    EXPECT_EQ(NumberIn(*file), 8);
}

TEST_F(File, CanBeLoadedAgainAfterItWasClosed)
{
    const auto file = Open(m_path, DataFile::ReadWrite);
    ASSERT_EQ(file->Close(), ER_SUCCESS);
    ASSERT_EQ(file->Load(), ER_SUCCESS);
    EXPECT_EQ(NumberIn(*file), 1);
}

TEST_F(File, WithAPathInAnyScriptIsFoundAgain)
{
    const QString path =
        m_folder.Path(QString::fromUtf8("mess\xC3\xA4rgebnis \xE6\xB8\xAC\xE5\xAE\x9A %41 'q' \"d\".h5"));
    SaveNew(path, Number(2)).reset();
    EXPECT_EQ(NumberIn(*Open(path)), 2);
}

} // namespace Orrery::StorageTest
