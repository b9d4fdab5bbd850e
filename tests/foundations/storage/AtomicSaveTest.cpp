// A save puts a whole new file in the place of the old one, or changes nothing at all.
#include "tests/foundations/storage/CompareTrees.h"
#include "tests/foundations/storage/DataFiles.h"
#include "tests/foundations/storage/ForkedProcess.h"
#include "tests/support/CaseName.h"
#include "tests/support/RandomSeed.h"

#include "foundations/variant/VariantOperations.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace Orrery::StorageTest {

using Brindle::Quay::BVariant;
using TestSupport::randomBelow;
using TestSupport::RandomSeed;

namespace {

// A tree that is wholly of one edition: every value tells its number, and so does the length of each array.
void BuildEdition(PropertyObject& root, int edition)
{
    root.DeleteProperties();
    AddValue(root, QStringLiteral("edition"), BVariant(edition));
    for (int i = 0; i < 20; ++i) {
        PropertyObject* const folder = AddFolder(root, QString::number(i));
        const auto length = static_cast<std::size_t>(1000 + edition % 100);
        AddValue(*folder, QStringLiteral("Data"), BVariant(std::vector<double>(length, edition)));
        AddValue(*folder, QStringLiteral("Text"),
                 BVariant(std::string(300, static_cast<char>('a' + edition % 26))));
    }
}

int EditionOf(PropertyObject& root)
{
    return Brindle::Quay::getScalar<int>(ValueOf(root, QStringLiteral("edition")));
}

// What differs from a whole tree of one edition; empty for nothing.
std::string FaultsOf(DataFile& file, int* edition)
{
    *edition = EditionOf(*file.GetRoot());
    DataFile::RootProperty original(nullptr);
    BuildEdition(original, *edition);
    return CompareTrees(original, *file.GetRoot());
}

// A list as the system takes it: a version, and for each entry who it is for and what he may do.
struct AccessList
{
    struct Entry
    {
        std::uint16_t whom;
        std::uint16_t may;
        std::uint32_t id;
    };
    std::uint32_t version;
    Entry entries[5];
};

const char s_ofAFile[] = "system.posix_acl_access";
const char s_ofNewFiles[] = "system.posix_acl_default";

AccessList ListForOneMoreUser()
{
    constexpr std::uint32_t none = 0xFFFFFFFF;
    constexpr std::uint32_t user = 65534;
    return {2, {{0x01, 6, none}, {0x02, 6, user}, {0x04, 0, none}, {0x10, 6, none}, {0x20, 0, none}}};
}

class AtomicSave : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_path = m_folder.Path(QStringLiteral("tree.h5"));
        SaveNew(m_path, [](PropertyObject& root) { BuildEdition(root, 1); }).reset();
        m_bytes = ReadFile(m_path);
    }

    void ExpectWhole(int* edition)
    {
        const auto file = Open(m_path);
        EXPECT_EQ(FaultsOf(*file, edition), "");
    }

    ScratchFolder m_folder;
    QString m_path;
    QByteArray m_bytes;
};

} // namespace

TEST_F(AtomicSave, ReplacesTheFileAndLeavesNothingElse)
{
    const auto file = Open(m_path, DataFile::ReadWrite);
    BuildEdition(*file->GetRoot(), 2);
    EXPECT_EQ(ReadFile(m_path), m_bytes) << "only a save changes the file";
    EXPECT_EQ(file->Save(), ER_SUCCESS);
    EXPECT_EQ(m_folder.Names(), QStringList{QStringLiteral("tree.h5")});
    EXPECT_NE(ReadFile(m_path), m_bytes);
}

TEST_F(AtomicSave, LeavesAWholeFileWhenTheProcessIsKilledAtAnyMoment)
{
    const RandomSeed seed{4711};
    SCOPED_TRACE(seed);
    auto random = seed.engine();
    int edition = 1;
    for (int round = 0; round < 40; ++round) {
        const int former = edition;
        const pid_t child = StartChild([&] {
            const auto file = Open(m_path, DataFile::ReadWrite);
            for (int next = former + 1;; ++next) {
                BuildEdition(*file->GetRoot(), next);
                if (file->Save() < 0)
                    return 1;
            }
        });
        // A busy machine gets more and more time until it has done one save.
        const auto patience = static_cast<useconds_t>(edition == 1 ? 1 + round : 1);
        ::usleep(patience * static_cast<useconds_t>(2000 + randomBelow(random, 60'000)));
        ASSERT_EQ(::kill(child, SIGKILL), 0);
        ASSERT_EQ(EndOfChild(child), -SIGKILL) << "a save failed";
        ExpectWhole(&edition);
        EXPECT_GE(edition, former) << "round " << round;
    }
    EXPECT_GT(edition, 1) << "no save was ever done";
    const auto file = Open(m_path, DataFile::ReadWrite);
    ASSERT_EQ(file->Save(), ER_SUCCESS);
    EXPECT_EQ(m_folder.Names(), QStringList{QStringLiteral("tree.h5")})
        << "the next save clears what was left";
}

// The limit ends the process exactly when the new file reaches that length: every stage of a save is met.
TEST_F(AtomicSave, LeavesTheOldFileWhenTheProcessEndsInTheMiddleOfWriting)
{
    const auto size = static_cast<unsigned long>(m_bytes.size());
    for (unsigned long limit = 1; limit < size; limit += size / 37) {
        const int end = RunInChild([&] {
            const auto file = Open(m_path, DataFile::ReadWrite);
            BuildEdition(*file->GetRoot(), 2);
            LimitFileSize(limit, /*survive=*/false);
            return file->Save() < 0 ? 1 : 0;
        });
        EXPECT_EQ(end, -SIGXFSZ) << "limit " << limit;
        EXPECT_TRUE(ReadFile(m_path) == m_bytes) << "limit " << limit;
        EXPECT_EQ(m_folder.Strays().size(), 1) << "the one before is cleared away";
    }
}

TEST_F(AtomicSave, ClearsAwayWhatAnEndedProcessHasLeftAndNothingElse)
{
    const QStringList kept = {
        QStringLiteral(".other.h5.saving"), // of another file
        QStringLiteral("tree.h5.saving"),   // a user's own
        QStringLiteral(".tree.h5.saving~"),
    };
    for (const QString& name : kept + QStringList{QStringLiteral(".tree.h5.saving")})
        WriteFile(m_folder.Path(name), QByteArrayLiteral("unfinished"));
    {
        const auto file = Open(m_path, DataFile::ReadWrite);
        ASSERT_EQ(file->Save(), ER_SUCCESS);
    }
    QStringList expected = kept + QStringList{QStringLiteral("tree.h5")};
    expected.sort();
    QStringList found = m_folder.Names();
    found.sort();
    EXPECT_EQ(found, expected);
}

TEST_F(AtomicSave, ClearsAwayWhatWasLeftOfAFileWithALongNameOutsideTheBasicPlane)
{
    const QString name = QLatin1Char('x') + QString::fromUtf8("\xF0\x9F\x98\x80").repeated(40);
    const QString path = m_folder.Path(name);
    SaveNew(path, [](PropertyObject& root) { BuildEdition(root, 1); }).reset();
    EXPECT_EQ(RunInChild([&] {
                  const auto file = Open(path, DataFile::ReadWrite);
                  LimitFileSize(5000, /*survive=*/false);
                  return file->Save() < 0 ? 1 : 0;
              }),
              -SIGXFSZ);
    EXPECT_EQ(m_folder.Strays().size(), 1);
    const auto file = Open(path, DataFile::ReadWrite);
    ASSERT_EQ(file->Save(), ER_SUCCESS);
    EXPECT_EQ(m_folder.Strays(), QStringList());
}

// A limit on the length of a file fails like a full disk.
TEST_F(AtomicSave, LeavesFileAndTreeAsTheyWereWhenTheDiskIsFullAndCanSaveLater)
{
    const auto size = static_cast<unsigned long>(m_bytes.size());
    for (unsigned long limit = 1; limit < size; limit += size / 23) {
        const QString copy = m_folder.Path(QStringLiteral("full.h5"));
        QFile::remove(copy);
        ASSERT_TRUE(QFile::copy(m_path, copy));
        const int end = RunInChild([&] {
            const auto file = Open(copy, DataFile::ReadWrite);
            BuildEdition(*file->GetRoot(), 2);
            LimitFileSize(limit, /*survive=*/true);
            const Outcome failed = TrySave(*file);
            int edition = 0;
            if (failed.code != ER_FAILED || !IsOneLineAbout(failed.why, copy))
                return 1;
            if (!failed.why.contains(QStringLiteral("File too large"))) {
                qWarning().noquote() << failed.why;
                return 2;
            }
            if (ReadFile(copy) != m_bytes)
                return 3;
            if (!m_folder.Strays().isEmpty())
                return 4;
            if (!FaultsOf(*file, &edition).empty() || edition != 2)
                return 5;
            LimitFileSize(0, /*survive=*/true);
            return file->Save() < 0 ? 6 : 0;
        });
        EXPECT_EQ(end, 0) << "limit " << limit;
        int edition = 0;
        EXPECT_EQ(FaultsOf(*Open(copy), &edition), "") << "limit " << limit;
        EXPECT_EQ(edition, 2) << "limit " << limit;
    }
}

// Nothing is saved afterwards: what HDF5 has kept of the failed file must not trouble the end of the process.
TEST_F(AtomicSave, LetsTheProcessEndAfterAFailedSave)
{
    const auto size = static_cast<unsigned long>(m_bytes.size());
    for (unsigned long limit = 1; limit < size; limit += size / 23) {
        const int end = RunInChild([&] {
            const auto file = Open(m_path, DataFile::ReadWrite);
            LimitFileSize(limit, /*survive=*/true);
            for (int attempt = 0; attempt < 5; ++attempt) {
                if (TrySave(*file).code >= 0)
                    return 1;
            }
            return 0;
        });
        EXPECT_EQ(end, 0) << "limit " << limit;
        EXPECT_EQ(m_folder.Names(), QStringList{QStringLiteral("tree.h5")});
    }
    EXPECT_TRUE(ReadFile(m_path) == m_bytes);
}

// So many groups and datasets that HDF5 asks for parts of the file again that could never be written.
TEST_F(AtomicSave, BearsAFullDiskInTheMiddleOfALargeStructure)
{
    const QString path = m_folder.Path(QStringLiteral("large.h5"));
    const auto file = SaveNew(path, [](PropertyObject& root) {
        for (int i = 0; i < 10'000; ++i)
            AddValue(*AddFolder(root, QString::number(i)), QStringLiteral("Data"),
                     BVariant(std::vector<int>{i}));
    });
    const auto size = static_cast<unsigned long>(QFileInfo(path).size());
    for (unsigned long limit = 1; limit < size; limit += size / 5) {
        const int end = RunInChild([&] {
            LimitFileSize(limit, /*survive=*/true);
            if (TrySave(*file).code != ER_FAILED || !m_folder.Strays().isEmpty())
                return 1;
            LimitFileSize(0, /*survive=*/true);
            return file->Save() < 0 ? 2 : 0;
        });
        EXPECT_EQ(end, 0) << "limit " << limit;
    }
    EXPECT_EQ(m_folder.Strays(), QStringList());
}

struct PlaceCase
{
    const char* name;
    QString place; ///< below the scratch folder, or absolute
    ERESULT code;
    QString reason;
};

class AtomicSavePlace : public AtomicSave, public ::testing::WithParamInterface<PlaceCase>
{
};

TEST_P(AtomicSavePlace, IsRefusedWithAReason)
{
    ASSERT_TRUE(QDir().mkdir(m_folder.Path(QStringLiteral("folder"))));
    ASSERT_EQ(::mkfifo(QFile::encodeName(m_folder.Path(QStringLiteral("fifo"))).constData(), 0600), 0);
    ASSERT_TRUE(QFile::link(QStringLiteral("loop"), m_folder.Path(QStringLiteral("loop"))));
    const QStringList before = m_folder.Names();
    const QString& place = GetParam().place;
    const QString path = QDir::isAbsolutePath(place) ? place : m_folder.Path(place);
    const auto file = Open(path, DataFile::Create);
    BuildEdition(*file->GetRoot(), 3);
    const Outcome saved = TrySave(*file);
    EXPECT_EQ(saved.code, GetParam().code);
    EXPECT_TRUE(IsOneLineAbout(saved.why, path)) << saved.why.toStdString();
    EXPECT_TRUE(saved.why.contains(GetParam().reason)) << saved.why.toStdString();
    EXPECT_EQ(m_folder.Names(), before);
    int edition = 0;
    EXPECT_EQ(FaultsOf(*file, &edition), "");
}

INSTANTIATE_TEST_SUITE_P(
    Places, AtomicSavePlace,
    ::testing::Values(
        PlaceCase{"MissingFolder", QStringLiteral("missing/x.h5"), ER_NOT_FOUND,
                  QStringLiteral("folder doesn't exist")},
        PlaceCase{"UnderAFile", QStringLiteral("tree.h5/x.h5"), ER_FAILED, QStringLiteral("Not a directory")},
        PlaceCase{"Folder", QStringLiteral("folder"), ER_FAILED, QStringLiteral("not a regular file")},
        PlaceCase{"FolderWithSlash", QStringLiteral("folder/"), ER_INVALID_ARGUMENT,
                  QStringLiteral("names a folder, not a file")},
        PlaceCase{"MissingFolderWithSlash", QStringLiteral("new/"), ER_INVALID_ARGUMENT,
                  QStringLiteral("names a folder, not a file")},
        PlaceCase{"Fifo", QStringLiteral("fifo"), ER_FAILED, QStringLiteral("not a regular file")},
        PlaceCase{"Device", QStringLiteral("/dev/null"), ER_FAILED, QStringLiteral("not a regular file")},
        PlaceCase{"CircleOfLinks", QStringLiteral("loop"), ER_FAILED, QStringLiteral("symbolic links")},
        PlaceCase{"ProcessTable", QStringLiteral("/proc/self/x.h5"), ER_FAILED,
                  QStringLiteral("can't be written")},
        PlaceCase{"NameTooLong", QString(300, QLatin1Char('n')), ER_FAILED,
                  QStringLiteral("File name too long")}),
    TestSupport::CaseName());

TEST_F(AtomicSave, RefusesAPlaceWhereTheUserMayNotWrite)
{
    const QByteArray folder = QFile::encodeName(m_folder.Path(QString()));
    const QByteArray tree = QFile::encodeName(m_path);
    ASSERT_EQ(::chmod(folder.constData(), 0555), 0);
    ASSERT_EQ(::chmod(tree.constData(), 0444), 0);
    EXPECT_EQ(RunInChild([&] {
                  BecomeNobody();
                  const auto present = Open(m_path, DataFile::ReadWrite);
                  const Outcome over = TrySave(*present);
                  const auto absent = Open(m_folder.Path(QStringLiteral("new.h5")), DataFile::Create);
                  const Outcome beside = TrySave(*absent);
                  return over.code == ER_FAILED && over.why.contains(QStringLiteral("Permission denied")) &&
                                 beside.code == ER_FAILED &&
                                 beside.why.contains(QStringLiteral("Permission denied"))
                             ? 0
                             : 1;
              }),
              0);
    ASSERT_EQ(::chmod(folder.constData(), 0755), 0);
    EXPECT_EQ(m_folder.Names(), QStringList{QStringLiteral("tree.h5")});
    EXPECT_TRUE(ReadFile(m_path) == m_bytes);
}

TEST_F(AtomicSave, RefusesToReadWhatTheUserMayNotRead)
{
    ASSERT_EQ(::chmod(QFile::encodeName(m_folder.Path(QString())).constData(), 0755), 0);
    ASSERT_EQ(::chmod(QFile::encodeName(m_path).constData(), 0), 0);
    EXPECT_EQ(RunInChild([&] {
                  BecomeNobody();
                  const LogCapture log;
                  const Outcome opened = TryOpen(m_path);
                  return opened.code == ER_FAILED && opened.why.contains(QStringLiteral("Permission denied"))
                             ? 0
                             : 1;
              }),
              0);
}

TEST_F(AtomicSave, KeepsTheModeOfTheFile)
{
    for (const mode_t mode : {0600U, 0640U, 0664U, 0400U | 0200U}) {
        ASSERT_EQ(::chmod(QFile::encodeName(m_path).constData(), mode), 0);
        const auto file = Open(m_path, DataFile::ReadWrite);
        ASSERT_EQ(file->Save(), ER_SUCCESS);
        struct stat status = {};
        ASSERT_EQ(::stat(QFile::encodeName(m_path).constData(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, mode);
    }
}

// The list names one more user, and leaves the group of the file nothing; the mode alone would let the group in.
TEST_F(AtomicSave, KeepsTheAccessListOfTheFile)
{
    const QByteArray name = QFile::encodeName(m_path);
    AccessList list = ListForOneMoreUser();
    const bool hasLists = ::setxattr(name.constData(), s_ofAFile, &list, sizeof list, 0) == 0;
    ASSERT_TRUE(hasLists || errno == ENOTSUP) << "a file system without lists keeps the mode alone";
    ASSERT_EQ(::chmod(name.constData(), 0660), 0);
    const auto file = Open(m_path, DataFile::ReadWrite);
    ASSERT_EQ(file->Save(), ER_SUCCESS);
    AccessList kept = {};
    EXPECT_EQ(::getxattr(name.constData(), s_ofAFile, &kept, sizeof kept), hasLists ? sizeof kept : -1);
    EXPECT_EQ(std::memcmp(&list, &kept, sizeof list) == 0, hasLists);
    struct stat status = {};
    ASSERT_EQ(::stat(name.constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0660U);
}

TEST_F(AtomicSave, GivesAFileWithoutAnAccessListNoneOfItsFolder)
{
    const QByteArray name = QFile::encodeName(m_path);
    AccessList list = ListForOneMoreUser();
    ASSERT_TRUE(::setxattr(QFile::encodeName(m_folder.Path(QString())).constData(), s_ofNewFiles, &list,
                           sizeof list, 0) == 0 ||
                errno == ENOTSUP);
    ASSERT_EQ(::chmod(name.constData(), 0660), 0);
    const auto file = Open(m_path, DataFile::ReadWrite);
    ASSERT_EQ(file->Save(), ER_SUCCESS);
    EXPECT_EQ(::getxattr(name.constData(), s_ofAFile, &list, sizeof list), -1);
    struct stat status = {};
    ASSERT_EQ(::stat(name.constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0660U);
}

TEST_F(AtomicSave, GivesANewFileTheModeThatTheUserHasChosen)
{
    EXPECT_EQ(RunInChild([&] {
                  ::umask(027);
                  const QString path = m_folder.Path(QStringLiteral("new.h5"));
                  SaveNew(path, [](PropertyObject& root) { BuildEdition(root, 1); });
                  struct stat status = {};
                  if (::stat(QFile::encodeName(path).constData(), &status) != 0)
                      return 1;
                  return (status.st_mode & 07777U) == 0640U ? 0 : 2;
              }),
              0);
}

TEST_F(AtomicSave, FollowsALinkToTheFile)
{
    ASSERT_TRUE(QDir().mkdir(m_folder.Path(QStringLiteral("elsewhere"))));
    const QString link = m_folder.Path(QStringLiteral("elsewhere/link.h5"));
    ASSERT_TRUE(QFile::link(QStringLiteral("../tree.h5"), link));
    const auto file = Open(link, DataFile::ReadWrite);
    BuildEdition(*file->GetRoot(), 2);
    ASSERT_EQ(file->Save(), ER_SUCCESS);
    EXPECT_TRUE(QFileInfo(link).isSymLink());
    EXPECT_FALSE(QFileInfo(m_path).isSymLink());
    EXPECT_NE(ReadFile(m_path), m_bytes);
    EXPECT_EQ(QDir(m_folder.Path(QStringLiteral("elsewhere"))).entryList(QDir::Files | QDir::Hidden),
              QStringList{QStringLiteral("link.h5")});
}

TEST_F(AtomicSave, FollowsAChainOfLinksToAFileThatIsNotThereYet)
{
    ASSERT_TRUE(QFile::link(QStringLiteral("second.h5"), m_folder.Path(QStringLiteral("first.h5"))));
    ASSERT_TRUE(QFile::link(QStringLiteral("third.h5"), m_folder.Path(QStringLiteral("second.h5"))));
    SaveNew(m_folder.Path(QStringLiteral("first.h5")), [](PropertyObject& root) { BuildEdition(root, 1); });
    EXPECT_TRUE(QFileInfo(m_folder.Path(QStringLiteral("first.h5"))).isSymLink());
    EXPECT_TRUE(QFileInfo(m_folder.Path(QStringLiteral("second.h5"))).isSymLink());
    EXPECT_TRUE(QFileInfo(m_folder.Path(QStringLiteral("third.h5"))).isFile());
}

TEST_F(AtomicSave, GoesThroughWithTheLongestFileNameThereIs)
{
    const QString path = m_folder.Path(QString(252, QLatin1Char('n')) + QStringLiteral(".h5"));
    SaveNew(path, [](PropertyObject& root) { BuildEdition(root, 1); }).reset();
    int edition = 0;
    EXPECT_EQ(FaultsOf(*Open(path), &edition), "");
}

TEST_F(AtomicSave, LetsAReaderOfTheFormerFileReadOn)
{
    QFile reader(m_path);
    ASSERT_TRUE(reader.open(QIODevice::ReadOnly));
    const auto file = Open(m_path, DataFile::ReadWrite);
    BuildEdition(*file->GetRoot(), 2);
    ASSERT_EQ(file->Save(), ER_SUCCESS);
    EXPECT_TRUE(reader.readAll() == m_bytes);
}

TEST_F(AtomicSave, IsRefusedForAFileOpenedReadOnly)
{
    const auto file = Open(m_path);
    BuildEdition(*file->GetRoot(), 2);
    const Outcome saved = TrySave(*file);
    EXPECT_EQ(saved.code, ER_FAILED);
    EXPECT_TRUE(IsOneLineAbout(saved.why, m_path)) << saved.why.toStdString();
    EXPECT_TRUE(saved.why.contains(QStringLiteral("read-only"))) << saved.why.toStdString();
    EXPECT_TRUE(ReadFile(m_path) == m_bytes);
    EXPECT_EQ(EditionOf(*file->GetRoot()), 2) << "the tree may change in memory";
}

TEST_F(AtomicSave, NeedsNoPlaceForTheReason)
{
    EXPECT_EQ(Open(m_path)->Save(), ER_FAILED);
}

} // namespace Orrery::StorageTest
