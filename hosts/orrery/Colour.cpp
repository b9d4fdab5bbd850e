#include "hosts/orrery/Colour.h"

#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"

#include <unistd.h>

#include <cstdlib>

namespace Orrery::Host {

namespace {

// Of the eight colours that every terminal has. Themes keep them readable.
const char* sequence(Ink ink)
{
    switch (ink) {
    case Ink::Plain:
        break;
    case Ink::Folder:
        return "\x1b[1;34m";
    case Ink::Variable:
        return "\x1b[32m";
    case Ink::Reference:
    case Ink::Units:
        return "\x1b[36m";
    case Ink::Heading:
        return "\x1b[1m";
    case Ink::Hidden:
    case Ink::Dim:
        return "\x1b[2m";
    case Ink::Added:
        return "\x1b[32m";
    case Ink::Removed:
        return "\x1b[31m";
    case Ink::Changed:
        return "\x1b[33m";
    case Ink::Warning:
        return "\x1b[1;33m";
    case Ink::Error:
        return "\x1b[1;31m";
    }
    return "";
}

std::string_view environment(const char* name)
{
    const char* const value = std::getenv(name);
    return value ? value : "";
}

} // namespace

ColourUse parseColourUse(const std::string& text)
{
    if (text == "auto")
        return ColourUse::Auto;
    if (text == "always")
        return ColourUse::Always;
    if (text == "never")
        return ColourUse::Never;
    throw Failure("--color: expected auto, always or never, found " + inQuotes(text), ExitUsage);
}

bool wantsColour(ColourUse use, int descriptor)
{
    if (use != ColourUse::Auto)
        return use == ColourUse::Always;
    const std::string_view terminal = environment("TERM");
    return environment("NO_COLOR").empty() && !terminal.empty() && terminal != "dumb" &&
           ::isatty(descriptor) == 1;
}

std::string inked(Ink ink, std::string_view text)
{
    if (text.empty() || ink == Ink::Plain)
        return std::string(text);
    return sequence(ink) + std::string(text) + "\x1b[0m";
}

} // namespace Orrery::Host
