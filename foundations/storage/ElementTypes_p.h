#pragma once

#include "foundations/variant/BVariant.h"

#include <cstdint>

namespace Orrery {

/// What a data file has to know of the element types that a value can have.
namespace ElementTypes {

/// Code of text, the one element type whose elements differ in length.
constexpr std::uint16_t TextCode = 16;

/// Whether a value of this element type can be saved: the 25 element types, but no run-time type.
bool IsKnown(std::uint16_t code);

/// Bytes of one element; 0 for text and for a code that isn't known.
std::uint64_t Size(std::uint16_t code);

/// Whether `count` elements at `data` are values of their type: a truth value of another byte than 0 or 1 isn't
/// one, and reading it would be undefined.
bool AreSound(std::uint16_t code, const void* data, std::uint64_t count);

/// A scalar of a known type other than text, from the two words of a catalogue row.
Brindle::Quay::BVariant MakeScalar(std::uint16_t code, const std::uint64_t (&words)[2],
                                   Brindle::Quay::DataOrdering ordering);

} // namespace ElementTypes

} // namespace Orrery
