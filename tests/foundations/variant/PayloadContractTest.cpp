#include "foundations/variant/IVariantData.h"

#include "tests/support/ElementTypes.h"
#include "tests/support/Failures.h"
#include "tests/support/HostPayload.h"
#include "tests/support/Variants.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <utility>

/// What hosts build on when they bring payloads and selectors of their own: the places of the virtual operations, the
/// questions that a payload of a run-time type is asked, and what its failures and absurd answers lead to.
namespace Brindle::Quay {
using namespace TestSupport;
using ::testing::ElementsAre;

namespace {
constexpr auto rowMajor = DataOrdering::RowMajor;
constexpr auto columnMajor = DataOrdering::ColumnMajor;

/// The place of a virtual operation in its class, counted from 0; a destructor takes the first two.
template <class Operation>
std::size_t placeOf(Operation operation)
{
    std::size_t word = 0; // the offset in the table of virtual operations, on some machines plus 1
    static_assert(sizeof operation >= sizeof word);
    std::memcpy(&word, &operation, sizeof word);
    return word / sizeof(void*);
}

/// A run-time array of doubles whose equality notes the flags that it is asked with.
class MarkedArray : public HostPayload
{
public:
    struct Marker
    {
    };
    static inline std::vector<int> s_flags;

    MarkedArray(Log* log, std::vector<double> data, std::vector<std::uint64_t> dimensions,
                DataOrdering ordering = rowMajor, bool scalar = false)
        : HostPayload(log, std::move(data), std::move(dimensions), ordering)
        , m_log(log)
        , m_scalar(scalar)
    {
    }

    bool isScalar() const override { return m_scalar; }
    WellKnownType getWellKnownType() const override { return WellKnownType::RunTime; }
    const std::type_info& getTypeInfo() const override { return typeid(Marker); }
    const TypeOperations* getTypeOperations() const override
    {
        static constexpr TypeOperations operations = {&equal};
        return &operations;
    }
    /// For 2 x 2 elements only.
    IVariantData* reordered(DataOrdering ordering) const override
    {
        const auto* data = static_cast<const double*>(constData());
        return new MarkedArray(m_log, {data[0], data[2], data[1], data[3]}, {2, 2}, ordering);
    }

private:
    static bool equal(const void* first, const void* second, std::uint64_t count, int flag)
    {
        s_flags.push_back(flag);
        return std::memcmp(first, second, count * sizeof(double)) == 0;
    }

    Log* m_log;
    bool m_scalar;
};

class RunTimeArrays : public ::testing::Test
{
protected:
    void SetUp() override { MarkedArray::s_flags.clear(); }

    template <class... Arguments>
    BVariant make(Arguments... arguments)
    {
        return BVariant::fromPayload(new MarkedArray(&m_log, std::move(arguments)...));
    }

    HostPayload::Log m_log;
};
} // namespace

TEST(VirtualOperations, OfAPayloadKeepTheirPlaces)
{
    EXPECT_EQ(placeOf(&IVariantData::addRef), 2u);
    EXPECT_EQ(placeOf(&IVariantData::release), 3u);
    EXPECT_EQ(placeOf(&IVariantData::detach), 4u);
    EXPECT_EQ(placeOf(&IVariantData::getDimensions), 6u);
    EXPECT_EQ(placeOf(&IVariantData::isScalar), 7u);
    EXPECT_EQ(placeOf(&IVariantData::getDataOrdering), 8u);
    EXPECT_EQ(placeOf(&IVariantData::getWellKnownType), 9u);
    EXPECT_EQ(placeOf(&IVariantData::getTypeInfo), 10u);
    EXPECT_EQ(placeOf(&IVariantData::getTypeOperations), 11u);
    EXPECT_EQ(placeOf(&IVariantData::reordered), 12u);
    EXPECT_EQ(placeOf(&IVariantData::reshaped), 14u);
    EXPECT_EQ(placeOf(&IVariantData::constData), 15u);
    EXPECT_EQ(placeOf(&IVariantData::mutableData), 16u);
    EXPECT_EQ(placeOf(&IVariantData::convertedTo), 17u);
}

TEST(VirtualOperations, OfASelectorKeepTheirPlaces)
{
    EXPECT_EQ(placeOf(&IndexItem::resolve), 2u);
    EXPECT_EQ(placeOf(&IndexItem::isValid), 3u);
    EXPECT_EQ(placeOf(&IndexItem::clone), 4u);
}

TEST_F(RunTimeArrays, AreComparedExactlyWithTheFlagSet)
{
    EXPECT_TRUE(exactlyEqual(make(Doubles{1, 2}, Sizes{2}), make(Doubles{1, 2}, Sizes{2})));
    EXPECT_FALSE(exactlyEqual(make(Doubles{1, 2}, Sizes{2}), make(Doubles{1, 3}, Sizes{2})));
    EXPECT_THAT(MarkedArray::s_flags, ElementsAre(1, 1));
}

TEST_F(RunTimeArrays, AreComparedByPositionWithTheFlagClear)
{
    const BVariant rows = make(Doubles{1, 2, 3, 4}, Sizes{2, 2});
    EXPECT_TRUE(equalWithConversion(rows, make(Doubles{1, 3, 2, 4}, Sizes{2, 2}, columnMajor)));
    EXPECT_FALSE(equalWithConversion(rows, make(Doubles{1, 2, 3, 4}, Sizes{2, 2}, columnMajor)));
    EXPECT_FALSE(equalWithConversion(rows, make(Doubles{1, 2, 3, 4}, Sizes{4})));
    EXPECT_THAT(MarkedArray::s_flags, ElementsAre(0, 0));
}

TEST_F(RunTimeArrays, OfScalarFormAreComparedExactlyEvenWithConversion)
{
    const BVariant one = make(Doubles{1}, Sizes{1}, rowMajor, true);
    EXPECT_TRUE(equalWithConversion(one, make(Doubles{1}, Sizes{1}, rowMajor, true)));
    EXPECT_THAT(MarkedArray::s_flags, ElementsAre(1));
    EXPECT_FALSE(equalWithConversion(one, make(Doubles{1}, Sizes{1}, columnMajor, true)));
    EXPECT_TRUE(equalWithConversion(one, make(Doubles{1}, Sizes{1}, columnMajor, false)));
    EXPECT_THAT(MarkedArray::s_flags, ElementsAre(1, 0));
}

TEST(DamagedPayload, ReadsAsNoScalarAndNoIntVector)
{
    HostPayload::Log log;
    log.fails = true;
    const BVariant damaged = HostPayload::make(&log, {5}, {1});
    double scalar = 7;
    float converted = 7;
    std::vector<int> vector{7};
    EXPECT_FALSE(tryGetScalar(damaged, &scalar));
    EXPECT_FALSE(tryGetScalar(damaged, &converted));
    EXPECT_FALSE(tryGetIntVector(damaged, &vector));
    EXPECT_EQ(scalar, 7);
    EXPECT_EQ(converted, 7);
    EXPECT_THAT(vector, ElementsAre(7));
}

TEST(DamagedPayload, TellsItsOwnFailureWhereOneMayBeRaised)
{
    HostPayload::Log log;
    log.fails = true;
    const BVariant damaged = HostPayload::make(&log, {5}, {1});
    EXPECT_EQ(failureOf([&] { getScalar<double>(damaged); }), runtimeError("damaged"));
    EXPECT_EQ(failureOf([&] { getScalar<float>(damaged); }), runtimeError("damaged"));
    EXPECT_EQ(failureOf([&] { getIntVector(damaged); }), runtimeError("damaged"));
    BVariant target(1.0);
    EXPECT_EQ(failureOf([&] { setElement<double>(target, {0}, damaged); }), runtimeError("damaged"));
    EXPECT_EQ(getScalar<double>(target), 1.0);
}

TEST(GetIntVector, IsWhatTryGetIntVectorReads)
{
    EXPECT_THAT(getIntVector(MakeCounting({2, 3}, columnMajor)), ElementsAre(0, 2, 4, 1, 3, 5));
    EXPECT_THAT(getIntVector(BVariant(7.9)), ElementsAre(7));
}

TEST(GetIntVector, FailsWithTheNameOfTheVector)
{
    EXPECT_EQ(failureOf([] {
                  getIntVector(MakeVector({1.0, 3e9, 2.0}));
              }),
              runtimeError("Cannot convert Brindle::Quay::BVariant of type 'double' (size: 3) to "
                           "'std::vector<int>'"));
    EXPECT_EQ(failureOf([] { getIntVector(BVariant()); }), runtimeError("unknown type"));
    EXPECT_EQ(failureOf([] { getIntVector(BVariant::runTime(1)); }), runtimeError("unknown type"));
}

TEST(AppendValues, RefusesACountBeyondSixtyFourBits)
{
    HostPayload::Log log;
    const BVariant absurd = HostPayload::make(&log, {}, {std::uint64_t{1} << 63U});
    EXPECT_THROW(appendValues(absurd, absurd), std::length_error);
    EXPECT_EQ(log.reads, 0);
}

TEST(AnyByteOfABool, IsTrueUnlessZero)
{
    BVariant flags = createArray(WellKnownType::of<bool>(), {2, 2});
    auto* bytes = static_cast<unsigned char*>(flags.mutableData());
    bytes[1] = 2;
    bytes[3] = 255;
    EXPECT_TRUE(getScalar<bool>(elementAt(flags, {0, 1})));
    EXPECT_FALSE(getScalar<bool>(elementAt(flags, {1, 0})));
    EXPECT_THAT(ToElements<bool>(slice(flags, {IndexSet(IndexRange::all), IndexSet(IndexValue(1))})),
                ElementsAre(true, true));
    EXPECT_THAT(ToElements<bool>(flags.reordered(columnMajor)), ElementsAre(false, false, true, true));
    EXPECT_THAT(getIntVector(flags), ElementsAre(0, 1, 0, 1));
}

TEST(SliceFlattener, ListsOffsetsInTheOrderAskedFor)
{
    const Sizes dimensions{3, 4};
    const ArraySlice part{IndexSet(IndexRange(0, 2, 2)), IndexSet(IndexRange(1, 2))};
    const auto offsets = [&](DataOrdering ordering, UseDataOrdering use) {
        return SliceFlattener(part, dimensions, ordering, use).offsets();
    };
    EXPECT_THAT(offsets(rowMajor, UseDataOrdering::ColumnMajor), ElementsAre(1u, 9u, 2u, 10u));
    EXPECT_THAT(offsets(columnMajor, UseDataOrdering::RowMajor), ElementsAre(3u, 6u, 5u, 8u));
}

TEST(ArrayIndexing, RefusesWhatDoesNotFitSixtyFourBits)
{
    const std::uint64_t most = UINT64_MAX;
    for (const auto& calculate :
         {+[](const Sizes&indices, const Sizes&dimensions) {
              return ArrayIndexing::calculateOffsetRowMajor(indices, dimensions, true);
          },
          +[](const Sizes&indices, const Sizes&dimensions) {
              return ArrayIndexing::calculateOffsetColumnMajor(indices, dimensions, true);
          }})
        EXPECT_EQ(failureOf([&] { calculate({most, 1}, {}); }), outOfRange("Indices out of bounds."));
}

TEST(ArrayIndexing, ChecksAnOffsetOfACallerBeforeTheOutputIsTouched)
{
    const Sizes dimensions{2, 3};
    Sizes indices{9};
    EXPECT_EQ(failureOf([&] { ArrayIndexing::CalculateIndicesRowMajor(&indices, 6, dimensions, true); }),
              outOfRange("Indices out of bounds."));
    EXPECT_THAT(indices, ElementsAre(9u));
    ArrayIndexing::CalculateIndicesRowMajor(&indices, 5, dimensions, true);
    EXPECT_THAT(indices, ElementsAre(1u, 2u));
    ArrayIndexing::CalculateIndicesRowMajor(&indices, 7, dimensions, false);
    EXPECT_THAT(indices, ElementsAre(2u, 1u)); // the first index takes the excess
    ArrayIndexing::CalculateIndicesRowMajor(&indices, 7, Sizes{2, 0}, false);
    EXPECT_THAT(indices, ElementsAre(0u, 0u));
}

namespace {
class Unclonable : public IndexItem
{
public:
    std::vector<std::uint64_t> resolve(std::uint64_t) const override { return {}; }
    bool isValid(std::uint64_t) const override { return true; }
    Unclonable* clone() const override { return nullptr; }
};
} // namespace

TEST(IndexSet, RefusesAMissingSelector)
{
    const Failure invalid = invalidArgument("The given ArraySlice is invalid.");
    EXPECT_EQ(failureOf([] { IndexSet(Unclonable{}); }), invalid);
    EXPECT_EQ(failureOf([] { IndexSet(std::vector<std::unique_ptr<IndexItem>>(1)); }), invalid);
}
} // namespace Brindle::Quay
