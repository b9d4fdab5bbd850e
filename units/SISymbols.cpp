#include "units/SISymbols_p.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <string>
#include <tuple>

namespace Orrery::Internal {
namespace {

constexpr char16_t s_micro = u'\u00B5';
constexpr char16_t s_omega = u'\u03A9';

int lengthOf(const char16_t* symbol)
{
    return static_cast<int>(std::char_traits<char16_t>::length(symbol));
}

} // namespace

SISymbolTable::SISymbolTable()
    : m_prefixes{{
          {u"Y", u"yatto", 24},  {u"Z", u"zetta", 21},      {u"E", u"exa", 18},    {u"P", u"peta", 15},
          {u"T", u"tera", 12},   {u"G", u"giga", 9},        {u"M", u"mega", 6},    {u"k", u"kilo", 3},
          {u"h", u"hecto", 2},   {u"da", u"deca", 1},       {u"d", u"deci", -1},   {u"c", u"centi", -2},
          {u"m", u"milli", -3},  {u"\u00B5", u"micro", -6}, {u"n", u"nano", -9},   {u"p", u"pico", -12},
          {u"f", u"femto", -15}, {u"a", u"atto", -18},      {u"z", u"zetto", -21}, {u"y", u"yacto", -24},
      }}
    , m_units{{
          {u"m", u"meters", &UnitType::length, 1.0},
          {u"g", u"grams", &UnitType::mass, 0.001},
          {u"s", u"seconds", &UnitType::time, 1.0},
          {u"A", u"amperes", &UnitType::electricCurrent, 1.0},
          {u"K", u"kelvins", &UnitType::thermodynamicTemperature, 1.0},
          {u"mol", u"moles", &UnitType::amountOfSubstance, 1.0},
          {u"cd", u"candelas", &UnitType::luminousIntensity, 1.0},
          {u"Hz", u"hertz", &UnitType::frequency, 1.0},
          {u"N", u"newtons", &UnitType::force, 1.0},
          {u"Pa", u"pascals", &UnitType::pressure, 1.0},
          {u"J", u"joules", &UnitType::energy, 1.0},
          {u"W", u"watts", &UnitType::power, 1.0},
          {u"C", u"coulombs", &UnitType::electricCharge, 1.0},
          {u"V", u"volts", &UnitType::electricPotential, 1.0},
          {u"F", u"farads", &UnitType::electricCapacitance, 1.0},
          {u"\u03A9", u"ohms", &UnitType::electricResistance, 1.0},
          {u"S", u"siemens", &UnitType::conductance, 1.0},
          {u"Wb", u"webers", &UnitType::magneticFlux, 1.0},
          {u"T", u"teslas", &UnitType::magneticFluxDensity, 1.0},
          {u"H", u"henries", &UnitType::inductance, 1.0},
          {u"lm", u"lumens", &UnitType::luminousFlux, 1.0},
          {u"lx", u"lux", &UnitType::illuminance, 1.0},
          {u"Bq", u"becquerels", &UnitType::radioactivity, 1.0},
          {u"Gy", u"grays", &UnitType::absorbedDose, 1.0},
          {u"Sv", u"seiverts", &UnitType::equivalentDose, 1.0},
          {u"kat", u"katals", &UnitType::catalyticActivity, 1.0},
          {u"l", u"liters", &UnitType::volume, 0.001},
          {u"L", u"liters", &UnitType::volume, 0.001},
          {u"rad", u"radians", &UnitType::planeAngle, 1.0},
          {u"deg", u"degrees", &UnitType::planeAngle, 0.017453292519943295}, // pi / 180
          {u"sr", u"steradians", &UnitType::solidAngle, 1.0},
      }}
{
    indexPrefixes();
    indexUnits();
}

SISymbol SISymbolTable::match(QStringView text, int at) const
{
    SISymbol best;
    if (at >= text.size())
        return best;
    considerUnit(text, at, nullptr, 0, &best);
    const int letter = letterOf(text[at].unicode());
    if (letter < 0)
        return best;
    if (const SiPrefixRow* const prefix = m_shortPrefixes[static_cast<std::size_t>(letter)])
        considerUnit(text, at, prefix, 1, &best);
    if (text[at] == u'd' && at + 1 < text.size() && text[at + 1] == u'a')
        considerUnit(text, at, m_deca, 2, &best);
    return best;
}

void SISymbolTable::considerUnit(QStringView text, int at, const SiPrefixRow* prefix, int prefixLength,
                                 SISymbol* best) const
{
    const int left = static_cast<int>(text.size()) - at - prefixLength;
    if (left <= 0)
        return;
    const QChar* const start = text.data() + at + prefixLength;
    const int letter = letterOf(start->unicode());
    if (letter < 0)
        return;
    const Span span = m_unitsByLetter[static_cast<std::size_t>(letter)];
    for (std::size_t i = span.begin; i < span.end; ++i) {
        const SiUnitRow& row = m_units[m_unitOrder[i]];
        const int length = m_unitLengths[i];
        if (length > left || !std::equal(row.symbol, row.symbol + length, start))
            continue;
        if (prefixLength + length > best->length)
            *best = {prefixLength + length, prefix, &row};
        return; // the longest comes first
    }
}

int SISymbolTable::letterOf(char16_t unit)
{
    if (unit < 128)
        return unit;
    if (unit == s_micro)
        return 128;
    return unit == s_omega ? 129 : -1;
}

void SISymbolTable::indexPrefixes()
{
    for (SiPrefixRow& row : m_prefixes) {
        row.factor = std::pow(10.0, row.exponent);
        if (lengthOf(row.symbol) == 1)
            m_shortPrefixes[static_cast<std::size_t>(letterOf(row.symbol[0]))] = &row;
        else
            m_deca = &row;
    }
}

void SISymbolTable::indexUnits()
{
    std::iota(m_unitOrder.begin(), m_unitOrder.end(), std::uint8_t{0});
    const auto rank = [this](std::uint8_t i) {
        return std::make_tuple(letterOf(m_units[i].symbol[0]), -lengthOf(m_units[i].symbol));
    };
    std::sort(m_unitOrder.begin(), m_unitOrder.end(),
              [&rank](std::uint8_t a, std::uint8_t b) { return rank(a) < rank(b); });
    for (std::size_t i = 0; i < m_unitOrder.size(); ++i) {
        const char16_t* const symbol = m_units[m_unitOrder[i]].symbol;
        m_unitLengths[i] = static_cast<std::uint8_t>(lengthOf(symbol));
        Span& span = m_unitsByLetter[static_cast<std::size_t>(letterOf(symbol[0]))];
        if (span.end == 0)
            span.begin = static_cast<std::uint8_t>(i);
        span.end = static_cast<std::uint8_t>(i + 1);
    }
}

} // namespace Orrery::Internal
