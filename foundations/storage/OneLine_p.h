#pragma once

#include <QString>

namespace Orrery {

/// The text with its line breaks and other control characters spelt out as "\xNN": a path or a name may hold
/// any, and a reason for a person is one line.
QString OneLine(const QString& text);

} // namespace Orrery
