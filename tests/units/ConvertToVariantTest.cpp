// The conversion of a variant that tells whether it could be done and leaves the variant as it was.

#include "units/Units.h"

#include "tests/support/HostPayload.h"
#include "tests/support/Variants.h"
#include "tests/units/CatalogueRows.h"
#include "tests/units/VariantConversionSupport.h"

#include <gtest/gtest.h>

namespace Orrery {
namespace {
using namespace CatalogueTest;
using namespace ConversionTest;
using TestSupport::HostPayload;
using TestSupport::MakeVector;
using Strings = std::vector<std::string>;

/// A type of a host: it compares, and converts to nothing.
struct Colour
{
    int red;
    friend bool operator==(const Colour& a, const Colour& b) { return a.red == b.red; }
};

/// Converts and tests that `data` is left as it was, whatever comes of it.
ERESULT convert(const Units& source, const Units& target, BVariant& data)
{
    const Snapshot before(data);
    const ERESULT result = source.ConvertTo(target, data);
    EXPECT_TRUE(before == Snapshot(data)) << TestSupport::Describe(data);
    return result;
}

ERESULT kilometresToMetres(BVariant data)
{
    return convert(unitOf("km"), unitOf("m"), data);
}

/// A unit of the given SI text that has the dimensions of another: the text is a child like any other.
Units disguised(const char* siString, const char* as)
{
    Units units = unitOf(siString);
    EXPECT_EQ(units.SetProperty(Units::SIUnits, QString::fromUtf8(as)), ER_SUCCESS);
    return units;
}

TEST(ConvertToVariant, LeavesTheOldNumbersOfKilometresInPlace)
{
    BVariant data = MakeVector<double>({1.0, 2.5, -3.0});
    EXPECT_EQ(convert(unitOf("km"), unitOf("m"), data), ER_SUCCESS);
    EXPECT_EQ(TestSupport::ToDoubles(data), (std::vector<double>{1.0, 2.5, -3.0}));
}

TEST(ConvertToVariant, LeavesInchesInPlaceSinceTheirSIStringIsTheMetres)
{
    BVariant data(1.0);
    EXPECT_EQ(convert(catalogueUnit("in"), unitOf("m"), data), ER_SUCCESS);
    EXPECT_EQ(Brindle::Quay::getScalar<double>(data), 1.0);
}

TEST(ConvertToVariant, SucceedsAtOnceBetweenAllUnitsOfOneSIString)
{
    const char* pairs[][2] = {{"in", "mil"}, {"in", "m"},  {"°C", "°F"},
                              {"K", "°F"},   {"h", "min"}, {"%", "dB20"}};
    for (const auto& pair : pairs) {
        SCOPED_TRACE(std::string(pair[0]) + " to " + pair[1]);
        for (BVariant data : {BVariant(), BVariant("no number"), BVariant(2.0), BVariant::runTime(Colour{1})})
            EXPECT_EQ(convert(catalogueUnit(pair[0]), catalogueUnit(pair[1]), data), ER_SUCCESS);
    }
}

TEST(ConvertToVariant, LooksAtTheSIStringsBeforeTheDimensions)
{
    const Units time = disguised("s", "m");
    ASSERT_FALSE(time.IsCommensurable(unitOf("m")));
    for (BVariant data : {BVariant(1.0), BVariant("no number"), BVariant()})
        EXPECT_EQ(convert(time, unitOf("m"), data), ER_SUCCESS);
}

TEST(ConvertToVariant, LooksAtTheDimensionsBeforeTheData)
{
    HostPayload::Log log;
    BVariant data = HostPayload::make(&log, {1.0, 2.0}, {2});
    EXPECT_EQ(unitOf("m").ConvertTo(unitOf("s"), data), ER_INVALID_ARGUMENT);
    EXPECT_EQ(unitOf("m").ConvertTo(catalogueUnit("in"), data), ER_SUCCESS);
    EXPECT_EQ(log.reads, 0);
}

TEST(ConvertToVariant, ComparesTheSIStringsAsTexts)
{
    BVariant data("no number");
    EXPECT_EQ(convert(unitOf("m"), unitOf("m"), data), ER_SUCCESS);
    EXPECT_EQ(convert(unitOf(" m"), unitOf("m"), data), ER_INVALID_ARGUMENT); // the same unit, another text
    EXPECT_EQ(convert(unitOf("Hz"), unitOf("1/s"), data), ER_INVALID_ARGUMENT);
    BVariant number(2.0);
    EXPECT_EQ(convert(unitOf(" m"), unitOf("m"), number), ER_SUCCESS);
}

TEST(ConvertToVariant, TakesAMissingSIStringForAnEmptyOne)
{
    BVariant data("no number");
    EXPECT_EQ(convert(Units(), unitOf(""), data), ER_SUCCESS);
    EXPECT_EQ(convert(Units(), Units(), data), ER_SUCCESS);
    EXPECT_EQ(convert(Units(), unitOf("1"), data), ER_INVALID_ARGUMENT);
}

TEST(ConvertToVariant, RefusesUnitsOfDifferentDimensions)
{
    for (BVariant data : {BVariant(1.0), MakeVector<double>({1.0}), BVariant(), BVariant("text")})
        EXPECT_EQ(convert(unitOf("m"), unitOf("s"), data), ER_INVALID_ARGUMENT);
}

TEST(ConvertToVariant, RefusesNull)
{
    EXPECT_EQ(kilometresToMetres(BVariant()), ER_INVALID_ARGUMENT);
}

TEST(ConvertToVariant, RefusesWhatIsNoNumberUnlessTheSIStringsAreEqual)
{
    BVariant text("seven");
    EXPECT_EQ(convert(unitOf("m"), unitOf("m"), text), ER_SUCCESS);
    EXPECT_EQ(convert(unitOf("km"), unitOf("m"), text), ER_INVALID_ARGUMENT);
}

TEST(ConvertToVariant, AcceptsTextThatIsANumberThroughout)
{
    EXPECT_EQ(kilometresToMetres(BVariant("2.5")), ER_SUCCESS);
    EXPECT_EQ(kilometresToMetres(BVariant("-1e3")), ER_SUCCESS);
    EXPECT_EQ(kilometresToMetres(BVariant(Strings{"1", "2.5"})), ER_SUCCESS);
    EXPECT_EQ(kilometresToMetres(BVariant(Strings{"1", "2,5"})), ER_INVALID_ARGUMENT);
    EXPECT_EQ(kilometresToMetres(BVariant(" 2.5")), ER_INVALID_ARGUMENT);
    EXPECT_EQ(kilometresToMetres(BVariant("")), ER_INVALID_ARGUMENT);
}

TEST(ConvertToVariant, RefusesARunTimeType)
{
    EXPECT_EQ(kilometresToMetres(BVariant::runTime(Colour{3})), ER_INVALID_ARGUMENT);
}

TEST(ConvertToVariant, AcceptsAnEmptyArrayOfNumbers)
{
    EXPECT_EQ(kilometresToMetres(BVariant(std::vector<double>{})), ER_SUCCESS);
    EXPECT_EQ(kilometresToMetres(BVariant(std::vector<int>{}, {3, 0, 2}, DataOrdering::ColumnMajor)),
              ER_SUCCESS);
    EXPECT_EQ(kilometresToMetres(BVariant(std::vector<std::complex<float>>{})), ER_SUCCESS);
}

TEST(ConvertToVariant, TurnsAnyExceptionOfTheDataIntoARefusal)
{
    HostPayload::Log log;
    log.fails = true;
    BVariant data = HostPayload::make(&log, {1.0, 2.0}, {2});
    ERESULT result = ER_SUCCESS;
    EXPECT_NO_THROW(result = unitOf("km").ConvertTo(unitOf("m"), data));
    EXPECT_EQ(result, ER_INVALID_ARGUMENT);
}

TEST(ConvertToVariant, ReadsTheData)
{
    HostPayload::Log log;
    BVariant data = HostPayload::make(&log, {1.0, 2.0}, {2});
    EXPECT_EQ(unitOf("km").ConvertTo(unitOf("m"), data), ER_SUCCESS);
    EXPECT_GT(log.reads, 0);
}

TEST(ConvertToVariant, LeavesASharedArrayShared)
{
    BVariant data = MakeVector<double>({1.0, 2.0});
    const BVariant other = data;
    EXPECT_EQ(convert(unitOf("km"), unitOf("m"), data), ER_SUCCESS);
    EXPECT_EQ(data.constData(), other.constData());
}

TEST(ConvertToVariant, SucceedsWhateverTheNumbersBecome)
{
    const Units nothing(UnitType::length, QStringLiteral("nothing"), 0.0, 0.0, 0.0);
    BVariant data = MakeVector<double>({0.0, 1.0, -1.0, 1e308});
    EXPECT_EQ(convert(unitOf("km"), nothing, data), ER_SUCCESS);
    BVariant power = MakeVector<double>({0.0, -1.0});
    EXPECT_EQ(convert(unitOf("W"), catalogueUnit("dBm"), power), ER_SUCCESS);
}

template <class T>
class ConvertToVariantOf : public ::testing::Test
{
};
TYPED_TEST_SUITE(ConvertToVariantOf, TestSupport::ElementTypes, TestSupport::ElementTypeName);

TYPED_TEST(ConvertToVariantOf, AcceptsNumbersAndLeavesThem)
{
    const ERESULT expected = isNumber<TypeParam> ? ER_SUCCESS : ER_INVALID_ARGUMENT;
    EXPECT_EQ(kilometresToMetres(BVariant(TestSupport::Samples<TypeParam>::first())), expected);
    EXPECT_EQ(kilometresToMetres(BVariant(TestSupport::sampleElements<TypeParam>(1))), expected);
    for (const DataOrdering ordering : {DataOrdering::RowMajor, DataOrdering::ColumnMajor}) {
        BVariant data(TestSupport::sampleElements<TypeParam>(24), {4, 3, 2}, ordering);
        EXPECT_EQ(convert(unitOf("km"), unitOf("m"), data), expected);
        EXPECT_EQ(convert(unitOf("m"), catalogueUnit("in"), data), ER_SUCCESS);
        EXPECT_EQ(convert(unitOf("m"), unitOf("s"), data), ER_INVALID_ARGUMENT);
    }
}
} // namespace
} // namespace Orrery
