#pragma once

#include <string>
#include <string_view>

namespace Orrery::Host {

/// When to print in colour.
enum class ColourUse
{
    Auto, ///< on a terminal that has colours, for people who haven't said that they want none
    Always,
    Never
};

/// Errors: Failure (ExitUsage) for anything but "auto", "always" and "never".
ColourUse parseColourUse(const std::string& text);

/// Whether to print in colour to a file descriptor. With Auto, a NO_COLOR in the environment that isn't empty says no,
/// and so does TERM where it is missing, empty or "dumb".
bool wantsColour(ColourUse use, int descriptor);

/// What a text is; themes of terminals decide what its colour looks like.
enum class Ink
{
    Plain, ///< no colour
    Folder,
    Variable,
    Reference,
    Hidden,
    Heading,
    Units,
    Dim, ///< what helps to read the rest, such as types and offsets
    Added,
    Removed,
    Changed,
    Warning,
    Error
};

/// `text`, which must be safe to print, between the escape sequences of its colour; itself if it is empty or plain.
std::string inked(Ink ink, std::string_view text);

} // namespace Orrery::Host
