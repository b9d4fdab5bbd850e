// A save tells how far it is, can be given up, and bears whatever its listener does.
#include "tests/foundations/storage/CompareTrees.h"
#include "tests/foundations/storage/DataFiles.h"

#include "foundations/storage/DataFileFactory.h"
#include "foundations/variant/VariantOperations.h"

#include <QFile>

#include <gtest/gtest.h>

#include <cstdint>
#include <numeric>
#include <stdexcept>
#include <utility>
#include <vector>

namespace Orrery::StorageTest {

using Brindle::Quay::BVariant;
using Calls = std::vector<std::pair<std::uint64_t, std::uint64_t>>;

namespace {

constexpr std::uint64_t s_mebibyte = std::uint64_t(1024) * 1024;

std::vector<double> Numbers(std::uint64_t bytes)
{
    std::vector<double> numbers(bytes / sizeof(double));
    std::iota(numbers.begin(), numbers.end(), 0.5);
    return numbers;
}

void BuildTree(PropertyObject& root)
{
    AddValue(root, QStringLiteral("large"), BVariant(Numbers(21 * s_mebibyte)));
    for (int i = 0; i < 30; ++i)
        AddValue(*AddFolder(root, QString::number(i)), QStringLiteral("Data"), BVariant(Numbers(8000)));
    AddValue(root, QStringLiteral("texts"),
             BVariant(std::vector<std::string>{"a", std::string(70'000, 'b')}));
}

class SaveProgress : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_path = m_folder.Path(QStringLiteral("tree.h5"));
        SaveNew(m_path, [](PropertyObject& root) {
            AddValue(root, QStringLiteral("old"), BVariant(1));
        }).reset();
        m_bytes = ReadFile(m_path);
        m_file = Open(m_path, DataFile::ReadWrite);
        BuildTree(*m_file->GetRoot());
        m_file->GetRoot()->DeleteProperty(QStringLiteral("old"));
    }

    DataFile::SaveProgress Recorder()
    {
        return [this](std::uint64_t done, std::uint64_t total) {
            m_calls.emplace_back(done, total);
            return true;
        };
    }

    // Neither file nor tree know of the save.
    void ExpectUntouched()
    {
        EXPECT_TRUE(ReadFile(m_path) == m_bytes);
        EXPECT_EQ(m_folder.Names(), QStringList{QStringLiteral("tree.h5")});
        EXPECT_EQ(m_file->GetPath(), m_path);
        ExpectTree(*m_file->GetRoot());
    }

    void ExpectTree(PropertyObject& root)
    {
        DataFile::RootProperty expected(nullptr);
        BuildTree(expected);
        EXPECT_EQ(CompareTrees(expected, root), "");
    }

    void ExpectSaved()
    {
        m_file->SetSaveProgress({});
        m_file.reset();
        ExpectTree(*Open(m_path)->GetRoot());
        EXPECT_EQ(m_folder.Strays(), QStringList());
    }

    ScratchFolder m_folder;
    QString m_path;
    QByteArray m_bytes;
    std::shared_ptr<DataFile> m_file;
    Calls m_calls;
};

} // namespace

TEST_F(SaveProgress, GoesFromNothingToAllInSmallSteps)
{
    for (const bool packed : {false, true}) {
        for (const int level : {0, 1}) {
            SCOPED_TRACE(::testing::Message() << "packed " << packed << ", level " << level);
            m_calls.clear();
            ASSERT_EQ(m_file->SetPacked(packed), ER_SUCCESS);
            ASSERT_EQ(m_file->SetCompressionLevel(level), ER_SUCCESS);
            m_file->SetSaveProgress(Recorder());
            ASSERT_EQ(m_file->Save(), ER_SUCCESS);
            ASSERT_GE(m_calls.size(), 5U);
            EXPECT_EQ(m_calls.front().first, 0U);
            EXPECT_EQ(m_calls.back().first, m_calls.back().second);
            EXPECT_GE(m_calls.back().second, 21 * s_mebibyte + 30 * 8000);
            for (std::size_t i = 1; i < m_calls.size(); ++i) {
                EXPECT_EQ(m_calls[i].second, m_calls[0].second) << "the total is known at the beginning";
                EXPECT_GE(m_calls[i].first, m_calls[i - 1].first);
                EXPECT_LE(m_calls[i].first - m_calls[i - 1].first, 8 * s_mebibyte);
            }
        }
    }
    ExpectSaved();
}

TEST_F(SaveProgress, GoesInSmallStepsThroughTextsToo)
{
    for (const std::size_t longest : {100U, 70'000U}) { // padded, and end to end
        SCOPED_TRACE(longest);
        std::vector<std::string> texts(24 * s_mebibyte / longest, std::string(longest, 't'));
        for (std::size_t i = 0; i < texts.size(); i += 2)
            texts[i].resize(longest / 2);
        const auto file = Open(m_folder.Path(QStringLiteral("texts.h5")), DataFile::Create);
        AddValue(*file->GetRoot(), QStringLiteral("texts"), BVariant(std::move(texts)));
        m_calls.clear();
        file->SetSaveProgress(Recorder());
        ASSERT_EQ(TrySave(*file).why, QString());
        EXPECT_EQ(m_calls.back().first, m_calls.back().second);
        EXPECT_GE(m_calls.back().second, 17 * s_mebibyte);
        for (std::size_t i = 1; i < m_calls.size(); ++i)
            EXPECT_LE(m_calls[i].first - m_calls[i - 1].first, 8 * s_mebibyte);
    }
}

TEST_F(SaveProgress, IsToldBeforeTheFileIsReplaced)
{
    m_file->SetSaveProgress([&](std::uint64_t /*done*/, std::uint64_t /*total*/) {
        EXPECT_TRUE(ReadFile(m_path) == m_bytes);
        return true;
    });
    ASSERT_EQ(m_file->Save(), ER_SUCCESS);
    EXPECT_FALSE(ReadFile(m_path) == m_bytes);
    ExpectSaved();
}

TEST_F(SaveProgress, ChangesNothingWhenItIsGivenUpAtAnyTime)
{
    m_file->SetSaveProgress(Recorder());
    ASSERT_EQ(m_file->SaveAs(m_folder.Path(QStringLiteral("once.h5"))), ER_SUCCESS);
    m_file->SetSaveProgress({});
    ASSERT_EQ(m_file->SaveAs(m_path), ER_SUCCESS);
    ASSERT_TRUE(QFile::remove(m_folder.Path(QStringLiteral("once.h5"))));
    m_bytes = ReadFile(m_path);
    for (std::size_t last = 0; last < m_calls.size(); ++last) {
        std::size_t calls = 0;
        m_file->SetSaveProgress([&](std::uint64_t, std::uint64_t) { return calls++ != last; });
        const Outcome saved = TrySave(*m_file);
        EXPECT_EQ(saved.code, ER_FAILED);
        EXPECT_EQ(saved.why.toStdString(), m_path.toStdString() + ": the save was cancelled");
        EXPECT_EQ(calls, last + 1) << "it isn't asked again";
        ExpectUntouched();
        calls = 0;
        EXPECT_EQ(m_file->SaveAs(m_folder.Path(QStringLiteral("other.h5"))), ER_FAILED);
        ExpectUntouched();
    }
    m_file->SetSaveProgress({});
    ASSERT_EQ(m_file->Save(), ER_SUCCESS);
    ExpectSaved();
}

TEST_F(SaveProgress, FailsWithTheTextOfAnException)
{
    m_file->SetSaveProgress([](std::uint64_t done, std::uint64_t) {
        if (done != 0)
            throw std::runtime_error("the window is gone");
        return true;
    });
    const Outcome saved = TrySave(*m_file);
    EXPECT_EQ(saved.code, ER_FAILED);
    EXPECT_EQ(saved.why, m_path + QStringLiteral(": the window is gone"));
    ExpectUntouched();

    m_file->SetSaveProgress([](std::uint64_t, std::uint64_t) -> bool { throw 1; });
    EXPECT_EQ(TrySave(*m_file).why, m_path + QStringLiteral(": an unknown exception"));
    ExpectUntouched();
}

TEST_F(SaveProgress, SavesTheTreeAsItWasWhenItBegan)
{
    m_file->SetSaveProgress([this](std::uint64_t, std::uint64_t) {
        m_file->GetRoot()->DeleteProperties();
        AddValue(*m_file->GetRoot(), QStringLiteral("late"), BVariant(1));
        return true;
    });
    ASSERT_EQ(m_file->Save(), ER_SUCCESS);
    EXPECT_EQ(m_file->GetRoot()->GetPropertyCount(), 1);
    ExpectSaved();
}

TEST_F(SaveProgress, BearsAListenerThatChangesElementsInPlace)
{
    m_file->SetSaveProgress([this](std::uint64_t, std::uint64_t) {
        auto* const large =
            static_cast<SimpleProperty*>(m_file->GetRoot()->GetPropertyPtr(QStringLiteral("large")));
        BVariant value = large->GetValue();
        large->SetValue(BVariant(), IsCellArrayFalse);
        static_cast<double*>(value.mutableData())[1'000'000] = -1.0;
        large->SetValue(std::move(value), IsCellArrayFalse);
        return true;
    });
    ASSERT_EQ(m_file->Save(), ER_SUCCESS);
    ExpectSaved();
}

TEST_F(SaveProgress, RefusesToSaveTheSameFileFromWithin)
{
    const QString elsewhere = m_folder.Path(QStringLiteral("elsewhere.h5"));
    int refused = 0;
    m_file->SetSaveProgress([&](std::uint64_t, std::uint64_t) {
        const Outcome again = TrySave(*m_file);
        EXPECT_EQ(again.code, ER_FAILED);
        EXPECT_TRUE(again.why.contains(QStringLiteral("a save of this file is under way")))
            << again.why.toStdString();
        EXPECT_EQ(m_file->SaveAs(elsewhere), ER_FAILED);
        EXPECT_EQ(m_file->GetPath(), m_path);
        ++refused;
        return true;
    });
    ASSERT_EQ(m_file->Save(), ER_SUCCESS);
    EXPECT_GT(refused, 0);
    EXPECT_EQ(m_folder.Names(), QStringList{QStringLiteral("tree.h5")});
    ExpectSaved();
}

TEST_F(SaveProgress, LetsTheListenerSaveAndOpenOtherFiles)
{
    const QString elsewhere = m_folder.Path(QStringLiteral("elsewhere.h5"));
    m_file->SetSaveProgress([&](std::uint64_t, std::uint64_t) {
        SaveNew(elsewhere, &BuildTree).reset();
        ExpectTree(*Open(elsewhere)->GetRoot());
        return true;
    });
    ASSERT_EQ(m_file->Save(), ER_SUCCESS);
    ExpectSaved();
}

TEST_F(SaveProgress, BearsAListenerThatClosesTheFile)
{
    m_file->SetSaveProgress([&](std::uint64_t, std::uint64_t) {
        m_file->Close();
        return true;
    });
    EXPECT_EQ(m_file->Save(), ER_SUCCESS);
    EXPECT_EQ(m_file->GetRoot(), nullptr);
    ExpectSaved();
}

TEST_F(SaveProgress, BearsAListenerThatLetsGoOfFileAndListener)
{
    m_file->SetSaveProgress([this, held = std::vector<int>{1, 2, 3}](std::uint64_t, std::uint64_t) {
        if (m_file)
            m_file->SetSaveProgress({});
        m_file.reset();
        return held.size() == 3;
    });
    DataFile* const file = m_file.get();
    EXPECT_EQ(file->Save(), ER_SUCCESS);
    ExpectTree(*Open(m_path)->GetRoot());
}

} // namespace Orrery::StorageTest
