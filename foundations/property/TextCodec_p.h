#pragma once

#include <QString>

#include <string>

namespace Orrery::Internal {

/// The bytes of a text: UTF-8, in which a lone surrogate becomes the three bytes of its number.
std::string toTextBytes(const QString& text);

/// The text of such bytes, exactly; other bytes that are no UTF-8 become U+FFFD. A byte order mark is text.
QString fromTextBytes(const std::string& bytes);

} // namespace Orrery::Internal
