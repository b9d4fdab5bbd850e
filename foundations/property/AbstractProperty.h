#pragma once

#include "foundations/property/ErrorResult.h"
#include "orrerycore_export.h"

#include <QString>

#include <cstdint>

namespace Orrery {

class DataFile;
class PropertyObject;

namespace Internal {
struct NodeAccess;
struct NodeLife;
} // namespace Internal

/// Bits of the word that GetPropertyFlags() returns.
enum PropertyFlags : unsigned int
{
    PropertyFlagReadOnly = 1,    ///< the value is not to be changed; saved and shown, enforced by nothing
    PropertyFlagHidden = 2,      ///< the node is not shown
    PropertyFlagSerializable = 4 ///< the node is written when the tree is saved
};

/// Bits of the word that GetTypeFlags() returns: the kind of a node without a cast.
enum PropertyTypeFlags : unsigned int
{
    PropertyTypeFlagObject = 1,     ///< a folder
    PropertyTypeFlagVariable = 2,   ///< a folder that is a variable
    PropertyTypeFlagMetadata = 4,   ///< a folder that describes other data
    PropertyTypeFlagFileRoot = 8,   ///< the root folder of a data file
    PropertyTypeFlagReference = 16, ///< stands for another node
    PropertyTypeFlagSimple = 32     ///< a leaf with a value
};

/// One named node of the tree of properties; what is saved and loaded is such a tree.
///
/// A node belongs to its parent, and to whoever made it as long as it has none. Destroying a node that still
/// has a parent takes it out of the parent first. Operations that call a virtual operation of a node
/// (OnPathChanged, DoClone, a destructor) bear that it inserts, deletes, renames and moves nodes of the same
/// tree; a destructor that does so must not put the dying node back.
///
/// Threads: no lock; one tree is used by one thread at a time.
class ORRERYCORE_EXPORT AbstractProperty
{
public:
    AbstractProperty& operator=(const AbstractProperty&) = delete; ///< each class assigns in its own way

    static const QString& StaticType(); ///< "AbstractProperty"; no node is saved under it

    /// The type name of the concrete class, under which it is saved.
    virtual const QString& PropertyObjType() const;

    /// The kind of the node, as PropertyTypeFlags.
    virtual unsigned int GetTypeFlags() const;

    /// Called once on an object when its own children have been loaded.
    virtual void OnDeserialization();

    virtual ~AbstractProperty();

    /// A new object of the concrete class with the content of this one, owned by the caller. Clone() adds the
    /// name and the flags. An exception out of it passes through every operation that clones, and leaves
    /// nothing behind.
    virtual AbstractProperty* DoClone() const = 0;

private:
    /// Called when the path of this node has changed: it or a folder above it was renamed, inserted, or taken
    /// out of a folder and left alive.
    virtual void OnPathChanged();

public:
    /// A copy with the name and the flags of this node and without a parent, owned by the caller; null when
    /// DoClone makes none, or one in a folder that a handler destroys or moves while it is taken out.
    AbstractProperty* Clone() const;

    QString GetName() const { return m_name; } ///< unique among its siblings; may be empty

    /// Rename the node and tell it and all its descendants.
    ///
    /// Errors: ER_ALREADY_EXISTS if a sibling has the name, ER_FAILED while the folder above is destroyed;
    ///         the node keeps its name.
    /// Edge:   its own name again is a success that tells nobody. Any text is a name.
    ERESULT SetName(const QString& name);

    /// The folder that owns this node; null outside a tree.
    PropertyObject* GetParent() const { return m_parent; }

    /// The path from the root to this node, with names encoded as PropertyPath.h tells; "/" for a root.
    QString GetFullPath() const;

    /// The topmost node above this one, which is this node itself when it has no parent. Never null.
    const AbstractProperty* GetRootProperty() const;

    /// The file that the tree belongs to; null without a file root, and for a file root without a file.
    const DataFile* GetDataFile() const;

    /// Whether the root of the tree is a file's root folder.
    bool HasFileRoot() const;

    unsigned int GetPropertyFlags() const { return m_propertyFlags; }      ///< as PropertyFlags
    void SetPropertyFlags(unsigned int flags) { m_propertyFlags = flags; } ///< replaces all; nobody is told

    bool IsReadOnly() const { return (m_propertyFlags & PropertyFlagReadOnly) != 0; } ///< a hint for editors
    bool IsHidden() const { return (m_propertyFlags & PropertyFlagHidden) != 0; }     ///< a hint for views
    /// Whether the node is written when the tree is saved.
    bool IsSerializable() const { return (m_propertyFlags & PropertyFlagSerializable) != 0; }

    /// Set or clear PropertyFlagSerializable; a new node has it.
    void SetSerializable(bool serializable);

    bool IsPropertyObject() const { return (GetTypeFlags() & PropertyTypeFlagObject) != 0; } ///< a folder
    bool IsVariable() const { return (GetTypeFlags() & PropertyTypeFlagVariable) != 0; }     ///< a Variable
    bool IsMetadata() const { return (GetTypeFlags() & PropertyTypeFlagMetadata) != 0; }     ///< a Metadata
    bool IsFileRoot() const { return (GetTypeFlags() & PropertyTypeFlagFileRoot) != 0; } ///< a file's root
    /// Whether it is a PropertyReference.
    bool IsPropertyReference() const { return (GetTypeFlags() & PropertyTypeFlagReference) != 0; }
    /// Whether it is a SimpleProperty.
    bool IsSimpleProperty() const { return (GetTypeFlags() & PropertyTypeFlagSimple) != 0; }

protected:
    AbstractProperty();                             ///< unnamed, serializable, without a parent
    explicit AbstractProperty(const QString& name); ///< named, serializable, without a parent

    /// Copies the name and the flags. The copy has no parent.
    AbstractProperty(const AbstractProperty& other);

    /// Let no handle and no reference answer with this node any more. For the destructor of a class that calls
    /// out before it is done: whoever is called can't reach the dying node through a PropertyHandle then.
    void ExpireHandles();

private:
    friend class PropertyObject;
    friend struct Internal::NodeAccess;

    // The class of ours that a node derives from, which no override can misstate.
    enum class Kind : std::uint8_t
    {
        Other,
        Folder,
        Simple,
        Reference
    };

    QString m_name;
    std::uint32_t m_propertyFlags = PropertyFlagSerializable;
    PropertyObject* m_parent = nullptr;
    mutable Internal::NodeLife* m_life = nullptr; // there is one while handles to this node exist
    Kind m_kind = Kind::Other;
    bool m_doomed = false;                  // its destruction is under way
    mutable std::uint32_t m_treeNumber = 0; // of the tree below a root, once somebody has left it
};

} // namespace Orrery
