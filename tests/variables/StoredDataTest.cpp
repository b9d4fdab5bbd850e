// Variables whose data still stand in a file: reads fetch what they need, and what can't be read is told as each
// operation states it, never as a number.
#include "foundations/storage/DataFileFactory.h"
#include "results/PropertyObjectComparator.h"
#include "tests/foundations/storage/DataFiles.h"
#include "tests/variables/FunctionVarTestSupport.h"
#include "tests/variables/JoinedVariableTestSupport.h"
#include "variables/ConcatVar.h"
#include "variables/SweptVarStrategy.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <numeric>

namespace Orrery {
namespace {

using namespace JoinTest;

constexpr std::uint64_t perBlock = (std::uint64_t(4) << 20U) / sizeof(double);

Doubles counting(std::uint64_t count, double first)
{
    Doubles values(count);
    std::iota(values.begin(), values.end(), first);
    return values;
}

std::uint64_t bytesRead()
{
    std::ifstream counters("/proc/self/io");
    std::string name;
    std::uint64_t bytes = 0;
    counters >> name >> bytes;
    return bytes;
}

Variable* find(DataFile& file, const char* name)
{
    auto* const variable = file.GetRoot()->GetPtr<Variable>(QString::fromLatin1(name));
    if (!variable)
        throw std::runtime_error(std::string("no variable ") + name);
    return variable;
}

class StoredData : public ::testing::Test
{
protected:
    // "sound" and "damaged", and what is computed of them.
    void SetUp() override
    {
        StorageTest::SaveNew(path, [this](PropertyObject& root) {
            insertData(root, QStringLiteral("sound"), numbers({1, 2, 3}));
            const Variable* const damaged =
                insertData(root, QStringLiteral("damaged"), BVariant(counting(6, 777.25), {3, 2}));
            auto* const joined = insert(root, std::make_unique<ConcatVar>(QStringLiteral("joined")));
            const auto members =
                std::dynamic_pointer_cast<ConcatVarStrategy>(joined->GetStrategyPtr().lock());
            members->AddVariable(insertData(root, QStringLiteral("row"), numbers({5, 6})));
            members->AddVariable(
                insertData(root, QStringLiteral("damagedRow"), BVariant(counting(2, 555.25))));
            auto* const swept = insert(root, std::make_unique<Variable>(QStringLiteral("swept")));
            auto* const sweep = swept->SetStrategy<SweptVarStrategy>();
            sweep->SetParameter(insertData(root, QStringLiteral("parameter"), BVariant(counting(2, 333.25))));
            sweep->SetConcatVar(joined);
            auto* const computed = insert(root, std::make_unique<FunctionVar>(QStringLiteral("computed")));
            total.giveTo(*computed);
            computed->AddArgumentRef(damaged);
        }).reset();
        QByteArray bytes = StorageTest::ReadFile(path);
        for (const double first : {777.25, 555.25, 333.25}) {
            QByteArray pattern(sizeof first, '\0');
            std::memcpy(pattern.data(), &first, sizeof first);
            const int at = bytes.indexOf(pattern);
            ASSERT_GE(at, 0);
            bytes[at] = static_cast<char>(bytes[at] ^ 1);
        }
        StorageTest::WriteFile(path, bytes);
        file = StorageTest::Open(path);
    }

    // The one line with which a payload says that it can't be read.
    void expectDamage(const std::function<void()>& operation, const char* node) const
    {
        const Failure failure = failureOf(operation);
        EXPECT_EQ(failure.type, "std::runtime_error");
        EXPECT_EQ(failure.words, path.toStdString() + ": " + node +
                                     ": the array is damaged: its checksum doesn't fit its bytes");
    }

    StorageTest::ScratchFolder folder;
    QString path = folder.Path(QStringLiteral("data.h5"));
    RegisteredMeasurement total{storeTotal};
    std::shared_ptr<DataFile> file;
};

TEST_F(StoredData, FailsByItsCodeInReadsOfParts)
{
    const Variable& damaged = *find(*file, "damaged");
    EXPECT_EQ(readAt(damaged, 1), refused(ER_FAILED));
    EXPECT_EQ(readRange(damaged, 1, 2).code, ER_FAILED);
    EXPECT_EQ(damaged.GetMaxIndepOffset(), 3U);
    EXPECT_EQ(damaged.GetElementDimCount(), 1U);
    EXPECT_EQ(readAt(*find(*file, "sound"), 1).code, ER_SUCCESS);
}

TEST_F(StoredData, HandsItsPayloadOnUnreadAndThrowsWhenThatIsRead)
{
    const BVariant data = find(*file, "damaged")->GetData();
    EXPECT_EQ(data.elementCount(), 6U);
    expectDamage([&] { data.constData(); }, "/damaged/Data");
    BVariant all;
    ASSERT_EQ(find(*file, "damaged")->GetValueRange(&all, 0, 0), ER_SUCCESS);
    expectDamage([&] { all.constData(); }, "/damaged/Data");
}

TEST_F(StoredData, IsDifferentFromEverythingWhereItCannotBeCompared)
{
    const auto other = StorageTest::Open(path);
    const BVariant data = find(*file, "damaged")->GetData();
    EXPECT_FALSE(equalWithConversion(data, BVariant(counting(6, 777.25), {3, 2})));
    expectDamage([&] { exactlyEqual(data, BVariant(counting(6, 777.25), {3, 2})); }, "/damaged/Data");
    Variable sound(QStringLiteral("damaged"), BVariant(counting(6, 777.25), {3, 2}));
    EXPECT_EQ(PropertyObjectComparator(*find(*file, "damaged"), sound).sameValues(), 0);
    EXPECT_EQ(PropertyObjectComparator(*find(*file, "sound"), *find(*other, "sound")).sameValues(), 1);
}

TEST_F(StoredData, EndsAComputationWithoutAResult)
{
    const Variable& computed = *find(*file, "computed");
    EXPECT_TRUE(computed.GetData().isNull());
    EXPECT_EQ(total.runs(), 1);
}

TEST_F(StoredData, FailsAJoinThatMeetsIt)
{
    const Variable& joined = *find(*file, "joined");
    EXPECT_EQ(joined.GetMaxIndepOffset(), 4U);
    EXPECT_EQ(readAt(joined, 0).code, ER_SUCCESS);
    EXPECT_EQ(readAt(joined, 3).code, ER_FAILED);
    EXPECT_EQ(readAt(*find(*file, "swept"), 0).code, ER_FAILED);
    expectDamage([&] { joined.GetData(); }, "/damagedRow/Data");
}

TEST_F(StoredData, LeavesTheVariableForNewData)
{
    Variable& damaged = *find(*file, "damaged");
    damaged.UpdateData(numbers({4, 5}));
    EXPECT_EQ(ToDoubles(damaged.GetData()), (Doubles{4, 5}));
    EXPECT_EQ(readAt(damaged, 1).code, ER_SUCCESS);
}

TEST_F(StoredData, IsCopiedWithItsVariableUnread)
{
    const Variable copy(*find(*file, "damaged"));
    file->Close();
    EXPECT_EQ(copy.GetMaxIndepOffset(), 3U);
    EXPECT_EQ(readAt(copy, 0), refused(ER_FAILED));
}

TEST(StoredDataRead, FetchesTheBlocksOfARangeOnly)
{
    const StorageTest::ScratchFolder folder;
    const QString path = folder.Path(QStringLiteral("data.h5"));
    StorageTest::SaveNew(path, [](PropertyObject& root) {
        insertData(root, QStringLiteral("long"), BVariant(counting(8 * perBlock, 0.5)));
        insertData(root, QStringLiteral("matrix"), BVariant(counting(8 * perBlock, 0.5), {perBlock / 8, 64}));
    }).reset();
    const auto file = StorageTest::Open(path);
    constexpr std::uint64_t block = perBlock * sizeof(double);
    for (const char* const name : {"long", "matrix"}) {
        const Variable& variable = *find(*file, name);
        const std::uint64_t perOffset = 8 * perBlock / variable.GetMaxIndepOffset();
        const std::uint64_t first = variable.GetMaxIndepOffset() / 2;
        const std::uint64_t before = bytesRead();
        BVariant run;
        ASSERT_EQ(variable.GetValueRange(&run, first, first + 3), ER_SUCCESS);
        ASSERT_EQ(run.elementCount(), 3 * perOffset);
        EXPECT_EQ(ToDoubles(run).front(), static_cast<double>(first * perOffset) + 0.5);
        BVariant value;
        ASSERT_EQ(variable.GetValueAt(&value, first + 2), ER_SUCCESS);
        EXPECT_EQ(ToDoubles(value).back(), static_cast<double>((first + 3) * perOffset) - 0.5);
        const std::uint64_t read = bytesRead() - before;
        EXPECT_GE(read, block);
        EXPECT_LT(read, block + block / 2);
    }
}

} // namespace
} // namespace Orrery
