#pragma once

#include "foundations/property/PropertyHandle.h"
#include "orrerycore_export.h"

#include <QString>

#include <cstddef>
#include <memory>
#include <typeinfo>
#include <vector>

namespace Orrery {

class AbstractProperty;
class PropertyObject;

namespace Internal {

/// Whether no code of a host takes part when a certain folder is cloned. Its children don't count.
using ClonesAlone = bool (*)(const PropertyObject& folder);

/// Let `clonesAlone` tell of folders of the class `type`, and not of those derived from it, what CloneRun can't know.
///
/// For classes of this system above this library, once each, when their library is loaded. Returns whether there was
/// room.
ORRERYCORE_EXPORT bool trustClonesOf(const std::type_info& type, ClonesAlone clonesAlone);

/// Clones the children of a folder, calling the DoClone of each, which may change the folder at will.
///
/// Clones nest as deep as the tree. What one level needs is therefore kept in this object, on the heap, and only
/// the loop itself stands on the stack.
///
/// Threads: children that only this system's code clones are merely read, so that several threads may clone one folder
///          of such children at once. Notes are made at children of any other kind.
class CloneRun
{
public:
    using Clones = std::vector<std::unique_ptr<AbstractProperty>>;

    /// Takes note of the children that stand in `source` now, and of its name.
    CloneRun(const PropertyObject& source, const PropertyObject& target);
    ~CloneRun();
    CloneRun(const CloneRun&) = delete;
    CloneRun& operator=(const CloneRun&) = delete;

    /// Clone them, in their order. Those that are gone or moved when their turn comes are left out.
    void run();

    Clones takeClones();

    /// Whether the source is cloned just now as the child of another run. Then that run sees to the depth and to
    /// the references of the whole, which is done once that way and not anew at every level.
    bool isNested() const { return m_nested; }

    /// How many folders stand on the longest way down through the clones.
    int height() const;
    const QString& sourceName() const { return m_sourceName; }

    /// Whether the folder that the clones are made for still lives.
    bool targetLives() const { return !m_watchesTarget || m_target.Get() != nullptr; }

private:
    struct Child
    {
        const AbstractProperty* node;
        PropertyHandle handle; // empty unless the children are watched
    };

    const AbstractProperty* next();
    void keep(AbstractProperty* clone);

    const PropertyObject* m_source;              // only compared
    const AbstractProperty* m_current = nullptr; // the child whose turn it is; only compared
    bool m_nested;
    bool m_watchesChildren; // code of a host runs while they are cloned, and may destroy any of them
    bool m_watchesTarget;   // that, or while its former children go
    QString m_sourceName;
    PropertyHandle m_target;
    std::vector<Child> m_children;
    std::size_t m_next = 0;
    Clones m_clones;
};

} // namespace Internal
} // namespace Orrery
