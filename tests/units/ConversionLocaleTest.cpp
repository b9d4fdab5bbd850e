// Units don't follow the locale: neither one with a decimal comma nor one with another case of "i".

#include "units/SystemOfUnits.h"
#include "units/Units.h"

#include "tests/support/Variants.h"
#include "tests/units/CatalogueRows.h"
#include "tests/units/PlainConversion.h"

#include <gtest/gtest.h>

#include <QLocale>
#include <QProcess>
#include <QTemporaryDir>

#include <clocale>
#include <cstdlib>
#include <cwctype>
#include <locale>
#include <sstream>

namespace Orrery {
namespace {
using namespace CatalogueTest;
using namespace ConversionTest;
using Brindle::Quay::BVariant;

/// The streams' half of both locales. A named std::locale would lose memory in the C library, which the sanitizer
/// for leaks holds against the test: newlocale doesn't free its copy of LOCPATH.
class DecimalComma : public std::numpunct<char>
{
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

/// Runs under the locale of its parameter, in C, C++ and Qt alike.
///
/// The locale is compiled into a folder of the test's own, so that nothing depends on what the machine has installed
/// beside the sources of the locales.
class UnitsInLocale : public ::testing::TestWithParam<const char*>
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_folder.isValid());
        const QString name = QString::fromLatin1(GetParam());
        const QStringList arguments{QStringLiteral("-i"), name, QStringLiteral("-f"), QStringLiteral("UTF-8"),
                                    m_folder.filePath(name + QStringLiteral(".UTF-8"))};
        ASSERT_EQ(QProcess::execute(QStringLiteral("localedef"), arguments), 0);
        ASSERT_TRUE(qputenv("LOCPATH", m_folder.path().toLocal8Bit()));

        const std::string full = std::string(GetParam()) + ".UTF-8";
        ASSERT_STREQ(std::setlocale(LC_ALL, full.c_str()), full.c_str());
        std::locale::global(std::locale(std::locale::classic(), new DecimalComma));
        QLocale::setDefault(QLocale(name));

        // what a mistake would trip over is really there
        ASSERT_STREQ(std::localeconv()->decimal_point, ",");
        ASSERT_EQ(QLocale().decimalPoint(), QLatin1Char(','));
        std::ostringstream stream;
        stream << 0.5;
        ASSERT_EQ(stream.str(), "0,5");
        ASSERT_EQ(std::towupper(L'i') == L'I', std::string(GetParam()) != "tr_TR");
    }

    void TearDown() override
    {
        QLocale::setDefault(m_before);
        std::locale::global(std::locale::classic());
        std::setlocale(LC_ALL, "C");
        qunsetenv("LOCPATH");
    }

private:
    const QLocale m_before;
    QTemporaryDir m_folder;
};

TEST_P(UnitsInLocale, HaveTheSameCatalogue)
{
    for (const CatalogueRow& row : catalogueRows()) {
        SCOPED_TRACE(row.key.toStdString());
        for (const Units& units : {catalogueUnit(row.key.toUtf8().constData()),
                                   SystemOfUnits::instance().GetUnitsFromString(row.key)}) {
            EXPECT_TRUE(units.IsValid());
            EXPECT_EQ(labelOf(units), row.label.toStdString());
            EXPECT_EQ(units.GetScale(), row.scale);
            EXPECT_EQ(units.GetOffset(), row.offset);
            EXPECT_EQ(units.GetLogScale(), row.logScale);
            EXPECT_EQ(units.GetSIUnits(), row.siUnits);
        }
    }
}

TEST_P(UnitsInLocale, HaveTheSameOrderOfNames)
{
    EXPECT_EQ(textsOf(SystemOfUnits::instance().GetUnitNames(UnitType::length)),
              (std::vector<std::string>{"cm", "in", "km", "m", "mil", "mm", "nm", "µm"}));
    EXPECT_EQ(SystemOfUnits::instance().GetAllUnits().size(), 117);
}

TEST_P(UnitsInLocale, TellTheCasesOfLettersApart)
{
    const SystemOfUnits& catalogue = SystemOfUnits::instance();
    for (const char* text : {"IN", "MIN", "MILES/H", "İn", "mıl", "KHZ", "PI"})
        EXPECT_FALSE(catalogue.GetUnitsFromString(QString::fromUtf8(text)).IsValid()) << text;
    EXPECT_EQ(catalogue.GetUnitsFromString(QStringLiteral("dBuV")).GetUnitsLabel(), QStringLiteral("dBµV"));
}

TEST_P(UnitsInLocale, ParseTheSameSIStrings)
{
    EXPECT_EQ(unitOf("mm^-2*kV/(µs*min)").IsValid(), false); // "min" is no symbol
    const Units units = unitOf("mm^-2*kV/(µs*Ω)");
    EXPECT_TRUE(units.IsValid());
    EXPECT_DOUBLE_EQ(units.GetScale(), 1e15);
    EXPECT_EQ((unitOf("km") ^ -2).GetUnitsLabel(), QStringLiteral("1/m^2"));
}

TEST_P(UnitsInLocale, ConvertToTheSameBits)
{
    for (const UnitPair& pair : commensurablePairs()) {
        std::vector<double> expected;
        for (const double value : awkwardValues()) {
            expected.push_back(plainConversion(pair.source, pair.target, value));
            double result = 0.0;
            ASSERT_EQ(pair.source.ConvertTo(pair.target, value, &result), ER_SUCCESS);
            ASSERT_TRUE(sameBits(expected.back(), result)) << pair.name;
        }
        BVariant result;
        ASSERT_EQ(pair.source.ConvertedTo(pair.target, BVariant(awkwardValues()), &result), ER_SUCCESS);
        ASSERT_TRUE(sameBits(expected, TestSupport::ToElements<double>(result))) << pair.name;
    }
}

TEST_P(UnitsInLocale, ReadNumbersInTextWithAPointOnly)
{
    const Units source = unitOf("km");
    const Units target = unitOf("m");
    BVariant point("2.5");
    BVariant comma("2,5");
    EXPECT_EQ(source.ConvertTo(target, point), ER_SUCCESS);
    EXPECT_EQ(source.ConvertTo(target, comma), ER_INVALID_ARGUMENT);
    BVariant result;
    ASSERT_EQ(source.ConvertedTo(target, point, &result), ER_SUCCESS);
    EXPECT_EQ(TestSupport::ToElements<double>(result), std::vector<double>{2500.0});
}

INSTANTIATE_TEST_SUITE_P(CommaAndDotlessI, UnitsInLocale, ::testing::Values("de_DE", "tr_TR"),
                         [](const auto& test) { return std::string(test.param); });
} // namespace
} // namespace Orrery
