// One file is one tree in a process, whatever its path is spelled like; and a host can bring file types of its own.
#include "tests/foundations/storage/CompareTrees.h"
#include "tests/foundations/storage/DataFiles.h"
#include "tests/support/CaseName.h"

#include "foundations/variant/VariantOperations.h"

#include <QDir>
#include <QFile>
#include <QHash>

#include <gtest/gtest.h>

#include <string>

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

// A host's file type: the "disk" is a table in memory.
class MemoryFile : public DataFile
{
public:
    static QHash<QString, int> s_disk;

    static DataFile* Make(const QString& path, OpenMode mode) { return new MemoryFile(path, mode); }

    MemoryFile(const QString& path, OpenMode mode)
        : DataFile(path, mode)
    {
    }

    ERESULT Load(QString* why) override
    {
        const auto found = s_disk.constFind(GetPath());
        if (found == s_disk.constEnd()) {
            if (why)
                *why = QStringLiteral("nothing of that name in memory");
            return ER_NOT_FOUND;
        }
        auto root = std::make_unique<RootProperty>(this);
        AddValue(*root, QStringLiteral("number"), BVariant(*found));
        ReplaceRoot(std::move(root));
        return ER_SUCCESS;
    }

    ERESULT Save(QString* /*why*/) override
    {
        s_disk.insert(GetPath(), NumberIn(*this));
        return ER_SUCCESS;
    }

    ERESULT Close() override
    {
        DropRoot();
        return ER_SUCCESS;
    }

    QString GetFileType() const override { return QStringLiteral("StorageTestMemory"); }
};

QHash<QString, int> MemoryFile::s_disk;

DataFile* MakeNothing(const QString& /*path*/, DataFile::OpenMode /*mode*/)
{
    return nullptr;
}

class Factory : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_path = m_folder.Path(QStringLiteral("tree.h5"));
        SaveNew(m_path, Number(1)).reset();
    }

    // As another program does it: the file of that path is a different one afterwards.
    void ReplaceOnDisk(int number)
    {
        const QString beside = m_folder.Path(QStringLiteral("beside.h5"));
        SaveNew(beside, Number(number)).reset();
        ASSERT_EQ(std::rename(QFile::encodeName(beside).constData(), QFile::encodeName(m_path).constData()),
                  0);
    }

    ScratchFolder m_folder;
    QString m_path;
    DataFileFactory& m_factory = DataFileFactory::Instance();
};

} // namespace

TEST_F(Factory, AnswersAnOpenFileWithTheSameObjectHoweverItsPathIsSpelled)
{
    ASSERT_TRUE(QDir().mkdir(m_folder.Path(QStringLiteral("sub"))));
    ASSERT_TRUE(QFile::link(QStringLiteral("tree.h5"), m_folder.Path(QStringLiteral("link.h5"))));
    ASSERT_TRUE(QFile::link(QStringLiteral("link.h5"), m_folder.Path(QStringLiteral("link2.h5"))));
    ASSERT_TRUE(QFile::link(QStringLiteral("."), m_folder.Path(QStringLiteral("here"))));
    const auto file = Open(m_path);
    for (const char* const spelling : {"tree.h5", "./tree.h5", "sub/../tree.h5", "link.h5", "link2.h5",
                                       "here/tree.h5", "here/here/link.h5", "//tree.h5"}) {
        const QString path = m_folder.Path(QString()) + QLatin1Char('/') + QLatin1String(spelling);
        EXPECT_EQ(Open(path), file) << spelling;
        EXPECT_EQ(m_factory.FindOpen(path), file) << spelling;
    }
    EXPECT_EQ(Open(QDir::current().relativeFilePath(m_path)), file);
    EXPECT_EQ(file->GetPath(), m_path) << "the path is the one of the first open";
}

TEST_F(Factory, AnswersAFileThatIsNotSavedYetHoweverItsPathIsSpelled)
{
    ASSERT_TRUE(QFile::link(QStringLiteral("."), m_folder.Path(QStringLiteral("here"))));
    ASSERT_TRUE(QFile::link(QStringLiteral("new.h5"), m_folder.Path(QStringLiteral("link.h5"))));
    const auto file = Open(m_folder.Path(QStringLiteral("new.h5")), DataFile::Create);
    EXPECT_EQ(m_factory.FindOpen(m_folder.Path(QStringLiteral("here/new.h5"))), file);
    EXPECT_EQ(m_factory.FindOpen(m_folder.Path(QStringLiteral("link.h5"))), file);
    Number(5)(*file->GetRoot());
    ASSERT_EQ(file->Save(), ER_SUCCESS);
    EXPECT_EQ(m_factory.FindOpen(m_folder.Path(QStringLiteral("here/link.h5"))), file);
}

struct ModeCase
{
    const char* name;
    DataFile::OpenMode present;
    DataFile::OpenMode asked;
    ERESULT code;
};

class FactoryMode : public Factory, public ::testing::WithParamInterface<ModeCase>
{
};

TEST_P(FactoryMode, DecidesWhetherAnOpenFileServes)
{
    const ModeCase& c = GetParam();
    const auto present = Open(m_path, c.present);
    const Outcome outcome = TryOpen(m_path, c.asked);
    EXPECT_EQ(outcome.code, c.code);
    if (c.code >= 0) {
        EXPECT_EQ(outcome.file, present);
    } else {
        EXPECT_FALSE(outcome.file);
        EXPECT_TRUE(IsOneLineAbout(outcome.why, m_path)) << outcome.why.toStdString();
    }
    EXPECT_EQ(present->GetMode(), c.present);
}

INSTANTIATE_TEST_SUITE_P(
    Modes, FactoryMode,
    ::testing::Values(ModeCase{"ReadOnlyReadOnly", DataFile::ReadOnly, DataFile::ReadOnly, ER_SUCCESS},
                      ModeCase{"ReadOnlyReadWrite", DataFile::ReadOnly, DataFile::ReadWrite,
                               ER_ALREADY_EXISTS},
                      ModeCase{"ReadOnlyCreate", DataFile::ReadOnly, DataFile::Create, ER_ALREADY_EXISTS},
                      ModeCase{"ReadWriteReadOnly", DataFile::ReadWrite, DataFile::ReadOnly, ER_SUCCESS},
                      ModeCase{"ReadWriteReadWrite", DataFile::ReadWrite, DataFile::ReadWrite, ER_SUCCESS},
                      ModeCase{"ReadWriteCreate", DataFile::ReadWrite, DataFile::Create, ER_ALREADY_EXISTS},
                      ModeCase{"CreateReadOnly", DataFile::Create, DataFile::ReadOnly, ER_SUCCESS},
                      ModeCase{"CreateReadWrite", DataFile::Create, DataFile::ReadWrite, ER_SUCCESS},
                      ModeCase{"CreateCreate", DataFile::Create, DataFile::Create, ER_ALREADY_EXISTS}),
    TestSupport::CaseName());

TEST_F(Factory, ForgetsAFileThatNobodyHoldsAnyMore)
{
    auto file = Open(m_path, DataFile::ReadWrite);
    Number(7)(*AddFolder(*file->GetRoot(), QStringLiteral("unsaved")));
    file.reset();
    EXPECT_EQ(m_factory.FindOpen(m_path), nullptr);
    EXPECT_FALSE(Open(m_path)->GetRoot()->HasProperty(QStringLiteral("unsaved")));
}

TEST_F(Factory, LeavesAPresentFileAloneWhenItIsCreatedAnewUntilItIsSaved)
{
    const QByteArray before = ReadFile(m_path);
    auto file = Open(m_path, DataFile::Create);
    EXPECT_EQ(file->GetRoot()->GetPropertyCount(), 0);
    Number(2)(*file->GetRoot());
    EXPECT_TRUE(ReadFile(m_path) == before);
    ASSERT_EQ(file->Save(), ER_SUCCESS);
    file.reset();
    EXPECT_EQ(NumberIn(*Open(m_path)), 2);
}

TEST_F(Factory, OpensNoMissingFileForWriting)
{
    const LogCapture log;
    const QString path = m_folder.Path(QStringLiteral("missing.h5"));
    const Outcome outcome = TryOpen(path, DataFile::ReadWrite);
    EXPECT_EQ(outcome.code, ER_NOT_FOUND);
    EXPECT_TRUE(IsOneLineAbout(outcome.why, path)) << outcome.why.toStdString();
    EXPECT_EQ(m_factory.FindOpen(path), nullptr);
}

TEST_F(Factory, RefusesArgumentsThatCannotBeUsed)
{
    QString why;
    EXPECT_EQ(m_factory.Open(m_path, DataFile::ReadOnly, nullptr, &why), ER_INVALID_ARGUMENT);
    EXPECT_FALSE(why.isEmpty());
    EXPECT_EQ(m_factory.Open(m_path, DataFile::ReadOnly, nullptr), ER_INVALID_ARGUMENT);

    const auto former = Open(m_path);
    auto out = former;
    why.clear();
    EXPECT_EQ(m_factory.Open(QString(), DataFile::ReadOnly, &out, &why), ER_INVALID_ARGUMENT);
    EXPECT_FALSE(why.isEmpty());
    why.clear();
    EXPECT_EQ(m_factory.Open(m_path, DataFile::ReadOnly, &out, &why, QStringLiteral("Stone")),
              ER_INVALID_ARGUMENT);
    EXPECT_TRUE(why.contains(QStringLiteral("'Stone'"))) << why.toStdString();
    EXPECT_EQ(m_factory.Open(m_path, DataFile::ReadOnly, &out, nullptr, QString()), ER_INVALID_ARGUMENT);
    EXPECT_EQ(out, former) << "untouched on failure";
}

TEST_F(Factory, WritesNoReasonOnSuccess)
{
    QString why = QStringLiteral("as before");
    std::shared_ptr<DataFile> file;
    ASSERT_EQ(m_factory.Open(m_path, DataFile::ReadWrite, &file, &why), ER_SUCCESS);
    ASSERT_EQ(file->Save(&why), ER_SUCCESS);
    ASSERT_EQ(file->Load(&why), ER_SUCCESS);
    EXPECT_EQ(why, QStringLiteral("as before"));
}

TEST_F(Factory, ReadsAFileAnewThatWasReplacedOnDiskSinceItWasOpenedReadOnly)
{
    const auto stale = Open(m_path);
    ReplaceOnDisk(2);
    const auto fresh = Open(m_path);
    EXPECT_NE(fresh, stale);
    EXPECT_EQ(NumberIn(*fresh), 2);
    EXPECT_EQ(NumberIn(*stale), 1) << "who holds the former tree keeps it";
    EXPECT_EQ(m_factory.FindOpen(m_path), fresh);
}

TEST_F(Factory, OpensForWritingWhatWasReplacedOnDiskSinceItWasOpenedReadOnly)
{
    auto stale = Open(m_path);
    ReplaceOnDisk(2);
    const auto fresh = Open(m_path, DataFile::ReadWrite);
    EXPECT_EQ(NumberIn(*fresh), 2);
    stale.reset();
    EXPECT_EQ(m_factory.FindOpen(m_path), fresh) << "the end of the former one is no matter of the new one";
}

TEST_F(Factory, GoesOnWithATreeThatMayHaveUnsavedChangesWhateverHappensOnDisk)
{
    const auto file = Open(m_path, DataFile::ReadWrite);
    ReplaceOnDisk(2);
    EXPECT_EQ(Open(m_path), file);
    EXPECT_EQ(NumberIn(*file), 1);
}

TEST_F(Factory, KnowsAFormerTreeByTheNewPathThatItIsSavedTo)
{
    const auto stale = Open(m_path);
    ReplaceOnDisk(2);
    const auto fresh = Open(m_path);
    const QString elsewhere = m_folder.Path(QStringLiteral("elsewhere.h5"));
    ASSERT_EQ(stale->SaveAs(elsewhere), ER_SUCCESS);
    EXPECT_EQ(m_factory.FindOpen(elsewhere), stale);
    EXPECT_EQ(m_factory.FindOpen(m_path), fresh);
}

TEST_F(Factory, OpensAFileAnewThatWasClosed)
{
    const auto closed = Open(m_path, DataFile::ReadWrite);
    ASSERT_EQ(closed->Close(), ER_SUCCESS);
    const auto again = Open(m_path, DataFile::ReadWrite);
    ASSERT_TRUE(again->GetRoot());
    EXPECT_NE(again, closed);
    EXPECT_EQ(NumberIn(*again), 1);
}

TEST_F(Factory, OpensAFileAnewWhoseTreeTheHostHasDestroyed)
{
    const auto empty = Open(m_path, DataFile::ReadWrite);
    delete empty->GetRoot();
    const auto again = Open(m_path, DataFile::ReadWrite);
    ASSERT_TRUE(again->GetRoot());
    EXPECT_EQ(NumberIn(*again), 1);
}

TEST_F(Factory, TakesFileTypesOfAHost)
{
    const QString type = QStringLiteral("StorageTestMemory");
    ASSERT_EQ(m_factory.RegisterFileType(type, &MemoryFile::Make), ER_SUCCESS);
    EXPECT_EQ(m_factory.RegisterFileType(type, &MakeNothing), ER_ALREADY_EXISTS);
    EXPECT_EQ(m_factory.RegisterFileType(QStringLiteral("HDF5"), &MakeNothing), ER_ALREADY_EXISTS);
    EXPECT_EQ(m_factory.RegisterFileType(QString(), &MakeNothing), ER_INVALID_ARGUMENT);
    EXPECT_EQ(m_factory.RegisterFileType(QStringLiteral("None"), nullptr), ER_INVALID_ARGUMENT);
    EXPECT_EQ(m_factory.GetFileTypes(), (QStringList{QStringLiteral("HDF5"), type}));

    const QString path = m_folder.Path(QStringLiteral("in memory"));
    std::shared_ptr<DataFile> file;
    ASSERT_EQ(m_factory.Open(path, DataFile::Create, &file, nullptr, type), ER_SUCCESS);
    EXPECT_EQ(file->GetFileType(), type);
    Number(9)(*file->GetRoot());
    ASSERT_EQ(file->Save(), ER_SUCCESS);
    EXPECT_EQ(m_factory.FindOpen(path), file);

    QString why;
    std::shared_ptr<DataFile> other;
    EXPECT_EQ(m_factory.Open(path, DataFile::ReadOnly, &other, &why), ER_INVALID_ARGUMENT)
        << "open as another type";
    EXPECT_TRUE(why.contains(type)) << why.toStdString();
    file.reset();
    ASSERT_EQ(m_factory.Open(path, DataFile::ReadOnly, &file, nullptr, type), ER_SUCCESS);
    EXPECT_EQ(NumberIn(*file), 9);
    EXPECT_EQ(m_folder.Names(), QStringList{QStringLiteral("tree.h5")});
}

TEST_F(Factory, PassesOnWhyAHostsFileTypeCannotOpenAFile)
{
    const QString type = QStringLiteral("StorageTestMemoryToo");
    const QString nothing = QStringLiteral("StorageTestNothing");
    ASSERT_EQ(m_factory.RegisterFileType(type, &MemoryFile::Make), ER_SUCCESS);
    ASSERT_EQ(m_factory.RegisterFileType(nothing, &MakeNothing), ER_SUCCESS);
    const LogCapture log;
    std::shared_ptr<DataFile> file;
    QString why;
    EXPECT_EQ(m_factory.Open(QStringLiteral("absent"), DataFile::ReadOnly, &file, &why, type), ER_NOT_FOUND);
    EXPECT_EQ(why, QStringLiteral("nothing of that name in memory"));
    EXPECT_EQ(log.Warnings(), QStringList{why});
    EXPECT_EQ(m_factory.Open(QStringLiteral("absent"), DataFile::Create, &file, &why, nothing), ER_FAILED);
    EXPECT_TRUE(why.startsWith(QStringLiteral("absent: "))) << why.toStdString();
    EXPECT_FALSE(file);
}

TEST_F(Factory, IsOneForAllItsObjects)
{
    const auto file = Open(m_path);
    m_factory = DataFileFactory::Instance();
    m_factory = std::move(DataFileFactory::Instance());
    EXPECT_EQ(m_factory.FindOpen(m_path), file);
    EXPECT_EQ(&DataFileFactory::Instance(), &m_factory);
}

TEST_F(Factory, KnowsNoFileByAnEmptyPath)
{
    EXPECT_EQ(m_factory.FindOpen(QString()), nullptr);
}

} // namespace Orrery::StorageTest
