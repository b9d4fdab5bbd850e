// What a check of a whole file tells a host. What it finds in forged files is tested through the program that runs it.
#include "foundations/storage/DataFileCheck.h"
#include "tests/foundations/storage/DataFiles.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace Orrery::StorageTest {

using Brindle::Quay::BVariant;

namespace {

constexpr std::uint64_t s_many = 3U * 512U * 1024U; // doubles; three blocks of checksums

void BuildLarge(PropertyObject& root)
{
    AddValue(root, QStringLiteral("large"), BVariant(std::vector<double>(s_many, 4321.125)));
    AddValue(root, QStringLiteral("small"), BVariant(std::vector<double>{1234.5, 2, 3}));
    AddValue(root, QStringLiteral("texts"), BVariant(std::vector<std::string>{"one", "two"}));
    AddValue(root, QStringLiteral("scalar"), BVariant(1.0));
    AddReference(root, QStringLiteral("ref"), *AddFolder(root, QStringLiteral("folder")));
}

class WholeFileCheck : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_path = m_folder.Path(QStringLiteral("checked.h5"));
        SaveNew(m_path, &BuildLarge).reset();
    }

    void Damage(double former)
    {
        QByteArray bytes = ReadFile(m_path);
        const int at = bytes.indexOf(QByteArray(reinterpret_cast<const char*>(&former), sizeof former));
        ASSERT_GE(at, 0);
        bytes[at] = static_cast<char>(bytes[at] ^ 1);
        WriteFile(m_path, bytes);
    }

    DataFileCheck::Report Collect()
    {
        return [this](const DataFileCheck::Finding& finding) {
            m_paths += finding.path;
            EXPECT_EQ(finding.severity, DataFileCheck::Error);
            EXPECT_EQ(finding.text, "the array is damaged: its checksum doesn't fit its bytes");
        };
    }

    ScratchFolder m_folder;
    QString m_path;
    QStringList m_paths;
};

} // namespace

TEST_F(WholeFileCheck, CountsWhatASoundFileHolds)
{
    const DataFileCheck::Summary summary = DataFileCheck::Run(m_path, Collect());
    EXPECT_EQ(summary.folders, 1U);
    EXPECT_EQ(summary.values, 4U);
    EXPECT_EQ(summary.references, 1U);
    EXPECT_EQ(summary.fileBytes, static_cast<std::uint64_t>(ReadFile(m_path).size()));
    EXPECT_EQ(summary.errors, 0U);
    EXPECT_EQ(summary.warnings, 0U);
    EXPECT_EQ(m_paths, QStringList());
}

TEST_F(WholeFileCheck, TellsEachDamagedArrayOnce)
{
    Damage(4321.125);
    Damage(1234.5);
    const DataFileCheck::Summary summary = DataFileCheck::Run(m_path, Collect());
    EXPECT_EQ(m_paths, QStringList({QStringLiteral("/large"), QStringLiteral("/small")}));
    EXPECT_EQ(summary.errors, 2U);
}

TEST_F(WholeFileCheck, TellsItsProgressForEachBlock)
{
    std::vector<std::uint64_t> done;
    std::uint64_t end = 0;
    DataFileCheck::Run(m_path, Collect(), [&](std::uint64_t now, std::uint64_t all) {
        EXPECT_TRUE(done.empty() || done.back() < now);
        done.push_back(now);
        end = all;
    });
    const std::uint64_t large = s_many * sizeof(double);
    EXPECT_EQ(end, large + 3 * sizeof(double));
    EXPECT_EQ(done, (std::vector<std::uint64_t>{large / 3, large / 3 * 2, large, end}));
}

TEST_F(WholeFileCheck, LooksAtAnOpenTreeAlone)
{
    Damage(1234.5);
    const std::shared_ptr<DataFile> file = Open(m_path);
    const DataFileCheck::Summary summary = DataFileCheck::RunOnTree(*file->GetRoot(), Collect());
    EXPECT_EQ(m_paths, QStringList{QStringLiteral("/small")});
    EXPECT_EQ(summary.values, 4U);
    EXPECT_EQ(summary.fileBytes, 0U);
}

TEST_F(WholeFileCheck, LooksAtATreeWithoutAFile)
{
    DataFile::RootProperty root(nullptr);
    BuildLarge(root);
    EXPECT_EQ(DataFileCheck::RunOnTree(root, Collect()).values, 4U);
    EXPECT_EQ(m_paths, QStringList());
}

TEST_F(WholeFileCheck, PassesOnWhatTheListenersThrow)
{
    const auto thrown = [](std::uint64_t, std::uint64_t) { throw std::logic_error("enough"); };
    EXPECT_THROW(DataFileCheck::Run(m_path, Collect(), thrown), std::logic_error);
    Damage(1234.5);
    const auto refused = [](const DataFileCheck::Finding&) { throw std::logic_error("enough"); };
    EXPECT_THROW(DataFileCheck::Run(m_path, refused), std::logic_error);
    EXPECT_TRUE(TryOpen(m_path).file); // nothing is locked or left open
}

} // namespace Orrery::StorageTest
