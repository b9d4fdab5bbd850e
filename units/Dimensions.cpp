#include "units/Dimensions.h"

namespace Orrery {
namespace {

const char* const s_baseSymbols[Dimensions::Count] = {"m", "kg", "s", "A", "K", "mol", "cd", "rad", "sr"};

// All arithmetic of exponents is that of unsigned numbers, so that it wraps around instead of being undefined.
template <class Operation>
Dimensions combined(const Dimensions& a, const Dimensions& b, Operation operation)
{
    std::array<int, Dimensions::Count> result{};
    for (std::size_t i = 0; i < Dimensions::Count; ++i) {
        const auto x = static_cast<unsigned int>(a.Exponents()[i]);
        const auto y = static_cast<unsigned int>(b.Exponents()[i]);
        result[i] = static_cast<int>(operation(x, y));
    }
    return Dimensions(result);
}

void appendPower(QString& product, const char* symbol, qlonglong exponent)
{
    if (!product.isEmpty())
        product += QLatin1Char('*');
    product += QLatin1String(symbol);
    if (exponent >= 2)
        product += QLatin1Char('^') + QString::number(exponent);
}

} // namespace

Dimensions Dimensions::operator^(int n) const
{
    const auto factor = static_cast<unsigned int>(n);
    return combined(*this, *this, [factor](unsigned int x, unsigned int) { return x * factor; });
}

QString Dimensions::SIUnitsString() const
{
    QString numerator;
    QString denominator;
    int denominatorTerms = 0;
    for (std::size_t i = 0; i < Count; ++i) {
        const qlonglong exponent = m_exponents[i]; // wide, so that the smallest one has an absolute value
        if (exponent > 0)
            appendPower(numerator, s_baseSymbols[i], exponent);
        if (exponent < 0) {
            appendPower(denominator, s_baseSymbols[i], -exponent);
            ++denominatorTerms;
        }
    }
    if (numerator.isEmpty())
        numerator = QStringLiteral("1");
    if (denominatorTerms == 0)
        return numerator;
    if (denominatorTerms == 1)
        return numerator + QLatin1Char('/') + denominator;
    return numerator + QLatin1String("/(") + denominator + QLatin1Char(')');
}

Dimensions operator*(const Dimensions& a, const Dimensions& b)
{
    return combined(a, b, [](unsigned int x, unsigned int y) { return x + y; });
}

Dimensions operator/(const Dimensions& a, const Dimensions& b)
{
    return combined(a, b, [](unsigned int x, unsigned int y) { return x - y; });
}

bool operator==(const Dimensions& a, const Dimensions& b)
{
    return a.Exponents() == b.Exponents();
}

bool operator!=(const Dimensions& a, const Dimensions& b)
{
    return !(a == b);
}

} // namespace Orrery
