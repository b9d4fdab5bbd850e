#pragma once

#include "foundations/property/PropertyObject.h"
#include "tests/support/Variants.h"
#include "units/Units.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace Orrery::UnitsTest {

/// The text of a child, or "(none)" where there is none.
inline QString childText(const PropertyObject& folder, const QString& name)
{
    QString text;
    return folder.GetProperty(name, &text) >= 0 ? text : QStringLiteral("(none)");
}

/// The names of all children, in order.
inline QStringList childNames(const PropertyObject& folder)
{
    QStringList names;
    for (const AbstractProperty* child : folder.GetPropertyListSorted())
        names.append(child->GetName());
    return names;
}

inline Units parse(const char* utf8)
{
    return Units::FromSIString(QString::fromUtf8(utf8));
}

/// scale, offset, logScale.
inline std::vector<double> numbersOf(const Units& units)
{
    return {units.GetScale(), units.GetOffset(), units.GetLogScale()};
}

} // namespace Orrery::UnitsTest
