#pragma once

#include "units/Dimensions.h"

#include <QStringView>
#include <QVarLengthArray>

#include <cstdint>

namespace Orrery::Internal {

/// One symbol with its exponent, as it stands in an SI string.
struct SITerm
{
    int end = 0; // behind the last code unit
    Dimensions dimensions;
    double scale = 1.0;
};

/// Read blanks, an optional prefix, a unit symbol and an optional exponent from `at` on; false if there is no
/// such thing, and *term is untouched then.
///
/// Edge:   an exponent that fits no int, or that has digits of another script, counts as 0.
bool readTerm(QStringView text, int at, SITerm* term);

/// The index of the first code unit from `at` on that is no blank.
int skipBlanks(QStringView text, int at);

/// Reads one quotient: a product or the digit 1, and possibly "/" with a denominator.
///
/// The grammar is recursive, this isn't: what a level waits for stands on a stack in heap memory, and results are
/// stored in the order that recursion would give. A million factors and a hundred thousand parentheses are read
/// in one pass.
class SIQuotientReader
{
public:
    SIQuotientReader(QStringView text, int start);

    /// Read as much as belongs to the quotient; false if it is none. Called once.
    bool run();

    /// Behind the quotient; where the reading stopped if there is none.
    int position() const { return m_at; }

    const Dimensions& dimensions() const { return m_dimensions; }

    /// The scale; if there is no quotient, what the outermost level held when the reading stopped.
    double scale() const { return m_scale; }

    /// Whether a closing parenthesis was missing where the reading stopped, else a term was.
    bool missesParenthesis() const { return m_missesParenthesis; }

    /// The index of the innermost "(" that was open when the reading stopped; -1 for none.
    int openParenthesis() const;

    /// The index of the "/" of the level on which the reading stopped; -1 for none.
    int divisionSign() const { return m_divisionSign; }

private:
    enum class Waiting : std::uint8_t
    {
        Factor,              // for the product behind its "*"
        Numerator,           // for the denominator behind its "/"
        FactorParenthesis,   // for the ")" of a factor
        DividendParenthesis, // for the ")" of a denominator
    };

    struct Pending
    {
        double scale;
        int at; // of its sign or parenthesis
        Waiting waiting;
    };

    enum class Step : std::uint8_t
    {
        Quotient,
        Factor,
        AfterFactor,
        AfterQuotient,
        Done,
        Failed,
    };

    Step readQuotient();
    Step readFactor();
    Step goOnAfterFactor();
    Step readDenominator();
    Step goOnAfterQuotient();

    bool stands(char16_t sign) const { return m_at < m_text.size() && m_text[m_at] == sign; }
    bool readTermInto(double* scale);
    void push(Waiting waiting);
    void pop();
    void store(double scale);

    QStringView m_text;
    int m_at;
    int m_divisionSign = -1;
    int m_unfinished = 0; // how many entries of the stack hold a scale
    bool m_divides = false;
    bool m_missesParenthesis = false;
    Dimensions m_dimensions;
    double m_current = 1.0; // of what was read last
    double m_scale = 1.0;
    QVarLengthArray<Pending, 32> m_pending;
};

/// How an SI string begins.
enum class SIStringForm : std::uint8_t
{
    Linear,
    Decibel,   // "dB("
    Logarithm, // "log(", whose parenthesis belongs to the quotient
};

/// The form of the text and the index at which its quotient begins.
SIStringForm formOf(QStringView text, int* quotientStart);

/// Whether a text of that form ends as it must where its quotient has ended.
bool endsWell(SIStringForm form, QStringView text, int quotientEnd);

/// The logarithmic scale of a unit in that form. Of the type only the dimensions count.
double logScaleOf(SIStringForm form, const UnitType& type);

} // namespace Orrery::Internal
