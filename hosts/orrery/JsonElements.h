#pragma once

#include "foundations/variant/BVariant.h"
#include "hosts/orrery/ElementText.h"
#include "hosts/orrery/JsonWriter.h"
#include "units/Units.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Orrery::Host {

/// The elements of one array as JSON, in row-major order whatever the ordering of the array.
///
/// Shape:  numbers have the shortest text that reads back as the same number; a complex one is [re, im]; bools are true
///         and false; text is a string, or an object {"base64": "..."} where it is no UTF-8; durations and points in
///         time are strings of their two words, "1:2".
/// Errors: as ElementText.
class JsonElements
{
public:
    explicit JsonElements(const Brindle::Quay::BVariant& array);

    void write(JsonWriter& json, std::uint64_t position);

    /// One item for each index of the first of `dimensions`, nested as the others tell.
    void writeItems(JsonWriter& json, const std::vector<std::uint64_t>& dimensions);

private:
    enum class Kind
    {
        Number,
        Complex,
        Bool,
        Text,
        Words
    };

    void writeLevel(JsonWriter& json, const std::vector<std::uint64_t>& dimensions, std::size_t level,
                    std::uint64_t* position);
    void appendPart(std::string* out);

    ElementText m_elements;
    Kind m_kind;
    std::string m_text;
};

/// The dimensions of an array, as [2, 3].
void writeShape(JsonWriter& json, const std::vector<std::uint64_t>& dimensions);

/// An object that tells a unit, or null without one.
void writeUnits(JsonWriter& json, const std::optional<Units>& units);

/// The numbers of a unit, as items of an object that is open: a value x in it is scale * x + offset in the base unit, or
/// scale * 10^(x / log_scale) + offset if it has a logarithm.
void writeUnitNumbers(JsonWriter& json, const Units& units);

} // namespace Orrery::Host
