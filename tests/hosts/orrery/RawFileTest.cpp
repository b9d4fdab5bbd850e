#include "hosts/orrery/RawFile.h"

#include "foundations/variant/VariantOperations.h"
#include "hosts/orrery/Failure.h"
#include "tests/hosts/orrery/RawText.h"
#include "tests/hosts/orrery/ScratchFolder.h"

#include <gmock/gmock.h>

#include <QString>

#include <complex>
#include <cstring>
#include <limits>
#include <random>

namespace Orrery::Host {

using Brindle::Quay::BVariant;
using Brindle::Quay::IterableContainer;
using Brindle::Quay::WellKnownType;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

std::vector<RawPlot> readAll(const std::string& path)
{
    RawFile file(path);
    std::vector<RawPlot> plots;
    RawPlot plot;
    while (file.next(&plot))
        plots.push_back(plot);
    return plots;
}

// The line of the failure; empty if there was none.
std::string failureOf(const std::string& path)
{
    try {
        readAll(path);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitFailed);
        return failure.what();
    }
    return "";
}

template <class T>
std::vector<T> valuesOf(const BVariant& variant)
{
    if (variant.isEmpty())
        return {};
    IterableContainer<T> elements(variant);
    return {elements.begin(), elements.end()};
}

std::vector<std::uint64_t> shapeOf(const BVariant& variant)
{
    return variant.getDimensions().toVector();
}

// Bit by bit, so that NaN equals itself and 0 isn't -0.
void expectSameBits(const BVariant& a, const BVariant& b, const std::string& what)
{
    ASSERT_EQ(a.getWellKnownType(), b.getWellKnownType()) << what;
    ASSERT_EQ(shapeOf(a), shapeOf(b)) << what;
    const std::size_t width = a.getWellKnownType() == WellKnownType::of<std::complex<double>>() ? 16 : 8;
    EXPECT_EQ(std::memcmp(a.constData(), b.constData(), a.elementCount() * width), 0) << what;
}

const RawVector& vectorOf(const RawPlot& plot, const QString& name)
{
    for (const RawVector& vector : plot.vectors) {
        if (vector.name == name)
            return vector;
    }
    throw std::runtime_error("no vector " + name.toStdString());
}

// UTF-16LE of plain ASCII.
std::string utf16(const std::string& text)
{
    std::string bytes;
    for (const char c : text)
        bytes += {c, '\0'};
    return bytes;
}

class RawFileTest : public ::testing::Test
{
protected:
    std::vector<RawPlot> read(const std::string& content) const
    {
        return readAll(m_folder.write("test.raw", content));
    }

    std::string failure(const std::string& content) const
    {
        return failureOf(m_folder.write("test.raw", content));
    }

    ScratchFolder m_folder;
};

} // namespace

TEST_F(RawFileTest, TextGivesTheHeaderAndTheValues)
{
    RawText raw;
    raw.more = "Command: version 39\nOption: temp = 85\nCommand: and another\n";
    const std::vector<RawPlot> plots = read(raw.text());
    ASSERT_EQ(plots.size(), 1U);
    const RawPlot& plot = plots.front();
    EXPECT_EQ(plot.title, "test");
    EXPECT_EQ(plot.date, "today");
    EXPECT_EQ(plot.name, "DC transfer characteristic");
    EXPECT_EQ(plot.flags, "real");
    EXPECT_EQ(plot.commands, (QStringList{"version 39", "and another"}));
    EXPECT_EQ(plot.options, QStringList{"temp = 85"});
    ASSERT_EQ(plot.vectors.size(), 2U);
    EXPECT_EQ(plot.vectors[0].name, "x");
    EXPECT_EQ(plot.vectors[0].type, "voltage");
    EXPECT_THAT(valuesOf<double>(plot.vectors[0].data), ElementsAre(1.5, 2.5));
    EXPECT_EQ(plot.vectors[1].name, "y");
    EXPECT_EQ(plot.vectors[1].type, "current");
    EXPECT_THAT(valuesOf<double>(plot.vectors[1].data), ElementsAre(-2.0, -4.0));
}

TEST_F(RawFileTest, BinaryGivesTheValuesAndAnyNumberOfPlots)
{
    RawText raw;
    raw.values = "Binary:\n" + bytesOf<double>({1.5, -2.0, 2.5, -4.0});
    RawText other = raw;
    other.title = "Title: other\n";
    const std::vector<RawPlot> plots = read(raw.text() + other.text() + "\n" + RawText().text());
    ASSERT_EQ(plots.size(), 3U);
    EXPECT_EQ(plots[1].title, "other");
    for (const RawPlot& plot : plots) {
        EXPECT_THAT(valuesOf<double>(plot.vectors[0].data), ElementsAre(1.5, 2.5));
        EXPECT_THAT(valuesOf<double>(plot.vectors[1].data), ElementsAre(-2.0, -4.0));
    }
}

TEST_F(RawFileTest, ComplexTextAndBinaryGiveTheSameValues)
{
    RawText text;
    text.flags = "Flags: complex\n";
    text.values = "Values:\n 0\t1.5,0.5\n\t-2,1e-3\n 1\t2.5,-0\n\t-4,inf\n";
    RawText binary = text;
    const double infinity = std::numeric_limits<double>::infinity();
    binary.values = "Binary:\n" + bytesOf<double>({1.5, 0.5, -2.0, 1e-3, 2.5, -0.0, -4.0, infinity});
    const RawPlot a = read(text.text()).at(0);
    const RawPlot b = read(binary.text()).at(0);
    for (std::size_t i = 0; i < 2; ++i)
        expectSameBits(a.vectors[i].data, b.vectors[i].data, "vector " + std::to_string(i));
    const std::vector<std::complex<double>> x = valuesOf<std::complex<double>>(a.vectors[0].data);
    EXPECT_EQ(x[0], std::complex<double>(1.5, 0.5));
    EXPECT_TRUE(std::signbit(x[1].imag()));
}

TEST_F(RawFileTest, BinaryKeepsEveryBit)
{
    const std::uint64_t signallingNan = 0x7FF0000000000001U;
    const std::uint64_t negativeNan = 0xFFF8000000000123U;
    const std::uint64_t smallest = 1;
    const std::uint64_t negativeZero = 0x8000000000000000U;
    const std::vector<std::uint64_t> bits = {signallingNan, negativeNan, smallest, negativeZero};
    RawText raw;
    raw.values = "Binary:\n" + bytesOf(bits);
    const RawPlot plot = read(raw.text()).at(0);
    const auto bitsOf = [](const BVariant& data) {
        std::vector<std::uint64_t> words(data.elementCount());
        std::memcpy(words.data(), data.constData(), 8 * words.size());
        return words;
    };
    EXPECT_THAT(bitsOf(plot.vectors[0].data), ElementsAre(signallingNan, smallest));
    EXPECT_THAT(bitsOf(plot.vectors[1].data), ElementsAre(negativeNan, negativeZero));
}

// As printf writes them: simulators hand on what their sums came to.
TEST_F(RawFileTest, TextValuesMayBeNoNumbersAndExtremes)
{
    RawText raw;
    raw.values =
        "Values:\n 0\t-nan\n\tnan\n 1\t-inf\n\tinf\n 2 4.9406564584124654e-324\n -1.7976931348623157e+308\n"
        " 3 nan(ind)\n +1E5\n";
    raw.pointCount = "No. Points: 4\n";
    const RawPlot plot = read(raw.text()).at(0);
    const std::vector<double> x = valuesOf<double>(plot.vectors[0].data);
    const std::vector<double> y = valuesOf<double>(plot.vectors[1].data);
    EXPECT_TRUE(std::isnan(x[0]) && std::signbit(x[0]));
    EXPECT_TRUE(std::isnan(y[0]) && !std::signbit(y[0]));
    EXPECT_EQ(x[1], -std::numeric_limits<double>::infinity());
    EXPECT_EQ(y[1], std::numeric_limits<double>::infinity());
    EXPECT_EQ(x[2], std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(y[2], std::numeric_limits<double>::lowest());
    EXPECT_TRUE(std::isnan(x[3]));
    EXPECT_EQ(y[3], 1e5);
}

TEST_F(RawFileTest, LineEndsMayBeThoseOfOtherSystems)
{
    RawText raw;
    raw.values = "Values:\n 0\t1.5\n\t-2\n 1\t2.5\n\t-4\n";
    std::string text;
    for (const char c : raw.text())
        text += c == '\n' ? std::string("\r\n") : std::string(1, c);
    const RawPlot plot = read(text).at(0);
    EXPECT_EQ(plot.title, "test");
    EXPECT_EQ(plot.vectors[1].type, "current");
    EXPECT_THAT(valuesOf<double>(plot.vectors[1].data), ElementsAre(-2.0, -4.0));

    text.erase(text.find("Values:"));
    const RawPlot binary = read(text + "Binary:\r\n" + bytesOf<double>({1.5, -2.0, 2.5, -4.0})).at(0);
    EXPECT_THAT(valuesOf<double>(binary.vectors[0].data), ElementsAre(1.5, 2.5));
}

TEST_F(RawFileTest, HeaderLinesComeInAnyOrderAndUnknownOnesArePassedOver)
{
    const std::string text =
        "title:\tT: with a colon\nBackannotation: u1 1 2\nNo. Points:   1   \nOffset: 0.0e0\n"
        "Version: 1\nPLOTNAME: Odd\nNo. Variables: 1\nFLAGS: real forward log stepped\n"
        "Variables: 0 x voltage min=-1 color=red\nVALUES:\n0 7\n";
    const RawPlot plot = read(text).at(0);
    EXPECT_EQ(plot.title, "T: with a colon");
    EXPECT_EQ(plot.date, "");
    EXPECT_EQ(plot.name, "Odd");
    EXPECT_EQ(plot.vectors.at(0).name, "x");
    EXPECT_THAT(valuesOf<double>(plot.vectors[0].data), ElementsAre(7.0));
}

TEST_F(RawFileTest, NamesMayHaveBlanksBetweenTabsAndBytesOfLatin1)
{
    RawText raw;
    raw.title = "Title: 5 \xB5s\n";
    raw.variables = "Variables:\n\t0\tv(node 1)\tvoltage\n\t1\t\xC2\xB5\tcurrent dims=2 grid=3\n";
    const RawPlot plot = read(raw.text()).at(0);
    EXPECT_EQ(plot.title, QString::fromUtf8("5 \xC2\xB5s"));
    EXPECT_EQ(plot.vectors[0].name, "v(node 1)");
    EXPECT_EQ(plot.vectors[1].name, QString::fromUtf8("\xC2\xB5"));
}

TEST_F(RawFileTest, AMarkOfUtf8IsPassedOver)
{
    EXPECT_EQ(read("\xEF\xBB\xBF" + RawText().text()).at(0).title, "test");
}

TEST_F(RawFileTest, APlotMayHaveNoPoints)
{
    RawText raw;
    raw.pointCount = "No. Points: 0\n";
    for (const char* const values : {"Values:\n", "Binary:\n"}) {
        raw.values = values;
        const RawPlot plot = read(raw.text()).at(0);
        EXPECT_EQ(shapeOf(plot.vectors[0].data), std::vector<std::uint64_t>{0}) << values;
    }
}

TEST_F(RawFileTest, TheShapeOfAVectorIsItsOwnElseThatOfThePlot)
{
    RawText raw;
    raw.pointCount = "No. Points: 6\n";
    raw.variableCount = "No. Variables: 3\n";
    raw.more = "Dimensions: 2,3\n";
    raw.variables = "Variables:\n 0 m notype\n 1 one notype dims=1\n 2 t notype dims=3,2\n";
    std::vector<double> rows;
    for (int point = 0; point < 6; ++point)
        rows.insert(rows.end(), {double(point), point == 0 ? 7.0 : 0.0, 10.0 + point});
    raw.values = "Binary:\n" + bytesOf(rows);
    const RawPlot plot = read(raw.text()).at(0);
    EXPECT_EQ(shapeOf(plot.vectors[0].data), (std::vector<std::uint64_t>{2, 3}));
    EXPECT_THAT(valuesOf<double>(plot.vectors[0].data), ElementsAre(0, 1, 2, 3, 4, 5));
    EXPECT_EQ(shapeOf(plot.vectors[1].data), std::vector<std::uint64_t>{1});
    EXPECT_THAT(valuesOf<double>(plot.vectors[1].data), ElementsAre(7.0));
    EXPECT_EQ(shapeOf(plot.vectors[2].data), (std::vector<std::uint64_t>{3, 2}));
}

TEST_F(RawFileTest, APlotShapeThatDoesNotFitThePointsIsNoShape)
{
    RawText raw;
    raw.more = "Dimensions: 2,3\n";
    EXPECT_EQ(shapeOf(read(raw.text()).at(0).vectors[0].data), std::vector<std::uint64_t>{2});
}

TEST_F(RawFileTest, NarrowFilesHaveFloatsBehindTheFirstVector)
{
    RawText raw;
    raw.flags = "Flags: real forward\n";
    const std::string values =
        bytesOf<double>({1.5}) + bytesOf<float>({0.1F}) + bytesOf<double>({2.5}) + bytesOf<float>({-4.0F});
    raw.values = "Binary:\n";
    for (const std::string& content :
         {raw.text() + values, utf16(raw.text()) + values, "\xFF\xFE" + utf16(raw.text()) + values}) {
        const RawPlot plot = read(content).at(0);
        EXPECT_EQ(plot.title, "test");
        EXPECT_THAT(valuesOf<double>(plot.vectors[0].data), ElementsAre(1.5, 2.5));
        ASSERT_EQ(plot.vectors[1].data.getWellKnownType(), WellKnownType::of<float>());
        EXPECT_THAT(valuesOf<float>(plot.vectors[1].data), ElementsAre(0.1F, -4.0F));
    }
}

TEST_F(RawFileTest, WideFilesInUtf16AreReadAsTheirFlagsSay)
{
    RawText raw;
    raw.flags = "Flags: real forward double\n";
    raw.values = "Binary:\n";
    const RawPlot wide = read(utf16(raw.text()) + bytesOf<double>({1.5, -2, 2.5, -4})).at(0);
    EXPECT_THAT(valuesOf<double>(wide.vectors[1].data), ElementsAre(-2.0, -4.0));

    raw.flags = "Flags: complex forward log\n";
    const RawPlot complex = read(utf16(raw.text()) + bytesOf<double>({1, 0, 2, 3, 4, 0, 5, 6})).at(0);
    EXPECT_THAT(valuesOf<std::complex<double>>(complex.vectors[1].data),
                ElementsAre(std::complex<double>(2, 3), std::complex<double>(5, 6)));

    raw.flags = "Flags: real\n";
    raw.values = RawText().values;
    const RawPlot text = read(utf16(raw.text())).at(0);
    EXPECT_THAT(valuesOf<double>(text.vectors[1].data), ElementsAre(-2.0, -4.0));
}

// Each width, each remainder of the columns that are spread together, and more than one block of points.
TEST_F(RawFileTest, BinaryOfManyVectorsAndPointsLandsWhereItBelongs)
{
    for (const std::size_t columns : {1U, 7U, 8U, 9U, 17U}) {
        const std::size_t points = 20'000;
        std::vector<double> rows(columns * points);
        for (std::size_t i = 0; i < rows.size(); ++i)
            rows[i] = static_cast<double>(i);
        RawText raw;
        raw.variableCount = "No. Variables: " + std::to_string(columns) + "\n";
        raw.pointCount = "No. Points: " + std::to_string(points) + "\n";
        raw.variables = "Variables:\n";
        for (std::size_t i = 0; i < columns; ++i)
            raw.variables += "\t" + std::to_string(i) + "\tv" + std::to_string(i) + "\tvoltage\n";
        raw.values = "Binary:\n" + bytesOf(rows);
        const RawPlot plot = read(raw.text()).at(0);
        for (std::size_t column = 0; column < columns; ++column) {
            const std::vector<double> values = valuesOf<double>(plot.vectors[column].data);
            ASSERT_EQ(values.size(), points);
            for (std::size_t point = 0; point < points; ++point)
                ASSERT_EQ(values[point], rows[point * columns + column]) << columns << ' ' << column;
        }
    }
}

// The simulator's own text of the same run, written with all digits, is the oracle of the binary files.
TEST(RawFileSamples, TextAndBinaryOfOneRunAreEqualBitByBit)
{
    for (const char* const run : {"rc-ac", "rc-tran", "shapes-padded", "shapes-unpadded"}) {
        const std::vector<RawPlot> text = readAll(samplePath(std::string(run) + "-text.raw"));
        const std::vector<RawPlot> binary = readAll(samplePath(std::string(run) + "-binary.raw"));
        ASSERT_EQ(text.at(0).vectors.size(), binary.at(0).vectors.size()) << run;
        for (std::size_t i = 0; i < text[0].vectors.size(); ++i) {
            const std::string what = run + (" " + text[0].vectors[i].name.toStdString());
            EXPECT_EQ(text[0].vectors[i].name, binary[0].vectors[i].name) << what;
            EXPECT_EQ(text[0].vectors[i].type, binary[0].vectors[i].type) << what;
            expectSameBits(text[0].vectors[i].data, binary[0].vectors[i].data, what);
        }
    }
}

TEST(RawFileSamples, PaddingIsDroppedAndTheRestIsTheSameWithoutIt)
{
    const RawPlot padded = readAll(samplePath("shapes-padded-binary.raw")).at(0);
    const RawPlot unpadded = readAll(samplePath("shapes-unpadded-binary.raw")).at(0);
    ASSERT_EQ(padded.vectors.size(), 8U);
    ASSERT_EQ(unpadded.vectors.size(), 8U);
    for (std::size_t i = 0; i < padded.vectors.size(); ++i)
        expectSameBits(padded.vectors[i].data, unpadded.vectors[i].data,
                       padded.vectors[i].name.toStdString());
    EXPECT_EQ(shapeOf(vectorOf(padded, "matrix").data), (std::vector<std::uint64_t>{2, 3}));
    EXPECT_THAT(valuesOf<double>(vectorOf(padded, "run").data), ElementsAre(0.0, 1.0, 2.0));
    EXPECT_THAT(valuesOf<double>(vectorOf(padded, "scalar").data), ElementsAre(7.0));
    EXPECT_EQ(vectorOf(padded, "v(b)").data.elementCount(), 5U);
}

TEST(RawFileSamples, SeveralKindsOfRunInOneTextFile)
{
    const std::vector<RawPlot> plots = readAll(samplePath("rc-tran-text.raw"));
    ASSERT_EQ(plots.size(), 3U);
    EXPECT_EQ(plots[0].name, "Transient Analysis");
    EXPECT_EQ(plots[1].name, "Operating Point");
    EXPECT_EQ(plots[2].name, "AC Analysis");
    EXPECT_EQ(plots[1].vectors.at(0).data.elementCount(), 1U);
}

// --- what isn't a raw file ------------------------------------------------------------------------------------

namespace {

struct BadFile
{
    const char* name;
    RawText raw;
    const char* message; // behind the file's name
};

RawText with(std::string RawText::*piece, const std::string& text)
{
    RawText raw;
    raw.*piece = text;
    return raw;
}

RawText complexWith(const std::string& values)
{
    RawText raw;
    raw.flags = "Flags: complex\n";
    raw.values = values;
    return raw;
}

RawText unpaddedWith(const std::string& variables)
{
    RawText raw;
    raw.flags = "Flags: real unpadded\n";
    raw.variables = variables;
    return raw;
}

class BadRawFile : public ::testing::TestWithParam<BadFile>
{
};

} // namespace

TEST_P(BadRawFile, IsRefusedWithItsPlaceAndWhatWasExpected)
{
    const ScratchFolder folder;
    const std::string path = folder.write("bad.raw", GetParam().raw.text());
    EXPECT_EQ(failureOf(path), path + ": " + GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    Headers, BadRawFile,
    ::testing::Values(
        BadFile{"StartsWithAnUnknownKey", with(&RawText::title, "Subject: x\n"),
                "line 1: expected 'Title:', with which a SPICE raw file begins, found 'Subject: x'"},
        BadFile{"StartsWithoutAKey",
                with(&RawText::title, "\x7F"
                                      "ELF\n"),
                "line 1: expected 'Title:', with which a SPICE raw file begins, found '\\x7fELF'"},
        BadFile{"NoColon", with(&RawText::date, "Date\n"),
                "line 2: expected a header line such as 'No. Points: 10', found 'Date'"},
        BadFile{"ByteZero", with(&RawText::date, std::string("Date: \0\n", 8)),
                "line 2: expected a header line of text, found 'Date: \\x00'"},
        BadFile{"NoPlotname", with(&RawText::plotName, ""),
                "line 9: expected 'Plotname:' before the values, found none"},
        BadFile{"NoFlags", with(&RawText::flags, ""),
                "line 9: expected 'Flags:' before the values, found none"},
        BadFile{"NoVariableCount", with(&RawText::variableCount, ""),
                "line 6: expected 'No. Variables:' before the variables, found 'Variables:'"},
        BadFile{"NoPointCount", with(&RawText::pointCount, ""),
                "line 9: expected 'No. Points:' before the values, found none"},
        BadFile{"NoVariables", with(&RawText::variables, ""),
                "line 7: expected 'Variables:' before the values, found none"},
        BadFile{"NoValues", with(&RawText::values, ""),
                "line 10: expected 'Binary:' or 'Values:', found the end of the file"},
        BadFile{"FlagsTwice", with(&RawText::more, "Flags: real\n"),
                "line 7: expected the values of the plot before another 'flags:', found 'Flags: real'"},
        BadFile{"NeitherRealNorComplex", with(&RawText::flags, "Flags: padded\n"),
                "line 4: expected either 'real' or 'complex' among the flags, found 'padded'"},
        BadFile{"RealAndComplex", with(&RawText::flags, "Flags: real complex\n"),
                "line 4: expected either 'real' or 'complex' among the flags, found 'real complex'"},
        BadFile{
            "ByColumns", with(&RawText::flags, "Flags: real forward fastaccess\n"),
            "line 4: expected values that stand point by point, each whole, found 'real forward fastaccess'"},
        BadFile{"NoVariableAtAll", with(&RawText::variableCount, "No. Variables: 0\n"),
                "line 5: expected the number of variables, 1 or more, found '0'"},
        BadFile{"NegativeVariables", with(&RawText::variableCount, "No. Variables: -2\n"),
                "line 5: expected the number of variables, 1 or more, found '-2'"},
        BadFile{"HugeVariables", with(&RawText::variableCount, "No. Variables: 18446744073709551615\n"),
                "line 5: expected a number of variables that the rest of the file has room for, found "
                "'18446744073709551615'"},
        BadFile{"NegativePoints", with(&RawText::pointCount, "No. Points: -1\n"),
                "line 6: expected the number of points, 0 or more, found '-1'"},
        BadFile{"PointsPast64Bits", with(&RawText::pointCount, "No. Points: 18446744073709551616\n"),
                "line 6: expected the number of points, 0 or more, found '18446744073709551616'"},
        BadFile{"PointsAreNaN", with(&RawText::pointCount, "No. Points: nan\n"),
                "line 6: expected the number of points, 0 or more, found 'nan'"},
        BadFile{"PointsMissing", with(&RawText::pointCount, "No. Points:\n"),
                "line 6: expected the number of points, 0 or more, found ''"},
        BadFile{"PlotShape", with(&RawText::more, "Dimensions: 2,,3\n"),
                "line 7: expected dimensions such as '2,3', found '2,,3'"},
        BadFile{"PlotShapePast64Bits", with(&RawText::more, "Dimensions: 4294967296,4294967296\n"),
                "line 7: expected dimensions such as '2,3', found '4294967296,4294967296'"},
        BadFile{"WrongVariableNumber", with(&RawText::variables, "Variables:\n 0 x voltage\n 2 y current\n"),
                "line 9: expected variable 1 of 2: its number, name and type, found '2 y current'"},
        BadFile{"VariableWithoutType", with(&RawText::variables, "Variables:\n 0 x voltage\n 1 y\n"),
                "line 9: expected variable 1 of 2: its number, name and type, found '1 y'"},
        BadFile{"TooFewVariables", with(&RawText::variables, "Variables:\n 0 x voltage\n"),
                "line 9: expected variable 1 of 2: its number, name and type, found 'Values:'"},
        BadFile{"TooManyVariables", with(&RawText::variables, "Variables:\n 0 x v\n 1 y v\n 2 z v\n"),
                "line 10: expected a header line such as 'No. Points: 10', found ' 2 z v'"},
        BadFile{"VectorShape", with(&RawText::variables, "Variables:\n 0 x voltage dims=a\n 1 y current\n"),
                "line 8: expected dimensions such as 'dims=2,3', found '0 x voltage dims=a'"},
        BadFile{"VectorLongerThanThePlot", with(&RawText::variables, "Variables:\n 0 x v dims=3\n 1 y v\n"),
                "line 10: expected vectors of at most 2 points, found 3 in 'x'"},
        BadFile{"TextBehindValues", with(&RawText::values, "Values: 1\n"),
                "line 10: expected the end of the line after 'values:', found '1'"}),
    [](const auto& testCase) { return std::string(testCase.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Values, BadRawFile,
    ::testing::Values(
        BadFile{"PointsWithoutText", with(&RawText::values, "Values:\n"),
                "line 10: expected at least 12 bytes of values (points: 2, variables: 2), found 0"},
        BadFile{"PointsWithoutBytes", with(&RawText::values, "Binary:\n1234567"),
                "line 10: expected 32 bytes of values (points: 2, variables: 2), found 7"},
        BadFile{"HugePointsOfText", with(&RawText::pointCount, "No. Points: 18446744073709551615\n"),
                "line 10: expected more bytes than there can be of values (points: 18446744073709551615, "
                "variables: "
                "2), found 24"},
        BadFile{"WrongPointNumber", with(&RawText::values, "Values:\n 0 1 2\n 2 3 4\n"),
                "line 12: expected point number 1 of 2, found '2'"},
        BadFile{"PointNumberIsNoNumber", with(&RawText::values, "Values:\n x 1 2\n 1 3 4\n"),
                "line 11: expected point number 0 of 2, found 'x'"},
        BadFile{"ValueIsNoNumber", with(&RawText::values, "Values:\n 0 1 2\n 1 3 4v\n"),
                "line 12: expected a value of 'y' at point 1, found '4v'"},
        BadFile{"ValueIsTooLarge", with(&RawText::values, "Values:\n 0 1 1e999\n 1 3 4\n"),
                "line 11: expected a value of 'y' at point 0, found '1e999'"},
        BadFile{"ValueIsComplexInRealPlot", with(&RawText::values, "Values:\n 0 1 2,0\n 1 3 4\n"),
                "line 11: expected a value of 'y' at point 0, found '2,0'"},
        BadFile{"ValueHasTwoSigns", with(&RawText::values, "Values:\n 0 1 +-2\n 1 3 4\n"),
                "line 11: expected a value of 'y' at point 0, found '+-2'"},
        BadFile{"ValueMissing", with(&RawText::values, "Values:\n 0 1.000 2.000\n 1 3\n"),
                "line 13: expected a value of 'y' at point 1, found the end of the file"},
        BadFile{"PointMissing", with(&RawText::values, "Values:\n 0 1.000000 2.000000\n"),
                "line 12: expected point number 1 of 2, found the end of the file"},
        BadFile{"ValueTooMany", with(&RawText::values, "Values:\n 0 1 2\n 1 3 4 5\n"),
                "line 12: expected the end of the line after the last value, found '5'"},
        BadFile{"PointTooMany", with(&RawText::values, "Values:\n 0 1 2\n 1 3 4\n 2 5 6\n"),
                "line 13: expected 'Title:' of another plot or the end of the file, found ' 2 5 6'"},
        BadFile{"LastLineWithoutItsEnd", with(&RawText::values, "Values:\n 0 1 2\n 1 3 4"),
                "line 12: expected the end of the line after the last value, found the end of the file"},
        BadFile{"ComplexWithoutImaginary", complexWith("Values:\n 0 1,0 2\n 1 3,0 4,0\n"),
                "line 11: expected a value 'real,imaginary' of 'y' at point 0, found '2'"},
        BadFile{"ComplexImaginaryIsNoNumber", complexWith("Values:\n 0 1,0 2,\n 1 3,0 4,0\n"),
                "line 11: expected a value 'real,imaginary' of 'y' at point 0, found '2,'"},
        BadFile{"UnpaddedHasNoMoreThanItsLength",
                unpaddedWith("Variables:\n 0 x voltage\n 1 y current dims=1\n"),
                "line 15: expected 'Title:' of another plot or the end of the file, found '\\t-4'"},
        BadFile{"BytesTooMany", with(&RawText::values, "Binary:\n" + bytesOf<double>({1, 2, 3, 4}) + "junk"),
                "byte 181: expected 'Title:' of another plot or the end of the file, found 'junk'"}),
    [](const auto& testCase) { return std::string(testCase.param.name); });

TEST_F(RawFileTest, AnEmptyFileIsRefused)
{
    EXPECT_THAT(failure(""),
                HasSubstr(": line 1: expected 'Title:', with which a SPICE raw file begins, found the "
                          "end of the file"));
    EXPECT_THAT(failure("\n \n"), HasSubstr("found the end of the file"));
}

TEST_F(RawFileTest, MorePointsThanBytesIsRefusedWhateverTheProduct)
{
    for (const char* const points : {"3", "1000000000000", "4611686018427387904", "18446744073709551615"}) {
        RawText raw;
        raw.pointCount = std::string("No. Points: ") + points + "\n";
        raw.values = "Binary:\n" + bytesOf<double>({1, 2, 3, 4});
        EXPECT_THAT(failure(raw.text()), HasSubstr("bytes")) << points;
    }
}

TEST_F(RawFileTest, ALineWithoutEndIsNotReadForEver)
{
    EXPECT_THAT(failure("Title: " + std::string(3U << 20U, 'x')),
                HasSubstr("line 1: expected a line of at most 1048576 bytes, found a longer one"));
}

TEST_F(RawFileTest, WhatIsFoundIsShownShortAndHarmless)
{
    const std::string line = failure("\x1b[2J" + std::string(100, 'x') + "\n");
    EXPECT_THAT(line, HasSubstr("found '\\x1b[2J" + std::string(36, 'x') + "...'"));
}

// Cut anywhere, a file is refused, with these exceptions: behind the values of a plot nothing tells that another
// plot has followed, and behind the last value nothing but blank lines is missing.
TEST_F(RawFileTest, TruncatedAnywhereIsRefused)
{
    RawText binary;
    binary.values = "Binary:\n" + bytesOf<double>({1.5, -2.0, 2.5, -4.0});
    for (const RawText& raw : {RawText(), binary}) {
        const std::string whole = raw.text();
        const std::string twice = whole + whole;
        const std::size_t end =
            raw.values.front() == 'V' ? whole.size() - 1 : whole.size(); // of the last value
        for (std::size_t size = 0; size <= twice.size(); ++size) {
            const bool isWholePlot = (size >= end && size <= whole.size()) || size >= whole.size() + end;
            const std::string line = failure(twice.substr(0, size));
            EXPECT_EQ(line.empty(), isWholePlot) << size << " bytes: " << line;
            if (isWholePlot) {
                EXPECT_EQ(read(twice.substr(0, size)).size(), size > whole.size() ? 2U : 1U);
            }
        }
    }
}

// Whatever is changed, the answer is a plot that fits the file or one line with a place.
TEST_F(RawFileTest, ChangedAnywhereIsReadOrRefused)
{
    const unsigned seed = 20261121;
    std::mt19937 random(seed);
    for (const char* const name : {"rc-ac-text.raw", "rc-ac-binary.raw", "shapes-unpadded-text.raw",
                                   "shapes-unpadded-binary.raw", "shapes-padded-binary.raw"}) {
        const std::string whole = sampleContent(name);
        ASSERT_GT(whole.size(), 100U);
        int refused = 0;
        for (int round = 0; round < 1000; ++round) {
            SCOPED_TRACE(std::string(name) + ", seed " + std::to_string(seed) + ", round " +
                         std::to_string(round));
            std::string changed = whole;
            for (std::uint32_t changes = 1 + random() % 4; changes > 0; --changes) {
                const std::size_t at = random() % changed.size();
                switch (random() % 4) {
                case 0:
                    changed[at] = static_cast<char>(random());
                    break;
                case 1:
                    changed[at] = "0123456789-,.\n\t :"[random() % 17];
                    break;
                case 2:
                    changed.erase(at, 1 + random() % 20);
                    break;
                default:
                    changed.insert(at, changed.substr(random() % changed.size(), 1 + random() % 20));
                }
                if (changed.empty())
                    changed = "x";
            }
            const std::string line = failure(changed);
            refused += line.empty() ? 0 : 1;
            if (!line.empty()) {
                EXPECT_THAT(line,
                            ::testing::ContainsRegex("test.raw: (line|byte) [0-9]+: expected .*, found "));
                EXPECT_EQ(line.find('\n'), std::string::npos);
            }
        }
        EXPECT_GT(refused, 100) << name;
    }
}

} // namespace Orrery::Host
