#include "hosts/orrery/touchstone/TouchstoneNumbers.h"

#include "hosts/orrery/Numbers.h"

#include <charconv>
#include <cmath>
#include <string>

namespace Orrery::Host {

namespace {

constexpr double s_pi = 3.141592653589793;

// The exponent behind "e" as from_chars has accepted it before.
bool parseExponent(std::string_view text, int* exponent)
{
    if (!text.empty() && text.front() == '+')
        text.remove_prefix(1);
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, *exponent);
    return error == std::errc() && stop == end && std::abs(*exponent) < 100'000;
}

} // namespace

bool parseScaled(std::string_view text, int exponent, double* value)
{
    double plain = 0.0;
    if (!parseNumber(text, &plain))
        return false;
    if (exponent == 0 || !std::isfinite(plain)) {
        *value = plain;
        return true;
    }
    const std::size_t mark = text.find_first_of("eE");
    int given = 0;
    if (mark != std::string_view::npos && !parseExponent(text.substr(mark + 1), &given))
        return false;
    return parseNumber(std::string(text.substr(0, mark)) + 'e' + std::to_string(given + exponent), value);
}

std::complex<double> fromPolar(double magnitude, double degrees)
{
    const double turn = std::fmod(degrees, 360.0); // exact, and keeps the sign
    if (turn == 0.0)
        return {magnitude, 0.0};
    if (turn == 90.0 || turn == -270.0)
        return {0.0, magnitude};
    if (turn == -90.0 || turn == 270.0)
        return {0.0, -magnitude};
    if (turn == 180.0 || turn == -180.0)
        return {-magnitude, 0.0};
    const double radians = turn * (s_pi / 180.0);
    return {magnitude * std::cos(radians), magnitude * std::sin(radians)};
}

double magnitudeOf(double decibel)
{
    return std::pow(10.0, decibel / 20.0);
}

} // namespace Orrery::Host
