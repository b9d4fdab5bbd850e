#include "units/SIStringDiagnosis.h"

#include "units/SIStringParser_p.h"
#include "units/SISuggestions_p.h"
#include "units/SystemOfUnits.h"
#include "units/Units.h"

#include <algorithm>

namespace Orrery {
namespace {

using Internal::isSIString;
using Internal::SIQuotientReader;
using Internal::SIStringForm;

constexpr int s_longestQuote = 24;
constexpr int s_longestSuggestion = 200; // for longer texts none is worked out
constexpr int s_mostSuggestions = 3;

bool isWordUnit(QChar unit)
{
    return unit.isLetter() || unit.isSurrogate() || unit == u'%' || unit == QChar(0x00B0); // the degree sign
}

// One line whatever the text holds: what can't be shown is written as its number.
QString quoted(QStringView found)
{
    QString shown;
    for (int i = 0; i < found.size(); ++i) {
        const bool isPair =
            found[i].isHighSurrogate() && i + 1 < found.size() && found[i + 1].isLowSurrogate();
        if (isPair) {
            shown += found[i];
            shown += found[++i];
        } else if (found[i] == u' ' ||
                   (found[i].isPrint() && !found[i].isSpace() && !found[i].isSurrogate())) {
            shown += found[i];
        } else {
            shown += QLatin1String("U+") +
                     QString::number(found[i].unicode(), 16).toUpper().rightJustified(4, QLatin1Char('0'));
        }
    }
    return QLatin1Char('\'') + shown + QLatin1Char('\'');
}

QString listed(const QStringList& texts)
{
    QString list = texts.value(0);
    for (int i = 1; i < texts.size(); ++i)
        list += (i + 1 == texts.size() ? QLatin1String(" or ") : QLatin1String(", ")) + texts[i];
    return list.simplified(); // the catalogue may hold names of several lines
}

QString inGroup(const QStringList& factors)
{
    return QLatin1Char('(') + factors.join(QLatin1Char('*')) + QLatin1Char(')');
}

bool isSign(QChar unit)
{
    return unit == u'*' || unit == u'/';
}

/// A quotient that goes on behind its first divisor, taken apart.
struct LongQuotient
{
    QString dividend; // with all that stands before it
    QStringList divisors;
    QStringList factors;  // those behind a divisor
    QStringList operands; // both, in their order
    QString behind;       // what follows the quotient
    bool dividesFactors = false;
};

LongQuotient takeApart(const QString& text, int divisionSign)
{
    LongQuotient quotient;
    quotient.dividend = text.left(divisionSign);
    QChar sign = u'/';
    int begin = divisionSign + 1;
    int depth = 0;
    for (int i = begin; i <= text.size(); ++i) {
        const bool isEnd = i == text.size() || (depth == 0 && text[i] == u')');
        if (isEnd || (depth == 0 && isSign(text[i]))) {
            quotient.operands.append(text.mid(begin, i - begin));
            quotient.dividesFactors |= sign == u'/' && !quotient.factors.isEmpty();
            (sign == u'/' ? quotient.divisors : quotient.factors).append(quotient.operands.last());
            begin = i + 1;
        }
        if (isEnd) {
            quotient.behind = text.mid(i);
            break;
        }
        if (depth == 0 && isSign(text[i]))
            sign = text[i];
        depth += text[i] == u'(' ? 1 : 0;
        depth -= text[i] == u')' ? 1 : 0;
    }
    return quotient;
}

// Whether the SI string says all of the unit. It is read without a look for its type: that may register one.
bool saysAllOf(const Units& units, const QString& siString)
{
    int start = 0;
    const SIStringForm form = Internal::formOf(siString, &start);
    SIQuotientReader reader(siString, start);
    const UnitType& type = units.GetUnitType();
    return reader.run() && Internal::endsWell(form, siString, reader.position()) &&
           reader.dimensions() == type.GetDimensions() && reader.scale() == units.GetScale() &&
           units.GetOffset() == 0.0 && Internal::logScaleOf(form, type) == units.GetLogScale();
}

/// Works out one diagnosis. The reading is the parser's own, so that both agree on what is refused.
class Diagnosing
{
public:
    explicit Diagnosing(const QString& text)
        : m_text(text)
        , m_form(Internal::formOf(text, &m_start))
        , m_reader(text, m_start)
    {
        m_isQuotient = m_reader.run();
        m_at = m_reader.position();
    }

    SIStringDiagnosis run()
    {
        m_result.valid =
            m_text.isEmpty() || (m_isQuotient && Internal::endsWell(m_form, m_text, m_reader.position()));
        if (m_result.valid)
            return m_result;
        if (!tellName()) {
            if (!m_isQuotient && !m_reader.missesParenthesis())
                tellMissingTerm();
            else if (m_at == m_text.size())
                tellOpenParenthesis();
            else
                tellUnexpected();
        }
        advise();
        return m_result;
    }

private:
    QChar unitAt(int index) const { return index >= 0 && index < m_text.size() ? m_text[index] : QChar(); }

    void tell(int position, int length, const QString& problem, const char* expected)
    {
        m_result.position = position;
        m_result.found = m_text.mid(position, std::min(length, s_longestQuote));
        m_result.problem = problem;
        m_result.expected = QLatin1String(expected);
    }

    // "'x' at 3" and what is the matter with it.
    void tellFound(int position, int length, const char* matter, const char* expected)
    {
        tell(position, length, QString(), expected);
        m_result.problem = quoted(m_result.found) + QLatin1String(" at ") + QString::number(position) +
                           QLatin1Char(' ') + QLatin1String(matter);
    }

    bool isShort() const { return m_text.size() <= s_longestSuggestion; }

    void suggest(const QString& text)
    {
        const QString candidate = text.simplified();
        if (!candidate.isEmpty() && m_result.suggestions.size() < s_mostSuggestions &&
            !m_result.suggestions.contains(candidate) && isSIString(candidate))
            m_result.suggestions.append(candidate);
    }

    void suggestWithout(int position, int length)
    {
        if (isShort())
            suggest(QString(m_text).remove(position, length));
    }

    bool tellName();
    void tellMissingTerm();
    void tellOpenParenthesis();
    void tellUnexpected();
    void tellBlank(int position);
    void tellSecondDivision();
    void tellFactorBehind();
    void suggestQuotients();
    void tellExponent();
    void tellWord(int position);
    void tellMissingOperator();
    void suggestBareExponent();
    void suggestPowerOfGroup(int end);
    void suggestRepairs();
    void suggestDecibels(const QString& text);
    void suggestWords(const QString& word, int position);
    void advise();

    QString m_text;
    int m_start = 0;
    SIStringForm m_form;
    SIQuotientReader m_reader;
    bool m_isQuotient = false;
    int m_at = 0; // where the reading stopped
    bool m_isWord = false;
    SIStringDiagnosis m_result;
};

// A name such as "dBm" or "in" means a unit, but only to the catalogue.
bool Diagnosing::tellName()
{
    Units named;
    if (SystemOfUnits::instance().GetUnitsByName(m_text, &named) < 0)
        return false;
    tellFound(0, m_text.size(), "is a name of the unit catalogue, not an SI string", "an SI string");
    if (saysAllOf(named, named.GetSIUnits()))
        suggest(named.GetSIUnits());
    if (m_result.suggestions.isEmpty())
        m_result.advice = QStringLiteral("look it up in the catalogue");
    return true;
}

void Diagnosing::tellMissingTerm()
{
    const int at = Internal::skipBlanks(m_text, m_at);
    const QChar unit = unitAt(at);
    if (at == m_text.size()) {
        tell(at, 0, QStringLiteral("a unit symbol is missing at %1").arg(at), "a unit symbol");
        if (isShort())
            suggest(m_text.left(m_at - 1));
    } else if (at > m_at && (unit == u'(' || unit == u'1')) {
        tellBlank(m_at);
    } else if (unit == u'1') {
        tellFound(at, 1, "can't be a factor or a divisor: it only begins a quotient", "a unit symbol");
        suggestWithout(at - 1, 2);
        suggestWithout(at, 2);
    } else if (unit == u'*' || unit == u'/') {
        tellFound(at, 1, "has no unit before it", "a unit symbol");
        suggestWithout(at, 1);
        suggestRepairs();
    } else if (unit == u')') {
        tellFound(at, 1, "has no unit before it", "a unit symbol");
        suggestWithout(at - 1, 2);
        suggestWithout(at - 2, 3);
    } else if (isWordUnit(unit)) {
        tellWord(at);
    } else {
        tellFound(at, 1, unit.isDigit() ? "can't stand here: a unit holds no numbers" : "is no unit symbol",
                  "a unit symbol");
        suggestRepairs();
    }
}

void Diagnosing::tellOpenParenthesis()
{
    const int open = m_reader.openParenthesis();
    if (m_form == SIStringForm::Logarithm && open < 0) {
        tell(m_at, 0,
             QStringLiteral("a second ')' is missing at %1: the first one belongs to the quotient").arg(m_at),
             "')'");
    } else {
        tell(m_at, 0, QStringLiteral("the '(' at %1 is not closed").arg(open < 0 ? m_start - 1 : open),
             "')'");
    }
    if (!isShort())
        return;
    for (QString closed = m_text + QLatin1Char(')'); m_result.suggestions.isEmpty();
         closed += QLatin1Char(')')) {
        suggest(closed);
        if (closed.size() > 2 * m_text.size())
            return;
    }
}

void Diagnosing::tellUnexpected()
{
    const QChar unit = unitAt(m_at);
    const bool closesForm =
        unit == u')' && m_isQuotient && m_form != SIStringForm::Linear && m_at + 1 < m_text.size();
    if (closesForm) {
        ++m_at; // what follows is too much
        tellFound(m_at, m_text.size() - m_at, "follows the closing parenthesis", "the end of the text");
        if (isShort())
            suggest(m_text.left(m_at));
    } else if (unit == u')') {
        tellFound(m_at, 1, "has no partner", "the end of the text");
        suggestWithout(m_at, 1);
    } else if (unit == u'/') {
        tellSecondDivision();
    } else if (unit == u'*') {
        tellFactorBehind();
    } else if (unit == u'^') {
        tellExponent();
    } else if (unit.isSpace()) {
        tellBlank(m_at);
    } else if (isWordUnit(unit) && isWordUnit(unitAt(m_at - 1))) {
        tellWord(m_at);
    } else {
        tellMissingOperator();
    }
}

void Diagnosing::tellBlank(int position)
{
    tell(position, Internal::skipBlanks(m_text, position) - position, QString(),
         "an operator or the end of the text");
    m_result.problem =
        QStringLiteral("white space at %1: it can stand only before a unit symbol").arg(position);
    if (!isShort())
        return;
    // "N m" rather means a product than the unit "Nm".
    suggest(m_text.simplified().replace(QLatin1Char(' '), QLatin1Char('*')));
    suggest(m_text.simplified().remove(QLatin1Char(' ')));
    suggestRepairs();
}

void Diagnosing::tellSecondDivision()
{
    tell(m_at, 1, QStringLiteral("a second '/' at %1").arg(m_at), "the end of the quotient");
    if (!isShort())
        return;
    suggestQuotients();
}

void Diagnosing::tellFactorBehind()
{
    const int first = m_reader.divisionSign();
    if (first < 0) {
        tellFound(m_at, 1, "can't follow a 1, which is no factor", "'/' or the end of the quotient");
        suggestWithout(m_at - 1, 2);
        return;
    }
    tellFound(m_at, 1, "can't follow a divisor", "the end of the quotient");
    if (!isShort())
        return;
    suggestQuotients();
    if (m_result.suggestions.isEmpty())
        suggestRepairs(); // the "*" may be half of a "**"
}

// Read from the left, each operand belongs to the sign before it. What rather stands in one group behind the first "/"
// is offered too, unless it divides again: then nobody can tell what was meant to belong together.
void Diagnosing::suggestQuotients()
{
    const LongQuotient quotient = takeApart(m_text, m_reader.divisionSign());
    const QStringList& divisors = quotient.divisors;
    const QString factors = quotient.factors.join(QLatin1Char('*'));
    QString dividend = quotient.dividend;
    const bool isOne = dividend == QLatin1String("1") || dividend.endsWith(QLatin1String("(1"));
    if (!factors.isEmpty() && isOne)
        dividend.chop(1);
    else if (!factors.isEmpty())
        dividend += QLatin1Char('*');
    dividend += factors + QLatin1Char('/');
    const bool isPower = divisors.size() > 1 &&
                         std::count(divisors.begin(), divisors.end(), divisors.front()) == divisors.size();
    if (isPower)
        suggest(dividend + divisors.front() + QLatin1Char('^') + QString::number(divisors.size()) +
                quotient.behind);
    suggest(dividend + (divisors.size() > 1 ? inGroup(divisors) : divisors.front()) + quotient.behind);
    if (!quotient.dividesFactors)
        suggest(quotient.dividend + QLatin1Char('/') + inGroup(quotient.operands) + quotient.behind);
}

void Diagnosing::tellExponent()
{
    const QChar before = unitAt(m_at - 1);
    const QChar behind = unitAt(m_at + 1);
    const int digit = m_at + (behind == u'+' || behind == u'-' ? 2 : 1);
    if (before == u')') {
        tellFound(m_at, 1, "can't follow a parenthesis", "an operator");
        suggestPowerOfGroup(m_at);
        return;
    }
    if (!isWordUnit(before)) {
        tellFound(m_at, 1, "can't stand here: only a unit symbol takes an exponent", "an operator");
        return;
    }
    const char* const expected = "a whole number that doesn't begin with 0";
    if (unitAt(digit) != u'0') {
        tellFound(m_at, 1, "has no whole number behind it", expected);
        suggestBareExponent();
        suggestWithout(m_at, 1);
        return;
    }
    tellFound(m_at, digit + 1 - m_at, "is no exponent: it can't be 0 or begin with 0", expected);
    int zeros = 1;
    while (isShort() && unitAt(digit + zeros) == u'0')
        ++zeros;
    suggestWithout(digit, zeros);
}

// "m^{2}" and "m^(2)": the exponent without what stands around it.
void Diagnosing::suggestBareExponent()
{
    const QChar open = unitAt(m_at + 1);
    const int close = open == u'(' || open == u'{' ? m_text.indexOf(open == u'(' ? u')' : u'}', m_at) : -1;
    if (isShort() && close > 0)
        suggest(m_text.left(m_at + 1) + m_text.mid(m_at + 2, close - m_at - 2) + m_text.mid(close + 1));
}

// "(m/s)^2": the group as often as the exponent says, if that is short.
void Diagnosing::suggestPowerOfGroup(int end)
{
    if (!isShort())
        return;
    int begin = end - 1;
    for (int depth = 1; depth > 0 && begin > 0;) {
        --begin;
        depth += unitAt(begin) == u')' ? 1 : 0;
        depth -= unitAt(begin) == u'(' ? 1 : 0;
    }
    const int count = unitAt(end + 1).unicode() - u'0';
    if (count < 2 || count > 4)
        return;
    QStringList groups;
    for (int i = 0; i < count; ++i)
        groups.append(m_text.mid(begin, end - begin));
    suggest(m_text.left(begin) + groups.join(QLatin1Char('*')) + m_text.mid(end + 2));
}

void Diagnosing::tellMissingOperator()
{
    const QChar unit = unitAt(m_at);
    if (unit == u'(' || isWordUnit(unit)) {
        tell(m_at, 1, QStringLiteral("an operator is missing at %1").arg(m_at), "'*' or '/'");
        if (isShort())
            suggest(QString(m_text).insert(m_at, QLatin1Char('*')));
        if (unitAt(m_at - 1) == u'1')
            suggestWithout(m_at - 1, 1);
    } else if (unitAt(m_at - 1).isDigit() && (unit == u'.' || unit == u',')) {
        tellFound(m_at, 1, "makes a fraction of the exponent, which must be a whole number", "an operator");
    } else if (unit == u'.' || unit == u',') {
        tellFound(m_at, 1, "is no operator", "'*' or '/'");
        if (isShort())
            suggest(QString(m_text).replace(unit, QLatin1Char('*')));
    } else if (isWordUnit(unitAt(m_at - 1)) && (unit.isDigit() || unit == u'-' || unit == u'+')) {
        tellFound(m_at, 1, "needs '^' before it to be an exponent", "'^' or an operator");
        if (isShort())
            suggest(QString(m_text).insert(m_at, QLatin1Char('^')));
    } else {
        tellFound(m_at, 1,
                  unit.isDigit() ? "can't stand here: a unit holds no numbers but exponents"
                                 : "can't stand here",
                  "an operator or the end of the text");
    }
    suggestRepairs();
}

// The reading may have stopped inside of a word whose beginning is a symbol, as in "meter".
void Diagnosing::tellWord(int position)
{
    int begin = position;
    while (begin > m_start && isWordUnit(unitAt(begin - 1)) && position - begin < s_longestQuote)
        --begin;
    int end = position;
    while (isWordUnit(unitAt(end)) && end - begin < s_longestQuote)
        ++end;
    m_isWord = true;
    const QString word = m_text.mid(begin, end - begin);
    const bool isPrefix = Internal::isPrefixSymbol(word);
    tellFound(begin, end - begin, isPrefix ? "is a prefix without a unit" : "is no unit symbol",
              "a unit symbol");
    suggestRepairs();
    suggestWords(word, begin);
}

void Diagnosing::suggestRepairs()
{
    if (!isShort())
        return;
    const QString repaired = Internal::repairedSymbols(m_text);
    suggest(repaired);
    if (repaired.startsWith(QLatin1String("dB")) && m_form == SIStringForm::Linear)
        suggestDecibels(repaired);
}

// "dBm/Hz" means a milliwatt, as "dBm" does, and no metre. Where no name stands before the sign, the letters behind
// "dB" are the unit.
void Diagnosing::suggestDecibels(const QString& text)
{
    int end = 2;
    while (end < text.size() && !isSign(text[end]) && text[end] != u'^')
        ++end;
    Units named;
    if (end == text.size() || SystemOfUnits::instance().GetUnitsByName(text.left(end), &named) < 0) {
        suggest(QLatin1String("dB(") + text.mid(2) + QLatin1Char(')'));
        return;
    }
    const QString reference = named.GetSIUnits();
    const bool isDecibel = reference.startsWith(QLatin1String("dB(")) && saysAllOf(named, reference);
    if (isDecibel && text[end] != u'^')
        suggest(reference.left(reference.size() - 1) + text.mid(end) + QLatin1Char(')'));
}

void Diagnosing::suggestWords(const QString& word, int position)
{
    if (!m_result.suggestions.isEmpty())
        return;
    const bool isAll = word == m_text;
    const QStringList similar = Internal::similarSymbols(word, isAll).mid(0, s_mostSuggestions);
    for (const QString& symbol : similar) {
        if (isAll)
            m_result.suggestions.append(symbol);
        else if (isShort())
            suggest(QString(m_text).replace(position, word.size(), symbol));
    }
    // Something else is wrong too, or the text is long: then the symbol alone.
    for (const QString& symbol : similar) {
        if (m_result.suggestions.isEmpty())
            suggest(symbol);
    }
}

void Diagnosing::advise()
{
    if (!m_result.advice.isEmpty())
        return;
    if (m_result.suggestions.isEmpty())
        m_result.advice = QLatin1String("expected ") + m_result.expected;
    else
        m_result.advice = QLatin1String(m_isWord ? "did you mean " : "write ") + listed(m_result.suggestions);
}

} // namespace

QString SIStringDiagnosis::message() const
{
    return valid ? QString() : problem + QLatin1String("; ") + advice;
}

SIStringDiagnosis Units::DiagnoseSIString(const QString& text)
{
    return Diagnosing(text).run();
}

} // namespace Orrery
