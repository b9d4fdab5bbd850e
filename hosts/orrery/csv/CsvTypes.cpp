#include "hosts/orrery/csv/CsvTypes.h"

#include "hosts/orrery/Numbers.h"

#include <charconv>
#include <cstdint>
#include <limits>

namespace Orrery::Host {

using Brindle::Quay::WellKnownType;

namespace {

constexpr std::size_t s_longestNumber = 400; // what is longer isn't meant as one

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// "-0" is none: as an integer it would lose its sign.
template <class T>
bool isInteger(std::string_view cell)
{
    if (cell == "-0")
        return false;
    if (cell.size() > 1 && cell.front() == '+' && isDigit(cell[1]))
        cell.remove_prefix(1);
    T value = 0;
    const char* const end = cell.data() + cell.size();
    const auto [stop, error] = std::from_chars(cell.data(), end, value);
    return error == std::errc() && stop == end;
}

} // namespace

bool parseCell(std::string_view cell, bool isDecimalComma, double* value)
{
    if (cell.empty()) {
        *value = std::numeric_limits<double>::quiet_NaN();
        return true;
    }
    if (!isDecimalComma)
        return parseNumber(cell, value);
    if (cell.size() > s_longestNumber || cell.find('.') != std::string_view::npos)
        return false;
    std::string number(cell);
    if (const std::size_t comma = number.find(','); comma != std::string::npos)
        number[comma] = '.';
    return parseNumber(number, value);
}

void CsvTypes::addNumber(std::string_view cell, bool isDecimalComma)
{
    if (m_isSigned && !isInteger<std::int64_t>(cell))
        m_isSigned = false;
    if (m_isUnsigned && (cell.front() == '-' || (!m_isSigned && !isInteger<std::uint64_t>(cell))))
        m_isUnsigned = false;
    double value = 0.0;
    if (!m_isSigned && !m_isUnsigned)
        m_isReal = parseCell(cell, isDecimalComma, &value);
}

void CsvTypes::add(std::string_view cell, bool isDecimalComma)
{
    if (cell.empty()) {
        m_isBoolean = m_isSigned = m_isUnsigned = false;
        return;
    }
    m_hasValues = true;
    if (m_isBoolean && cell != "true" && cell != "false")
        m_isBoolean = false;
    if (m_isReal)
        addNumber(cell, isDecimalComma);
}

WellKnownType CsvTypes::type() const
{
    if (!m_hasValues)
        return WellKnownType::of<double>();
    if (m_isBoolean)
        return WellKnownType::of<bool>();
    if (m_isSigned)
        return WellKnownType::of<std::int64_t>();
    if (m_isUnsigned)
        return WellKnownType::of<std::uint64_t>();
    return m_isReal ? WellKnownType::of<double>() : WellKnownType::of<std::string>();
}

} // namespace Orrery::Host
