// An array's elements stay in the file until they are asked for; then only what is needed is read, and once.
#include "tests/foundations/storage/CompareTrees.h"
#include "tests/foundations/storage/DataFiles.h"
#include "tests/support/CountingAllocator.h"

#include "foundations/variant/VariantOperations.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>
#include <hdf5.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

#include <unistd.h>

namespace Orrery::StorageTest {

using Brindle::Quay::ArraySlice;
using Brindle::Quay::BVariant;
using Brindle::Quay::DataOrdering;
using Brindle::Quay::IndexRange;
using Brindle::Quay::IndexSet;
using Brindle::Quay::IndexValue;

namespace {

constexpr std::uint64_t s_block = std::uint64_t(4) << 20U;
constexpr std::uint64_t s_perBlock = s_block / sizeof(double);

// Reads of structure and bookkeeping beside the blocks.
constexpr std::uint64_t s_little = std::uint64_t(256) << 10U;

// What this process has read so far from files, in bytes.
std::uint64_t BytesRead()
{
    std::ifstream counters("/proc/self/io");
    std::string name;
    std::uint64_t bytes = 0;
    while (counters >> name >> bytes) {
        if (name == "rchar:")
            return bytes;
    }
    throw std::runtime_error("the process can't tell what it reads");
}

class ReadMeter
{
public:
    std::uint64_t Bytes() const { return BytesRead() - m_start; }
    /// Whole blocks; the little beside them doesn't count.
    std::uint64_t Blocks() const { return (Bytes() + s_block / 2) / s_block; }

private:
    std::uint64_t m_start = BytesRead();
};

int OpenDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries | QDir::System).size();
}

std::vector<double> Counting(std::uint64_t count)
{
    std::vector<double> numbers(count);
    std::iota(numbers.begin(), numbers.end(), 0.5);
    return numbers;
}

double Element(const BVariant& array, std::uint64_t index)
{
    double value = 0.0;
    copyElements(array, index, 1, &value);
    return value;
}

std::string FailureOf(const BVariant& array)
{
    try {
        array.constData();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return {};
}

/// How a file stores its arrays.
struct Storage
{
    const char* name;
    int compression;
    bool packed;
};

class LazyArrays : public ::testing::Test
{
protected:
    void Write(const Builder& build, const Storage& storage = {"Plain", 0, false})
    {
        const auto file = SaveNew(m_path, [](PropertyObject&) {});
        ASSERT_EQ(file->SetCompressionLevel(storage.compression), ER_SUCCESS);
        ASSERT_EQ(file->SetPacked(storage.packed), ER_SUCCESS);
        build(*file->GetRoot());
        ASSERT_EQ(TrySave(*file).why, QString());
    }
    void WriteNumbers(std::uint64_t count, std::vector<std::uint64_t> dimensions = {},
                      DataOrdering ordering = DataOrdering::RowMajor)
    {
        Write([&](PropertyObject& root) {
            AddValue(root, QStringLiteral("x"), BVariant(Counting(count), std::move(dimensions), ordering));
        });
    }
    static BVariant X(DataFile& file) { return ValueOf(*file.GetRoot(), QStringLiteral("x")); }

    ScratchFolder m_folder;
    QString m_path = m_folder.Path(QStringLiteral("tree.h5"));
};

class LazyStorage : public LazyArrays, public ::testing::WithParamInterface<Storage>
{
};

INSTANTIATE_TEST_SUITE_P(Layouts, LazyStorage,
                         ::testing::Values(Storage{"Plain", 0, false}, Storage{"Compressed", 1, false},
                                           Storage{"Packed", 0, true}, Storage{"PackedCompressed", 4, true}),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace

TEST_F(LazyArrays, AreNotReadByAnOpenAndOnceByAllCopiesTogether)
{
    WriteNumbers(4 * s_perBlock);
    const ReadMeter opening;
    const auto file = Open(m_path);
    const BVariant first = X(*file);
    const BVariant second = X(*file);
    EXPECT_EQ(first.elementCount(), 4 * s_perBlock);
    EXPECT_LT(opening.Bytes(), s_little);

    const ReadMeter reading;
    const void* const elements = first.constData();
    EXPECT_EQ(reading.Blocks(), 4U);
    EXPECT_EQ(static_cast<const double*>(elements)[4 * s_perBlock - 1], 4 * s_perBlock - 0.5);

    const ReadMeter again;
    EXPECT_EQ(second.constData(), elements);
    EXPECT_EQ(X(*file).constData(), elements);
    EXPECT_LT(again.Bytes(), s_little);
}

TEST_F(LazyArrays, ReadOnlyTheBlocksThatAPartTouches)
{
    WriteNumbers(8 * s_perBlock + 100);
    const auto file = Open(m_path);
    const BVariant array = X(*file);

    const ReadMeter inOneBlock;
    EXPECT_EQ(Element(array, 3 * s_perBlock + 17), 3 * s_perBlock + 17.5);
    EXPECT_EQ(inOneBlock.Blocks(), 1U);

    const ReadMeter onABorder;
    std::vector<double> numbers(100);
    copyElements(array, 6 * s_perBlock - 50, 100, numbers.data());
    EXPECT_EQ(onABorder.Blocks(), 2U);
    EXPECT_EQ(numbers.front(), 6 * s_perBlock - 49.5);
    EXPECT_EQ(numbers.back(), 6 * s_perBlock + 49.5 + 0.0);

    const ReadMeter atTheEnd;
    EXPECT_EQ(Element(array, 8 * s_perBlock + 99), 8 * s_perBlock + 99.5);
    EXPECT_LT(atTheEnd.Bytes(), s_little);
}

TEST_F(LazyArrays, ReadABlockOnceForALoopOverItsElements)
{
    WriteNumbers(4 * s_perBlock);
    const auto file = Open(m_path);
    const BVariant array = X(*file);
    const ReadMeter reading;
    double sum = 0.0;
    for (std::uint64_t i = s_perBlock; i < 2 * s_perBlock; i += 101)
        sum += Element(array, i) - static_cast<double>(i);
    EXPECT_EQ(reading.Blocks(), 1U);
    EXPECT_EQ(sum, 0.5 * static_cast<double>(s_perBlock / 101 + 1));
}

// Whoever reads all elements in parts again and again is better off with the array in memory.
TEST_F(LazyArrays, StayInMemoryWhenTheirWholeLengthWasReadInParts)
{
    WriteNumbers(3 * s_perBlock);
    const auto file = Open(m_path);
    const BVariant array = X(*file);
    std::vector<double> numbers(3 * s_perBlock);
    const ReadMeter reading;
    for (int round = 0; round < 10; ++round) {
        copyElements(array, 0, numbers.size(), numbers.data());
        EXPECT_EQ(numbers.back(), 3 * s_perBlock - 0.5);
    }
    EXPECT_EQ(reading.Blocks(), 6U);
}

// More blocks than a file keeps, so that each element picked costs one.
TEST_F(LazyArrays, StayInMemoryWhenTheirElementsArePickedHereAndThere)
{
    constexpr std::uint64_t blocks = 20;
    WriteNumbers(blocks * s_perBlock);
    const auto file = Open(m_path);
    const BVariant array = X(*file);
    const ReadMeter reading;
    for (std::uint64_t pick = 0; pick < 20 * blocks; ++pick) {
        const std::uint64_t index = (pick * 7 % blocks) * s_perBlock + pick;
        EXPECT_EQ(Element(array, index), static_cast<double>(index) + 0.5);
    }
    EXPECT_EQ(reading.Blocks(), (4 + 1) * blocks);
}

TEST_F(LazyArrays, GoOnBeingReadInPartsWhenTheWholeIsDamaged)
{
    WriteNumbers(3 * s_perBlock);
    QByteArray bytes = ReadFile(m_path);
    bytes[bytes.size() / 6 * 5] = static_cast<char>(bytes[bytes.size() / 6 * 5] ^ 0x55); // in the last block
    const QString path = m_folder.Path(QStringLiteral("damaged.h5"));
    WriteFile(path, bytes);
    const auto file = Open(path);
    const BVariant array = X(*file);
    std::vector<double> numbers(s_perBlock);
    for (int round = 0; round < 10; ++round) {
        copyElements(array, 0, numbers.size(), numbers.data());
        EXPECT_EQ(numbers.back(), static_cast<double>(s_perBlock) - 0.5);
    }
    EXPECT_NE(FailureOf(array), "");
}

// Another array keeps the file open, and with it what the file keeps of its arrays.
TEST_F(LazyArrays, LetGoOfTheBlocksReadBeforeWhenTheyAreReadWhole)
{
    Write([](PropertyObject& root) {
        AddValue(root, QStringLiteral("x"), BVariant(Counting(4 * s_perBlock)));
        AddValue(root, QStringLiteral("y"), BVariant(Counting(10)));
    });
    const auto file = Open(m_path);
    const BVariant array = X(*file);
    const TestSupport::AllocationCount memory;
    for (std::uint64_t block = 0; block < 3; ++block)
        EXPECT_EQ(Element(array, block * s_perBlock), static_cast<double>(block * s_perBlock) + 0.5);
    EXPECT_GE(memory.liveBytes(), static_cast<std::int64_t>(3 * s_block));
    array.constData();
    EXPECT_LT(memory.liveBytes(), static_cast<std::int64_t>(4 * s_block + s_little));
}

TEST_F(LazyArrays, OfOneBlockAreReadWholeAtTheFirstElement)
{
    WriteNumbers(1000);
    const auto file = Open(m_path);
    const BVariant array = X(*file);
    EXPECT_EQ(Element(array, 7), 7.5);
    ASSERT_TRUE(QFile::resize(m_path, 10));
    EXPECT_EQ(Element(array, 999), 999.5);
}

TEST_F(LazyArrays, ReadSlicesOfSeveralDimensionsRunByRun)
{
    const std::uint64_t rows = 4096;
    const std::uint64_t columns = 8 * s_perBlock / rows;
    WriteNumbers(rows * columns, {rows, columns});
    const auto file = Open(m_path);
    const BVariant array = X(*file);
    const std::uint64_t row = rows / 2 + 5;

    const ReadMeter rowReading;
    const BVariant oneRow = slice(array, ArraySlice{IndexSet(IndexValue(row))});
    EXPECT_EQ(rowReading.Blocks(), 1U);
    ASSERT_EQ(oneRow.elementCount(), columns);
    EXPECT_EQ(Element(oneRow, 3), static_cast<double>(row * columns + 3) + 0.5);

    const ReadMeter windowReading;
    const BVariant window = slice(array, ArraySlice{IndexSet(IndexRange(IndexValue(10), IndexValue(12))),
                                                    IndexSet(IndexRange(IndexValue(1), IndexValue(9), 4))});
    EXPECT_EQ(windowReading.Blocks(), 1U);
    ASSERT_EQ(window.elementCount(), 9U);
    EXPECT_EQ(Element(window, 5), static_cast<double>(11 * columns + 9) + 0.5);
}

TEST_P(LazyStorage, GivesPartsAndWholeArraysAlike)
{
    const std::vector<double> numbers = Counting(2 * s_perBlock + 1234);
    const std::vector<double> cube = Counting(60 * 70 * 80);
    Write(
        [&](PropertyObject& root) {
            AddValue(root, QStringLiteral("x"), BVariant(numbers));
            AddValue(root, QStringLiteral("row"), BVariant(cube, {60, 70, 80}));
            AddValue(root, QStringLiteral("column"), BVariant(cube, {60, 70, 80}, DataOrdering::ColumnMajor));
            AddValue(root, QStringLiteral("small"), BVariant(std::vector<bool>{true, false}));
            AddValue(root, QStringLiteral("texts"), BVariant(std::vector<std::string>{"a", "bc", ""}));
        },
        GetParam());
    const auto file = Open(m_path);
    PropertyObject& root = *file->GetRoot();
    for (const std::uint64_t at : {std::uint64_t{0}, s_perBlock - 1, s_perBlock, 2 * s_perBlock + 1233})
        EXPECT_EQ(Element(X(*file), at), numbers[at]);
    std::vector<double> run(s_perBlock + 2);
    copyElements(X(*file), s_perBlock - 1, run.size(), run.data());
    EXPECT_TRUE(
        std::equal(run.begin(), run.end(), numbers.begin() + static_cast<std::ptrdiff_t>(s_perBlock) - 1));
    EXPECT_EQ(CompareValues(BVariant(numbers), X(*file)), "");
    EXPECT_EQ(CompareValues(BVariant(cube, {60, 70, 80}), ValueOf(root, QStringLiteral("row"))), "");
    EXPECT_EQ(CompareValues(BVariant(cube, {60, 70, 80}, DataOrdering::ColumnMajor),
                            ValueOf(root, QStringLiteral("column"))),
              "");
    EXPECT_EQ(ReadArrays(root), QString());
}

TEST_P(LazyStorage, TellsOfADamagedBlockAndReadsTheOthers)
{
    Write(
        [&](PropertyObject& root) {
            AddValue(root, QStringLiteral("x"), BVariant(Counting(3 * s_perBlock)));
        },
        GetParam());
    QByteArray bytes = ReadFile(m_path);
    // Near the end of the elements, whatever surrounds them.
    const int at = GetParam().compression == 0 ? bytes.size() / 6 * 5 : bytes.size() / 4 * 3;
    for (int i = 0; i < 64; ++i)
        bytes[at + i] = static_cast<char>(bytes[at + i] ^ 0x55);
    const QString path = m_folder.Path(QStringLiteral("damaged.h5"));
    WriteFile(path, bytes);
    const auto file = Open(path);
    EXPECT_EQ(Element(X(*file), 5), 5.5);
    const QString told = QString::fromStdString(FailureOf(X(*file)));
    EXPECT_TRUE(IsOneLineAbout(told, path)) << told.toStdString();
    EXPECT_TRUE(told.contains(QStringLiteral("/x: the array is damaged"))) << told.toStdString();
    EXPECT_EQ(Element(X(*file), 6), 6.5);
}

TEST_P(LazyStorage, IsSavedUnreadToAnotherFileAndOverItself)
{
    const auto build = [](PropertyObject& root) {
        AddValue(root, QStringLiteral("x"), BVariant(Counting(s_perBlock + 99)));
        AddValue(root, QStringLiteral("m"), BVariant(Counting(6000), {20, 300}, DataOrdering::ColumnMajor));
        AddValue(root, QStringLiteral("t"), BVariant(std::vector<std::string>{"one", "", "three"}));
        AddValue(root, QStringLiteral("p"), BVariant(std::vector<std::string>{std::string("a\0", 2), "b"}));
        AddValue(root, QStringLiteral("b"), BVariant(std::vector<bool>{true, false, true}));
    };
    Write(build, GetParam());
    DataFile::RootProperty expected(nullptr);
    build(expected);

    const QString copyPath = m_folder.Path(QStringLiteral("copy.h5"));
    const auto file = Open(m_path, DataFile::ReadWrite);
    const BVariant former = X(*file); // unread, of the first generation
    ASSERT_EQ(TrySave(*file).why, QString());
    {
        QString why;
        ASSERT_EQ(file->SaveAs(copyPath, &why), ER_SUCCESS) << why.toStdString();
    }
    EXPECT_EQ(CompareTrees(expected, *Open(m_path)->GetRoot()), "");
    EXPECT_EQ(CompareTrees(expected, *file->GetRoot()), "");
    EXPECT_EQ(CompareValues(BVariant(Counting(s_perBlock + 99)), former), "");
    file->Close();
    EXPECT_EQ(CompareTrees(expected, *Open(copyPath)->GetRoot()), "");
}

TEST_F(LazyArrays, CopyToAnotherWayOfStoringWithoutALoss)
{
    const auto build = [](PropertyObject& root) {
        AddValue(root, QStringLiteral("x"), BVariant(Counting(s_perBlock + 99)));
        AddValue(root, QStringLiteral("m"), BVariant(Counting(6000), {20, 300}, DataOrdering::ColumnMajor));
        AddValue(root, QStringLiteral("t"), BVariant(std::vector<std::string>{"one", "", "three"}));
    };
    DataFile::RootProperty expected(nullptr);
    build(expected);
    const Storage ways[] = {{"", 0, false}, {"", 3, false}, {"", 0, true}, {"", 3, true}, {"", 0, false}};
    Write(build);
    for (const Storage& way : ways) {
        const auto file = Open(m_path, DataFile::ReadWrite);
        ASSERT_EQ(file->SetCompressionLevel(way.compression), ER_SUCCESS);
        ASSERT_EQ(file->SetPacked(way.packed), ER_SUCCESS);
        ASSERT_EQ(TrySave(*file).why, QString());
        file->Close();
        EXPECT_EQ(CompareTrees(expected, *Open(m_path)->GetRoot()), "")
            << way.compression << (way.packed ? " packed" : "");
    }
}

TEST_F(LazyArrays, AreWrittenToWithoutTouchingTheOthers)
{
    WriteNumbers(2 * s_perBlock);
    const auto file = Open(m_path);
    BVariant written = X(*file);
    Brindle::Quay::setElement<double>(written, {5}, BVariant(-1.0));
    EXPECT_EQ(Element(written, 5), -1.0);
    EXPECT_EQ(Element(written, 6), 6.5);
    EXPECT_EQ(Element(X(*file), 5), 5.5);
    EXPECT_NE(written.constData(), X(*file).constData());
}

TEST_F(LazyArrays, AreWrittenToInPlaceByTheirOnlyOwner)
{
    WriteNumbers(1000, {10, 100}, DataOrdering::ColumnMajor);
    BVariant written;
    {
        const auto file = Open(m_path);
        written = X(*file);
    }
    static_cast<double*>(written.mutableData())[3] = -1.0;
    EXPECT_EQ(Element(written, 3), -1.0);
    EXPECT_EQ(Element(written, 4), 4.5);
    EXPECT_EQ(written.getDataOrdering(), DataOrdering::ColumnMajor);
    written.detach();
    EXPECT_EQ(Element(written, 3), -1.0);
}

TEST_F(LazyArrays, FollowEveryOperationThatWantsTheirElements)
{
    WriteNumbers(6, {2, 3});
    const auto fresh = [&] { return X(*Open(m_path)); };
    EXPECT_EQ(CompareValues(BVariant(std::vector<double>{0.5, 3.5, 1.5, 4.5, 2.5, 5.5}, {2, 3},
                                     DataOrdering::ColumnMajor),
                            fresh().reordered(DataOrdering::ColumnMajor)),
              "");
    EXPECT_EQ(CompareValues(BVariant(std::vector<int>{0, 1, 2, 3, 4, 5}, {2, 3}),
                            convertedTo(fresh(), Brindle::Quay::WellKnownType::of<int>())),
              "");
    EXPECT_TRUE(exactlyEqual(fresh(), BVariant(Counting(6), {2, 3})));
    EXPECT_TRUE(equalWithConversion(fresh(), fresh()));
    EXPECT_EQ(appendValues(elementAt(fresh(), {1, 2}), BVariant(2.0)).elementCount(), 2U);
}

TEST_F(LazyArrays, CompareInPiecesWithoutStayingInMemory)
{
    WriteNumbers(20 * s_perBlock);
    const auto file = Open(m_path);
    const QString copyPath = m_folder.Path(QStringLiteral("copy.h5"));
    ASSERT_TRUE(QFile::copy(m_path, copyPath));
    const auto copy = Open(copyPath);
    const ReadMeter comparing;
    EXPECT_TRUE(exactlyEqual(X(*file), X(*copy)));
    EXPECT_EQ(comparing.Blocks(), 40U);
    const ReadMeter reading;
    X(*file).constData();
    EXPECT_EQ(reading.Blocks(), 20U);
}

TEST_F(LazyArrays, OfWholeNumbersEqualTheirCopiesWithoutARead)
{
    Write([](PropertyObject& root) {
        AddValue(root, QStringLiteral("x"), BVariant(std::vector<std::int64_t>(2 * s_perBlock, 3)));
    });
    const auto file = Open(m_path);
    const ReadMeter comparing;
    EXPECT_TRUE(exactlyEqual(X(*file), X(*file)));
    EXPECT_LT(comparing.Bytes(), s_little);
}

// A number that isn't one is different from itself, so these must be looked at.
TEST_F(LazyArrays, OfNaNDifferFromTheirCopies)
{
    Write([](PropertyObject& root) {
        AddValue(root, QStringLiteral("x"), BVariant(std::vector<double>{1.0, std::nan("")}));
    });
    const auto file = Open(m_path);
    EXPECT_FALSE(exactlyEqual(X(*file), X(*file)));
}

TEST_F(LazyArrays, OfNoElementsNeedNoFile)
{
    const int before = OpenDescriptors();
    Write([](PropertyObject& root) {
        AddValue(root, QStringLiteral("x"),
                 createArray(Brindle::Quay::WellKnownType::of<double>(), std::vector<std::uint64_t>{3, 0, 2},
                             DataOrdering::ColumnMajor));
    });
    const auto file = Open(m_path);
    EXPECT_EQ(OpenDescriptors(), before);
    EXPECT_EQ(X(*file).getDimensions().toVector(), (std::vector<std::uint64_t>{3, 0, 2}));
    EXPECT_EQ(X(*file).getDataOrdering(), DataOrdering::ColumnMajor);
}

TEST_F(LazyArrays, LetGoOfTheFileWhenTheLastOneIsReadOrGone)
{
    Write([](PropertyObject& root) {
        AddValue(root, QStringLiteral("x"), BVariant(Counting(10)));
        AddValue(root, QStringLiteral("y"), BVariant(Counting(20)));
    });
    const int before = OpenDescriptors();
    const auto file = Open(m_path);
    EXPECT_EQ(OpenDescriptors(), before + 1);
    BVariant y = ValueOf(*file->GetRoot(), QStringLiteral("y"));
    X(*file).constData();
    EXPECT_EQ(OpenDescriptors(), before + 1);
    file->Close();
    EXPECT_EQ(OpenDescriptors(), before + 1);
    y = BVariant();
    EXPECT_EQ(OpenDescriptors(), before);
}

TEST_F(LazyArrays, AreReadAfterAClose)
{
    WriteNumbers(1000);
    const auto file = Open(m_path);
    const BVariant array = X(*file);
    ASSERT_EQ(file->Close(), ER_SUCCESS);
    EXPECT_EQ(CompareValues(BVariant(Counting(1000)), array), "");
}

TEST_F(LazyArrays, AreReadInATreeThatLivesOn)
{
    WriteNumbers(1000);
    std::unique_ptr<PropertyObject> root;
    {
        const auto file = Open(m_path);
        file->SetOwnsFileContents(false);
        root.reset(file->GetRoot());
    }
    EXPECT_EQ(CompareValues(BVariant(Counting(1000)), ValueOf(*root, QStringLiteral("x"))), "");
}

TEST_F(LazyArrays, AreReadFromTheirOwnFileAfterAnotherHasTakenItsPlace)
{
    WriteNumbers(1000);
    const auto file = Open(m_path);
    const QString other = m_folder.Path(QStringLiteral("other.h5"));
    SaveNew(other, [](PropertyObject& root) {
        AddValue(root, QStringLiteral("x"), BVariant(std::vector<double>(1000, 9.0)));
    }).reset();
    ASSERT_EQ(std::rename(QFile::encodeName(other).constData(), QFile::encodeName(m_path).constData()), 0);
    EXPECT_EQ(CompareValues(BVariant(Counting(1000)), X(*file)), "");
}

TEST_F(LazyArrays, AreReadFromARemovedFile)
{
    WriteNumbers(1000);
    const auto file = Open(m_path);
    ASSERT_TRUE(QFile::remove(m_path));
    EXPECT_EQ(CompareValues(BVariant(Counting(1000)), X(*file)), "");
}

// The process does the same at its exit, before the last statics are destroyed. The numbers of our identifiers are
// then the host's.
TEST_F(LazyArrays, AreReadAndLetGoAfterTheHostHasClosedHdf5)
{
    Write([](PropertyObject& root) {
        for (const char* const name : {"x", "y", "z"})
            AddValue(root, QString::fromLatin1(name), BVariant(Counting(10)));
    });
    auto file = Open(m_path, DataFile::ReadWrite);
    X(*file).constData(); // has the file's groups opened
    ASSERT_GE(H5close(), 0);
    std::vector<hid_t> hosts;
    for (int i = 0; i < 8; ++i) {
        const QByteArray path = m_folder.Path(QStringLiteral("host%1.h5").arg(i)).toUtf8();
        hosts.push_back(H5Fcreate(path.constData(), H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT));
        hosts.push_back(H5Gopen2(hosts.back(), "/", H5P_DEFAULT));
    }
    EXPECT_EQ(Element(ValueOf(*file->GetRoot(), QStringLiteral("y")), 3), 3.5);
    EXPECT_EQ(TrySave(*file).why, QString()); // takes "z" over from the former file
    file.reset();
    for (const hid_t id : hosts)
        EXPECT_GT(H5Iis_valid(id), 0) << id;
    EXPECT_EQ(Element(ValueOf(*Open(m_path)->GetRoot(), QStringLiteral("z")), 3), 3.5);
    ASSERT_GE(H5close(), 0);
}

TEST_F(LazyArrays, TellOfAFileThatWasCutAndAreReadWhenItIsWholeAgain)
{
    WriteNumbers(3 * s_perBlock);
    const auto file = Open(m_path);
    const QByteArray bytes = ReadFile(m_path);
    EXPECT_EQ(Element(X(*file), 1), 1.5); // located
    ASSERT_TRUE(QFile::resize(m_path, bytes.size() / 2));
    const QString told = QString::fromStdString(FailureOf(X(*file)));
    EXPECT_TRUE(IsOneLineAbout(told, m_path)) << told.toStdString();
    EXPECT_TRUE(told.contains(QStringLiteral("/x: the array can't be read: the file ends before it")))
        << told.toStdString();
    EXPECT_THROW(Element(X(*file), 3 * s_perBlock - 1), std::runtime_error);
    WriteFile(m_path, bytes);
    EXPECT_EQ(CompareValues(BVariant(Counting(3 * s_perBlock)), X(*file)), "");
}

TEST_F(LazyArrays, TellOfAFileThatWasCutBeforeTheirDatasetWasLookedFor)
{
    WriteNumbers(1000);
    const auto file = Open(m_path);
    ASSERT_TRUE(QFile::resize(m_path, 100));
    const QString told = QString::fromStdString(FailureOf(X(*file)));
    EXPECT_TRUE(IsOneLineAbout(told, m_path)) << told.toStdString();
    EXPECT_TRUE(told.contains(QStringLiteral("/x: "))) << told.toStdString();
}

// A file that is changed in place shows its new content to whoever opens it, whatever others still hold of it.
TEST_F(LazyArrays, DoNotHideAChangeInPlaceFromALaterOpen)
{
    WriteNumbers(1000);
    BVariant held;
    {
        const auto file = Open(m_path);
        held = X(*file);
    }
    const QString other = m_folder.Path(QStringLiteral("other.h5"));
    SaveNew(other, [](PropertyObject& root) {
        AddValue(*AddFolder(root, QStringLiteral("f")), QStringLiteral("y"), BVariant(Counting(20)));
        AddValue(root, QStringLiteral("x"), BVariant(std::vector<double>(500, 9.0)));
    }).reset();
    WriteFile(m_path, ReadFile(other));
    EXPECT_EQ(CompareValues(BVariant(std::vector<double>(500, 9.0)), X(*Open(m_path))), "");
    EXPECT_NE(FailureOf(held), "");
}

} // namespace Orrery::StorageTest
