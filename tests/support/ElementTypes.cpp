#include "tests/support/ElementTypes.h"

#include <cctype>
#include <stdexcept>

namespace TestSupport {
const std::vector<ElementRow>& elementRows()
{
    static const std::vector<ElementRow> rows = {
        {0x0001, "double", ElementKind::Floating, false},
        {0x0002, "float", ElementKind::Floating, false},
        {0x0004, "int8_t", ElementKind::Integer, false},
        {0x0005, "int16_t", ElementKind::Integer, false},
        {0x0006, "int", ElementKind::Integer, false},
        {0x0007, "int64_t", ElementKind::Integer, false},
        {0x0010, "std::string", ElementKind::Text, false},
        {0x0030, "Brindle::Quay::Duration", ElementKind::Time, false},
        {0x0040, "Brindle::Quay::TimePoint", ElementKind::Time, false},
        {0x4003, "bool", ElementKind::Boolean, false},
        {0x4004, "uint8_t", ElementKind::Integer, false},
        {0x4005, "uint16_t", ElementKind::Integer, false},
        {0x4006, "unsigned int", ElementKind::Integer, false},
        {0x4007, "uint64_t", ElementKind::Integer, false},
        {0x8001, "std::complex<double>", ElementKind::Floating, true},
        {0x8002, "std::complex<float>", ElementKind::Floating, true},
        {0x8004, "Brindle::Quay::Complex<signed char,void>", ElementKind::Integer, true},
        {0x8005, "Brindle::Quay::Complex<short,void>", ElementKind::Integer, true},
        {0x8006, "Brindle::Quay::Complex<int,void>", ElementKind::Integer, true},
        {0x8007, "Brindle::Quay::Complex<__int64,void>", ElementKind::Integer, true},
        {0xC003, "Brindle::Quay::Complex<bool,void>", ElementKind::Boolean, true},
        {0xC004, "Brindle::Quay::Complex<unsigned char,void>", ElementKind::Integer, true},
        {0xC005, "Brindle::Quay::Complex<unsigned short,void>", ElementKind::Integer, true},
        {0xC006, "Brindle::Quay::Complex<unsigned int,void>", ElementKind::Integer, true},
        {0xC007, "Brindle::Quay::Complex<unsigned __int64,void>", ElementKind::Integer, true},
    };
    return rows;
}

const ElementRow& elementRow(std::uint16_t code)
{
    for (const ElementRow& row : elementRows())
        if (row.code == code)
            return row;
    throw std::out_of_range("no element type has the code " + std::to_string(code));
}

std::string ElementTypeName::suiteName(std::uint16_t code)
{
    std::string name;
    for (char c : std::string(elementRow(code).name))
        if (std::isalnum(static_cast<unsigned char>(c)) || c == '_')
            name += c;
    return name;
}
} // namespace TestSupport
