#pragma once

#include "foundations/property/AbstractProperty.h"
#include "foundations/property/PropertyHandle.h"

#include <QList>

#include <cstddef>
#include <vector>

namespace Orrery {

/// Handles to the nodes of a list, for a walk that calls code of a host: what that destroys is passed over.
inline std::vector<PropertyHandle> snapshotOf(const QList<AbstractProperty*>& nodes)
{
    std::vector<PropertyHandle> snapshot;
    snapshot.reserve(static_cast<std::size_t>(nodes.size()));
    for (const AbstractProperty* node : nodes)
        snapshot.emplace_back(node);
    return snapshot;
}

} // namespace Orrery
