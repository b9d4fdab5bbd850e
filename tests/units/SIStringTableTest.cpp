// Every symbol, every prefix and every pair of both, against "of all matches the longest" as QRegExp understands it.
#include "tests/units/ParserComparison.h"
#include "tests/units/SIStringTexts.h"
#include "tests/units/UnitTables.h"
#include "tests/units/UnitsTestSupport.h"

#include <QRegExp>
#include <QSet>
#include <QStringList>

#include <gtest/gtest.h>

#include <cmath>

namespace Orrery::UnitsTest {
namespace {

template <class Row>
const Row* rowOf(const std::vector<Row>& rows, const QString& symbol)
{
    for (const Row& row : rows) {
        if (row.symbol == symbol)
            return &row;
    }
    return nullptr;
}

template <class Row>
QStringList symbolsOf(const std::vector<Row>& rows)
{
    QStringList symbols;
    for (const Row& row : rows)
        symbols.append(row.symbol);
    return symbols;
}

/// Whether the text is nothing but one term without exponent, and with which prefix and symbol.
bool readTerm(const QString& text, QString* prefix, QString* symbol)
{
    QRegExp pattern(QLatin1Char('(') + symbolsOf(prefixRows()).join(QLatin1Char('|')) +
                    QStringLiteral(")?(") + symbolsOf(symbolRows()).join(QLatin1Char('|')) +
                    QLatin1Char(')'));
    if (!pattern.exactMatch(text))
        return false;
    *prefix = pattern.cap(1);
    *symbol = pattern.cap(2);
    return true;
}

TEST(SIStringTables, AreComplete)
{
    EXPECT_EQ(prefixRows().size(), 20U);
    EXPECT_EQ(symbolRows().size(), 31U);
    const QStringList prefixes = symbolsOf(prefixRows());
    const QStringList symbols = symbolsOf(symbolRows());
    EXPECT_EQ(QSet<QString>(prefixes.begin(), prefixes.end()).size(), 20);
    EXPECT_EQ(QSet<QString>(symbols.begin(), symbols.end()).size(), 31);
}

TEST(SIStringTables, GiveEverySymbolItsDimensionsAndScale)
{
    for (const SymbolRow& row : symbolRows()) {
        SCOPED_TRACE(shown(row.symbol));
        const Units units = Units::FromSIString(row.symbol);
        EXPECT_TRUE(units.IsValid());
        EXPECT_EQ(units.GetUnitType().GetDimensions(), toDimensions(row.exponents));
        EXPECT_EQ(units.GetScale(), row.scale);
        EXPECT_EQ(units.GetLogScale(), 0.0);
    }
}

TEST(SIStringTables, GiveNoPrefixAMeaningOfItsOwn)
{
    for (const PrefixRow& row : prefixRows()) {
        const bool isASymbolToo = rowOf(symbolRows(), row.symbol) != nullptr;
        EXPECT_EQ(Units::FromSIString(row.symbol).IsValid(), isASymbolToo) << shown(row.symbol);
    }
}

TEST(SIStringTables, GiveEveryPrefixBeforeEverySymbolTheLongestMeaning)
{
    int pairs = 0;
    for (const PrefixRow& leading : prefixRows()) {
        for (const SymbolRow& trailing : symbolRows()) {
            const QString text = leading.symbol + trailing.symbol;
            SCOPED_TRACE(shown(text));
            QString prefix;
            QString symbol;
            ASSERT_TRUE(readTerm(text, &prefix, &symbol));
            const SymbolRow* const row = rowOf(symbolRows(), symbol);
            const PrefixRow* const scaled = rowOf(prefixRows(), prefix);
            ASSERT_NE(row, nullptr);
            const volatile double exponent = scaled ? scaled->exponent : 0;

            const Units units = Units::FromSIString(text);
            EXPECT_TRUE(units.IsValid());
            EXPECT_EQ(units.GetUnitType().GetDimensions(), toDimensions(row->exponents));
            EXPECT_EQ(units.GetScale(), std::pow(10.0, exponent) * row->scale);
            EXPECT_EQ(units.GetSIUnits(), text);
            ++pairs;
        }
    }
    EXPECT_EQ(pairs, 620);
}

TEST(SIStringTables, RaiseEveryPairToAPower)
{
    TypeModel types;
    for (const PrefixRow& prefix : prefixRows()) {
        for (const SymbolRow& symbol : symbolRows()) {
            for (const char* exponent : {"^1", "^-1", "^2", "^-3", "^+7"}) {
                const QString text = prefix.symbol + symbol.symbol + QLatin1String(exponent);
                ASSERT_EQ(differenceFromPlain(text, &types), "") << shown(text);
            }
        }
    }
}

TEST(SIStringTables, TellWhereASymbolEndsAndAnotherOneBegins)
{
    TypeModel types;
    int accepted = 0;
    for (const QString& first : symbolsOf(symbolRows()) + symbolsOf(prefixRows())) {
        for (const QString& second : symbolsOf(symbolRows()) + symbolsOf(prefixRows())) {
            for (const QString& third : symbolsOf(symbolRows())) {
                const QString text = first + second + third;
                ASSERT_EQ(differenceFromPlain(text, &types), "") << shown(text);
                QString prefix;
                QString symbol;
                accepted += readTerm(text, &prefix, &symbol);
            }
        }
    }
    // Those few where two letters make a prefix or a symbol of several: "d" and "a" before each symbol, and the like.
    EXPECT_GT(accepted, 0);
}

} // namespace
} // namespace Orrery::UnitsTest
