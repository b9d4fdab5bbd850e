#pragma once

#include <complex>
#include <string_view>

namespace Orrery::Host {

/// The number times a power of ten, rounded once: 1.1 with an exponent of 9 is the double next to 1.1e9.
///
/// Errors: false, with *value untouched, for text that is no number, and for a product that no double holds.
bool parseScaled(std::string_view text, int exponent, double* value);

/// The complex number of a magnitude and an angle in degrees.
///
/// Edge: exact for multiples of 90 degrees, as the parts that are 0 there would else be 1e-16 of the magnitude.
std::complex<double> fromPolar(double magnitude, double degrees);

/// 10^(decibel/20): 0 for minus infinity.
double magnitudeOf(double decibel);

} // namespace Orrery::Host
