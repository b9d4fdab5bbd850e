// References into other data files: where the files are looked for, who holds them, and what is told when they aren't
// there.
#include "foundations/property/PropertyPath.h"
#include "foundations/property/PropertyReference.h"
#include "foundations/variant/VariantOperations.h"
#include "tests/foundations/storage/DataFiles.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

namespace Orrery::StorageTest {
namespace {

using Brindle::Quay::BVariant;

const QString s_x = QStringLiteral("x");

PropertyReference* ReferenceIn(DataFile& file, const QString& name = QStringLiteral("out"))
{
    return file.GetRoot()->GetPtr<PropertyReference>(name);
}

double NumberOf(const AbstractProperty* leaf)
{
    const auto* const value = dynamic_cast<const SimpleProperty*>(leaf);
    return value ? Brindle::Quay::getScalar<double>(value->GetValue()) : -1;
}

/// "here.h5" with references "out" and "again" to /f/x in "there.h5", which holds a number. Both are saved and closed.
class ReferencedFile : public ::testing::Test
{
protected:
    ReferencedFile()
    {
        SaveThere(1);
        const auto there = Open(m_there);
        SaveNew(m_here, [&](PropertyObject& root) {
            AddReference(root, QStringLiteral("out"), TargetIn(*there));
            AddReference(root, QStringLiteral("again"), TargetIn(*there));
        });
    }

    /// Anew, so that it gets a uid of its own.
    void SaveThere(double number) const { SaveNumber(m_there, number); }

    static void SaveNumber(const QString& path, double number)
    {
        SaveNew(path, [number](PropertyObject& root) {
            AddValue(*AddFolder(root, QStringLiteral("f")), s_x, BVariant(number));
        });
    }
    /// With its uid kept.
    static void Change(const QString& path, double number)
    {
        const auto file = Open(path, DataFile::ReadWrite);
        file->GetRoot()->GetPtr<PropertyObject>(QStringLiteral("f"))->SetProperty(s_x, number);
        ASSERT_EQ(file->Save(), ER_SUCCESS);
    }
    static const AbstractProperty& TargetIn(DataFile& file)
    {
        return *file.GetRoot()->GetPtr<PropertyObject>(QStringLiteral("f"))->GetPropertyPtr(s_x);
    }
    std::shared_ptr<DataFile> OpenThere() const { return DataFileFactory::Instance().FindOpen(m_there); }
    void Remove(const QString& path) const { ASSERT_TRUE(QFile::remove(path)); }

    ScratchFolder m_folder;
    QString m_here = m_folder.Path(QStringLiteral("here.h5"));
    QString m_there = m_folder.Path(QStringLiteral("there.h5"));
};

TEST_F(ReferencedFile, IsOpenedReadOnlyWhenItIsFirstAskedFor)
{
    const auto here = Open(m_here);
    EXPECT_EQ(OpenThere(), nullptr);
    const AbstractProperty* const x = ReferenceIn(*here)->Resolve();
    EXPECT_EQ(NumberOf(x), 1);
    ASSERT_NE(OpenThere(), nullptr);
    EXPECT_EQ(OpenThere()->GetMode(), DataFile::ReadOnly);
    EXPECT_EQ(ReferenceIn(*here, QStringLiteral("again"))->ResolveConst(), x);
    EXPECT_EQ(x->GetDataFile(), OpenThere().get());
}

TEST_F(ReferencedFile, IsLetGoWithTheTree)
{
    auto here = Open(m_here, DataFile::ReadWrite);
    ASSERT_NE(ReferenceIn(*here)->Resolve(), nullptr);
    ASSERT_EQ(here->Load(), ER_SUCCESS);
    EXPECT_EQ(OpenThere(), nullptr) << "the new tree hasn't asked yet";
    ASSERT_NE(ReferenceIn(*here)->Resolve(), nullptr);
    ASSERT_EQ(here->Close(), ER_SUCCESS);
    EXPECT_EQ(OpenThere(), nullptr);
    here = Open(m_here);
    ASSERT_NE(ReferenceIn(*here)->Resolve(), nullptr);
    here.reset();
    EXPECT_EQ(OpenThere(), nullptr);
}

TEST_F(ReferencedFile, StaysOpenForATreeThatItsFileHasLetGo)
{
    auto here = Open(m_here);
    const PropertyReference* const out = ReferenceIn(*here);
    ASSERT_NE(out->Resolve(), nullptr);
    here->SetOwnsFileContents(false);
    std::unique_ptr<DataFile::RootProperty> root(here->GetRoot());
    here.reset();
    EXPECT_EQ(NumberOf(out->Resolve()), 1);
    root.reset();
    EXPECT_EQ(OpenThere(), nullptr);
}

TEST_F(ReferencedFile, ThatIsOpenAlreadyIsUsedAndNotHeld)
{
    const auto here = Open(m_here);
    auto there = Open(m_there, DataFile::ReadWrite);
    EXPECT_EQ(ReferenceIn(*here)->Resolve(), &TargetIn(*there));
    there.reset();
    EXPECT_EQ(OpenThere(), nullptr);
    EXPECT_EQ(NumberOf(ReferenceIn(*here)->Resolve()), 1) << "then it is opened, and held";
    EXPECT_NE(OpenThere(), nullptr);
}

TEST_F(ReferencedFile, AndItsReferrerMayBeMovedAsOneFolder)
{
    const ScratchFolder elsewhere;
    const QString here = elsewhere.Path(QStringLiteral("here.h5"));
    const QString there = elsewhere.Path(QStringLiteral("there.h5"));
    ASSERT_TRUE(QFile::copy(m_here, here));
    ASSERT_TRUE(QFile::copy(m_there, there)); // and the old ones are still at their places
    const auto file = Open(here);
    const auto* const found = ReferenceIn(*file)->Resolve();
    EXPECT_EQ(NumberOf(found), 1);
    EXPECT_EQ(found->GetDataFile()->GetPath(), there);
    EXPECT_EQ(OpenThere(), nullptr);
}

TEST_F(ReferencedFile, IsFoundAtItsAbsolutePathByAReferrerThatWasMovedAlone)
{
    const ScratchFolder elsewhere;
    const QString moved = elsewhere.Path(QStringLiteral("here.h5"));
    ASSERT_TRUE(QFile::rename(m_here, moved));
    const auto file = Open(moved);
    const AbstractProperty* const found = ReferenceIn(*file)->Resolve();
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->GetDataFile(), OpenThere().get());
    EXPECT_EQ(ReferenceIn(*file)->ReferenceFilePath(), m_there);
}

TEST_F(ReferencedFile, IsFoundFromWhereItsReferrerWasSavedTo)
{
    const ScratchFolder elsewhere;
    ASSERT_TRUE(QDir(elsewhere.Path(QString())).mkdir(QStringLiteral("sub")));
    {
        const auto here = Open(m_here, DataFile::ReadWrite);
        ASSERT_EQ(here->SaveAs(m_folder.Path(QStringLiteral("sub.h5"))), ER_SUCCESS)
            << "nothing was looked up yet";
        QDir(m_folder.Path(QString())).mkdir(QStringLiteral("sub"));
        ASSERT_EQ(here->SaveAs(m_folder.Path(QStringLiteral("sub/here.h5"))), ER_SUCCESS);
    }
    ASSERT_TRUE(QFile::copy(m_folder.Path(QStringLiteral("sub/here.h5")),
                            elsewhere.Path(QStringLiteral("sub/here.h5"))));
    ASSERT_TRUE(QFile::rename(m_there, elsewhere.Path(QStringLiteral("there.h5"))));
    const auto file = Open(elsewhere.Path(QStringLiteral("sub/here.h5")));
    EXPECT_EQ(ReferenceIn(*file)->Resolve()->GetDataFile()->GetPath(),
              elsewhere.Path(QStringLiteral("there.h5")));
}

// --- the identity of a file

TEST_F(ReferencedFile, IsToldByItsUid)
{
    const QString uid = Open(m_there)->GetFileUid();
    EXPECT_FALSE(uid.isEmpty());
    {
        const auto here = Open(m_here, DataFile::ReadWrite);
        EXPECT_EQ(ReferenceIn(*here)->ReferenceFile().uid, uid);
        ASSERT_NE(ReferenceIn(*here)->Resolve(), nullptr);
        EXPECT_EQ(ReferenceIn(*here)->ReferenceFile().uid, uid);
        ASSERT_EQ(here->Save(), ER_SUCCESS);
    }
    EXPECT_EQ(ReferenceIn(*Open(m_here))->ReferenceFile().uid, uid);
}

TEST_F(ReferencedFile, IsToldByItsUidBeforeItWasSaved)
{
    const QString path = m_folder.Path(QStringLiteral("new.h5"));
    const QString referrer = m_folder.Path(QStringLiteral("referrer.h5"));
    {
        const auto target = Open(path, DataFile::Create);
        AddFolder(*target->GetRoot(), s_x);
        SaveNew(referrer, [&](PropertyObject& root) {
            AddReference(root, QStringLiteral("out"), *target->GetRoot()->GetPropertyPtr(s_x));
        });
        ASSERT_EQ(target->Save(), ER_SUCCESS);
    }
    const auto file = Open(referrer);
    ASSERT_NE(ReferenceIn(*file)->Resolve(), nullptr);
    EXPECT_EQ(ReferenceIn(*file)->ReferenceFile().uid, Open(path)->GetFileUid());
}

TEST_F(ReferencedFile, KeepsItsRecordThroughASaveWhileItIsMissing)
{
    const ScratchFolder elsewhere;
    const QString moved = elsewhere.Path(QStringLiteral("here.h5"));
    ASSERT_TRUE(QFile::rename(m_here, moved));
    const QString uid = Open(m_there)->GetFileUid();
    Remove(m_there);
    {
        const auto file = Open(moved, DataFile::ReadWrite);
        const LogCapture log;
        ASSERT_EQ(ReferenceIn(*file)->Resolve(), nullptr);
        ASSERT_EQ(file->Save(), ER_SUCCESS);
    }
    const auto file = Open(moved);
    const PropertyReference::TargetFile kept = ReferenceIn(*file)->ReferenceFile();
    EXPECT_EQ(kept.path, elsewhere.Path(QStringLiteral("there.h5")));
    EXPECT_EQ(kept.otherPath, m_there);
    EXPECT_EQ(kept.uid, uid);
    EXPECT_EQ(kept.type, QStringLiteral("HDF5"));
    EXPECT_EQ(ReferenceIn(*file)->ReferencePath(), QStringLiteral("/f/x"));
}

TEST_F(ReferencedFile, IsPassedOverWhereAnotherHasTakenItsPlace)
{
    const ScratchFolder elsewhere;
    const QString moved = elsewhere.Path(QStringLiteral("here.h5"));
    ASSERT_TRUE(QFile::rename(m_here, moved));
    SaveNumber(elsewhere.Path(QStringLiteral("there.h5")), 2);
    const LogCapture log;
    const auto file = Open(moved);
    EXPECT_EQ(NumberOf(ReferenceIn(*file)->Resolve()), 1) << "the one at the absolute path is the right one";
    EXPECT_EQ(NumberOf(ReferenceIn(*file, QStringLiteral("again"))->Resolve()), 1);
    EXPECT_EQ(log.Warnings(), QStringList());
    EXPECT_EQ(DataFileFactory::Instance().FindOpen(elsewhere.Path(QStringLiteral("there.h5"))), nullptr);
}

TEST_F(ReferencedFile, IsNotReplacedByAnotherThatIsOpen)
{
    SaveThere(2);
    const auto another = Open(m_there);
    const LogCapture log;
    const auto here = Open(m_here);
    EXPECT_EQ(ReferenceIn(*here)->Resolve(), nullptr);
    EXPECT_EQ(ReferenceIn(*here)->Resolve(), nullptr);
    EXPECT_EQ(log.Warnings().size(), 1);
}

TEST_F(ReferencedFile, ThatWasSavedAnewIsTheSame)
{
    Change(m_there, 3);
    const auto here = Open(m_here);
    EXPECT_EQ(NumberOf(ReferenceIn(*here)->Resolve()), 3);
}

// --- what is told, and when it is looked for again

TEST_F(ReferencedFile, ThatIsMissingIsToldOnceWithBothPaths)
{
    const ScratchFolder elsewhere;
    const QString moved = elsewhere.Path(QStringLiteral("here.h5"));
    ASSERT_TRUE(QFile::rename(m_here, moved));
    Remove(m_there);
    const auto here = Open(moved);
    const LogCapture log;
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(ReferenceIn(*here)->Resolve(), nullptr);
        EXPECT_EQ(ReferenceIn(*here, QStringLiteral("again"))->Resolve(), nullptr);
    }
    const QString beside = elsewhere.Path(QStringLiteral("there.h5"));
    EXPECT_EQ(log.Warnings(),
              QStringList{moved + QStringLiteral(": reference /out can't be resolved to /f/x: ") + beside +
                          QStringLiteral(": No such file or directory; ") + m_there +
                          QStringLiteral(": No such file or directory")});
}

TEST_F(ReferencedFile, ThatIsAnotherIsToldOnce)
{
    SaveThere(2);
    const auto here = Open(m_here);
    const LogCapture log;
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(ReferenceIn(*here)->Resolve(), nullptr);
    EXPECT_EQ(log.Warnings(),
              QStringList{m_here + QStringLiteral(": reference /out can't be resolved to /f/x: ") + m_there +
                          QStringLiteral(": is another file than the one that was referred to")});
    EXPECT_EQ(OpenThere(), nullptr) << "one that isn't used isn't held";
}

TEST_F(ReferencedFile, WithoutTheTargetIsToldOnce)
{
    {
        const auto there = Open(m_there, DataFile::ReadWrite);
        there->GetRoot()->DeleteProperty(QStringLiteral("f"));
        ASSERT_EQ(there->Save(), ER_SUCCESS);
    }
    const auto here = Open(m_here);
    const LogCapture log;
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(ReferenceIn(*here)->Resolve(), nullptr);
        EXPECT_EQ(ReferenceIn(*here, QStringLiteral("again"))->Resolve(), nullptr);
    }
    EXPECT_EQ(log.Warnings(),
              QStringList{m_here +
                          QStringLiteral(": reference /out can't be resolved: there is no /f/x in ") +
                          m_there});
    AddValue(*AddFolder(*OpenThere()->GetRoot(), QStringLiteral("f")), s_x, BVariant(5.0));
    EXPECT_EQ(NumberOf(ReferenceIn(*here)->Resolve()), 5) << "the open file is asked each time";
}

TEST_F(ReferencedFile, ThatIsMissingIsLookedForAgainWhenTheHostWantsIt)
{
    const QString away = m_folder.Path(QStringLiteral("away.h5"));
    ASSERT_TRUE(QFile::rename(m_there, away));
    const auto here = Open(m_here);
    const LogCapture log;
    EXPECT_EQ(ReferenceIn(*here)->Resolve(), nullptr);
    here->RetryReferences();
    EXPECT_EQ(ReferenceIn(*here)->Resolve(), nullptr);
    EXPECT_EQ(log.Warnings().size(), 2) << "and told again";
    ASSERT_TRUE(QFile::rename(away, m_there));
    EXPECT_EQ(ReferenceIn(*here)->Resolve(), nullptr) << "the disk isn't asked each time";
    here->RetryReferences();
    EXPECT_EQ(NumberOf(ReferenceIn(*here)->Resolve()), 1);
}

TEST_F(ReferencedFile, ThatIsMissingIsLookedForAgainAfterALoad)
{
    const QString away = m_folder.Path(QStringLiteral("away.h5"));
    ASSERT_TRUE(QFile::rename(m_there, away));
    const auto here = Open(m_here);
    const LogCapture log;
    EXPECT_EQ(ReferenceIn(*here)->Resolve(), nullptr);
    ASSERT_TRUE(QFile::rename(away, m_there));
    ASSERT_EQ(here->Load(), ER_SUCCESS);
    EXPECT_EQ(NumberOf(ReferenceIn(*here)->Resolve()), 1);
}

TEST_F(ReferencedFile, ThatIsMissingIsLookedForAgainWhenAnyFileWasOpened)
{
    const QString away = m_folder.Path(QStringLiteral("away.h5"));
    ASSERT_TRUE(QFile::rename(m_there, away));
    const auto here = Open(m_here);
    const LogCapture log;
    EXPECT_EQ(ReferenceIn(*here)->Resolve(), nullptr);
    Open(away).reset();
    EXPECT_EQ(ReferenceIn(*here)->Resolve(), nullptr);
    EXPECT_EQ(log.Warnings().size(), 1) << "nothing has changed at its place";
    ASSERT_TRUE(QFile::rename(away, m_there));
    Open(m_folder.Path(QStringLiteral("any.h5")), DataFile::Create).reset();
    EXPECT_EQ(NumberOf(ReferenceIn(*here)->Resolve()), 1);
}

TEST_F(ReferencedFile, ThatIsMissingOnTheDiskMayBeInMemory)
{
    const QString uid = Open(m_there)->GetFileUid();
    auto here = Open(m_here, DataFile::ReadWrite);
    auto there = Open(m_there, DataFile::ReadWrite);
    Remove(m_there);
    EXPECT_EQ(ReferenceIn(*here)->Resolve(), &TargetIn(*there));
}

TEST_F(ReferencedFile, OfAnUnknownTypeIsTold)
{
    const auto here = Open(m_here);
    ReferenceIn(*here)->RestorePath(QStringLiteral("/f/x"), m_there, QStringLiteral("Stone"));
    const LogCapture log;
    EXPECT_EQ(ReferenceIn(*here)->Resolve(), nullptr);
    ASSERT_EQ(log.Warnings().size(), 1);
    EXPECT_TRUE(log.Warnings()[0].endsWith(m_there + QStringLiteral(": unknown file type 'Stone'")))
        << qPrintable(log.Warnings()[0]);
}

TEST_F(ReferencedFile, OfNoStatedTypeIsOneOfTheBuiltInType)
{
    const auto here = Open(m_here);
    ReferenceIn(*here)->RestorePath(QStringLiteral("/f/x"), m_there);
    EXPECT_EQ(NumberOf(ReferenceIn(*here)->Resolve()), 1);
}

// --- its own file

TEST_F(ReferencedFile, ThatItHasComeToStandInIsItsOwnTree)
{
    const auto there = Open(m_there, DataFile::ReadWrite);
    auto* const back = new PropertyReference(QStringLiteral("back"));
    ASSERT_EQ(there->GetRoot()->InsertProperty(back), ER_SUCCESS);
    back->RestorePath(QStringLiteral("/f/x"),
                      {m_there, QString(), QStringLiteral("HDF5"), there->GetFileUid()});
    EXPECT_EQ(back->ReferenceFilePath(), m_there);
    EXPECT_EQ(back->Resolve(), &TargetIn(*there));
    EXPECT_EQ(back->ReferencePath(), QStringLiteral("../f/x"));
    EXPECT_EQ(back->ReferenceFilePath(), QString());
    EXPECT_EQ(back->ReferenceFile().uid, QString());
}

TEST_F(ReferencedFile, ThatItStandsInIsKnownByAnySpelling)
{
    const QString link = m_folder.Path(QStringLiteral("link.h5"));
    ASSERT_TRUE(QFile::link(m_there, link));
    const auto there = Open(m_there);
    for (const QString& path : {link, m_folder.Path(QStringLiteral("./there.h5")),
                                m_folder.Path(QStringLiteral("no/../there.h5"))}) {
        auto* const back = new PropertyReference(QStringLiteral("back"));
        ASSERT_EQ(there->GetRoot()->InsertOrReplaceProperty(back), ER_SUCCESS);
        back->RestorePath(QStringLiteral("/f/x"), QDir::cleanPath(path));
        EXPECT_EQ(back->Resolve(), &TargetIn(*there)) << qPrintable(path);
    }
}

TEST_F(ReferencedFile, ThatItStandsInIsPassedOverWhenAnotherWasMeant)
{
    const auto there = Open(m_there);
    auto* const back = new PropertyReference(QStringLiteral("back"));
    ASSERT_EQ(there->GetRoot()->InsertProperty(back), ER_SUCCESS);
    back->RestorePath(QStringLiteral("/f/x"),
                      {m_there, QString(), QString(), QStringLiteral("some other uid")});
    const LogCapture log;
    EXPECT_EQ(back->Resolve(), nullptr);
    EXPECT_EQ(back->Resolve(), nullptr);
    EXPECT_EQ(log.Warnings().size(), 1);
}

TEST_F(ReferencedFile, IsTheOtherOneAfterItsReferrerWasSavedElsewhere)
{
    const auto there = Open(m_there, DataFile::ReadWrite);
    auto* const back = new PropertyReference(QStringLiteral("back"));
    ASSERT_EQ(there->GetRoot()->InsertProperty(back), ER_SUCCESS);
    back->RestorePath(QStringLiteral("/none"), m_there);
    const LogCapture log;
    EXPECT_EQ(back->Resolve(), nullptr); // known to be its own tree now
    back->RestorePath(QStringLiteral("/f/x"), m_there);
    ASSERT_EQ(there->SaveAs(m_folder.Path(QStringLiteral("third.h5"))), ER_SUCCESS);
    ASSERT_NE(back->Resolve(), nullptr);
    EXPECT_NE(back->Resolve(), &TargetIn(*there));
    EXPECT_EQ(back->ReferenceFilePath(), m_there);
}

// --- who holds whom

TEST_F(ReferencedFile, ThatRefersBackFormsNoCircleOfOwners)
{
    const QString a = m_folder.Path(QStringLiteral("a.h5"));
    const QString b = m_folder.Path(QStringLiteral("b.h5"));
    {
        const auto fileA = Open(a, DataFile::Create);
        const auto fileB = Open(b, DataFile::Create);
        AddReference(*fileA->GetRoot(), QStringLiteral("out"), *AddFolder(*fileB->GetRoot(), s_x));
        AddReference(*fileB->GetRoot(), QStringLiteral("out"), *AddFolder(*fileA->GetRoot(), s_x));
        ASSERT_EQ(fileA->Save(), ER_SUCCESS);
        ASSERT_EQ(fileB->Save(), ER_SUCCESS);
    }
    auto fileA = Open(a);
    AbstractProperty* const inB = ReferenceIn(*fileA)->Resolve();
    ASSERT_NE(inB, nullptr);
    const auto fileB = DataFileFactory::Instance().FindOpen(b);
    EXPECT_EQ(ReferenceIn(*fileB)->Resolve(), fileA->GetRoot()->GetPropertyPtr(s_x));
    const std::weak_ptr<DataFile> endOfB = fileB;
    const std::weak_ptr<DataFile> endOfA = fileA;
    fileA.reset();
    EXPECT_TRUE(endOfA.expired());
    ASSERT_NE(ReferenceIn(*fileB)->Resolve(), nullptr) << "opened anew, and held by B";
    EXPECT_EQ(ReferenceIn(*DataFileFactory::Instance().FindOpen(a))->Resolve(), inB);
    EXPECT_FALSE(endOfB.expired());
}

TEST_F(ReferencedFile, OfACycleGoesWhenTheHostLetsGo)
{
    const QString a = m_folder.Path(QStringLiteral("a.h5"));
    {
        const auto fileA = Open(a, DataFile::Create);
        const auto there = Open(m_there, DataFile::ReadWrite);
        AddReference(*fileA->GetRoot(), QStringLiteral("out"), TargetIn(*there));
        AddReference(*there->GetRoot(), QStringLiteral("back"), *AddFolder(*fileA->GetRoot(), s_x));
        ASSERT_EQ(fileA->Save(), ER_SUCCESS);
        ASSERT_EQ(there->Save(), ER_SUCCESS);
    }
    auto fileA = Open(a);
    ASSERT_NE(ReferenceIn(*fileA)->Resolve(), nullptr);
    ASSERT_EQ(ReferenceIn(*OpenThere(), QStringLiteral("back"))->Resolve(),
              fileA->GetRoot()->GetPropertyPtr(s_x));
    fileA.reset();
    EXPECT_EQ(OpenThere(), nullptr);
    EXPECT_EQ(DataFileFactory::Instance().FindOpen(a), nullptr);
}

TEST_F(ReferencedFile, IsHeldByACopyOfTheRootThatHasAskedForIt)
{
    auto here = Open(m_here);
    const std::unique_ptr<AbstractProperty> clone(here->GetRoot()->Clone());
    here.reset();
    auto* const root = dynamic_cast<PropertyObject*>(clone.get());
    const auto* const out = root->GetPtr<PropertyReference>(QStringLiteral("out"));
    EXPECT_EQ(NumberOf(out->Resolve()), 1);
    EXPECT_NE(OpenThere(), nullptr);
}

TEST_F(ReferencedFile, IsNotOpenedForATreeThatIsNoFiles)
{
    const auto here = Open(m_here);
    const std::unique_ptr<AbstractProperty> clone(ReferenceIn(*here)->Clone());
    const auto* const outside = dynamic_cast<PropertyReference*>(clone.get());
    EXPECT_EQ(outside->Resolve(), nullptr);
    EXPECT_EQ(OpenThere(), nullptr);
    const auto there = Open(m_there);
    EXPECT_EQ(outside->Resolve(), &TargetIn(*there));
    PropertyReference another(QStringLiteral("another"));
    another.RestorePath(QStringLiteral("/f/x"),
                        {m_there, QString(), QString(), QStringLiteral("another uid")});
    EXPECT_EQ(another.Resolve(), nullptr);
}

TEST_F(ReferencedFile, CanBeOpenedForWritingWhileOnlyReferencesHoldIt)
{
    const auto here = Open(m_here);
    const AbstractProperty* const x = ReferenceIn(*here)->Resolve();
    const Outcome opened = TryOpen(m_there, DataFile::ReadWrite);
    ASSERT_EQ(opened.code, ER_SUCCESS) << qPrintable(opened.why);
    EXPECT_EQ(opened.file->GetMode(), DataFile::ReadWrite);
    EXPECT_EQ(&TargetIn(*opened.file), x) << "one file is one tree";
    opened.file->GetRoot()->GetPtr<PropertyObject>(QStringLiteral("f"))->SetProperty(s_x, 4.0);
    EXPECT_EQ(opened.file->Save(), ER_SUCCESS);
    EXPECT_EQ(NumberOf(ReferenceIn(*here)->Resolve()), 4);
}

TEST_F(ReferencedFile, CannotBeOpenedForWritingWhileAHostHasItReadOnly)
{
    auto here = Open(m_here);
    ASSERT_NE(ReferenceIn(*here)->Resolve(), nullptr);
    const auto mine = Open(m_there);
    EXPECT_EQ(TryOpen(m_there, DataFile::ReadWrite).code, ER_ALREADY_EXISTS);
    here.reset();
    EXPECT_EQ(TryOpen(m_there, DataFile::ReadWrite).code, ER_ALREADY_EXISTS);
    EXPECT_EQ(mine->GetMode(), DataFile::ReadOnly);
}

// --- files that change beneath the references

TEST_F(ReferencedFile, ThatIsClosedAfterARenameIsAskedForTheNewName)
{
    const auto here = Open(m_here);
    {
        const auto there = Open(m_there, DataFile::ReadWrite);
        ASSERT_EQ(ReferenceIn(*here)->Resolve(), &TargetIn(*there));
        ASSERT_EQ(ReferenceIn(*here)->Resolve()->SetName(QStringLiteral("y")), ER_SUCCESS);
        ASSERT_EQ(there->Save(), ER_SUCCESS);
    }
    EXPECT_EQ(ReferenceIn(*here)->ReferencePath(), QStringLiteral("/f/y"));
    EXPECT_EQ(ReferenceIn(*here)->ReferenceFilePath(), m_there);
    EXPECT_EQ(ReferenceIn(*here)->ReferenceFileType(), QStringLiteral("HDF5"));
    EXPECT_FALSE(ReferenceIn(*here)->ReferenceFile().uid.isEmpty());
    EXPECT_EQ(NumberOf(ReferenceIn(*here)->Resolve()), 1);
    EXPECT_EQ(ReferenceIn(*here)->Resolve()->GetName(), QStringLiteral("y"));
}

TEST_F(ReferencedFile, ThatIsReplacedOnDiskStaysAsItWasForTheTreeThatHasAsked)
{
    const auto here = Open(m_here);
    const AbstractProperty* const former = ReferenceIn(*here)->Resolve();
    const QString newer = m_folder.Path(QStringLiteral("newer.h5"));
    ASSERT_TRUE(QFile::copy(m_there, newer)); // a copy has the same uid
    Change(newer, 7);
    Remove(m_there);
    ASSERT_TRUE(QFile::rename(newer, m_there));
    const auto fresh = Open(m_there);
    EXPECT_EQ(NumberOf(&TargetIn(*fresh)), 7);
    EXPECT_EQ(ReferenceIn(*here)->Resolve(), former);
    EXPECT_EQ(ReferenceIn(*here, QStringLiteral("again"))->Resolve(), former) << "not one tree in two states";
    EXPECT_EQ(NumberOf(former), 1);
    ASSERT_EQ(here->Load(), ER_SUCCESS);
    EXPECT_EQ(ReferenceIn(*here)->Resolve(), &TargetIn(*fresh));
}

TEST_F(ReferencedFile, ThatIsLoadedAnewIsFollowedByPath)
{
    const auto here = Open(m_here);
    ASSERT_NE(ReferenceIn(*here)->Resolve(), nullptr);
    ASSERT_EQ(OpenThere()->Load(), ER_SUCCESS);
    EXPECT_EQ(ReferenceIn(*here)->Resolve(), &TargetIn(*OpenThere()));
}

TEST_F(ReferencedFile, TakesTheTargetAlongThatWasMovedIntoIt)
{
    const auto here = Open(m_here, DataFile::ReadWrite);
    auto there = Open(m_there, DataFile::ReadWrite);
    auto* const y = AddValue(*here->GetRoot(), QStringLiteral("y"), BVariant(5.0));
    const PropertyReference* const toY = AddReference(*here->GetRoot(), QStringLiteral("toY"), *y);
    ASSERT_EQ(here->GetRoot()->RemoveProperty(QStringLiteral("y")), ER_SUCCESS);
    ASSERT_EQ(there->GetRoot()->InsertProperty(y), ER_SUCCESS);
    ASSERT_EQ(there->Save(), ER_SUCCESS);
    there.reset();
    EXPECT_EQ(toY->ReferencePath(), QStringLiteral("/y"));
    EXPECT_EQ(toY->ReferenceFilePath(), m_there);
    EXPECT_EQ(NumberOf(toY->Resolve()), 5);
}

TEST_F(ReferencedFile, TakesTheTargetAlongThatHasComeBackToIt)
{
    const auto here = Open(m_here, DataFile::ReadWrite);
    auto there = Open(m_there, DataFile::ReadWrite);
    AbstractProperty* const x = ReferenceIn(*here)->Resolve();
    ASSERT_EQ(x, &TargetIn(*there));
    ASSERT_EQ(x->GetParent()->RemoveProperty(s_x), ER_SUCCESS);
    ASSERT_EQ(here->GetRoot()->InsertProperty(x), ER_SUCCESS);
    ASSERT_EQ(here->GetRoot()->RemoveProperty(s_x), ER_SUCCESS);
    ASSERT_EQ(there->GetRoot()->InsertProperty(x), ER_SUCCESS);
    ASSERT_EQ(there->Save(), ER_SUCCESS);
    there.reset();
    EXPECT_EQ(ReferenceIn(*here)->ReferencePath(), QStringLiteral("/x"));
    EXPECT_EQ(NumberOf(ReferenceIn(*here)->Resolve()), 1);
}

TEST_F(ReferencedFile, DoesNotTakeATargetAwayFromATreeThatIsNoFiles)
{
    auto there = Open(m_there, DataFile::ReadWrite);
    PropertyObject loose;
    auto* const y = AddValue(loose, QStringLiteral("y"), BVariant(5.0));
    const PropertyReference* const toY = AddReference(loose, QStringLiteral("toY"), *y);
    ASSERT_EQ(loose.RemoveProperty(QStringLiteral("y")), ER_SUCCESS);
    ASSERT_EQ(there->GetRoot()->InsertProperty(y), ER_SUCCESS);
    there.reset();
    EXPECT_EQ(toY->ReferencePath(), QStringLiteral("../y"));
    EXPECT_EQ(toY->ReferenceFilePath(), QString());
}

TEST_F(ReferencedFile, IsToldByAReferenceThatHasMovedOutOfIt)
{
    const auto here = Open(m_here, DataFile::ReadWrite);
    auto there = Open(m_there, DataFile::ReadWrite);
    AbstractProperty* const inside =
        AddReference(*there->GetRoot(), QStringLiteral("moved"), TargetIn(*there));
    ASSERT_EQ(there->GetRoot()->RemoveProperty(inside->GetName()), ER_SUCCESS);
    ASSERT_EQ(here->GetRoot()->InsertProperty(inside), ER_SUCCESS);
    const PropertyReference* const moved = ReferenceIn(*here, QStringLiteral("moved"));
    EXPECT_EQ(moved->Resolve(), &TargetIn(*there));
    there.reset();
    EXPECT_EQ(moved->ReferencePath(), QStringLiteral("/f/x"));
    EXPECT_EQ(moved->ReferenceFilePath(), m_there);
    EXPECT_EQ(NumberOf(moved->Resolve()), 1);
}

TEST_F(ReferencedFile, ThatHasLetItsTreeGoIsAskedForTheNewNameOnceThatIsGone)
{
    const auto here = Open(m_here);
    auto there = Open(m_there, DataFile::ReadWrite);
    ASSERT_EQ(ReferenceIn(*here)->Resolve(), &TargetIn(*there));
    ASSERT_EQ(TargetIn(*there).GetParent()->SetName(QStringLiteral("g")), ER_SUCCESS);
    ASSERT_EQ(there->Save(), ER_SUCCESS);
    there->SetOwnsFileContents(false);
    std::unique_ptr<DataFile::RootProperty> tree(there->GetRoot());
    there.reset();
    EXPECT_EQ(ReferenceIn(*here)->Resolve()->GetRootProperty(), tree.get());
    tree.reset();
    EXPECT_EQ(ReferenceIn(*here)->ReferencePath(), QStringLiteral("/g/x"));
    EXPECT_EQ(NumberOf(ReferenceIn(*here)->Resolve()), 1);
}

TEST_F(ReferencedFile, InTheSameFolderByAnotherNameMayBeMovedWithItsReferrer)
{
    const QString other = m_folder.Path(QStringLiteral("other"));
    const QString real = m_folder.Path(QStringLiteral("real"));
    const QString moved = m_folder.Path(QStringLiteral("moved"));
    ASSERT_TRUE(QDir().mkdir(real));
    ASSERT_TRUE(QFile::link(real, other));
    ASSERT_TRUE(QFile::rename(m_there, real + QStringLiteral("/there.h5")));
    {
        const auto there = Open(real + QStringLiteral("/there.h5"));
        SaveNew(other + QStringLiteral("/here.h5"),
                [&](PropertyObject& root) { AddReference(root, QStringLiteral("out"), TargetIn(*there)); });
    }
    ASSERT_TRUE(QDir().rename(real, moved));
    const auto here = Open(moved + QStringLiteral("/here.h5"));
    const AbstractProperty* const found = ReferenceIn(*here)->Resolve();
    EXPECT_EQ(NumberOf(found), 1);
}

// --- a host's own way

AbstractProperty* ResolveNothing(const PropertyReference& /*reference*/)
{
    return nullptr;
}

TEST_F(ReferencedFile, IsTheHostsBusinessWhenItSaysSo)
{
    const PropertyReference::ExternalResolver builtIn = PropertyReference::GetExternalResolver();
    ASSERT_NE(builtIn, nullptr);
    const auto here = Open(m_here);
    for (const PropertyReference::ExternalResolver own :
         {PropertyReference::ExternalResolver{}, PropertyReference::ExternalResolver{&ResolveNothing}}) {
        PropertyReference::SetExternalResolver(own);
        EXPECT_EQ(PropertyReference::GetExternalResolver(), own);
        EXPECT_EQ(ReferenceIn(*here)->Resolve(), nullptr);
        EXPECT_EQ(OpenThere(), nullptr);
    }
    PropertyReference::SetExternalResolver(builtIn);
    EXPECT_EQ(NumberOf(ReferenceIn(*here)->Resolve()), 1);
}

/// Finds its target in its own way, and tells the target's path in its own tree, and no file.
class ReferenceWithoutAFile : public PropertyReference
{
public:
    ReferenceWithoutAFile(const QString& name, AbstractProperty* target)
        : PropertyReference(name)
        , m_target(target)
    {
    }
    QString ReferencePath() const override { return m_target->GetFullPath(); }

protected:
    AbstractProperty* GetPropertyRef() const override { return m_target; }

private:
    AbstractProperty* m_target;
};

TEST_F(ReferencedFile, WhoseReferenceDoesNotNameItIsNotTakenForTheReferrer)
{
    const auto there = Open(m_there);
    {
        const LogCapture log;
        SaveNew(m_here, [&](PropertyObject& root) {
            AddValue(*AddFolder(root, QStringLiteral("f")), s_x, BVariant(2.0));
            for (DataFile* const file : {there.get(), static_cast<DataFile*>(nullptr)}) {
                const QString name = file ? QStringLiteral("out") : QStringLiteral("inside");
                AbstractProperty* const target = Property::FindProperty(
                    file ? file->GetRoot() : static_cast<const AbstractProperty*>(&root),
                    QStringLiteral("/f/x"));
                ASSERT_EQ(root.InsertProperty(new ReferenceWithoutAFile(name, target)), ER_SUCCESS);
            }
        });
        EXPECT_EQ(log.Warnings(), QStringList{QStringLiteral(
                                      "reference /out can't tell its path and is saved as unresolved")});
    }
    const auto here = Open(m_here);
    EXPECT_EQ(ReferenceIn(*here)->Resolve(), nullptr);
    EXPECT_EQ(NumberOf(ReferenceIn(*here, QStringLiteral("inside"))->Resolve()), 2);
}

} // namespace
} // namespace Orrery::StorageTest
