#include "tests/units/PlainParser.h"

#include <QRegExp>
#include <QStringList>

#include <cmath>

namespace Orrery::UnitsTest {

namespace {

template <class Row>
QString alternatives(const std::vector<Row>& rows)
{
    QStringList symbols;
    for (const Row& row : rows)
        symbols.append(row.symbol);
    return QLatin1Char('(') + symbols.join(QLatin1Char('|')) + QLatin1Char(')');
}

template <class Row>
const Row& rowOf(const std::vector<Row>& rows, const QString& symbol)
{
    for (const Row& row : rows) {
        if (row.symbol == symbol)
            return row;
    }
    qFatal("a pattern matches what is in no table");
}

/// Exponents wrap, as unsigned numbers do.
int wrapped(unsigned int value)
{
    return static_cast<int>(value);
}

template <class Operation>
void combine(Exponents* left, const Exponents& right, Operation operation)
{
    for (std::size_t i = 0; i < left->size(); ++i)
        (*left)[i] = wrapped(operation(static_cast<unsigned>((*left)[i]), static_cast<unsigned>(right[i])));
}

bool parseQuotient(const QString& text, Exponents* exponents, double* scale, QString* rest);

bool parseTerm(const QString& text, Exponents* exponents, double* scale, QString* rest)
{
    if (text.isEmpty())
        return false;
    QRegExp pattern(QStringLiteral("^\\s*") + alternatives(prefixRows()) + QLatin1Char('?') +
                        alternatives(symbolRows()) + QStringLiteral("(\\^[+-]?[1-9]\\d*)?"),
                    Qt::CaseSensitive, QRegExp::RegExp);
    if (pattern.indexIn(text) != 0)
        return false;
    double running = 1.0;
    if (!pattern.cap(1).isEmpty())
        running = std::pow(10.0, rowOf(prefixRows(), pattern.cap(1)).exponent);
    const SymbolRow& symbol = rowOf(symbolRows(), pattern.cap(2));
    Exponents result = symbol.exponents;
    running *= symbol.scale;
    if (!pattern.cap(3).isEmpty()) {
        const int power = pattern.cap(3).mid(1).toInt(nullptr, 10);
        if (running != 1.0)
            running = std::pow(running, power);
        for (int& exponent : result)
            exponent = wrapped(static_cast<unsigned>(exponent) * static_cast<unsigned>(power));
    }
    *exponents = result;
    *scale = running;
    *rest = text.mid(pattern.matchedLength());
    return true;
}

/// A quotient whose opening parenthesis has been read, and the closing one.
bool parseInside(const QString& text, Exponents* exponents, double* scale, QString* rest)
{
    if (!parseQuotient(text, exponents, scale, rest) || !rest->startsWith(QLatin1Char(')')))
        return false;
    rest->remove(0, 1);
    return true;
}

bool parseFactor(const QString& text, Exponents* exponents, double* scale, QString* rest)
{
    if (text.startsWith(QLatin1Char('(')))
        return parseInside(text.mid(1), exponents, scale, rest);
    return parseTerm(text, exponents, scale, rest);
}

bool parseProduct(const QString& text, Exponents* exponents, double* scale, QString* rest)
{
    const bool good = parseFactor(text, exponents, scale, rest);
    if (!good || !rest->startsWith(QLatin1Char('*')))
        return good;
    Exponents innerExponents{};
    double innerScale = 1.0;
    QString innerRest;
    if (!parseProduct(rest->mid(1), &innerExponents, &innerScale, &innerRest))
        return false;
    *rest = innerRest;
    combine(exponents, innerExponents, [](unsigned a, unsigned b) { return a + b; });
    *scale *= innerScale;
    return true;
}

bool parseQuotient(const QString& text, Exponents* exponents, double* scale, QString* rest)
{
    if (!parseProduct(text, exponents, scale, rest)) {
        if (!text.startsWith(QLatin1Char('1')))
            return false;
        *rest = text.mid(1);
        *exponents = Exponents{};
    }
    if (!rest->startsWith(QLatin1Char('/')))
        return true;
    const QString denominator = rest->mid(1);
    Exponents innerExponents{};
    double innerScale = 1.0;
    QString innerRest;
    const bool good = denominator.startsWith(QLatin1Char('('))
                          ? parseInside(denominator.mid(1), &innerExponents, &innerScale, &innerRest)
                          : parseTerm(denominator, &innerExponents, &innerScale, &innerRest);
    if (!good)
        return false;
    *rest = innerRest;
    combine(exponents, innerExponents, [](unsigned a, unsigned b) { return a - b; });
    *scale /= innerScale;
    return true;
}

/// Twenty for volts and amperes, whose square is a power; ten for all else.
double decibelFactor(const Exponents& exponents)
{
    const Exponents potential{2, 1, -3, -1, 0, 0, 0, 0, 0};
    const Exponents current{0, 0, 0, 1, 0, 0, 0, 0, 0};
    return exponents == potential || exponents == current ? 20.0 : 10.0;
}

} // namespace

PlainResult parsePlainly(const QString& text)
{
    PlainResult result;
    QString rest;
    if (text.startsWith(QLatin1String("dB(")) || text.startsWith(QLatin1String("log("))) {
        // What decides is the rest alone. Behind "log" the parenthesis stays and is read as that of a factor.
        parseQuotient(text.mid(3), &result.exponents, &result.scale, &rest);
        result.accepted = rest == QLatin1String(")");
        if (result.accepted)
            result.logScale = text.startsWith(QLatin1Char('d')) ? decibelFactor(result.exponents) : 1.0;
        return result;
    }
    if (parseQuotient(text, &result.exponents, &result.scale, &rest))
        result.accepted = rest.isEmpty();
    else
        result.accepted = text.isEmpty();
    return result;
}

} // namespace Orrery::UnitsTest
