#pragma once

#include "foundations/variant/BVariant.h"
#include "variables/Variable.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Orrery::Host {

/// Which offsets of a variable are wanted: [begin, end), to the last one without an end.
struct OffsetRange
{
    std::uint64_t begin = 0;
    std::optional<std::uint64_t> end = std::nullopt;
    bool isSingle = false; ///< one offset, given by its number
};

/// "N".
///
/// Errors: Failure (ExitUsage) for anything but a number from 0.
OffsetRange parseOffset(const std::string& text);

/// "A:B", "A:", ":B" or ":".
///
/// Errors: Failure (ExitUsage) for anything else, and when A lies behind B.
OffsetRange parseRange(const std::string& text);

/// Values that were read from a variable, in rows by offset.
struct Selection
{
    Brindle::Quay::BVariant data;
    std::vector<std::uint64_t> dimensions;   ///< as the values are laid out for a person
    std::vector<std::uint64_t> elementShape; ///< of the values at one offset; empty for scalars
    std::uint64_t firstOffset = 0;
    std::uint64_t offsets = 0;
    bool leadsWithOffset = true; ///< the first of `dimensions` counts offsets
};

/// Offsets [begin, end) that a variable has.
struct OffsetSpan
{
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
};

/// What a range means of a variable with that many offsets.
///
/// Errors: Failure for offsets that aren't there.
OffsetSpan spanOf(const OffsetRange& range, std::uint64_t offsets);

/// Reads a variable piece by piece. Stored data, and the result of a function, are taken once and held; of other
/// computed values no more than a piece is computed at a time.
class OffsetReader
{
public:
    /// The variable must outlive the reader.
    ///
    /// Errors: as resultOf() for a function.
    explicit OffsetReader(const Variable& variable);

    std::uint64_t offsets() const { return m_offsets; }

    /// Whether the values are held, and how: in all, and by offset.
    bool isHeld() const { return m_isHeld; }
    const Selection& held() const { return m_held; }

    /// Read offsets [begin, end), of which there must be one at least.
    ///
    /// Errors: Failure when the values can't be computed; the library's exception when they can't be read.
    Selection read(std::uint64_t begin, std::uint64_t end) const;

    /// The same for one offset, whose values are laid out without their axis.
    Selection readOne(std::uint64_t offset) const;

private:
    Selection readComputed(std::uint64_t begin, std::uint64_t end) const;

    const Variable& m_variable;
    std::uint64_t m_offsets = 0;
    std::size_t m_axis = 0;
    bool m_isHeld = false;
    Selection m_held;
};

/// Read the whole of a variable.
///
/// Errors: Failure when the values can't be computed; the library's exception when they can't be read.
Selection selectAll(const Variable& variable);

/// Read some offsets of a variable.
///
/// Errors: Failure for offsets that the variable doesn't have; else as selectAll().
Selection select(const Variable& variable, const OffsetRange& range);

} // namespace Orrery::Host
