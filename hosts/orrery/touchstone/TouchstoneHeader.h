#pragma once

#include "hosts/orrery/touchstone/TouchstoneData.h"
#include "hosts/orrery/touchstone/TouchstoneLines.h"

#include <cstdint>
#include <optional>

namespace Orrery::Host {

/// As many ports as a file may have; each pair of them becomes a variable.
constexpr std::size_t s_mostPorts = 99;

enum class TouchstoneFormat
{
    RealImaginary,
    MagnitudeAngle,
    DecibelAngle,
};

enum class TouchstoneMatrix
{
    Full,
    Lower, ///< a symmetric matrix, of which the upper half isn't there
    Upper,
};

/// How the values are written.
struct TouchstoneHeader
{
    bool isVersion2 = false;
    int unitExponent = 9; ///< frequencies are in 10^unitExponent Hz
    TouchstoneFormat format = TouchstoneFormat::MagnitudeAngle;
    TouchstoneMatrix matrix = TouchstoneMatrix::Full;
    bool is21First = true; ///< of a full two-port matrix, element 21 stands before 12
    double resistance = 50.0;
    std::optional<std::uint64_t> frequencies; ///< as [Number of Frequencies] says
    std::optional<std::uint64_t> noiseFrequencies;
};

/// Read what stands before the values: of version 1 the line of options, of version 2 the keywords up to [Network
/// Data] too. Into `*data` go version, options, parameter, ports, references and information.
///
/// `ports` is the number of ports as far as it is known from outside, which version 1 doesn't tell.
/// Errors: Failure for everything that isn't such a header, and for mixed-mode parameters.
TouchstoneHeader readTouchstoneHeader(TouchstoneLines& lines, std::optional<std::size_t> ports,
                                      TouchstoneData* data);

} // namespace Orrery::Host
