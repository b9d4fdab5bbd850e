#pragma once

#include <QString>
#include <QStringList>

#include <random>
#include <string>

namespace Orrery::UnitsTest {

/// Makes texts for the SI-string parser: good ones by the grammar, spoilt ones, and all kinds of rubbish.
class TextGenerator
{
public:
    explicit TextGenerator(std::mt19937_64& random);

    /// The next text: of any of the kinds below.
    QString next();

    /// A good text, or what becomes of it with a "1" where none may stand.
    QString written();

    /// A good text with a few letters changed, taken out, put in or doubled.
    QString spoilt();

    /// Symbols, prefixes, operators and blanks in any order.
    QString soup();

    /// Any code units; often digits and blanks of any script, halves of surrogate pairs and NUL among symbols.
    QString exotic();

private:
    QString pick(const QStringList& list);
    bool chance(unsigned percent);
    QString blanks();
    QString exponent();
    QString term();
    QString factor(int depth);
    QString product(int depth);
    QString denominator(int depth);
    QString quotient(int depth);
    QChar oddUnit();

    std::mt19937_64& m_random;
    QStringList m_prefixes;
    QStringList m_symbols;
    QStringList m_pieces;
    QString m_digits; ///< the decimal digits of all scripts
    QString m_blanks; ///< what counts as white space in any script
};

/// "<U+006D> m": the text with each code unit that isn't printable ASCII as its number, for failure messages.
std::string shown(const QString& text);

} // namespace Orrery::UnitsTest
