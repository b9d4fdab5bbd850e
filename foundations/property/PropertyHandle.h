#pragma once

#include "orrerycore_export.h"

namespace Orrery {

class AbstractProperty;

namespace Internal {
struct NodeAccess;
struct NodeLife;
} // namespace Internal

/// Tells whether a node still lives: a plain pointer that becomes null when its node is destroyed.
///
/// It keeps nothing alive. The first handle to a node makes a small record, which all further ones share and
/// the last one takes along.
///
/// Cost:   two loads to ask, one allocation for the first handle to a node.
/// Threads: handles to the nodes of a tree belong to the thread that uses the tree.
class ORRERYCORE_EXPORT PropertyHandle
{
public:
    PropertyHandle() = default; ///< follows nothing

    /// Follow `node`; a null node and one that is being destroyed give an empty handle.
    explicit PropertyHandle(const AbstractProperty* node);

    PropertyHandle(const PropertyHandle& other) noexcept; ///< follows the same node
    PropertyHandle(PropertyHandle&& other) noexcept; ///< follows it in place of `other`, which is empty then
    PropertyHandle& operator=(PropertyHandle other) noexcept; ///< follows what `other` follows
    ~PropertyHandle();

    /// The node; null when it was destroyed, when its destruction is under way, and in an empty handle.
    AbstractProperty* Get() const;

    /// Whether this handle has followed a node that is gone now.
    bool IsExpired() const;

private:
    friend struct Internal::NodeAccess;

    Internal::NodeLife* m_life = nullptr;
};

} // namespace Orrery
