#include "units/SIStringParser_p.h"

#include "units/SISymbols_p.h"

#include <cmath>
#include <limits>

namespace Orrery::Internal {
namespace {

bool isAsciiDigit(QChar unit)
{
    return unit >= u'0' && unit <= u'9';
}

// "^", an optional sign and digits that don't begin with 0. Returns the index behind them, `at` if they aren't there.
int skipExponent(QStringView text, int at)
{
    const int size = static_cast<int>(text.size());
    int digit = at + 1;
    if (at >= size || text[at] != u'^')
        return at;
    if (digit < size && (text[digit] == u'+' || text[digit] == u'-'))
        ++digit;
    if (digit >= size || text[digit] == u'0' || !isAsciiDigit(text[digit]))
        return at;
    while (digit < size && text[digit].isDigit()) // the digits of every script belong to it
        ++digit;
    return digit;
}

// The number from `begin`, with an optional sign, up to `end`; 0 for what is no int in ASCII digits.
int exponentValue(QStringView text, int begin, int end)
{
    const bool negative = text[begin] == u'-';
    if (negative || text[begin] == u'+')
        ++begin;
    std::int64_t value = 0;
    for (int i = begin; i < end; ++i) {
        if (!isAsciiDigit(text[i]))
            return 0;
        value = value * 10 + (text[i].unicode() - u'0');
        if (value > std::int64_t{std::numeric_limits<int>::max()} + 1)
            return 0;
    }
    if (negative)
        value = -value;
    return value > std::numeric_limits<int>::max() ? 0 : static_cast<int>(value);
}

} // namespace

int skipBlanks(QStringView text, int at)
{
    while (at < text.size() && text[at].isSpace())
        ++at;
    return at;
}

bool readTerm(QStringView text, int at, SITerm* term)
{
    at = skipBlanks(text, at);
    const SISymbol symbol = SISymbolTable::s_instance.match(text, at);
    if (symbol.length == 0)
        return false;
    at += symbol.length;
    double scale = symbol.prefix ? symbol.prefix->factor * symbol.unit->scale : symbol.unit->scale;
    Dimensions dimensions = symbol.unit->type->GetDimensions();
    const int end = skipExponent(text, at);
    if (end != at) {
        const int exponent = exponentValue(text, at + 1, end);
        if (scale != 1.0)
            scale = std::pow(scale, exponent);
        dimensions = dimensions ^ exponent;
    }
    *term = {end, dimensions, scale};
    return true;
}

SIQuotientReader::SIQuotientReader(QStringView text, int start)
    : m_text(text)
    , m_at(start)
{
}

bool SIQuotientReader::run()
{
    Step step = Step::Quotient;
    while (true) {
        switch (step) {
        case Step::Quotient:
            step = readQuotient();
            break;
        case Step::Factor:
            step = readFactor();
            break;
        case Step::AfterFactor:
            step = goOnAfterFactor();
            break;
        case Step::AfterQuotient:
            step = goOnAfterQuotient();
            break;
        case Step::Done:
            return true;
        case Step::Failed:
            return false;
        }
    }
}

int SIQuotientReader::openParenthesis() const
{
    for (int i = m_pending.size() - 1; i >= 0; --i) {
        const Waiting waiting = m_pending[i].waiting;
        if (waiting == Waiting::FactorParenthesis || waiting == Waiting::DividendParenthesis)
            return m_pending[i].at;
    }
    return -1;
}

SIQuotientReader::Step SIQuotientReader::readQuotient()
{
    m_divisionSign = -1;
    if (!stands(u'1')) // no product begins with it
        return Step::Factor;
    ++m_at;
    m_current = 1.0;
    return readDenominator();
}

SIQuotientReader::Step SIQuotientReader::readFactor()
{
    if (stands(u'(')) {
        push(Waiting::FactorParenthesis);
        return Step::Quotient;
    }
    double scale = 1.0;
    if (!readTermInto(&scale))
        return Step::Failed;
    store(scale);
    return Step::AfterFactor;
}

SIQuotientReader::Step SIQuotientReader::goOnAfterFactor()
{
    if (stands(u'*')) {
        push(Waiting::Factor);
        return Step::Factor;
    }
    // The product has ended. It is multiplied from its end, which decides the rounding.
    while (!m_pending.isEmpty() && m_pending.last().waiting == Waiting::Factor) {
        const double factor = m_pending.last().scale;
        pop();
        store(factor * m_current);
    }
    return readDenominator();
}

SIQuotientReader::Step SIQuotientReader::readDenominator()
{
    if (!stands(u'/'))
        return Step::AfterQuotient;
    m_divisionSign = m_at;
    push(Waiting::Numerator);
    m_divides = !m_divides;
    if (stands(u'(')) {
        push(Waiting::DividendParenthesis);
        return Step::Quotient;
    }
    double divisor = 1.0;
    if (!readTermInto(&divisor))
        return Step::Failed;
    m_current = divisor;
    return Step::AfterQuotient;
}

SIQuotientReader::Step SIQuotientReader::goOnAfterQuotient()
{
    if (m_pending.isEmpty())
        return Step::Done;
    const Pending pending = m_pending.last();
    if (pending.waiting == Waiting::Numerator) {
        pop();
        m_divides = !m_divides;
        m_divisionSign = pending.at;
        store(pending.scale / m_current);
        return Step::AfterQuotient;
    }
    if (!stands(u')')) {
        m_missesParenthesis = true;
        return Step::Failed;
    }
    ++m_at;
    pop();
    return pending.waiting == Waiting::FactorParenthesis ? Step::AfterFactor : Step::AfterQuotient;
}

bool SIQuotientReader::readTermInto(double* scale)
{
    SITerm term;
    if (!readTerm(m_text, m_at, &term))
        return false;
    m_at = term.end;
    m_dimensions = m_divides ? m_dimensions / term.dimensions : m_dimensions * term.dimensions;
    *scale = term.scale;
    return true;
}

void SIQuotientReader::push(Waiting waiting)
{
    m_pending.append({m_current, m_at, waiting});
    ++m_at;
    if (waiting == Waiting::Factor || waiting == Waiting::Numerator)
        ++m_unfinished;
}

void SIQuotientReader::pop()
{
    const Waiting waiting = m_pending.last().waiting;
    if (waiting == Waiting::Factor || waiting == Waiting::Numerator)
        --m_unfinished;
    m_pending.removeLast();
}

// Behind "*" and "/" a level of its own begins; all others share the scale of the outermost one.
void SIQuotientReader::store(double scale)
{
    m_current = scale;
    if (m_unfinished == 0)
        m_scale = scale;
}

SIStringForm formOf(QStringView text, int* quotientStart)
{
    *quotientStart = 0;
    if (text.startsWith(u"dB(")) {
        *quotientStart = 3;
        return SIStringForm::Decibel;
    }
    if (text.startsWith(u"log(")) {
        *quotientStart = 3;
        return SIStringForm::Logarithm;
    }
    return SIStringForm::Linear;
}

bool endsWell(SIStringForm form, QStringView text, int quotientEnd)
{
    if (form == SIStringForm::Linear)
        return quotientEnd == text.size();
    // "log(m)" is refused: its parenthesis is a factor's, so that one more has to follow.
    return quotientEnd + 1 == text.size() && text[quotientEnd] == u')';
}

double logScaleOf(SIStringForm form, const UnitType& type)
{
    switch (form) {
    case SIStringForm::Linear:
        return 0.0;
    case SIStringForm::Decibel:
        return UnitType::GetDBType(type) == UnitType::fieldDecibel ? 20.0 : 10.0;
    case SIStringForm::Logarithm:
        return 1.0;
    }
    return 0.0;
}

} // namespace Orrery::Internal
