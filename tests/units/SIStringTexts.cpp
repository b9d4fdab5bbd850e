#include "tests/units/SIStringTexts.h"

#include "tests/support/RandomSeed.h"
#include "tests/units/UnitTables.h"

#include <cstdio>

namespace Orrery::UnitsTest {

using TestSupport::randomBelow;

namespace {

int below(std::mt19937_64& random, int bound)
{
    return static_cast<int>(randomBelow(random, static_cast<std::uint64_t>(bound)));
}

} // namespace

TextGenerator::TextGenerator(std::mt19937_64& random)
    : m_random(random)
{
    for (const PrefixRow& row : prefixRows())
        m_prefixes.append(row.symbol);
    for (const SymbolRow& row : symbolRows())
        m_symbols.append(row.symbol);
    m_pieces = m_prefixes + m_symbols + m_symbols;
    for (const char* piece : {"*",
                              "*",
                              "*",
                              "/",
                              "/",
                              "/",
                              "(",
                              "(",
                              "(",
                              ")",
                              ")",
                              ")",
                              "1",
                              "^",
                              "^2",
                              "^-1",
                              "^+3",
                              "^0",
                              "^12345678901",
                              " ",
                              "\t",
                              "dB(",
                              "log(",
                              "u",
                              "Ohm",
                              "o",
                              "0",
                              "+",
                              "-",
                              ".",
                              "%"})
        m_pieces.append(QString::fromLatin1(piece));
    for (int code = 0; code < 0x10000; ++code) {
        const QChar unit(code);
        if (unit.isDigit())
            m_digits.append(unit);
        if (unit.isSpace())
            m_blanks.append(unit);
    }
}

QString TextGenerator::next()
{
    const int kind = below(m_random, 100);
    if (kind < 30)
        return written();
    if (kind < 60)
        return spoilt();
    if (kind < 80)
        return soup();
    return exotic();
}

QString TextGenerator::written()
{
    const QString inside = quotient(0);
    switch (below(m_random, 8)) {
    case 0:
        return QStringLiteral("dB(") + inside + QLatin1Char(')');
    case 1:
        return QStringLiteral("log(") + inside + (chance(70) ? QStringLiteral("))") : QStringLiteral(")"));
    default:
        return inside;
    }
}

QString TextGenerator::spoilt()
{
    QString text = written();
    for (int changes = 1 + below(m_random, 3); changes > 0; --changes) {
        const int place = below(m_random, text.size() + 1);
        const int length = below(m_random, 3);
        switch (below(m_random, 4)) {
        case 0:
            text.remove(place, 1 + length);
            break;
        case 1:
            text.insert(place, pick(m_pieces));
            break;
        case 2:
            text.insert(place, text.mid(below(m_random, text.size() + 1), 1 + length));
            break;
        default:
            text.replace(place, 1, oddUnit());
        }
    }
    return text;
}

QString TextGenerator::soup()
{
    QString text;
    for (int pieces = below(m_random, 9); pieces > 0; --pieces)
        text += pick(m_pieces);
    return text;
}

QString TextGenerator::exotic()
{
    QString text;
    for (int pieces = 1 + below(m_random, 7); pieces > 0; --pieces)
        text += chance(40) ? QString(oddUnit()) : pick(m_pieces);
    return text;
}

QString TextGenerator::pick(const QStringList& list)
{
    return list.at(below(m_random, list.size()));
}

bool TextGenerator::chance(unsigned percent)
{
    return randomBelow(m_random, 100) < percent;
}

QString TextGenerator::blanks()
{
    QString text;
    while (chance(10))
        text += chance(50) ? QLatin1Char(' ') : m_blanks.at(below(m_random, m_blanks.size()));
    return text;
}

QString TextGenerator::exponent()
{
    static const QStringList signs{QString(), QString(), QStringLiteral("+"), QStringLiteral("-")};
    QString text =
        QLatin1Char('^') + pick(signs) + QString::number(1 + below(m_random, chance(80) ? 4 : 400));
    while (chance(7))
        text += chance(50) ? QLatin1Char('7') : m_digits.at(below(m_random, m_digits.size()));
    if (chance(3)) {
        static const QStringList extremes{"^2147483647",  "^-2147483648", "^2147483648",
                                          "^-2147483649", "^4294967297",  "^+99999999999999999999"};
        text = pick(extremes);
    }
    return text;
}

QString TextGenerator::term()
{
    return blanks() + (chance(40) ? pick(m_prefixes) : QString()) + pick(m_symbols) +
           (chance(30) ? exponent() : QString());
}

QString TextGenerator::factor(int depth)
{
    if (depth < 5 && chance(15))
        return QLatin1Char('(') + quotient(depth + 1) + QLatin1Char(')');
    return term();
}

QString TextGenerator::product(int depth)
{
    QString text = factor(depth);
    while (chance(30))
        text += QLatin1Char('*') + factor(depth);
    return text;
}

QString TextGenerator::denominator(int depth)
{
    if (depth < 5 && chance(30))
        return QLatin1Char('(') + quotient(depth + 1) + QLatin1Char(')');
    return term();
}

QString TextGenerator::quotient(int depth)
{
    QString text = chance(10) ? QStringLiteral("1") : product(depth);
    if (chance(35))
        text += QLatin1Char('/') + denominator(depth);
    return text;
}

QChar TextGenerator::oddUnit()
{
    static const QString special = QString(QChar(0)) + QChar(0x2126) + QChar(0x03BC) + QChar(0x00B5) +
                                   QChar(0x03A9) + QChar(0xFEFF) + QChar(0x0301) + QChar(0x0130) +
                                   QChar(0x0131) + QChar(0x00B2) + QChar(0xFF2D) + QChar(0xD835) +
                                   QChar(0xDFD0) + QChar(0xFFFF);
    switch (below(m_random, 5)) {
    case 0:
        return m_digits.at(below(m_random, m_digits.size()));
    case 1:
        return m_blanks.at(below(m_random, m_blanks.size()));
    case 2:
        return QChar(0xD800 + below(m_random, 0x800)); // half of a surrogate pair
    case 3:
        return special.at(below(m_random, special.size()));
    default:
        return QChar(below(m_random, 0x10000));
    }
}

std::string shown(const QString& text)
{
    std::string out;
    for (const QChar unit : text) {
        if (unit.unicode() >= 0x20 && unit.unicode() < 0x7F) {
            out += static_cast<char>(unit.unicode());
        } else {
            char number[16];
            std::snprintf(number, sizeof number, "<U+%04X>", static_cast<unsigned>(unit.unicode()));
            out += number;
        }
    }
    return out;
}

} // namespace Orrery::UnitsTest
