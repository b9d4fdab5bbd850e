#pragma once

#include "foundations/property/AbstractProperty.h"
#include "foundations/property/NodeLife_p.h"
#include "foundations/property/PropertyHandle.h"
#include "foundations/property/PropertyObject.h"
#include "foundations/property/PropertyReference.h"
#include "foundations/storage/DataFile.h"

namespace Orrery::Internal {

/// The door to the inside of nodes for the few helpers that walk a tree.
struct NodeAccess
{
    using Children = PropertyObject::Children;

    static const QString& name(const AbstractProperty& node) { return node.m_name; }
    static const Children& children(const PropertyObject& folder) { return folder.m_children; }
    static NodeLife* life(const AbstractProperty& node) { return node.m_life; }
    static NodeLife* life(const PropertyHandle& handle) { return handle.m_life; }
    static bool isDoomed(const AbstractProperty& node) { return node.m_doomed; }
    static void setLife(const AbstractProperty& node, NodeLife* life) { node.m_life = life; }
    static void tellPathChanged(AbstractProperty& node) { node.OnPathChanged(); }

    /// What tells the tree below this root from all others of the process; 0 as long as nobody has left it. An
    /// address wouldn't do, since it is used again.
    static std::uint32_t treeNumber(const AbstractProperty& root) { return root.m_treeNumber; }
    static void setTreeNumber(const AbstractProperty& root, std::uint32_t number)
    {
        root.m_treeNumber = number;
    }

    /// By the class itself, which no override of GetTypeFlags can misstate; null for another kind.
    static PropertyObject* asFolder(AbstractProperty& node)
    {
        return node.m_kind == AbstractProperty::Kind::Folder ? static_cast<PropertyObject*>(&node) : nullptr;
    }
    static const PropertyObject* asFolder(const AbstractProperty& node)
    {
        return node.m_kind == AbstractProperty::Kind::Folder ? static_cast<const PropertyObject*>(&node)
                                                             : nullptr;
    }
    static bool isSimple(const AbstractProperty& node)
    {
        return node.m_kind == AbstractProperty::Kind::Simple;
    }
    static bool isReference(const AbstractProperty& node)
    {
        return node.m_kind == AbstractProperty::Kind::Reference;
    }
    static void markSimple(AbstractProperty& node) { node.m_kind = AbstractProperty::Kind::Simple; }
    static void markReference(AbstractProperty& node) { node.m_kind = AbstractProperty::Kind::Reference; }
    static void unmark(AbstractProperty& node) { node.m_kind = AbstractProperty::Kind::Other; }

    /// The type of a file, as far as it is known while the file is being destroyed and can't be asked.
    static QString fileType(const DataFile& file) { return file.KnownFileType(); }

    static void rememberLostTarget(const AbstractProperty& reference)
    {
        static_cast<const PropertyReference&>(reference).RememberLostTarget();
    }
    static void bindByPath(const AbstractProperty& reference)
    {
        static_cast<const PropertyReference&>(reference).BindByPath();
    }
    static void rememberPath(const AbstractProperty& reference)
    {
        static_cast<const PropertyReference&>(reference).RememberPath();
    }
};

} // namespace Orrery::Internal
