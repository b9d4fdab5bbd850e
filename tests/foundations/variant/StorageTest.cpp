#include "foundations/variant/VariantPayloads.h"

#include "tests/support/ElementTypes.h"
#include "tests/support/Failures.h"
#include "tests/support/HostPayload.h"
#include "tests/support/Variants.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace Brindle::Quay {
using namespace TestSupport;
using ::testing::ElementsAre;

namespace {
constexpr auto rowMajor = DataOrdering::RowMajor;
constexpr auto columnMajor = DataOrdering::ColumnMajor;

struct Buffer
{
    alignas(void*) std::byte bytes[variantBufferSize];
};

bool isAligned(const void* data, std::size_t alignment)
{
    return reinterpret_cast<std::uintptr_t>(data) % alignment == 0;
}

struct ReleasePayload
{
    void operator()(const IVariantData* payload) const { payload->release(); }
};
using Payload = std::unique_ptr<IVariantData, ReleasePayload>;
} // namespace

template <class T>
class StorageOf : public ::testing::Test
{
};
TYPED_TEST_SUITE(StorageOf, ElementTypes, ElementTypeName);

TYPED_TEST(StorageOf, BuildsAScalarInABuffer)
{
    Buffer first, second, third;
    IVariantData* scalar =
        constructVariantScalar<TypeParam>(first.bytes, sizeof first.bytes, Samples<TypeParam>::other());
    EXPECT_EQ(static_cast<void*>(scalar), first.bytes);
    EXPECT_TRUE(scalar->isScalar());
    EXPECT_EQ(scalar->getDataOrdering(), rowMajor);
    EXPECT_EQ(scalar->getTypeOperations(), nullptr);
    EXPECT_EQ(scalar->detach(), scalar); // it has one owner by nature
    scalar->addRef();                    // both without effect
    scalar->release();

    IVariantData* copy = copyConstructVariantScalar(second.bytes, sizeof second.bytes, scalar);
    EXPECT_EQ(static_cast<void*>(copy), second.bytes);
    EXPECT_TRUE(
        sameElement(*static_cast<const TypeParam*>(scalar->constData()), Samples<TypeParam>::other()));
    EXPECT_TRUE(sameElement(*static_cast<const TypeParam*>(copy->constData()), Samples<TypeParam>::other()));

    IVariantData* moved = moveConstructVariantScalar(third.bytes, sizeof third.bytes, scalar);
    EXPECT_TRUE(sameElement(*static_cast<const TypeParam*>(moved->constData()), Samples<TypeParam>::other()));
    std::destroy_at(scalar);
    std::destroy_at(copy);
    std::destroy_at(moved);
}

TYPED_TEST(StorageOf, CreatesAnArrayAlignedToACacheLine)
{
    for (std::uint64_t count : Sizes{1, 3, 100, 100000}) {
        const BVariant created = createArray(WellKnownType::of<TypeParam>(), {count});
        EXPECT_TRUE(isAligned(created.constData(), 64)) << count;
        const BVariant raw = createUninitializedArray(WellKnownType::of<TypeParam>(), {count});
        EXPECT_TRUE(isAligned(raw.constData(), 64)) << count;
        EXPECT_EQ(raw.elementCount(), count);
    }
}

TYPED_TEST(StorageOf, LeavesRawPayloadsToBeWritten)
{
    const Payload payload(
        constructVariantVectorWithoutDataWithDimsUnresolved<TypeParam>({2, 2}, columnMajor));
    EXPECT_EQ(payload->getWellKnownType().code(), elementCode<TypeParam>);
    EXPECT_EQ(payload->getDataOrdering(), columnMajor);
    EXPECT_FALSE(payload->isScalar());
    const auto elements = sampleElements<TypeParam>(4);
    std::copy(elements.begin(), elements.end(), static_cast<TypeParam*>(payload->mutableData()));
    payload->addRef();
    const BVariant variant = BVariant::fromPayload(payload.get());
    const auto read = ToElements<TypeParam>(variant);
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_TRUE(sameElement<TypeParam>(read[i], elements[i])) << i;
}

TYPED_TEST(StorageOf, CopiesOrTakesOverGivenData)
{
    if constexpr (!std::is_same_v<TypeParam, bool>) {
        auto elements = sampleElements<TypeParam>(4);
        const BVariant copied =
            BVariant::fromPayload(constructVariantVectorWithDataWithDimsUnresolved<TypeParam>(
                elements.data(), 4, {2, 2}, columnMajor));
        EXPECT_NE(copied.constData(), elements.data());
        EXPECT_EQ(ToDimensions(copied), (Sizes{2, 2}));
        EXPECT_TRUE(exactlyEqual(copied, BVariant(std::vector<TypeParam>(elements), {2, 2}, columnMajor)));

        const TypeParam* data = elements.data();
        const BVariant taken = BVariant::fromPayload(
            constructVariantDataFromMovedVector<TypeParam>(std::move(elements), {}, rowMajor));
        EXPECT_EQ(taken.constData(), data);
        EXPECT_EQ(ToDimensions(taken), (Sizes{4}));
    } else {
        const bool elements[] = {true, false, true};
        const BVariant copied = BVariant::fromPayload(
            constructVariantVectorWithDataWithDimsUnresolved<bool>(elements, 3, {}, rowMajor));
        EXPECT_THAT(ToElements<bool>(copied), ElementsAre(true, false, true));
        EXPECT_EQ(ToDimensions(copied), (Sizes{3}));
    }
}

TYPED_TEST(StorageOf, TellsTheSizeOfAnElement)
{
    EXPECT_EQ(elementSize(WellKnownType::of<TypeParam>()), sizeof(TypeParam));
}

TYPED_TEST(StorageOf, CopiesARunOfElements)
{
    const auto elements = sampleElements<TypeParam>(6);
    const BVariant array{std::vector<TypeParam>(elements)};
    TypeParam target[3] = {};
    copyElements(array, 2, 3, target);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_TRUE(sameElement<TypeParam>(target[i], elements[2 + i])) << i;
    EXPECT_EQ(failureOf([&] { copyElements(array, 4, 3, target); }), outOfRange("Indices out of bounds."));
    EXPECT_EQ(failureOf([&] { copyElements(array, UINT64_MAX, 2, target); }),
              outOfRange("Indices out of bounds."));
    copyElements(array, 6, 0, target);
    EXPECT_TRUE(sameElement<TypeParam>(target[0], elements[2]));
}

TYPED_TEST(StorageOf, ReordersAndReshapes)
{
    const auto elements = sampleElements<TypeParam>(6);
    const BVariant array(std::vector<TypeParam>(elements), {2, 3});
    const auto columns = ToElements<TypeParam>(array.reordered(columnMajor));
    const std::size_t order[] = {0, 3, 1, 4, 2, 5};
    for (std::size_t i = 0; i < 6; ++i)
        EXPECT_TRUE(sameElement<TypeParam>(columns[i], elements[order[i]])) << i;

    const BVariant flat =
        BVariant::fromPayload(array.payload()->reshaped(array.payload(), {3, 2}, columnMajor));
    EXPECT_EQ(ToDimensions(flat), (Sizes{3, 2}));
    EXPECT_EQ(flat.getDataOrdering(), columnMajor);
    EXPECT_EQ(flat.constData(), array.constData()); // shared, in storage order
    EXPECT_THROW(array.payload()->reshaped(array.payload(), {4}, rowMajor), std::invalid_argument);
}

TYPED_TEST(StorageOf, WritesToAReshapedArrayReachNobodyElse)
{
    const BVariant array{sampleElements<TypeParam>(4)};
    BVariant square = BVariant::fromPayload(array.payload()->reshaped(array.payload(), {2, 2}, rowMajor));
    setElement<TypeParam>(square, {0, 0}, Samples<TypeParam>::second());
    EXPECT_TRUE(sameElement<TypeParam>(ToElements<TypeParam>(array)[0], Samples<TypeParam>::first()));
    EXPECT_TRUE(sameElement<TypeParam>(ToElements<TypeParam>(square)[0], Samples<TypeParam>::second()));
    EXPECT_TRUE(sameElement<TypeParam>(ToElements<TypeParam>(square)[3], Samples<TypeParam>::extreme()));
}

TEST(Storage, RefusesABufferThatIsTooSmall)
{
    alignas(void*) std::byte small[8];
    EXPECT_THROW(constructVariantScalar<double>(small, sizeof small, 1.0), std::length_error);
}

TEST(Storage, RefusesDimensionsOfAnotherCountThanTheData)
{
    const double data[] = {1, 2, 3};
    EXPECT_THROW(constructVariantVectorWithDataWithDimsUnresolved<double>(data, 3, {2, 2}, rowMajor),
                 std::invalid_argument);
    EXPECT_THROW(constructVariantDataFromMovedVector<int>({1, 2, 3}, {2}, rowMajor), std::invalid_argument);
}

TEST(Storage, RefusesCountsBeyondSixtyFourBits)
{
    const std::uint64_t half = std::uint64_t{1} << 32;
    EXPECT_THROW(checkedElementCount({half, half}), std::length_error);
    EXPECT_EQ(checkedElementCount({half, half, 0}), 0u);
    EXPECT_EQ(checkedElementCount({half, half - 1}), half * (half - 1));
    EXPECT_EQ(checkedElementCount({}), 0u);
    EXPECT_THROW(createArray(WellKnownType::of<double>(), {half, half}), std::length_error);
    EXPECT_THROW(createArray(WellKnownType::of<double>(), {half, half / 8}), std::length_error);
    EXPECT_THROW(createArray(WellKnownType::of<std::string>(), {half, half / 32}), std::length_error);
    EXPECT_THROW(createUninitializedArray(WellKnownType::of<std::int8_t>(), {half, half - 1}),
                 std::length_error);
}

TEST(Storage, SizesOfCodesWithoutElementsFailTheDispatch)
{
    EXPECT_EQ(failureOf([] { elementSize(0); }), runtimeError("unknown type"));
    EXPECT_EQ(failureOf([] { elementSize(32); }), runtimeError("unknown type"));
    EXPECT_EQ(failureOf([] { elementSize(8); }), runtimeError("not a numeric type"));
    EXPECT_STREQ(elementTypeName(0), "");
    EXPECT_STREQ(elementTypeName(32), "");
    EXPECT_STREQ(elementTypeName(8), "");
}

TEST(NullPayload, IsThereToBeAsked)
{
    const IVariantData* null = constructVariantNull();
    EXPECT_EQ(null->getWellKnownType().code(), 0u);
    EXPECT_TRUE(null->getTypeInfo() == typeid(void));
    EXPECT_FALSE(null->isScalar());
    EXPECT_EQ(null->getDimensions().size(), 0u);
    EXPECT_EQ(null->getDataOrdering(), rowMajor);
    EXPECT_EQ(null->convertedTo(WellKnownType::of<double>(), 1), nullptr);
    EXPECT_EQ(null->constData(), nullptr);
}

TEST(HostPayloadOwnership, IsSharedByCopiesAndEndsWithTheLast)
{
    HostPayload::Log log;
    {
        BVariant variant = HostPayload::make(&log, {1, 2}, {2});
        {
            const BVariant copy(variant);
            BVariant moved(std::move(variant));
            variant = copy;
        }
        EXPECT_EQ(log.destroyed, 0);
        EXPECT_EQ(variant.elementCount(), 2u);
    }
    EXPECT_EQ(log.destroyed, 1);
}

TEST(HostPayloadOwnership, OfAVariantThatIsRefusedIsGivenUpToo)
{
    HostPayload::Log log;
    const std::uint64_t half = std::uint64_t{1} << 32;
    EXPECT_THROW(HostPayload::make(&log, {}, {half, half}), std::length_error);
    EXPECT_EQ(log.destroyed, 1);
}

TEST(HostPayloadOwnership, OfNoPayloadIsNull)
{
    EXPECT_TRUE(BVariant::fromPayload(nullptr).isNull());
}

TEST(HostPayloadReads, AreNotNeededForShapeAndType)
{
    HostPayload::Log log;
    log.fails = true;
    const BVariant variant = HostPayload::make(&log, {1, 2, 3, 4}, {2, 2});
    const BVariant copy(variant);
    EXPECT_EQ(copy.elementCount(), 4u);
    EXPECT_FALSE(copy.isNull());
    EXPECT_FALSE(copy.holdsScalar());
    EXPECT_EQ(ToDimensions(copy), (Sizes{2, 2}));
    checkElementType<double>(copy);
    EXPECT_THROW(slice(copy, {IndexSet(IndexValue(2))}), std::out_of_range); // the index first
    EXPECT_EQ(appendValues(copy, BVariant()).elementCount(), 4u);
    EXPECT_EQ(log.reads, 0);
}

TEST(HostPayloadReads, PassTheirFailureOn)
{
    HostPayload::Log log;
    log.fails = true;
    BVariant variant = HostPayload::make(&log, {1, 2}, {2});
    const Failure damaged = runtimeError("damaged");
    EXPECT_EQ(failureOf([&] { elementAt(variant, {0}); }), damaged);
    EXPECT_EQ(failureOf([&] { slice(variant, {IndexSet(IndexRange::all)}); }), damaged);
    EXPECT_EQ(failureOf([&] { appendValues(variant, variant); }), damaged);
    EXPECT_EQ(failureOf([&] { appendValues(BVariant(1), variant); }), damaged);
    EXPECT_EQ(failureOf([&] { convertedTo(variant, elementCode<float>); }), damaged);
    EXPECT_EQ(failureOf([&] { convertInPlace(variant, elementCode<float>); }), damaged);
    EXPECT_EQ(failureOf([&] { IterableContainer<double>{variant}; }), damaged);
    log.fails = false;
    EXPECT_EQ(variant.getWellKnownType().code(), elementCode<double>);
    EXPECT_EQ(ToDoubles(variant), (Doubles{1, 2}));
}

TEST(HostPayloadReads, ThatFailAreFalseWhereAnOperationOnlyTries)
{
    HostPayload::Log log;
    log.fails = true;
    const BVariant one = HostPayload::make(&log, {1}, {1});
    double number = 7;
    int integer = 7;
    std::vector<int> integers{7};
    EXPECT_FALSE(tryGetScalar<double>(one, &number));
    EXPECT_FALSE(tryGetScalar<int>(one, &integer));
    EXPECT_FALSE(tryGetIntVector(one, &integers));
    EXPECT_EQ(number, 7);
    EXPECT_EQ(integer, 7);
    EXPECT_EQ(integers, std::vector<int>{7});
}

// A payload that reads runs without all of its data, and must never be asked for all of it.
namespace {
class PiecewisePayload : public HostPayload
{
public:
    using HostPayload::HostPayload;
    bool readRun(std::uint64_t first, std::uint64_t count, void* target) const override
    {
        for (std::uint64_t i = 0; i < count; ++i)
            static_cast<double*>(target)[i] = static_cast<double>(first + i);
        return true;
    }
};
} // namespace

TEST(HostPayloadReads, OfARunTakeTheShorterWay)
{
    HostPayload::Log log;
    log.fails = true;
    const BVariant variant = BVariant::fromPayload(new PiecewisePayload(&log, {}, {1000, 10}));
    EXPECT_EQ(ToDoubles(slice(variant, {IndexSet(IndexValue(7)), IndexSet(IndexRange(2, 4))})),
              (Doubles{72, 73, 74}));
    EXPECT_EQ(ToDoubles(sliceRange(variant, 999, 999)),
              (Doubles{9990, 9991, 9992, 9993, 9994, 9995, 9996, 9997, 9998, 9999}));
    EXPECT_EQ(getScalar<double>(elementAt(variant, {5, 5})), 55);
    double target[2] = {};
    copyElements(variant, 17, 2, target);
    EXPECT_THAT(target, ElementsAre(17, 18));
    EXPECT_EQ(log.reads, 0);
}

// A bool in a file or of a host may be any byte; it is true unless it is 0.
TEST(BoolOfAnyByte, IsReadAsTrue)
{
    BVariant bools = createArray(WellKnownType::of<bool>(), {4});
    const unsigned char bytes[] = {0, 1, 2, 255};
    std::memcpy(bools.mutableData(), bytes, sizeof bytes);
    for (std::uint64_t i = 0; i < 4; ++i)
        EXPECT_EQ(getScalar<bool>(elementAt(bools, {i})), i != 0) << i;
    EXPECT_EQ(ToDoubles(bools), (Doubles{0, 1, 1, 1}));
    EXPECT_EQ(ToDoubles(slice(bools, {IndexSet(IndexRange(0, 3, 3))})), (Doubles{0, 1}));
    EXPECT_EQ(ToDoubles(bools.reordered(columnMajor)), (Doubles{0, 1, 1, 1}));
}

// A payload of code 32 whose type is void counts as null.
namespace {
class VoidPayload : public HostPayload
{
public:
    using HostPayload::HostPayload;
    WellKnownType getWellKnownType() const override { return WellKnownType::RunTime; }
    const std::type_info& getTypeInfo() const override { return typeid(void); }
};
} // namespace

TEST(HostPayloadType, OfVoidCountsAsNull)
{
    HostPayload::Log log;
    const BVariant nothing = BVariant::fromPayload(new VoidPayload(&log, {1}, {1}));
    EXPECT_TRUE(nothing.isNull());
    EXPECT_EQ(failureOf([&] { checkElementType<double>(nothing); }),
              invalidArgument("Cannot access element of null variant."));
    double out = 7;
    EXPECT_FALSE(tryGetScalar<double>(nothing, &out));
    EXPECT_EQ(out, 7);
    EXPECT_EQ(failureOf([&] { slice(nothing, {}); }), invalidArgument("The given ArraySlice is invalid."));
}
} // namespace Brindle::Quay
