#include "foundations/variant/BVariant.h"

#include "tests/support/CaseName.h"
#include "tests/support/ElementTypes.h"
#include "tests/support/Variants.h"

#include <gtest/gtest.h>

#include <limits>
#include <type_traits>
#include <utility>

namespace Brindle::Quay {
using namespace TestSupport;

namespace {
constexpr auto rowMajor = DataOrdering::RowMajor;
constexpr auto columnMajor = DataOrdering::ColumnMajor;

bool liesInside(const void* pointer, const BVariant& variant)
{
    const auto* begin = reinterpret_cast<const char*>(&variant);
    const auto* p = static_cast<const char*>(pointer);
    return p >= begin && p < begin + sizeof(BVariant);
}

// A run-time type: copyable, comparable, small enough for the buffer.
struct Point
{
    int x, y;
    bool operator==(const Point& other) const { return x == other.x && y == other.y; }
};

// Too large for the buffer.
struct Page
{
    int lines[50];
    bool operator==(const Page& other) const { return lines[0] == other.lines[0]; }
};
struct Other
{
};

// What a variant isn't made of: a pointer would otherwise become a bool, a long double lose digits.
static_assert(!std::is_constructible_v<BVariant, std::nullptr_t>);
static_assert(!std::is_constructible_v<BVariant, int*>);
static_assert(!std::is_constructible_v<BVariant, const void*>);
static_assert(!std::is_constructible_v<BVariant, long double>);
static_assert(!std::is_constructible_v<BVariant, Other>);
static_assert(!std::is_constructible_v<BVariant, std::vector<Other>>);
static_assert(std::is_copy_constructible_v<BVariant> && std::is_copy_assignable_v<BVariant>);
static_assert(std::is_nothrow_move_constructible_v<BVariant> && std::is_nothrow_move_assignable_v<BVariant>);
static_assert(std::is_nothrow_destructible_v<BVariant>);
} // namespace

template <class T>
class EveryElementType : public ::testing::Test
{
};
TYPED_TEST_SUITE(EveryElementType, ElementTypes, ElementTypeName);

TYPED_TEST(EveryElementType, HasItsCode)
{
    EXPECT_EQ(WellKnownType::of<TypeParam>().code(), elementCode<TypeParam>);
}

TYPED_TEST(EveryElementType, MakesAScalarOfOneDimensionOfSizeOne)
{
    const BVariant scalar(Samples<TypeParam>::first());
    EXPECT_FALSE(scalar.isNull());
    EXPECT_FALSE(scalar.isEmpty());
    EXPECT_TRUE(scalar.isScalar());
    EXPECT_TRUE(scalar.holdsScalar());
    EXPECT_EQ(scalar.elementCount(), 1u);
    EXPECT_EQ(ToDimensions(scalar), (Sizes{1}));
    EXPECT_EQ(scalar.getDataOrdering(), rowMajor);
    EXPECT_EQ(scalar.getWellKnownType().code(), elementCode<TypeParam>);
    EXPECT_TRUE(scalar.getTypeInfo() == typeid(TypeParam));
    EXPECT_TRUE(sameElement(*static_cast<const TypeParam*>(scalar.constData()), Samples<TypeParam>::first()));
}

TYPED_TEST(EveryElementType, KeepsAScalarInTheVariantItself)
{
    const BVariant scalar(Samples<TypeParam>::other());
    EXPECT_TRUE(liesInside(scalar.constData(), scalar));
    const BVariant copy(scalar);
    EXPECT_TRUE(liesInside(copy.constData(), copy));
    EXPECT_TRUE(sameElement(*static_cast<const TypeParam*>(copy.constData()), Samples<TypeParam>::other()));
    EXPECT_TRUE(sameElement(*static_cast<const TypeParam*>(scalar.constData()), Samples<TypeParam>::other()));
}

TYPED_TEST(EveryElementType, ConvertsImplicitlyToAVariant)
{
    static_assert(std::is_convertible_v<TypeParam, BVariant>);
    const BVariant variant = Samples<TypeParam>::second();
    EXPECT_TRUE(sameElement(getScalar<TypeParam>(variant), Samples<TypeParam>::second()));
}

TYPED_TEST(EveryElementType, MakesAVectorOfTheDataAsLongAsIt)
{
    const auto elements = sampleElements<TypeParam>(5);
    const BVariant variant{std::vector<TypeParam>(elements)};
    EXPECT_EQ(ToDimensions(variant), (Sizes{5}));
    EXPECT_EQ(variant.elementCount(), 5u);
    EXPECT_FALSE(variant.isScalar());
    EXPECT_FALSE(variant.holdsScalar());
    EXPECT_EQ(variant.getDataOrdering(), rowMajor);
    EXPECT_EQ(variant.getWellKnownType().code(), elementCode<TypeParam>);
    EXPECT_TRUE(variant.getTypeInfo() == typeid(TypeParam));
    const auto read = ToElements<TypeParam>(variant);
    ASSERT_EQ(read.size(), elements.size());
    for (std::size_t i = 0; i < read.size(); ++i)
        EXPECT_TRUE(sameElement<TypeParam>(read[i], elements[i])) << i;
}

TYPED_TEST(EveryElementType, MakesAnArrayOfGivenDimensionsAndOrdering)
{
    const BVariant variant(sampleElements<TypeParam>(6), {2, 3}, columnMajor);
    EXPECT_EQ(ToDimensions(variant), (Sizes{2, 3}));
    EXPECT_EQ(variant.getDataOrdering(), columnMajor);
    EXPECT_EQ(variant.elementCount(), 6u);
}

TYPED_TEST(EveryElementType, IsCreatedZeroed)
{
    const BVariant made =
        createArray(WellKnownType::of<TypeParam>(), std::vector<std::uint64_t>{3, 2}, columnMajor);
    EXPECT_EQ(made.getWellKnownType().code(), elementCode<TypeParam>);
    EXPECT_EQ(ToDimensions(made), (Sizes{3, 2}));
    EXPECT_EQ(made.getDataOrdering(), columnMajor);
    for (const TypeParam& element : IterableContainer<TypeParam>(made))
        EXPECT_TRUE(sameElement<TypeParam>(element, TypeParam{}));
}

TYPED_TEST(EveryElementType, CopyOfAnArraySharesItUntilAWrite)
{
    BVariant original{sampleElements<TypeParam>(3)};
    const BVariant copy(original);
    EXPECT_EQ(copy.constData(), original.constData());

    setElement<TypeParam>(original, {0}, Samples<TypeParam>::second());
    EXPECT_NE(copy.constData(), original.constData());
    EXPECT_TRUE(sameElement<TypeParam>(ToElements<TypeParam>(copy)[0], Samples<TypeParam>::first()));
    EXPECT_TRUE(sameElement<TypeParam>(ToElements<TypeParam>(original)[0], Samples<TypeParam>::second()));
    EXPECT_TRUE(sameElement<TypeParam>(ToElements<TypeParam>(original)[2], Samples<TypeParam>::other()));
}

TYPED_TEST(EveryElementType, CopyOfAScalarIsIndependent)
{
    BVariant original(Samples<TypeParam>::first());
    const BVariant copy(original);
    setElement<TypeParam>(original, {0}, Samples<TypeParam>::second());
    EXPECT_TRUE(sameElement(getScalar<TypeParam>(original), Samples<TypeParam>::second()));
    EXPECT_TRUE(sameElement(getScalar<TypeParam>(copy), Samples<TypeParam>::first()));
}

TYPED_TEST(EveryElementType, SurvivesMoves)
{
    BVariant scalar(Samples<TypeParam>::other());
    BVariant moved(std::move(scalar));
    EXPECT_TRUE(sameElement(getScalar<TypeParam>(moved), Samples<TypeParam>::other()));
    EXPECT_TRUE(scalar.isNull()); // NOLINT(bugprone-use-after-move): a moved-from variant is null

    BVariant array{sampleElements<TypeParam>(4)};
    const void* data = array.constData();
    moved = std::move(array);
    EXPECT_EQ(moved.constData(), data);
    EXPECT_TRUE(array.isNull()); // NOLINT(bugprone-use-after-move)
}

TEST(BVariant, IsOnePointerAndABufferOfFortyBytes)
{
    EXPECT_EQ(sizeof(BVariant), 48u);
}

TEST(BVariant, IsNullByDefault)
{
    const BVariant null;
    EXPECT_TRUE(null.isNull());
    EXPECT_TRUE(null.isEmpty());
    EXPECT_FALSE(null.isScalar());
    EXPECT_FALSE(null.holdsScalar());
    EXPECT_EQ(null.elementCount(), 0u);
    EXPECT_EQ(ToDimensions(null), Sizes{});
    EXPECT_EQ(null.getWellKnownType().code(), 0u);
    EXPECT_EQ(null.getDataOrdering(), rowMajor);
}

TEST(BVariant, TakesEveryIntegerByItsWidthAndSign)
{
    EXPECT_EQ(BVariant(static_cast<long>(1)).getWellKnownType().code(), elementCode<std::int64_t>);
    EXPECT_EQ(BVariant(1LL).getWellKnownType().code(), elementCode<std::int64_t>);
    EXPECT_EQ(BVariant(1ULL).getWellKnownType().code(), elementCode<std::uint64_t>);
    EXPECT_EQ(BVariant(1UL).getWellKnownType().code(), elementCode<std::uint64_t>);
    EXPECT_EQ(BVariant(1U).getWellKnownType().code(), elementCode<std::uint32_t>);
    const auto charCode = std::is_signed_v<char> ? elementCode<std::int8_t> : elementCode<std::uint8_t>;
    EXPECT_EQ(BVariant('x').getWellKnownType().code(), charCode);
    EXPECT_EQ(getScalar<std::int64_t>(BVariant(std::numeric_limits<long long>::min())),
              std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(getScalar<std::uint64_t>(BVariant(std::numeric_limits<unsigned long long>::max())),
              std::numeric_limits<std::uint64_t>::max());
}

TEST(BVariant, DoesNotTakeATextLiteralForABool)
{
    static_assert(!std::is_convertible_v<const char*, BVariant>);
    static_assert(!std::is_convertible_v<const char(&)[4], BVariant>);
    const BVariant text("abc");
    EXPECT_EQ(text.getWellKnownType().code(), elementCode<std::string>);
    EXPECT_EQ(getScalar<std::string>(text), "abc");
}

TEST(BVariant, TakesAVectorOver)
{
    std::vector<double> elements{1, 2, 3};
    const void* data = elements.data();
    const BVariant variant(std::move(elements));
    EXPECT_EQ(variant.constData(), data);
}

TEST(BVariant, CopiesAVectorOfBoolIntoBytes)
{
    const BVariant variant(std::vector<bool>{true, false, true});
    EXPECT_EQ(variant.getWellKnownType().code(), elementCode<bool>);
    const auto* bytes = static_cast<const bool*>(variant.constData());
    EXPECT_TRUE(bytes[0]);
    EXPECT_FALSE(bytes[1]);
    EXPECT_TRUE(bytes[2]);
}

TEST(BVariant, RefusesDimensionsThatDoNotMatchTheData)
{
    const std::vector<double> five(5);
    EXPECT_THROW(BVariant(five, {2, 3}), std::invalid_argument);
    EXPECT_THROW(BVariant(five, {4}), std::invalid_argument);
    EXPECT_THROW(BVariant(five, {0}), std::invalid_argument);
    EXPECT_THROW(BVariant(std::vector<double>{}, {1}), std::invalid_argument);
    EXPECT_THROW(BVariant(std::vector<bool>{true}, {2}), std::invalid_argument);
}

TEST(BVariant, RefusesDimensionsWhoseProductWrapsAround)
{
    const std::uint64_t half = std::uint64_t{1} << 32;
    EXPECT_THROW(BVariant(std::vector<double>{}, {half, half}), std::invalid_argument);
    EXPECT_THROW(BVariant(std::vector<double>{1.0}, {half + 1, half * half / 2 + 1, 2}), std::exception);
    EXPECT_THROW(createArray(WellKnownType::of<double>(), std::vector<std::uint64_t>{half, half}, rowMajor),
                 std::exception);
    EXPECT_THROW(createArray(WellKnownType::of<double>(), std::vector<std::uint64_t>{half << 29}, rowMajor),
                 std::exception); // the count fits, the bytes don't
    EXPECT_THROW(createArray(WellKnownType::of<std::int8_t>(),
                             std::vector<std::uint64_t>{std::numeric_limits<std::uint64_t>::max()}, rowMajor),
                 std::exception);
}

TEST(BVariant, AllowsAnyDimensionsBesideASizeOfZero)
{
    const std::uint64_t huge = std::numeric_limits<std::uint64_t>::max();
    const BVariant variant(std::vector<double>{}, {huge, huge, 0});
    EXPECT_TRUE(variant.isEmpty());
    EXPECT_EQ(variant.elementCount(), 0u);
    EXPECT_EQ(ToDimensions(variant), (Sizes{huge, huge, 0u}));
}

struct ShapeCase
{
    const char* name;
    std::vector<std::uint64_t> dimensions;
    std::uint64_t count;
    bool empty, holdsScalar;
};

class VariantShape : public ::testing::TestWithParam<ShapeCase>
{
};

TEST_P(VariantShape, TellsCountEmptinessAndWhetherItHoldsAScalar)
{
    const ShapeCase& c = GetParam();
    const BVariant variant = MakeCounting(c.dimensions);
    EXPECT_EQ(ToDimensions(variant), c.dimensions);
    EXPECT_EQ(variant.getDimensions().size(), c.dimensions.size());
    EXPECT_EQ(variant.elementCount(), c.count);
    EXPECT_EQ(variant.isEmpty(), c.empty);
    EXPECT_EQ(variant.holdsScalar(), c.holdsScalar);
    EXPECT_FALSE(variant.isScalar());
    EXPECT_FALSE(variant.isNull());
}

INSTANTIATE_TEST_SUITE_P(Shapes, VariantShape,
                         ::testing::Values(ShapeCase{"One", {1}, 1, false, true},
                                           ShapeCase{"OneByOneByOne", {1, 1, 1}, 1, false, true},
                                           ShapeCase{"Two", {2}, 2, false, false},
                                           ShapeCase{"OneByTwo", {1, 2}, 2, false, false},
                                           ShapeCase{"Zero", {0}, 0, true, false},
                                           ShapeCase{"ZeroByThree", {0, 3}, 0, true, false},
                                           ShapeCase{"OneByZero", {1, 0}, 0, true, false},
                                           ShapeCase{"Cube", {2, 3, 4}, 24, false, false}),
                         CaseName());

TEST(BVariant, OfAnEmptyVectorIsEmptyButNotNull)
{
    const BVariant variant{std::vector<double>{}};
    EXPECT_FALSE(variant.isNull());
    EXPECT_TRUE(variant.isEmpty());
    EXPECT_EQ(ToDimensions(variant), (Sizes{0}));
    EXPECT_EQ(variant.getWellKnownType().code(), elementCode<double>);
}

TEST(BVariant, ViewsItsDimensionsByIndexToo)
{
    const BVariant variant = MakeCounting({2, 3, 4});
    const ArrayDimensionsView view = variant.getDimensions();
    ASSERT_EQ(view.size(), 3u);
    EXPECT_EQ(view[0], 2u);
    EXPECT_EQ(view[1], 3u);
    EXPECT_EQ(view[2], 4u);
    EXPECT_EQ(view.end() - view.begin(), 3);
}

// Every kind of content assigned over every other one: the old one must be released, the new one be whole.
std::vector<BVariant> variantsOfEveryStorage()
{
    return {BVariant(),
            BVariant(2.5),
            BVariant(Samples<std::string>::other()),
            MakeVector({1.0, 2.0}),
            BVariant(std::vector<std::string>{"a", Samples<std::string>::other()}),
            BVariant::runTime(Point{1, 2}),
            BVariant::runTime(Page{{7}})};
}

TEST(BVariant, IsAssignableFromEveryOtherContent)
{
    const auto contents = variantsOfEveryStorage();
    for (std::size_t to = 0; to < contents.size(); ++to) {
        for (std::size_t from = 0; from < contents.size(); ++from) {
            SCOPED_TRACE(std::to_string(from) + " over " + std::to_string(to));
            BVariant copied(contents[to]);
            copied = contents[from];
            EXPECT_TRUE(exactlyEqual(copied, contents[from]));

            BVariant source(contents[from]);
            BVariant moved(contents[to]);
            moved = std::move(source);
            EXPECT_TRUE(exactlyEqual(moved, contents[from]));
            EXPECT_TRUE(source.isNull()); // NOLINT(bugprone-use-after-move)
            source = contents[to];
            EXPECT_TRUE(exactlyEqual(source, contents[to]));
        }
    }
}

TEST(BVariant, IsSafeToAssignToItself)
{
    for (const BVariant& content : variantsOfEveryStorage()) {
        BVariant variant(content);
        BVariant& itself = variant;
        variant = itself;
        EXPECT_TRUE(exactlyEqual(variant, content));
        variant = std::move(itself);
        EXPECT_TRUE(exactlyEqual(variant, content));
    }
}

TEST(BVariant, IsSafeToCopyAndMoveOnceMovedFrom)
{
    for (const BVariant& content : variantsOfEveryStorage()) {
        BVariant source(content);
        const BVariant target(std::move(source));
        const BVariant copy(source); // NOLINT(bugprone-use-after-move): it is null
        EXPECT_TRUE(copy.isNull());
        const BVariant again(std::move(source));
        EXPECT_TRUE(again.isNull());
        EXPECT_TRUE(source.isEmpty());
        EXPECT_EQ(source.elementCount(), 0u);
        EXPECT_EQ(ToDimensions(source), Sizes{});
        EXPECT_EQ(source.getWellKnownType().code(), 0u);
        EXPECT_TRUE(exactlyEqual(target, content));
    }
}

TEST(BVariant, SwapsByMoves)
{
    for (const BVariant& first : variantsOfEveryStorage()) {
        for (const BVariant& second : variantsOfEveryStorage()) {
            BVariant a(first), b(second);
            std::swap(a, b);
            EXPECT_TRUE(exactlyEqual(a, second));
            EXPECT_TRUE(exactlyEqual(b, first));
        }
    }
}

TEST(BVariantDetach, KeepsAnUnsharedPayload)
{
    BVariant variant = MakeVector({1.0, 2.0});
    const void* data = variant.constData();
    variant.detach();
    EXPECT_EQ(variant.constData(), data);
    EXPECT_EQ(variant.mutableData(), data);
}

TEST(BVariantDetach, CopiesASharedPayloadWholly)
{
    BVariant variant(std::vector<double>{1, 2, 3, 4, 5, 6}, {2, 3}, columnMajor);
    const BVariant copy(variant);
    variant.detach();
    EXPECT_NE(variant.constData(), copy.constData());
    EXPECT_TRUE(exactlyEqual(variant, copy));
    static_cast<double*>(variant.mutableData())[5] = -6;
    EXPECT_EQ(ToDoubles(copy), (Doubles{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(ToDoubles(variant), (Doubles{1, 2, 3, 4, 5, -6}));
}

TEST(BVariantDetach, KeepsThePayloadOnceTheOtherOwnerIsGone)
{
    BVariant variant = MakeVector({1.0, 2.0});
    {
        const BVariant copy(variant);
    }
    const void* data = variant.constData();
    variant.detach();
    EXPECT_EQ(variant.constData(), data);
}

TEST(BVariantDetach, LeavesANullNull)
{
    BVariant null;
    null.detach();
    EXPECT_TRUE(null.isNull());
    BVariant moved(std::move(null));
    null.detach(); // NOLINT(bugprone-use-after-move)
    EXPECT_TRUE(null.isNull());
}

TEST(BVariantDetach, LetsAScalarBeWritten)
{
    BVariant scalar(1.0);
    scalar.detach();
    *static_cast<double*>(scalar.mutableData()) = 2.0;
    EXPECT_EQ(getScalar<double>(scalar), 2.0);
}

TEST(BVariantReordered, LaysAMatrixOutAnew)
{
    // rows {0 1 2} and {3 4 5}
    const BVariant rows = MakeCounting({2, 3});
    const BVariant columns = rows.reordered(columnMajor);
    EXPECT_EQ(ToDoubles(columns), (Doubles{0, 3, 1, 4, 2, 5}));
    EXPECT_EQ(ToDimensions(columns), (Sizes{2, 3}));
    EXPECT_EQ(columns.getDataOrdering(), columnMajor);
    EXPECT_TRUE(exactlyEqual(columns.reordered(rowMajor), rows));
}

TEST(BVariantReordered, IsTheVariantItselfWhenTheOrderingIsTheSame)
{
    const BVariant rows = MakeCounting({2, 3});
    EXPECT_EQ(rows.reordered(rowMajor).constData(), rows.constData());
}

TEST(BVariantReordered, SharesTheDataOfAVectorShape)
{
    for (const std::vector<std::uint64_t>& dimensions :
         std::vector<std::vector<std::uint64_t>>{{6}, {1, 6}, {6, 1}, {1, 6, 1}}) {
        const BVariant vector = MakeCounting(dimensions);
        const BVariant other = vector.reordered(columnMajor);
        EXPECT_EQ(other.constData(), vector.constData());
        EXPECT_EQ(ToDimensions(other), dimensions);
        EXPECT_TRUE(equalWithConversion(other, vector));
    }
}

TEST(BVariantReordered, HandlesNullScalarAndEmpty)
{
    EXPECT_TRUE(BVariant().reordered(columnMajor).isNull());
    EXPECT_EQ(getScalar<double>(BVariant(2.5).reordered(columnMajor)), 2.5);
    const BVariant empty = MakeCounting({0, 3}).reordered(columnMajor);
    EXPECT_EQ(ToDimensions(empty), (Sizes{0, 3}));
    EXPECT_TRUE(empty.isEmpty());
}

TEST(RunTimeVariant, HasCodeThirtyTwoAndItsOwnTypeInfo)
{
    const BVariant small = BVariant::runTime(Point{3, 4});
    EXPECT_EQ(small.getWellKnownType().code(), 32u);
    EXPECT_TRUE(small.getTypeInfo() == typeid(Point));
    EXPECT_FALSE(small.isNull());
    EXPECT_TRUE(small.isScalar());
    EXPECT_TRUE(small.holdsScalar());
    EXPECT_EQ(ToDimensions(small), (Sizes{1}));
    EXPECT_EQ(static_cast<const Point*>(small.constData())->y, 4);
}

TEST(RunTimeVariant, LivesInTheBufferWhenItFitsAndOnTheHeapOtherwise)
{
    const BVariant small = BVariant::runTime(Point{3, 4});
    EXPECT_TRUE(liesInside(small.constData(), small));
    const BVariant large = BVariant::runTime(Page{{1}});
    EXPECT_FALSE(liesInside(large.constData(), large));
}

TEST(RunTimeVariant, SharesALargeValueUntilDetached)
{
    BVariant large = BVariant::runTime(Page{{1}});
    const BVariant copy(large);
    EXPECT_EQ(copy.constData(), large.constData());
    large.detach();
    EXPECT_NE(copy.constData(), large.constData());
    static_cast<Page*>(large.mutableData())->lines[0] = 2;
    EXPECT_EQ(static_cast<const Page*>(copy.constData())->lines[0], 1);
}

TEST(RunTimeVariant, HoldsWhatItsTypeInfoSays)
{
    const BVariant number = BVariant::runTime(2.5);
    EXPECT_EQ(number.getWellKnownType().code(), 32u);
    EXPECT_TRUE(number.getTypeInfo() == typeid(double));
    EXPECT_NO_THROW(checkElementType<double>(number));
    EXPECT_THROW(checkElementType<float>(number), std::invalid_argument);
}

TEST(RunTimeVariant, KeepsWhatNeedsADestructor)
{
    const std::vector<std::string> texts{Samples<std::string>::other(), "b"};
    const BVariant variant = BVariant::runTime(texts);
    BVariant copy(variant);
    copy.detach();
    BVariant moved(std::move(copy));
    EXPECT_EQ(*static_cast<const std::vector<std::string>*>(moved.constData()), texts);
    EXPECT_EQ(*static_cast<const std::vector<std::string>*>(variant.constData()), texts);
}
} // namespace Brindle::Quay
