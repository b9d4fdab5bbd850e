#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace Orrery::Host {

/// Appends a JSON string. Control characters are escaped, those above U+007E too, so that a terminal isn't steered;
/// bytes that are no UTF-8, and halves of surrogate pairs, are U+FFFD.
void appendJsonString(std::string* out, std::string_view text);
void appendJsonString(std::string* out, const QString& text);

/// Appends text that must come back as it is: a string if the bytes are UTF-8, else {"base64": "..."}.
void appendJsonBytes(std::string* out, std::string_view bytes);

/// Appends a number, whose text std::to_chars has made. JSON knows no NaN and no infinity: these are the strings "NaN",
/// "Infinity" and "-Infinity". A negative zero is -0.0, which readers don't take for an integer.
void appendJsonNumber(std::string* out, std::string_view number);
void appendJsonNumber(std::string* out, double number);

} // namespace Orrery::Host
