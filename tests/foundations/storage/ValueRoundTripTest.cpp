// Values come back from a data file bit for bit: every element type in every shape, and every odd value.
#include "tests/foundations/storage/CompareTrees.h"
#include "tests/foundations/storage/DataFiles.h"
#include "tests/support/CaseName.h"
#include "tests/support/ElementTypes.h"

#include "foundations/variant/VariantOperations.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace Orrery::StorageTest {

using Brindle::Quay::BVariant;
using Brindle::Quay::createArray;
using Brindle::Quay::DataOrdering;
using Brindle::Quay::WellKnownType;
using TestSupport::sampleElements;
using TestSupport::Samples;

namespace {

using Dimensions = std::vector<std::uint64_t>;

const std::vector<Dimensions> s_shapes = {{1},    {1, 1},    {5},          {1, 4},   {4, 1},
                                          {2, 3}, {2, 3, 4}, {1, 1, 1, 1}, {2, 1, 3}};

std::uint64_t CountOf(const Dimensions& dimensions)
{
    std::uint64_t count = 1;
    for (const std::uint64_t size : dimensions)
        count *= size;
    return count;
}

QString NameOf(const Dimensions& dimensions, DataOrdering ordering)
{
    QString name = ordering == DataOrdering::RowMajor ? QStringLiteral("row") : QStringLiteral("column");
    for (const std::uint64_t size : dimensions)
        name += QLatin1Char('x') + QString::number(size);
    return name;
}

// A number of these very bits.
template <class T, class Bits>
T FromBits(Bits bits)
{
    static_assert(sizeof(T) == sizeof(Bits), "the bits fill the number");
    T number;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

std::vector<double> OddDoubles()
{
    return {FromBits<double>(std::uint64_t{0x7FF8000000000000}),
            FromBits<double>(std::uint64_t{0x7FF8DEADBEEF1234}),
            FromBits<double>(std::uint64_t{0xFFF0000000000001}),
            FromBits<double>(std::uint64_t{0x7FF4000000000000}),
            -0.0,
            0.0,
            std::numeric_limits<double>::infinity(),
            -std::numeric_limits<double>::infinity(),
            std::numeric_limits<double>::denorm_min(),
            std::numeric_limits<double>::max()};
}

std::vector<float> OddFloats()
{
    return {FromBits<float>(0x7FC00000U),           FromBits<float>(0x7FC12345U),
            FromBits<float>(0xFF800001U),           -0.0F,
            std::numeric_limits<float>::infinity(), std::numeric_limits<float>::denorm_min()};
}

std::string RoundTripOfValue(const BVariant& value)
{
    return RoundTrip([&](PropertyObject& root) {
        AddValue(root, QStringLiteral("value"), value);
        AddValue(*AddFolder(root, QStringLiteral("folder")), QStringLiteral("value"), value);
    });
}

} // namespace

template <class T>
class ElementRoundTrip : public ::testing::Test
{
};

// Names the tests of a type by its code, which is what stands in a file.
struct ElementCode
{
    template <class T>
    static std::string GetName(int /*index*/)
    {
        return QString::number(TestSupport::elementCode<T>, 16).toStdString();
    }
};
TYPED_TEST_SUITE(ElementRoundTrip, TestSupport::ElementTypes, ElementCode);

TYPED_TEST(ElementRoundTrip, KeepsScalars)
{
    EXPECT_EQ(RoundTrip([](PropertyObject& root) {
                  AddValue(root, QStringLiteral("first"), BVariant(Samples<TypeParam>::first()));
                  AddValue(root, QStringLiteral("second"), BVariant(Samples<TypeParam>::second()));
                  AddValue(root, QStringLiteral("other"), BVariant(Samples<TypeParam>::other()));
                  AddValue(root, QStringLiteral("extreme"), BVariant(Samples<TypeParam>::extreme()));
                  AddValue(root, QStringLiteral("zero"), BVariant(TypeParam{}));
              }),
              "");
}

TYPED_TEST(ElementRoundTrip, KeepsArraysOfEveryShapeInBothOrderings)
{
    EXPECT_EQ(RoundTrip([](PropertyObject& root) {
                  for (const DataOrdering ordering : {DataOrdering::RowMajor, DataOrdering::ColumnMajor}) {
                      for (const Dimensions& dimensions : s_shapes)
                          AddValue(
                              root, NameOf(dimensions, ordering),
                              BVariant(sampleElements<TypeParam>(CountOf(dimensions)), dimensions, ordering));
                  }
              }),
              "");
}

TYPED_TEST(ElementRoundTrip, KeepsTheDimensionsOfEmptyArrays)
{
    EXPECT_EQ(
        RoundTrip([](PropertyObject& root) {
            const WellKnownType type = WellKnownType::of<TypeParam>();
            for (const DataOrdering ordering : {DataOrdering::RowMajor, DataOrdering::ColumnMajor}) {
                for (const Dimensions& dimensions :
                     {Dimensions{0}, Dimensions{0, 3}, Dimensions{3, 0, 2}, Dimensions{0, 0}, Dimensions{}})
                    AddValue(root, NameOf(dimensions, ordering), createArray(type, dimensions, ordering));
            }
        }),
        "");
}

TEST(ValueRoundTrip, KeepsNull)
{
    EXPECT_EQ(RoundTripOfValue(BVariant()), "");
}

TEST(ValueRoundTrip, KeepsEveryBitOfOddDoubles)
{
    for (const double number : OddDoubles())
        EXPECT_EQ(RoundTripOfValue(BVariant(number)), "") << number;
    EXPECT_EQ(RoundTripOfValue(BVariant(OddDoubles())), "");
    EXPECT_EQ(RoundTripOfValue(BVariant(OddDoubles(), {5, 2}, DataOrdering::ColumnMajor)), "");
}

TEST(ValueRoundTrip, KeepsEveryBitOfOddFloats)
{
    for (const float number : OddFloats())
        EXPECT_EQ(RoundTripOfValue(BVariant(number)), "") << number;
    EXPECT_EQ(RoundTripOfValue(BVariant(OddFloats())), "");
}

TEST(ValueRoundTrip, KeepsEveryBitOfOddComplexNumbers)
{
    std::vector<std::complex<double>> numbers;
    for (const double number : OddDoubles()) {
        numbers.emplace_back(number, 1.5);
        numbers.emplace_back(-0.0, number);
    }
    EXPECT_EQ(RoundTripOfValue(BVariant(numbers.front())), "");
    EXPECT_EQ(RoundTripOfValue(BVariant(std::move(numbers))), "");
}

TEST(ValueRoundTrip, TellsAScalarFromAnArrayOfOneElement)
{
    const ScratchFolder folder;
    const QString path = folder.Path(QStringLiteral("tree.h5"));
    SaveNew(path, [](PropertyObject& root) {
        AddValue(root, QStringLiteral("array"), BVariant(std::vector<double>{1.5}));
        AddValue(root, QStringLiteral("scalar"), BVariant(1.5));
    }).reset();
    const auto file = Open(path);
    EXPECT_FALSE(ValueOf(*file->GetRoot(), QStringLiteral("array")).isScalar());
    EXPECT_TRUE(ValueOf(*file->GetRoot(), QStringLiteral("scalar")).isScalar());
}

TEST(ValueRoundTrip, KeepsAnyBytesOfATextScalar)
{
    std::string everyByte;
    for (int byte = 0; byte < 256; ++byte)
        everyByte.push_back(static_cast<char>(byte));
    const std::vector<std::string> texts = {
        "",
        "plain",
        std::string("in\0side", 7),
        std::string("at the end\0", 11),
        std::string("\0", 1),
        everyByte,
        "\xEF\xBB\xBFmark first",
        std::string(3'000'000, 'x'),
    };
    for (const std::string& text : texts)
        EXPECT_EQ(RoundTripOfValue(BVariant(text)), "") << text.size() << " bytes";
}

struct TextArrayCase
{
    const char* name;
    std::vector<std::string> texts;
};

class TextArrayRoundTrip : public ::testing::TestWithParam<TextArrayCase>
{
};

TEST_P(TextArrayRoundTrip, KeepsEveryText)
{
    const std::vector<std::string>& texts = GetParam().texts;
    EXPECT_EQ(RoundTripOfValue(BVariant(texts)), "");
    if (texts.size() % 2 == 0) {
        EXPECT_EQ(RoundTripOfValue(BVariant(texts, {2, texts.size() / 2}, DataOrdering::ColumnMajor)), "");
    }
}

INSTANTIATE_TEST_SUITE_P(
    Lengths, TextArrayRoundTrip,
    ::testing::Values(TextArrayCase{"AllEmpty", {"", "", "", ""}}, TextArrayCase{"OneEmpty", {""}},
                      TextArrayCase{"Even", {"alpha", "beta", "gamma", "delta"}},
                      TextArrayCase{"NulInside", {std::string("a\0b", 3), "c"}},
                      TextArrayCase{"NulAtTheEnd", {std::string("a\0", 2), "c", "", std::string("\0\0", 2)}},
                      TextArrayCase{"OneVeryLong", {std::string(200'000, 'l'), "", "s", "t"}},
                      TextArrayCase{"JustPadded", {std::string(65'536, 'p'), std::string(65'536, 'q')}},
                      TextArrayCase{"JustTooLongToPad", {std::string(65'537, 'p'), std::string(65'537, 'q')}},
                      TextArrayCase{"ManyShortOneLong",
                                    [] {
                                        std::vector<std::string> texts(4000, "x");
                                        texts[17] = std::string(5000, 'y');
                                        return texts;
                                    }()},
                      TextArrayCase{"NotUtf8", {"\xFF\xFE", "\x80", "\xED\xA0\x80", "\xC0\xAF"}},
                      TextArrayCase{"LongAndNulAtTheEnd", {std::string(70'000, 'n') + '\0', "b"}}),
    TestSupport::CaseName());

TEST(ValueRoundTrip, KeepsArraysAroundTheLengthOfAChecksum)
{
    constexpr std::uint64_t block = 4U * 1024U * 1024U / sizeof(std::uint64_t);
    for (const std::uint64_t count : {block - 1, block, block + 1, 2 * block + 3}) {
        std::vector<std::uint64_t> elements(count);
        for (std::uint64_t i = 0; i < count; ++i)
            elements[i] = i * 0x9E3779B97F4A7C15U;
        EXPECT_EQ(RoundTripOfValue(BVariant(std::move(elements))), "") << count << " elements";
    }
}

TEST(ValueRoundTrip, KeepsAsManyDimensionsAsADatasetCanHave)
{
    Dimensions dimensions(32, 1);
    dimensions[3] = 2;
    dimensions[31] = 3;
    EXPECT_EQ(RoundTripOfValue(BVariant(sampleElements<int>(6), dimensions, DataOrdering::ColumnMajor)), "");
}

TEST(ValueRoundTrip, RefusesToSaveMoreDimensionsAndNamesTheNode)
{
    const ScratchFolder folder;
    const QString path = folder.Path(QStringLiteral("tree.h5"));
    const auto file = Open(path, DataFile::Create);
    AddValue(*AddFolder(*file->GetRoot(), QStringLiteral("f")), QStringLiteral("wide"),
             BVariant(sampleElements<int>(1), Dimensions(33, 1), DataOrdering::RowMajor));
    const Outcome saved = TrySave(*file);
    EXPECT_EQ(saved.code, ER_FAILED);
    EXPECT_TRUE(IsOneLineAbout(saved.why, path)) << saved.why.toStdString();
    EXPECT_TRUE(saved.why.contains(QStringLiteral("/f/wide"))) << saved.why.toStdString();
    EXPECT_TRUE(saved.why.contains(QStringLiteral("32 dimensions"))) << saved.why.toStdString();
    EXPECT_EQ(folder.Names(), QStringList());
}

TEST(ValueRoundTrip, RefusesToSaveARunTimeTypeAndNamesTheNode)
{
    const ScratchFolder folder;
    const QString path = folder.Path(QStringLiteral("tree.h5"));
    const auto file = Open(path, DataFile::Create);
    AddValue(*AddFolder(*file->GetRoot(), QStringLiteral("f")), QStringLiteral("odd"),
             BVariant::runTime(std::vector<int>{1, 2}));
    const Outcome saved = TrySave(*file);
    EXPECT_EQ(saved.code, ER_FAILED);
    EXPECT_TRUE(IsOneLineAbout(saved.why, path)) << saved.why.toStdString();
    EXPECT_TRUE(saved.why.contains(QStringLiteral("/f/odd"))) << saved.why.toStdString();
    EXPECT_TRUE(saved.why.contains(QStringLiteral("run-time type"))) << saved.why.toStdString();
    EXPECT_EQ(folder.Names(), QStringList());
}

TEST(ValueRoundTrip, KeepsTheCellArrayFlag)
{
    EXPECT_EQ(
        RoundTrip([](PropertyObject& root) {
            AddValue(root, QStringLiteral("array"), BVariant(std::vector<double>{1.0, 2.0}), IsCellArrayTrue);
            AddValue(root, QStringLiteral("null"), BVariant(), IsCellArrayTrue);
            AddValue(root, QStringLiteral("plain"), BVariant(1.0), IsCellArrayFalse);
            AddValue(root, QStringLiteral("scalar"), BVariant(1.0), IsCellArrayTrue);
        }),
        "");
}

} // namespace Orrery::StorageTest
