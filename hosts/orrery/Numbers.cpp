#include "hosts/orrery/Numbers.h"

#include <charconv>
#include <cmath>

namespace Orrery::Host {

namespace {

/// Takes a number off the front of the text, with the sign that may stand before it. False, with nothing changed,
/// if there is none.
bool takeNumber(std::string_view* text, double* number)
{
    const bool hasPlus = !text->empty() && text->front() == '+';
    const char* const first = text->data() + (hasPlus ? 1 : 0);
    const char* const last = text->data() + text->size();
    if (hasPlus && first != last && *first == '-')
        return false;
    double read = 0.0;
    const auto [end, error] = std::from_chars(first, last, read);
    if (error != std::errc())
        return false;
    *number = read;
    text->remove_prefix(static_cast<std::size_t>(end - text->data()));
    return true;
}

bool isImaginaryUnit(std::string_view text)
{
    return text == "i" || text == "j";
}

/// The number before an "i", which may be left out: "i", "-i", "+2i". False, with nothing changed, for any other text.
bool parseImaginary(std::string_view text, double* number)
{
    const bool hasSign = !text.empty() && (text.front() == '+' || text.front() == '-');
    if (isImaginaryUnit(hasSign ? text.substr(1) : text)) {
        *number = text.front() == '-' ? -1.0 : 1.0;
        return true;
    }
    double read = 0.0;
    if (!takeNumber(&text, &read) || !isImaginaryUnit(text))
        return false;
    *number = read;
    return true;
}

template <class... Format>
std::string textOf(double value, Format... format)
{
    char buffer[64];
    const auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, value, format...);
    return error == std::errc() ? std::string(buffer, end) : std::string();
}

} // namespace

bool parseNumber(std::string_view text, double* value)
{
    double read = 0.0;
    if (!takeNumber(&text, &read) || !text.empty())
        return false;
    *value = read;
    return true;
}

bool parseComplex(std::string_view text, std::complex<double>* value)
{
    double real = 0.0;
    double imaginary = 0.0;
    if (!parseImaginary(text, &imaginary)) {
        if (!takeNumber(&text, &real))
            return false;
        const bool hasSign = !text.empty() && (text.front() == '+' || text.front() == '-');
        if (!text.empty() && !(hasSign && parseImaginary(text, &imaginary)))
            return false;
    }
    *value = {real, imaginary};
    return true;
}

std::string shortestText(double value)
{
    return textOf(value);
}

std::string roundedText(double value, int digits)
{
    // Read back and written again: that has the fewest digits, and no zeros at the end.
    const std::string rounded = textOf(value, std::chars_format::scientific, digits - 1);
    double number = value;
    std::from_chars(rounded.data(), rounded.data() + rounded.size(), number);
    return textOf(number);
}

std::string roundedText(std::complex<double> value, int digits)
{
    const std::string imaginary = roundedText(value.imag(), digits);
    const bool hasSign = imaginary.front() == '-';
    return roundedText(value.real(), digits) + (hasSign ? "" : "+") + imaginary + "i";
}

} // namespace Orrery::Host
