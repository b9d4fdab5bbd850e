#pragma once

#include "units/Dimensions.h"

#include <QStringView>

#include <array>
#include <cstdint>

namespace Orrery::Internal {

struct SiPrefixRow
{
    const char16_t* symbol;
    const char16_t* name; // for whoever reads the table
    int exponent;         // of ten
    double factor = 1.0;  // ten to the power of the exponent
};

struct SiUnitRow
{
    const char16_t* symbol;
    const char16_t* name;
    const UnitType* type; // only its dimensions count
    double scale;         // to the SI base of the type
};

/// What SISymbolTable::match has found.
struct SISymbol
{
    int length = 0; // in code units, prefix included; 0 for none
    const SiPrefixRow* prefix = nullptr;
    const SiUnitRow* unit = nullptr;
};

/// The prefixes and unit symbols of SI strings. Made once, when the library is loaded, after the unit types.
class SISymbolTable
{
public:
    SISymbolTable();

    using Prefixes = std::array<SiPrefixRow, 20>;
    using Units = std::array<SiUnitRow, 31>;

    const Prefixes& prefixes() const { return m_prefixes; }
    const Units& units() const { return m_units; }

    /// The longest symbol, with a prefix or without one, that the text begins with from `at` on.
    ///
    /// No symbol can be read in two ways: "cd", "Pa", "mol" and "kat" are units, since what would follow the
    /// prefix is none; "dam" is the decametre, since there is no unit "am".
    SISymbol match(QStringView text, int at) const;

    static const SISymbolTable s_instance;

private:
    static constexpr int LetterCount = 128 + 2; // ASCII, micro and omega

    struct Span
    {
        std::uint8_t begin = 0;
        std::uint8_t end = 0;
    };

    static int letterOf(char16_t unit);
    void indexPrefixes();
    void indexUnits();
    void considerUnit(QStringView text, int at, const SiPrefixRow* prefix, int prefixLength,
                      SISymbol* best) const;

    Prefixes m_prefixes;
    Units m_units;
    std::array<const SiPrefixRow*, LetterCount> m_shortPrefixes{}; // those of one letter, by it
    const SiPrefixRow* m_deca = nullptr;                           // the one of two letters
    std::array<std::uint8_t, 31> m_unitOrder{};                    // by first letter, the longest first
    std::array<std::uint8_t, 31> m_unitLengths{};
    std::array<Span, LetterCount> m_unitsByLetter{}; // spans of m_unitOrder
};

} // namespace Orrery::Internal
