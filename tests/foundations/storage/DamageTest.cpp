// A damaged file is refused with a reason, and never read as something else.
#include "tests/foundations/storage/CompareTrees.h"
#include "tests/foundations/storage/DataFiles.h"
#include "tests/support/RandomSeed.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace Orrery::StorageTest {

using Brindle::Quay::BVariant;
using Brindle::Quay::DataOrdering;
using TestSupport::randomBelow;
using TestSupport::RandomSeed;

namespace {

// A tree with something of each kind, whose arrays' bytes occur nowhere else in the file.
void BuildSmall(PropertyObject& root)
{
    PropertyObject* const run = AddFolder(*AddFolder(root, QStringLiteral("res")), QStringLiteral("run0"));
    std::vector<double> numbers(40);
    for (std::size_t i = 0; i < numbers.size(); ++i)
        numbers[i] = 1234.5678 + static_cast<double>(i);
    AddValue(*run, QStringLiteral("Data"), BVariant(numbers, {8, 5}, DataOrdering::ColumnMajor));
    AddValue(*run, QStringLiteral("Truth"), BVariant(std::vector<bool>{true, false, true}));
    AddValue(root, QStringLiteral("Texts"), BVariant(std::vector<std::string>{"needle", "hay", "straw"}));
    AddValue(root, QStringLiteral("Name"), BVariant(std::string("a text in the heap")));
    AddValue(root, QStringLiteral("Step"), BVariant(0.125));
    AddValue(root, QStringLiteral("Nothing"), BVariant());
    AddReference(root, QStringLiteral("Ref"), *run);
}

QByteArray BytesOf(double number)
{
    QByteArray bytes(sizeof number, '\0');
    std::memcpy(bytes.data(), &number, sizeof number);
    return bytes;
}

int OpenDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries | QDir::System).size();
}

class Damage : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_path = m_folder.Path(QStringLiteral("tree.h5"));
        SaveNew(m_path, &BuildSmall).reset();
        m_bytes = ReadFile(m_path);
    }

    // The file with other bytes, as a new file, so that nothing of an open one can be reused.
    QString Damaged(const QByteArray& bytes)
    {
        const QString path = m_folder.Path(QStringLiteral("damaged.h5"));
        QFile::remove(path);
        WriteFile(path, bytes);
        return path;
    }

    QString Flipped(int offset)
    {
        QByteArray bytes = m_bytes;
        bytes[offset] = static_cast<char>(bytes[offset] ^ 0x10);
        return Damaged(bytes);
    }

    // Refused with a reason, or the tree as it was saved: nothing between.
    void ExpectRefusedOrIntact(const QString& path, const std::string& what)
    {
        const LogCapture log;
        const int before = OpenDescriptors();
        const Outcome opened = TryOpen(path);
        if (opened.code < 0) {
            EXPECT_TRUE(IsOneLineAbout(opened.why, path)) << what << ": " << opened.why.toStdString();
            EXPECT_EQ(OpenDescriptors(), before) << what << ": " << opened.why.toStdString();
            return;
        }
        const QString unreadable = ReadArrays(*opened.file->GetRoot());
        if (!unreadable.isEmpty()) {
            EXPECT_TRUE(IsOneLineAbout(unreadable, path)) << what << ": " << unreadable.toStdString();
            return;
        }
        DataFile::RootProperty original(nullptr);
        BuildSmall(original);
        EXPECT_EQ(CompareTrees(original, *opened.file->GetRoot()), "") << what;
    }

    void ExpectRefused(const QString& path, ERESULT code, const QString& reason)
    {
        const LogCapture log;
        const Outcome opened = TryOpen(path);
        EXPECT_EQ(opened.code, code);
        EXPECT_FALSE(opened.file);
        EXPECT_TRUE(IsOneLineAbout(opened.why, path)) << opened.why.toStdString();
        EXPECT_TRUE(opened.why.contains(reason)) << opened.why.toStdString();
        EXPECT_EQ(log.Warnings(), QStringList{opened.why});
    }

    // The structure is whole, so the file opens; whoever asks for the array is told, each time.
    void ExpectDamagedArray(const QString& path, const QString& reason)
    {
        const Outcome opened = TryOpen(path);
        ASSERT_EQ(opened.code, ER_SUCCESS) << opened.why.toStdString();
        for (int attempt = 0; attempt < 2; ++attempt) {
            const QString told = ReadArrays(*opened.file->GetRoot());
            EXPECT_TRUE(IsOneLineAbout(told, path)) << told.toStdString();
            EXPECT_TRUE(told.contains(reason)) << told.toStdString();
        }
    }

    ScratchFolder m_folder;
    QString m_path;
    QByteArray m_bytes;
};

} // namespace

TEST_F(Damage, RefusesToReadAnArrayWithAFlippedBitAndNamesItsNode)
{
    for (int element = 0; element < 40; ++element) {
        const int offset = m_bytes.indexOf(BytesOf(1234.5678 + element));
        ASSERT_GE(offset, 0);
        ExpectDamagedArray(Flipped(offset + element % 8),
                           QStringLiteral("/res/run0/Data: the array is damaged"));
    }
}

TEST_F(Damage, RefusesToReadATextWithAFlippedBitAndNamesItsNode)
{
    const int offset = m_bytes.indexOf("needle");
    ASSERT_GE(offset, 0);
    ExpectDamagedArray(Flipped(offset), QStringLiteral("/Texts: the array is damaged"));
}

TEST_F(Damage, RefusesEveryFlippedBitInTheHeap)
{
    const int begin = m_bytes.indexOf("Root");
    const int text = m_bytes.indexOf("a text in the heap");
    ASSERT_GE(begin, 0);
    ASSERT_GT(text, begin);
    for (int offset = begin; offset < text + 18; ++offset)
        ExpectRefused(Flipped(offset), ER_FAILED, QStringLiteral("the catalogue is damaged"));
}

TEST_F(Damage, RefusesToReadADamagedBlockWhereverItLies)
{
    constexpr std::uint64_t block = 4U * 1024U * 1024U;
    const QString path = m_folder.Path(QStringLiteral("large.h5"));
    std::vector<std::uint64_t> numbers(2 * block / sizeof(std::uint64_t) + 1000);
    for (std::size_t i = 0; i < numbers.size(); ++i)
        numbers[i] = i + 0xA5A5A5A500000000U;
    const std::uint64_t first = numbers.front();
    SaveNew(path, [&](PropertyObject& root) {
        AddValue(root, QStringLiteral("x"), BVariant(numbers));
    }).reset();
    m_bytes = ReadFile(path);
    const int begin = m_bytes.indexOf(QByteArray(reinterpret_cast<const char*>(&first), sizeof first));
    ASSERT_GE(begin, 0);
    for (const std::uint64_t at :
         {std::uint64_t{0}, block - 1, block, 2 * block - 1, 2 * block, 2 * block + 7999})
        ExpectDamagedArray(Flipped(begin + static_cast<int>(at)), QStringLiteral("/x: the array is damaged"));
}

TEST_F(Damage, RefusesAFileCutOffAnywhere)
{
    for (int length = 0; length < m_bytes.size(); length += 512) {
        const LogCapture log;
        const QString path = Damaged(m_bytes.left(length));
        const Outcome opened = TryOpen(path);
        EXPECT_LT(opened.code, 0) << length << " bytes of " << m_bytes.size();
        EXPECT_TRUE(IsOneLineAbout(opened.why, path)) << opened.why.toStdString();
    }
}

TEST_F(Damage, RefusesAFileThatLacksItsLastByte)
{
    const LogCapture log;
    EXPECT_LT(TryOpen(Damaged(m_bytes.left(m_bytes.size() - 1))).code, 0);
}

TEST_F(Damage, NeverReadsADifferentTreeFromAFileWithFlippedBits)
{
    const RandomSeed seed{20240611};
    SCOPED_TRACE(seed);
    auto random = seed.engine();
    for (int round = 0; round < 1500; ++round) {
        QByteArray bytes = m_bytes;
        std::string what;
        const auto flips = 1 + randomBelow(random, 3);
        for (std::uint64_t flip = 0; flip < flips; ++flip) {
            const auto at = static_cast<int>(randomBelow(random, static_cast<std::uint64_t>(bytes.size())));
            bytes[at] =
                static_cast<char>(static_cast<unsigned char>(bytes[at]) ^ (1U << randomBelow(random, 8)));
            what += "bit flipped at " + std::to_string(at) + "; ";
        }
        ExpectRefusedOrIntact(Damaged(bytes), what);
    }
}

TEST_F(Damage, NeverReadsADifferentTreeFromAFileWithOverwrittenStretches)
{
    const RandomSeed seed{77};
    SCOPED_TRACE(seed);
    auto random = seed.engine();
    for (int round = 0; round < 300; ++round) {
        QByteArray bytes = m_bytes;
        const auto size = static_cast<std::uint64_t>(bytes.size());
        const auto from = randomBelow(random, size);
        const auto length = std::min(size - from, 1 + randomBelow(random, 64));
        for (std::uint64_t i = from; i < from + length; ++i)
            bytes[static_cast<int>(i)] = static_cast<char>(round % 2 == 0 ? 0xFF : random() & 0xFFU);
        ExpectRefusedOrIntact(Damaged(bytes),
                              std::to_string(length) + " bytes overwritten at " + std::to_string(from));
    }
}

TEST_F(Damage, IgnoresBytesBehindTheEndOfTheTree)
{
    ExpectRefusedOrIntact(Damaged(m_bytes + QByteArray(1000, 'x')), "1000 bytes appended");
}

TEST_F(Damage, RefusesWhatIsNoDataFile)
{
    ExpectRefused(Damaged(QByteArray()), ER_FAILED, QStringLiteral("is empty"));
    ExpectRefused(Damaged(QByteArrayLiteral("a letter to a friend")), ER_FAILED,
                  QStringLiteral("is not an HDF5 file"));
    ExpectRefused(Damaged(QByteArray(5000, '\0')), ER_FAILED, QStringLiteral("is not an HDF5 file"));
    ExpectRefused(Damaged(m_bytes.left(8)), ER_FAILED, QString());
}

TEST_F(Damage, RefusesAFolder)
{
    const QString path = m_folder.Path(QStringLiteral("folder.h5"));
    ASSERT_TRUE(QDir().mkdir(path));
    ExpectRefused(path, ER_FAILED, QStringLiteral("is not a regular file"));
}

// Opening a FIFO without a writer would wait for ever.
TEST_F(Damage, RefusesAFifoWithoutWaiting)
{
    const QString path = m_folder.Path(QStringLiteral("fifo.h5"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    ExpectRefused(path, ER_FAILED, QStringLiteral("is not a regular file"));
}

TEST_F(Damage, RefusesADevice)
{
    ExpectRefused(QStringLiteral("/dev/zero"), ER_FAILED, QStringLiteral("is not a regular file"));
}

TEST_F(Damage, TellsAMissingFileByItsCode)
{
    ExpectRefused(m_folder.Path(QStringLiteral("missing.h5")), ER_NOT_FOUND, QStringLiteral("No such file"));
    ExpectRefused(m_folder.Path(QStringLiteral("missing/tree.h5")), ER_NOT_FOUND,
                  QStringLiteral("No such file"));
    ExpectRefused(m_path + QStringLiteral("/tree.h5"), ER_NOT_FOUND, QStringLiteral("Not a directory"));
}

TEST_F(Damage, RefusesALinkThatLeadsInACircle)
{
    const QString path = m_folder.Path(QStringLiteral("loop.h5"));
    ASSERT_TRUE(QFile::link(QStringLiteral("loop.h5"), path));
    ExpectRefused(path, ER_FAILED, QStringLiteral("symbolic links"));
}

// A relative path begins like many a word of a message.
TEST_F(Damage, PutsTheFileFirstInTheReasonHoweverShortItsPath)
{
    const QString former = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(m_folder.Path(QString())));
    WriteFile(QStringLiteral("i"), QByteArrayLiteral("no data file"));
    ExpectRefused(QStringLiteral("i"), ER_FAILED, QStringLiteral("is not an HDF5 file"));
    ASSERT_TRUE(QDir::setCurrent(former));
}

} // namespace Orrery::StorageTest
