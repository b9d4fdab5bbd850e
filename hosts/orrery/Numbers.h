#pragma once

#include <complex>
#include <string>
#include <string_view>

namespace Orrery::Host {

/// A real number as it is typed: "20", "-1.5e3", "+1", "inf". No locale has a say.
///
/// Errors: false, with *value untouched, for anything else.
bool parseNumber(std::string_view text, double* value);

/// A real number or a complex one as it is typed: "20", "-1.5e3", "2i", "1+2i", "3-j". No locale has a say.
///
/// Errors: false, with *value untouched, for anything else.
bool parseComplex(std::string_view text, std::complex<double>* value);

/// The shortest text that reads back as the same number.
std::string shortestText(double value);

/// At most that many significant digits, without zeros at the end.
std::string roundedText(double value, int digits);
std::string roundedText(std::complex<double> value, int digits);

} // namespace Orrery::Host
