// Compression and packing are choices of a file; arrays that nobody has read go from file to file as they stand.
#include "tests/foundations/storage/CompareTrees.h"
#include "tests/foundations/storage/DataFiles.h"
#include "tests/foundations/storage/ForkedProcess.h"

#include "foundations/storage/ArrayAttributes.h"
#include "foundations/storage/DataFileFactory.h"
#include "foundations/variant/VariantOperations.h"

#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>
#include <hdf5.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

namespace Orrery::StorageTest {

using Brindle::Quay::BVariant;
using Brindle::Quay::DataOrdering;

namespace {

struct Choice
{
    bool packed;
    int level;
};

const Choice s_choices[] = {{false, 0}, {true, 0}, {false, 1}, {true, 9}};

std::vector<double> Numbers(std::size_t count)
{
    std::vector<double> numbers(count);
    std::iota(numbers.begin(), numbers.end(), 0.25);
    return numbers;
}

// Sizes around every limit: of the pool, of what is compressed, of a chunk and of a block of checksums.
void BuildTree(PropertyObject& root)
{
    for (const std::size_t count :
         {0U, 1U, 1000U, 8191U, 8192U, 8193U, 32'767U, 32'768U, 32'769U, 131'072U, 131'073U, 700'000U})
        AddValue(root, QStringLiteral("n%1").arg(count), BVariant(Numbers(count)));
    AddValue(root, QStringLiteral("shape"), BVariant(Numbers(7UL * 300 * 211), {7, 300, 211}));
    AddValue(root, QStringLiteral("narrow"), BVariant(Numbers(70'000), {70'000, 1, 1}));
    AddValue(root, QStringLiteral("flat"), BVariant(Numbers(600'000), {1, 2, 300'000}));
    AddValue(root, QStringLiteral("column"),
             BVariant(Numbers(300UL * 500), {300, 500}).reordered(DataOrdering::ColumnMajor));
    AddValue(root, QStringLiteral("bools"), BVariant(std::vector<bool>(100'000, true)));
    AddValue(root, QStringLiteral("texts"), BVariant(std::vector<std::string>{"a", "bc", ""}));
    AddValue(root, QStringLiteral("packed texts"),
             BVariant(std::vector<std::string>{std::string("a\0", 2), std::string(100'000, 'b')}));
    AddValue(*AddFolder(root, QStringLiteral("catalogue-pool")), QStringLiteral("x"), BVariant(Numbers(3)));
}

std::string FaultsOf(DataFile& file)
{
    DataFile::RootProperty expected(nullptr);
    BuildTree(expected);
    return CompareTrees(expected, *file.GetRoot());
}

void Choose(DataFile& file, const Choice& choice)
{
    if (file.SetPacked(choice.packed) < 0 || file.SetCompressionLevel(choice.level) < 0)
        throw std::runtime_error("the options can't be set");
}

class SaveOptionsTest : public ::testing::Test
{
protected:
    void Make(const QString& path, const Choice& choice)
    {
        const auto file = Open(path, DataFile::Create);
        BuildTree(*file->GetRoot());
        Choose(*file, choice);
        ASSERT_EQ(file->Save(), ER_SUCCESS);
    }

    ScratchFolder m_folder;
    QString m_path = m_folder.Path(QStringLiteral("tree.h5"));
    QString m_other = m_folder.Path(QStringLiteral("other.h5"));
};

/// A file type of a host's own that says nothing of options.
class PlainFile : public DataFile
{
public:
    PlainFile()
        : DataFile(QStringLiteral("plain"), Create)
    {
    }
    ERESULT Load(QString* /*why*/) override { return ER_SUCCESS; }
    ERESULT Save(QString* /*why*/) override { return ER_SUCCESS; }
    ERESULT Close() override { return ER_SUCCESS; }
    QString GetFileType() const override { return QStringLiteral("Plain"); }
};

} // namespace

TEST_F(SaveOptionsTest, AreOffByDefaultAndRefuseLevelsThatThereAreNot)
{
    const auto file = Open(m_path, DataFile::Create);
    EXPECT_EQ(file->GetCompressionLevel(), 0);
    EXPECT_FALSE(file->IsPacked());
    EXPECT_EQ(file->SetCompressionLevel(9), ER_SUCCESS);
    for (const int level : {-1, 10, 1'000'000})
        EXPECT_EQ(file->SetCompressionLevel(level), ER_INVALID_ARGUMENT);
    EXPECT_EQ(file->GetCompressionLevel(), 9);
    EXPECT_EQ(file->SetPacked(true), ER_SUCCESS);
    EXPECT_TRUE(file->IsPacked());
}

TEST_F(SaveOptionsTest, AreRefusedByAFileTypeThatHasNone)
{
    PlainFile file;
    EXPECT_EQ(file.SetCompressionLevel(1), ER_FAILED);
    EXPECT_EQ(file.SetCompressionLevel(10), ER_INVALID_ARGUMENT);
    EXPECT_EQ(file.SetCompressionLevel(0), ER_SUCCESS);
    EXPECT_EQ(file.SetPacked(true), ER_FAILED);
    EXPECT_EQ(file.SetPacked(false), ER_SUCCESS);
    EXPECT_FALSE(file.IsPacked());
    EXPECT_EQ(file.GetCompressionLevel(), 0);
}

TEST_F(SaveOptionsTest, GiveBackTheSameTreeAndStayWithTheFile)
{
    for (const Choice& choice : s_choices) {
        SCOPED_TRACE(::testing::Message() << "packed " << choice.packed << ", level " << choice.level);
        Make(m_path, choice);
        const auto file = Open(m_path);
        EXPECT_EQ(FaultsOf(*file), "");
        EXPECT_EQ(file->IsPacked(), choice.packed);
        EXPECT_EQ(file->GetCompressionLevel(), choice.level);
    }
}

// Nothing of the source is read before the second save, nor between it and the look at the copy.
TEST_F(SaveOptionsTest, UnreadArraysGoFromEveryKindOfFileToEveryOther)
{
    for (const Choice& from : s_choices) {
        for (const Choice& to : s_choices) {
            SCOPED_TRACE(::testing::Message() << "packed " << from.packed << ", level " << from.level
                                              << " to packed " << to.packed << ", level " << to.level);
            Make(m_path, from);
            const auto file = Open(m_path, DataFile::ReadWrite);
            Choose(*file, to);
            ASSERT_EQ(file->SaveAs(m_other), ER_SUCCESS);
            EXPECT_EQ(FaultsOf(*Open(m_other)), "");
            Make(m_path, {false, 0});
            EXPECT_EQ(FaultsOf(*file), "") << "they go on reading the file that they came from";
            QFile::remove(m_other);
        }
    }
}

TEST_F(SaveOptionsTest, UnreadArraysBearToBeSavedOverTheirOwnFileAgainAndAgain)
{
    Make(m_path, {false, 0});
    const auto file = Open(m_path, DataFile::ReadWrite);
    for (const Choice& choice : s_choices) {
        Choose(*file, choice);
        ASSERT_EQ(file->Save(), ER_SUCCESS);
        ASSERT_EQ(file->Save(), ER_SUCCESS);
    }
    EXPECT_EQ(FaultsOf(*file), "");
}

TEST_F(SaveOptionsTest, CopyingFileToFileGivesTheSameBytesAsWritingFromMemory)
{
    Make(m_path, {false, 0});
    const QByteArray bytes = ReadFile(m_path);
    {
        const auto file = Open(m_path, DataFile::ReadWrite);
        ASSERT_EQ(file->Save(), ER_SUCCESS);
    }
    EXPECT_TRUE(ReadFile(m_path) == bytes);
}

// A save neither hides damage nor fails by it.
TEST_F(SaveOptionsTest, DamageStaysKnownUnderItsPath)
{
    const std::vector<double> numbers(100'000, 1.5);
    SaveNew(m_path, [&](PropertyObject& root) {
        AddValue(root, QStringLiteral("bad"), BVariant(numbers));
        AddValue(root, QStringLiteral("good"), BVariant(Numbers(100)));
    }).reset();
    QByteArray bytes = ReadFile(m_path);
    const QByteArray run(reinterpret_cast<const char*>(numbers.data()), 800);
    const int at = bytes.indexOf(run);
    ASSERT_GT(at, 0);
    bytes[at + 4000] = 'x';
    WriteFile(m_path, bytes);
    for (const Choice& choice : s_choices) {
        const auto file = Open(m_path, DataFile::ReadWrite);
        Choose(*file, choice);
        const Outcome saved = TrySave(*file);
        EXPECT_EQ(saved.code, ER_SUCCESS) << saved.why.toStdString();
        const auto copy = Open(m_path);
        try {
            ValueOf(*copy->GetRoot(), QStringLiteral("bad")).constData();
            ADD_FAILURE() << "the damage is hidden";
        } catch (const std::runtime_error& error) {
            EXPECT_NE(std::string(error.what()).find("bad"), std::string::npos) << error.what();
            EXPECT_NE(std::string(error.what()).find("damaged"), std::string::npos) << error.what();
        }
        EXPECT_TRUE(Brindle::Quay::exactlyEqual(ValueOf(*copy->GetRoot(), QStringLiteral("good")),
                                                BVariant(Numbers(100))));
        WriteFile(m_path, bytes);
    }
}

// The chunks go over as they stand, damaged ones too; what has to be unpacked can't be taken along then.
TEST_F(SaveOptionsTest, DamageOfACompressedArrayStaysKnownUnderItsPath)
{
    std::vector<double> numbers(400'000);
    for (std::size_t i = 0; i < numbers.size(); ++i)
        numbers[i] = std::sin(static_cast<double>(i));
    {
        const auto file = Open(m_path, DataFile::Create);
        AddValue(*file->GetRoot(), QStringLiteral("bad"), BVariant(numbers));
        Choose(*file, {false, 3});
        ASSERT_EQ(file->Save(), ER_SUCCESS);
    }
    QByteArray bytes = ReadFile(m_path);
    for (int i = 0; i < 50; ++i) // in the middle of the second of three chunks
        bytes[bytes.size() / 2 + i] = 'x';
    WriteFile(m_path, bytes);
    const auto expectDamaged = [this] {
        const auto copy = Open(m_path);
        EXPECT_THROW(ValueOf(*copy->GetRoot(), QStringLiteral("bad")).constData(), std::runtime_error);
    };
    expectDamaged();
    {
        const auto file = Open(m_path, DataFile::ReadWrite);
        EXPECT_EQ(TrySave(*file).why, QString());
    }
    expectDamaged();
    EXPECT_EQ(QFileInfo(m_path).size(), bytes.size());
    bytes = ReadFile(m_path);
    {
        const auto file = Open(m_path, DataFile::ReadWrite);
        Choose(*file, {false, 0});
        const Outcome saved = TrySave(*file);
        EXPECT_EQ(saved.code, ER_FAILED);
        EXPECT_TRUE(saved.why.contains(QStringLiteral("/bad: the array is damaged")))
            << saved.why.toStdString();
    }
    EXPECT_TRUE(ReadFile(m_path) == bytes);
}

TEST_F(SaveOptionsTest, LeavesTheOldFileWhenTheDiskIsFullWhateverTheChoices)
{
    Make(m_path, {false, 0});
    for (const Choice& choice : s_choices) {
        auto file = Open(m_path, DataFile::ReadWrite);
        Choose(*file, choice);
        ASSERT_EQ(file->SaveAs(m_other), ER_SUCCESS);
        const auto size = static_cast<unsigned long>(QFileInfo(m_other).size());
        ASSERT_EQ(file->SaveAs(m_path), ER_SUCCESS);
        ASSERT_TRUE(QFile::remove(m_other));
        for (unsigned long limit = 1; limit < size; limit += size / 7) {
            EXPECT_EQ(RunInChild([&] {
                          const QByteArray before = ReadFile(m_path);
                          LimitFileSize(limit, /*survive=*/true);
                          const Outcome saved = TrySave(*file);
                          if (saved.code != ER_FAILED ||
                              !saved.why.contains(QStringLiteral("File too large")))
                              return 1;
                          if (ReadFile(m_path) != before)
                              return 3;
                          LimitFileSize(0, /*survive=*/true);
                          return m_folder.Strays().isEmpty() && file->Save() >= 0 ? 0 : 2;
                      }),
                      0)
                << "limit " << limit << " of " << size;
        }
        file.reset();
        EXPECT_EQ(FaultsOf(*Open(m_path)), "");
    }
}

TEST_F(SaveOptionsTest, ChoicesWithoutAMeaningCountForNone)
{
    const auto set = [this](const char* name, hid_t type, const void* value) {
        const hid_t file = H5Fopen(QFile::encodeName(m_path).constData(), H5F_ACC_RDWR, H5P_DEFAULT);
        const hid_t rows = H5Dopen2(file, "catalogue", H5P_DEFAULT);
        H5Adelete(rows, name);
        const hid_t space = H5Screate(H5S_SCALAR);
        const hid_t attribute = H5Acreate2(rows, name, type, space, H5P_DEFAULT, H5P_DEFAULT);
        EXPECT_GE(H5Awrite(attribute, type, value), 0);
        H5Aclose(attribute);
        H5Sclose(space);
        H5Dclose(rows);
        EXPECT_GE(H5Fclose(file), 0);
    };
    const std::uint32_t large = 4'000'000'000;
    const double number = 5.0;
    Make(m_path, {true, 5});
    set("compression", H5T_STD_U32LE, &large);
    set("packed", H5T_STD_U32LE, &large);
    EXPECT_EQ(Open(m_path)->GetCompressionLevel(), 0);
    EXPECT_FALSE(Open(m_path)->IsPacked());
    set("compression", H5T_IEEE_F64LE, &number);
    set("packed", H5T_IEEE_F64LE, &number);
    EXPECT_EQ(Open(m_path)->GetCompressionLevel(), 0);
    EXPECT_FALSE(Open(m_path)->IsPacked());
    EXPECT_EQ(FaultsOf(*Open(m_path)), "");
}

// The bytes go from file to file: neither the array nor a copy of it comes into memory.
TEST_F(SaveOptionsTest, SavingAnUnreadArrayTakesNoMemoryForIt)
{
    constexpr std::size_t elements = 16U << 20U; // 128 MiB
    SaveNew(m_path, [&](PropertyObject& root) {
        AddValue(root, QStringLiteral("large"), BVariant(std::vector<double>(elements, 1.0)));
    }).reset();
    const auto peak = [] {
        long kibibytes = 0;
        FILE* const status = std::fopen("/proc/self/status", "r");
        char line[256];
        while (std::fgets(line, sizeof line, status))
            std::sscanf(line, "VmHWM: %ld", &kibibytes);
        std::fclose(status);
        return kibibytes;
    };
    EXPECT_EQ(RunInChild([&] {
                  FILE* const reset = std::fopen("/proc/self/clear_refs", "w");
                  std::fputs("5", reset);
                  std::fclose(reset);
                  const long before = peak();
                  const auto file = Open(m_path, DataFile::ReadWrite);
                  if (file->SaveAs(m_other) < 0)
                      return 1;
                  return peak() - before < 32 * 1024 ? 0 : 2;
              }),
              0);
}

TEST_F(SaveOptionsTest, SavingAnArrayInMemoryTakesNoSecondCopyOfIt)
{
    constexpr std::size_t elements = 16U << 20U; // 128 MiB
    const auto file = Open(m_path, DataFile::Create);
    AddValue(*file->GetRoot(), QStringLiteral("large"), BVariant(std::vector<double>(elements, 1.0)));
    const auto resident = [](const char* what) {
        long kibibytes = 0;
        FILE* const status = std::fopen("/proc/self/status", "r");
        char line[256];
        while (std::fgets(line, sizeof line, status)) {
            if (std::strncmp(line, what, std::strlen(what)) == 0)
                std::sscanf(line + std::strlen(what), ": %ld", &kibibytes);
        }
        std::fclose(status);
        return kibibytes;
    };
    EXPECT_EQ(RunInChild([&] {
                  FILE* const reset = std::fopen("/proc/self/clear_refs", "w");
                  std::fputs("5", reset);
                  std::fclose(reset);
                  const long before = resident("VmRSS");
                  if (file->Save() < 0)
                      return 1;
                  return resident("VmHWM") - before < 128 * 1024 / 10 ? 0 : 2;
              }),
              0);
}

namespace {

int s_asked = 0;
std::size_t s_length = 0;

void Describe(const SimpleProperty& array, ArrayAttributes* attributes)
{
    ++s_asked;
    if (array.GetName() == QStringLiteral("refuse"))
        throw std::runtime_error("no words for this");
    attributes->AddText(QStringLiteral("name"), array.GetName());
    attributes->AddText(QStringLiteral("name"), QStringLiteral("a second one"));
    attributes->AddText(QString(), QStringLiteral("nameless"));
    const QChar halves[] = {QChar(0xD800), QChar(0xDC00)};
    attributes->AddText(QString(halves[0]), QStringLiteral("half a character"));
    attributes->AddText(QString(halves[1]), QStringLiteral("the other half"));
    attributes->AddText(QStringLiteral("name") + QChar() + QLatin1Char('x'), QStringLiteral("cut"));
    attributes->AddText(QString(70'000, QLatin1Char('n')), QStringLiteral("long name"));
    attributes->AddPaths(QString(70'000, QLatin1Char('p')), {&array});
    attributes->AddText(QString(1000, QLatin1Char('n')), QStringLiteral("just short enough"));
    attributes->AddText(QStringLiteral("empty"), QString());
    attributes->AddText(QStringLiteral("long"), QString(static_cast<int>(s_length), QLatin1Char('x')));
    attributes->AddPaths(QStringLiteral("self"), {&array, nullptr});
    attributes->AddPaths(QStringLiteral("nothing"), {});
}

bool HasAttribute(const QString& path, const char* dataset, const char* name)
{
    const hid_t file = H5Fopen(QFile::encodeName(path).constData(), H5F_ACC_RDONLY, H5P_DEFAULT);
    const bool has = H5Aexists_by_name(file, dataset, name, H5P_DEFAULT) > 0;
    H5Fclose(file);
    return has;
}

} // namespace

// Sources are never taken back, so this one stays for the rest of the program.
TEST_F(SaveOptionsTest, AttributesComeFromTheirSourcesAndNeverSpoilASave)
{
    EXPECT_EQ(ArrayAttributes::RegisterSource(nullptr), ER_INVALID_ARGUMENT);
    ASSERT_EQ(ArrayAttributes::RegisterSource(&Describe), ER_SUCCESS);
    EXPECT_EQ(ArrayAttributes::RegisterSource(&Describe), ER_ALREADY_EXISTS);
    const auto file = Open(m_path, DataFile::Create);
    AddValue(*file->GetRoot(), QStringLiteral("Data"), BVariant(Numbers(3)));
    for (const std::size_t length : {10U, 60'000U, 60'001U, 200'000U}) {
        s_length = length;
        ASSERT_EQ(TrySave(*file).why, QString()) << length;
        EXPECT_TRUE(HasAttribute(m_path, "Data", "name"));
        EXPECT_TRUE(HasAttribute(m_path, "Data", "self"));
        EXPECT_TRUE(HasAttribute(m_path, "Data", std::string(1000, 'n').c_str()));
        EXPECT_FALSE(HasAttribute(m_path, "Data", "empty"));
        EXPECT_FALSE(HasAttribute(m_path, "Data", "nothing"));
        EXPECT_EQ(HasAttribute(m_path, "Data", "long"), length <= 60'000);
    }
    EXPECT_EQ(s_asked, 4);

    AddValue(*file->GetRoot(), QStringLiteral("refuse"), BVariant(Numbers(3)));
    const Outcome refused = TrySave(*file);
    EXPECT_EQ(refused.code, ER_FAILED);
    EXPECT_TRUE(refused.why.contains(QStringLiteral("no words for this"))) << refused.why.toStdString();
    ASSERT_EQ(file->SetPacked(true), ER_SUCCESS);
    EXPECT_EQ(file->Save(), ER_SUCCESS) << "pooled arrays have no attributes, and nobody is asked";
}

} // namespace Orrery::StorageTest
