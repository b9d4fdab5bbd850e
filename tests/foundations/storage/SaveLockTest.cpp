// One file is saved by one at a time: the second is refused at once, and what a killed process leaves is in nobody's way.
#include "tests/foundations/storage/CompareTrees.h"
#include "tests/foundations/storage/DataFiles.h"
#include "tests/foundations/storage/ForkedProcess.h"

#include "foundations/storage/DataFileFactory.h"
#include "foundations/variant/VariantOperations.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>
#include <hdf5.h>

#include <csignal>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Orrery::StorageTest {

using Brindle::Quay::BVariant;

namespace {

const QString s_underWay = QStringLiteral("another save of this file is under way");

void BuildEdition(PropertyObject& root, int edition)
{
    root.DeleteProperties();
    AddValue(root, QStringLiteral("edition"), BVariant(edition));
    AddValue(root, QStringLiteral("Data"), BVariant(std::vector<int>(5000, edition)));
}

class SaveLock : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_path = m_folder.Path(QStringLiteral("tree.h5"));
        m_temporary = m_folder.Path(QStringLiteral(".tree.h5.saving"));
        SaveNew(m_path, [](PropertyObject& root) { BuildEdition(root, 1); }).reset();
    }

    int EditionOnDisk(const QString& path)
    {
        const auto file = Open(path);
        const int edition =
            Brindle::Quay::getScalar<int>(ValueOf(*file->GetRoot(), QStringLiteral("edition")));
        DataFile::RootProperty expected(nullptr);
        BuildEdition(expected, edition);
        EXPECT_EQ(CompareTrees(expected, *file->GetRoot()), "");
        return edition;
    }

    ScratchFolder m_folder;
    QString m_path;
    QString m_temporary;
};

// A process that stands in the middle of a save until it is told to go on or is killed.
class SaveInAnotherProcess
{
public:
    explicit SaveInAnotherProcess(const QString& path, DataFile::OpenMode mode = DataFile::ReadWrite)
    {
        if (::pipe2(m_toParent, O_CLOEXEC) != 0 || ::pipe2(m_toChild, O_CLOEXEC) != 0)
            throw std::runtime_error("no pipes");
        m_child = StartChild([&] {
            CloseEnd(&m_toChild[1]);
            const auto file = Open(path, mode);
            BuildEdition(*file->GetRoot(), 2);
            bool isFirst = true;
            file->SetSaveProgress([&](std::uint64_t, std::uint64_t) {
                char byte = 'x';
                const bool wait = isFirst;
                isFirst = false;
                return !wait ||
                       (::write(m_toParent[1], &byte, 1) == 1 && ::read(m_toChild[0], &byte, 1) == 1);
            });
            return file->Save() < 0 ? 1 : 0;
        });
        CloseEnd(&m_toParent[1]); // or the end of the other process would never be seen here
        char byte = 0;
        if (::read(m_toParent[0], &byte, 1) == 1)
            return;
        const int end = EndOfChild(m_child);
        CloseAll();
        throw std::runtime_error("the other process doesn't save, and ended with " + std::to_string(end));
    }

    ~SaveInAnotherProcess() { CloseAll(); }
    SaveInAnotherProcess(const SaveInAnotherProcess&) = delete;
    SaveInAnotherProcess& operator=(const SaveInAnotherProcess&) = delete;

    int Finish()
    {
        if (::write(m_toChild[1], "x", 1) != 1)
            throw std::runtime_error("the other process is gone");
        return EndOfChild(m_child);
    }

    void Kill()
    {
        ::kill(m_child, SIGKILL);
        EndOfChild(m_child);
    }

private:
    static void CloseEnd(int* descriptor)
    {
        if (*descriptor >= 0)
            ::close(*descriptor);
        *descriptor = -1;
    }

    void CloseAll()
    {
        for (int* const descriptor : {&m_toParent[0], &m_toParent[1], &m_toChild[0], &m_toChild[1]})
            CloseEnd(descriptor);
    }

    int m_toParent[2] = {-1, -1};
    int m_toChild[2] = {-1, -1};
    pid_t m_child = -1;
};

Outcome TrySaveEdition(const QString& path, int edition)
{
    const auto file = Open(path, DataFile::ReadWrite);
    BuildEdition(*file->GetRoot(), edition);
    return TrySave(*file);
}

} // namespace

TEST_F(SaveLock, RefusesASecondProcessAtOnceAndLetsTheFirstOneFinish)
{
    SaveInAnotherProcess first(m_path);
    const Outcome second = TrySaveEdition(m_path, 3);
    EXPECT_EQ(second.code, ER_FAILED);
    EXPECT_EQ(second.why, m_path + QStringLiteral(": ") + s_underWay);
    EXPECT_EQ(first.Finish(), 0);
    EXPECT_EQ(EditionOnDisk(m_path), 2);
    EXPECT_EQ(m_folder.Names(), QStringList{QStringLiteral("tree.h5")});
    EXPECT_EQ(TrySaveEdition(m_path, 3).code, ER_SUCCESS);
    EXPECT_EQ(EditionOnDisk(m_path), 3);
}

// The test program must not wait for ever for a process that is gone.
TEST_F(SaveLock, IsTriedWithAProcessWhoseEndIsSeen)
{
    EXPECT_THROW(SaveInAnotherProcess(m_folder.Path(QStringLiteral("missing.h5"))), std::runtime_error);
}

TEST_F(SaveLock, RefusesASecondProcessForANewFileToo)
{
    const QString path = m_folder.Path(QStringLiteral("new.h5"));
    SaveInAnotherProcess first(path, DataFile::Create);
    const auto second = Open(path, DataFile::Create);
    const Outcome saved = TrySave(*second);
    EXPECT_EQ(saved.code, ER_FAILED);
    EXPECT_EQ(saved.why, path + QStringLiteral(": ") + s_underWay);
    EXPECT_EQ(first.Finish(), 0);
    EXPECT_EQ(second->Save(), ER_SUCCESS);
}

TEST_F(SaveLock, KnowsTheFileByAnotherSpelling)
{
    ASSERT_TRUE(QDir().mkdir(m_folder.Path(QStringLiteral("sub"))));
    ASSERT_TRUE(QFile::link(QStringLiteral("../tree.h5"), m_folder.Path(QStringLiteral("sub/link.h5"))));
    SaveInAnotherProcess first(m_path);
    for (const char* const spelling : {"sub/link.h5", "sub/../tree.h5", ".//tree.h5"}) {
        const Outcome second = TrySaveEdition(m_folder.Path(QString::fromLatin1(spelling)), 3);
        EXPECT_EQ(second.code, ER_FAILED) << spelling;
        EXPECT_TRUE(second.why.endsWith(s_underWay)) << second.why.toStdString();
    }
    EXPECT_EQ(first.Finish(), 0);
}

TEST_F(SaveLock, KnowsTheFileByAHardLink)
{
    const QString link = m_folder.Path(QStringLiteral("hard.h5"));
    ASSERT_EQ(::link(QFile::encodeName(m_path).constData(), QFile::encodeName(link).constData()), 0);
    SaveInAnotherProcess first(m_path);
    const Outcome second = TrySaveEdition(link, 3);
    EXPECT_EQ(second.code, ER_FAILED);
    EXPECT_EQ(second.why, link + QStringLiteral(": ") + s_underWay);
    EXPECT_EQ(first.Finish(), 0);
    EXPECT_EQ(EditionOnDisk(m_path), 2);
    EXPECT_EQ(EditionOnDisk(link), 1) << "a save gives its own name a new file";
    EXPECT_EQ(m_folder.Strays(), QStringList());
}

TEST_F(SaveLock, TellsTwoObjectsOfOneProcessApart)
{
    const QString link = m_folder.Path(QStringLiteral("hard.h5"));
    ASSERT_EQ(::link(QFile::encodeName(m_path).constData(), QFile::encodeName(link).constData()), 0);
    const auto first = Open(m_path, DataFile::ReadWrite);
    const auto second = Open(link, DataFile::ReadWrite);
    ASSERT_NE(first, second);
    BuildEdition(*first->GetRoot(), 2);
    int refused = 0;
    first->SetSaveProgress([&](std::uint64_t, std::uint64_t) {
        const Outcome saved = TrySave(*second);
        EXPECT_EQ(saved.code, ER_FAILED);
        EXPECT_TRUE(saved.why.endsWith(s_underWay)) << saved.why.toStdString();
        ++refused;
        return true;
    });
    EXPECT_EQ(first->Save(), ER_SUCCESS);
    EXPECT_GT(refused, 0);
    EXPECT_EQ(second->Save(), ER_SUCCESS);
}

TEST_F(SaveLock, GoesWithAKilledProcess)
{
    for (int round = 0; round < 3; ++round) {
        SaveInAnotherProcess first(m_path);
        EXPECT_TRUE(QFile::exists(m_temporary));
        first.Kill();
        EXPECT_TRUE(QFile::exists(m_temporary)) << "a killed process can't clear up";
        EXPECT_EQ(TrySaveEdition(m_path, 10 + round).code, ER_SUCCESS);
        EXPECT_EQ(EditionOnDisk(m_path), 10 + round);
        EXPECT_EQ(m_folder.Names(), QStringList{QStringLiteral("tree.h5")});
    }
}

// As of a host that starts workers by fork(): they have all files open that it had open.
TEST_F(SaveLock, IsNotKeptByAProcessThatWasForkedDuringTheSave)
{
    const auto file = Open(m_path, DataFile::ReadWrite);
    pid_t worker = -1;
    file->SetSaveProgress([&](std::uint64_t, std::uint64_t) {
        if (worker < 0)
            worker = StartChild([] { return ::pause(); });
        return true;
    });
    EXPECT_EQ(file->Save(), ER_SUCCESS);
    file->SetSaveProgress([](std::uint64_t, std::uint64_t) { return false; });
    EXPECT_TRUE(TrySave(*file).why.endsWith(QStringLiteral("the save was cancelled")));
    file->SetSaveProgress({});
    EXPECT_EQ(TrySave(*file).why, QString());
    ASSERT_EQ(::kill(worker, SIGKILL), 0);
    EXPECT_EQ(EndOfChild(worker), -SIGKILL);
}

// HDF5 itself locks what it opens, which must not get in the way of readers of the old or the new file.
TEST_F(SaveLock, KeepsNoReaderOut)
{
    const auto read = [this] {
        const QByteArray name = QFile::encodeName(m_path);
        const hid_t file = H5Fopen(name.constData(), H5F_ACC_RDONLY, H5P_DEFAULT);
        EXPECT_GE(file, 0);
        return file;
    };
    const hid_t before = read();
    SaveInAnotherProcess saving(m_path);
    const hid_t during = read();
    EXPECT_EQ(EditionOnDisk(m_path), 1);
    EXPECT_EQ(saving.Finish(), 0);
    EXPECT_EQ(EditionOnDisk(m_path), 2);
    H5Fclose(during);
    H5Fclose(before);
}

TEST_F(SaveLock, FollowsNoLinkAtItsTemporaryName)
{
    const QString victim = m_folder.Path(QStringLiteral("victim"));
    WriteFile(victim, QByteArrayLiteral("precious"));
    for (const QString& target :
         {QStringLiteral("victim"), QStringLiteral("missing"), QStringLiteral(".tree.h5.saving")}) {
        ASSERT_TRUE(QFile::link(target, m_temporary));
        const Outcome saved = TrySaveEdition(m_path, 2);
        EXPECT_EQ(saved.code, ER_FAILED);
        EXPECT_TRUE(saved.why.contains(QStringLiteral("'.tree.h5.saving' stands in the way")))
            << saved.why.toStdString();
        EXPECT_EQ(ReadFile(victim), QByteArrayLiteral("precious"));
        EXPECT_TRUE(QFileInfo(m_temporary).isSymLink());
        ASSERT_TRUE(QFile::remove(m_temporary));
    }
    EXPECT_FALSE(QFile::exists(m_folder.Path(QStringLiteral("missing"))));
    EXPECT_EQ(EditionOnDisk(m_path), 1);
}

TEST_F(SaveLock, IsRefusedWithAReasonWhenNoFileStandsAtItsTemporaryName)
{
    const QByteArray name = QFile::encodeName(m_temporary);
    ASSERT_EQ(::mkdir(name.constData(), 0700), 0);
    Outcome saved = TrySaveEdition(m_path, 2);
    EXPECT_EQ(saved.code, ER_FAILED);
    EXPECT_TRUE(saved.why.contains(QStringLiteral("stands in the way: Is a directory")))
        << saved.why.toStdString();
    ASSERT_EQ(::rmdir(name.constData()), 0);

    ASSERT_EQ(::mkfifo(name.constData(), 0600), 0);
    saved = TrySaveEdition(m_path, 2);
    EXPECT_EQ(saved.code, ER_FAILED);
    EXPECT_TRUE(saved.why.contains(QStringLiteral("stands in the way and is not a regular file")))
        << saved.why.toStdString();
    EXPECT_TRUE(QFileInfo::exists(m_temporary));
    EXPECT_EQ(EditionOnDisk(m_path), 1);
}

// As in the folder for temporary files of a machine with several users.
TEST_F(SaveLock, TellsOfAnUnfinishedFileOfSomebodyElse)
{
    const QByteArray folder = QFile::encodeName(m_folder.Path(QString()));
    WriteFile(m_temporary, QByteArrayLiteral("unfinished"));
    ASSERT_EQ(::chmod(QFile::encodeName(m_temporary).constData(), 0600), 0);
    ASSERT_EQ(::chmod(QFile::encodeName(m_path).constData(), 0666), 0);
    ASSERT_EQ(::chmod(folder.constData(), 01777), 0);
    const bool isRoot = ::geteuid() == 0;
    EXPECT_EQ(RunInChild([&] {
                  BecomeNobody();
                  const Outcome saved = TrySaveEdition(m_path, 2);
                  if (!isRoot)
                      return saved.code < 0 ? 1 : 0; // one's own is cleared away
                  return saved.code == ER_FAILED &&
                                 saved.why.contains(QStringLiteral("stands in the way: Permission denied"))
                             ? 0
                             : 2;
              }),
              0);
    EXPECT_EQ(QFile::exists(m_temporary), isRoot);
}

TEST_F(SaveLock, HidesTheNewFileUntilItHasTheModeOfTheOldOne)
{
    for (const mode_t mode : {0600U, 0640U}) {
        ASSERT_EQ(::chmod(QFile::encodeName(m_path).constData(), mode), 0);
        const auto file = Open(m_path, DataFile::ReadWrite);
        file->SetSaveProgress([&](std::uint64_t, std::uint64_t) {
            struct stat status = {};
            EXPECT_EQ(::stat(QFile::encodeName(m_temporary).constData(), &status), 0);
            EXPECT_EQ(status.st_mode & 0777U, 0600U);
            return true;
        });
        ASSERT_EQ(file->Save(), ER_SUCCESS);
        struct stat status = {};
        ASSERT_EQ(::stat(QFile::encodeName(m_path).constData(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777U, mode);
    }
}

TEST_F(SaveLock, NoticesThatTheNewFileWasTakenAway)
{
    auto file = Open(m_path, DataFile::ReadWrite);
    BuildEdition(*file->GetRoot(), 2);
    file->SetSaveProgress([&](std::uint64_t, std::uint64_t) {
        QFile::remove(m_temporary);
        WriteFile(m_temporary, QByteArrayLiteral("another one"));
        return true;
    });
    const Outcome saved = TrySave(*file);
    EXPECT_EQ(saved.code, ER_FAILED);
    EXPECT_TRUE(saved.why.contains(QStringLiteral("was taken away"))) << saved.why.toStdString();
    EXPECT_EQ(ReadFile(m_temporary), QByteArrayLiteral("another one")) << "it isn't this save's to remove";
    file.reset();
    EXPECT_EQ(EditionOnDisk(m_path), 1);
}

TEST_F(SaveLock, KeepsTargetsWithLongNamesApart)
{
    const QString base(250, QLatin1Char('n'));
    const QString one = m_folder.Path(base + QStringLiteral("1.h5"));
    const QString two = m_folder.Path(base + QStringLiteral("2.h5"));
    SaveNew(one, [](PropertyObject& root) { BuildEdition(root, 1); }).reset();
    SaveInAnotherProcess first(one);
    ASSERT_EQ(m_folder.Strays().size(), 1);
    EXPECT_LE(QFile::encodeName(m_folder.Strays().front()).size(), 143);
    SaveNew(two, [](PropertyObject& root) { BuildEdition(root, 5); }).reset();
    EXPECT_EQ(TrySaveEdition(one, 3).code, ER_FAILED);
    EXPECT_EQ(first.Finish(), 0);
    EXPECT_EQ(EditionOnDisk(one), 2);
    EXPECT_EQ(EditionOnDisk(two), 5);
    EXPECT_EQ(m_folder.Strays(), QStringList());
}

TEST_F(SaveLock, ReadsAFileThatNobodyMayWriteInAFolderThatNobodyMayWrite)
{
    const QByteArray folder = QFile::encodeName(m_folder.Path(QString()));
    ASSERT_EQ(::chmod(QFile::encodeName(m_path).constData(), 0444), 0);
    ASSERT_EQ(::chmod(folder.constData(), 0555), 0);
    EXPECT_EQ(RunInChild([&] {
                  BecomeNobody();
                  return EditionOnDisk(m_path) == 1 ? 0 : 1;
              }),
              0);
    ASSERT_EQ(::chmod(folder.constData(), 0755), 0);
}

} // namespace Orrery::StorageTest
