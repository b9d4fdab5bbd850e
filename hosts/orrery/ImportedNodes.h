#pragma once

#include "foundations/property/PropertyObject.h"
#include "results/Result.h"
#include "units/Units.h"
#include "variables/Variable.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace Orrery::Host {

// What the importers of all kinds of files put into the tree. Each of these throws a Failure when the tree refuses it,
// which a tree that only importers fill never does.

void setText(PropertyObject* folder, const QString& name, const QString& text);

/// One text as a text, several as an array; nothing for none.
void setTexts(PropertyObject* folder, const QString& name, const QStringList& texts);

/// Units of the data, and as its display units the first of the given ones that measure the same. Nothing without units.
void setUnits(Variable* variable, const std::optional<Units>& units, const std::vector<Units>& displayUnits);

/// Let a variable lie over an axis, behind those that it has.
void addAxis(Variable* variable, const Variable* axis);

/// The folder for what has led to the result, which owns it.
PropertyObject* setupFolderOf(Result* result);

/// A new folder in `parent`, which owns it. Hidden, since a listing is for results; whoever looks for it finds it by its
/// path.
PropertyObject* addHiddenFolder(PropertyObject* parent, const QString& name);

} // namespace Orrery::Host
