// A host's locale has no say in what is a unit: neither the decimal comma, nor the digits, nor the dotless i.
#include "tests/support/RandomSeed.h"
#include "tests/units/ParserComparison.h"
#include "tests/units/SIStringTexts.h"
#include "tests/units/UnitsTestSupport.h"

#include <QByteArray>
#include <QLocale>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <locale>
#include <string>
#include <vector>

namespace Orrery::UnitsTest {
namespace {

/// What every number would look like under a locale that is listened to.
class CommaAndGroups : public std::numpunct<char>
{
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

/// Makes a locale of the C library if the machine has none of that name; empty if it can't.
///
/// The folder must live as long as the locale is used.
std::string compileLocale(const QTemporaryDir& folder, const QString& language)
{
    const QString path = folder.filePath(language + QStringLiteral(".UTF-8"));
    QProcess compiler;
    compiler.start(QStringLiteral("localedef"),
                   {QStringLiteral("--no-archive"), QStringLiteral("-i"), language, QStringLiteral("-f"),
                    QStringLiteral("UTF-8"), path});
    if (!compiler.waitForFinished(120000) || compiler.exitCode() != 0)
        return std::string();
    qputenv("LOCPATH", folder.path().toLocal8Bit());
    return (language + QStringLiteral(".UTF-8")).toStdString();
}

std::string withOneDecimal(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", value);
    return text;
}

class UnderALocale : public ::testing::TestWithParam<const char*>
{
protected:
    void SetUp() override
    {
        const QString language = QString::fromLatin1(GetParam());
        QLocale::setDefault(QLocale(language));
        // Numbers that are formatted for people are different now; else the test would prove nothing.
        ASSERT_NE(QLocale().toString(1234.5), QStringLiteral("1234.5"));
        std::locale::global(std::locale(std::locale::classic(), new CommaAndGroups));
        const std::string name = (language + QStringLiteral(".UTF-8")).toStdString();
        if (std::setlocale(LC_ALL, name.c_str()))
            return;
        const std::string compiled = compileLocale(m_folder, language);
        if (compiled.empty())
            return; // no sources of locales here: Qt's and the streams' locale are changed all the same
        ASSERT_NE(std::setlocale(LC_ALL, compiled.c_str()), nullptr);
        if (language != QStringLiteral("ar_EG")) {
            EXPECT_EQ(withOneDecimal(0.5), "0,5");
        }
    }

    void TearDown() override
    {
        std::setlocale(LC_ALL, "C");
        std::locale::global(std::locale::classic());
        QLocale::setDefault(QLocale::c());
        qunsetenv("LOCPATH");
    }

private:
    QTemporaryDir m_folder;
};

TEST_P(UnderALocale, TextsMeanWhatTheyMean)
{
    const TestSupport::RandomSeed seed{222};
    SCOPED_TRACE(seed);
    auto random = seed.engine();
    TextGenerator texts(random);
    TypeModel types;
    for (int i = 0; i < 2000; ++i) {
        const QString text = texts.next();
        ASSERT_EQ(differenceFromPlain(text, &types), "") << i << ": '" << shown(text) << "'";
        ASSERT_EQ(faultOfDiagnosis(text, parsePlainly(text).accepted), "")
            << i << ": '" << shown(text) << "'";
    }
    // Not by comparison with an oracle that might be led astray in the same way.
    EXPECT_EQ(numbersOf(parse("km^12")), (std::vector<double>{1e36, 0.0, 0.0}));
    EXPECT_EQ(parse("m^1234").GetUnitType().GetDimensions(), Dimensions(1234, 0, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(parse("deg").GetScale(), 0.017453292519943295);
    EXPECT_FALSE(parse("m^1,5").IsValid());
    EXPECT_FALSE(parse("m^1.234").IsValid());
    EXPECT_FALSE(parse("l\xC4\xB1m").IsValid()); // with a dotless i
    EXPECT_FALSE(parse("LM").IsValid());
}

TEST_P(UnderALocale, DimensionsAreWrittenInPlainDigits)
{
    EXPECT_EQ(Dimensions(12345, 0, -6789, 0, 0, 0, 0, 0, 0).SIUnitsString(),
              QStringLiteral("m^12345/s^6789"));
}

TEST_P(UnderALocale, LabelsAndNamesOfNewTypesAreInPlainDigits)
{
    const Units power = parse("km") ^ 1234567;
    EXPECT_EQ(power.GetUnitType().GetName(), QStringLiteral("(km)^1234567"));
    EXPECT_EQ(power.GetUnitsLabel(), QStringLiteral("m^1234567"));
    EXPECT_EQ(power.GetSIUnits(), QStringLiteral("m^1234567"));
    Units parsed(UnitType::length, QStringLiteral("in"), 0.0254, 0.0, 0.0);
    EXPECT_EQ(parsed.GetUnitsLabel(), QStringLiteral("in"));
    EXPECT_EQ(parsed.SetSIUnits(QStringLiteral("mm")), ER_SUCCESS);
    EXPECT_EQ(parsed.GetScale(), 0.001);
}

TEST_P(UnderALocale, MessagesTellPlaces)
{
    const QString text = QStringLiteral("m*").repeated(700) + QStringLiteral("x");
    const SIStringDiagnosis diagnosis = Units::DiagnoseSIString(text);
    EXPECT_EQ(diagnosis.position, 1400);
    EXPECT_TRUE(diagnosis.message().contains(QStringLiteral("1400"))) << diagnosis.message().toStdString();
}

INSTANTIATE_TEST_SUITE_P(Languages, UnderALocale, ::testing::Values("de_DE", "tr_TR", "ar_EG"),
                         [](const auto& test) { return std::string(test.param).substr(0, 2); });

} // namespace
} // namespace Orrery::UnitsTest
