#pragma once

#include "foundations/property/AbstractProperty.h"
#include "foundations/variant/BVariant.h"
#include "orrerycore_export.h"

#include <QList>
#include <QMap>
#include <QString>

#include <memory>
#include <type_traits>
#include <vector>

namespace Orrery {

using Brindle::Quay::BVariant;

namespace Internal {
class CloneRun;
class NumberedChildren;
} // namespace Internal

/// A folder of the tree: owns its children, each of which has a name of its own.
///
/// Children stand in the order of their names, compared by UTF-16 unit. Children whose names are numbers (ASCII
/// digits only, at most 2^63 - 1) are also kept in numeric order, equal numbers in name order: folders with
/// members "0", "1", ... are read in that order at the cost of their length.
///
/// A tree is at most MaxDepth folders deep, so that whatever descends it may recurse. Operations that take
/// over a node tell it and all its descendants (OnPathChanged) as their last step; nodes that a handler has
/// destroyed or moved meanwhile are passed over, since the move has told them.
///
/// Edge:   a folder whose destruction is under way takes no children: ER_FAILED.
class ORRERYCORE_EXPORT PropertyObject : public AbstractProperty
{
public:
    /// The most folders on the way from a root down to a leaf, the root included.
    static constexpr int MaxDepth = 1000;

    PropertyObject();                             ///< unnamed, empty, without a parent
    explicit PropertyObject(const QString& name); ///< empty, without a parent

    /// Name, flags and clones of the children; no parent.
    ///
    /// Errors: OrreryException with ER_FAILED if a DoClone makes the tree too deep.
    PropertyObject(const PropertyObject& other);

    /// Replace the children by clones of the other folder's; the trees share nothing afterwards. Flags stay,
    /// and the name too unless this folder has neither a name nor a parent; then the other's name is taken
    /// over and nobody is told anything.
    ///
    /// Errors: OrreryException with ER_FAILED if the tree would become too deep; that and an exception out of
    ///         DoClone leave this folder as it was.
    /// Edge:   the other folder may lie in this one, or above it.
    PropertyObject& operator=(const PropertyObject& other);

    static const QString& StaticType(); ///< "PropertyObject"
    const QString& PropertyObjType() const override;
    unsigned int GetTypeFlags() const override;
    void OnDeserialization() override;

    /// Destroys the children.
    ~PropertyObject() override;

    /// A plain folder with clones of the children.
    AbstractProperty* DoClone() const override;

    int GetPropertyCount() const; ///< the number of children; those below them don't count

    /// The child of that name, or null.
    AbstractProperty* GetPropertyPtr(const QString& name);
    const AbstractProperty* GetPropertyConstPtr(const QString& name) const; ///< the child, or null

    /// The child of that name as a T; null for none and for a child of another kind.
    template <class T>
    T* GetPtr(const QString& name)
    {
        return dynamic_cast<T*>(GetPropertyPtr(name));
    }

    bool HasProperty(const QString& name) const; ///< whether there is a child of that name

    /// Add a node under its own name and take it over.
    ///
    /// Errors: the caller still owns the node. ER_INVALID_ARGUMENT for null, a node that has another parent,
    ///         this folder itself or one above it; ER_ALREADY_EXISTS for a name that is taken and for a child
    ///         of this folder; ER_FAILED if the tree would become too deep.
    ERESULT InsertProperty(AbstractProperty* property);

    /// As InsertProperty, but an existing child of that name is destroyed first. A child of this folder is a
    /// success that changes nothing.
    ///
    /// Errors: as InsertProperty, the former child is kept; ER_ALREADY_EXISTS if its destruction has put
    ///         another child in its place, ER_FAILED if it has destroyed this folder or the node.
    ERESULT InsertOrReplaceProperty(AbstractProperty* property);

    /// Take the child of that name out and destroy it; ER_NOT_FOUND without one.
    ERESULT DeleteProperty(const QString& name);

    /// Take the child of that name out; it belongs to the caller, who has a pointer to it already.
    /// ER_NOT_FOUND without one.
    ERESULT RemoveProperty(const QString& name);

    /// Take the child of that name out and hand it over; null without one, and when a handler destroys it.
    AbstractProperty* TakeProperty(const QString& name);

    /// Take all children out and destroy them.
    void DeleteProperties();

    /// Store a value in the SimpleProperty of that name, as an ordinary array, and make that child when it is
    /// missing. The text form stores a text scalar: UTF-8, in which a lone surrogate is kept as the three
    /// bytes that the scheme gives for its number, so that every text comes back as it was.
    ///
    /// Errors: ER_INVALID_ARGUMENT if the child is no SimpleProperty; it is kept.
    ERESULT SetProperty(const QString& name, const BVariant& value);
    ERESULT SetProperty(const QString& name, const QString& value); ///< the text form
    template <class T,
              std::enable_if_t<std::is_arithmetic_v<T> && std::is_constructible_v<BVariant, T>, int> = 0>
    /// For a number or a bool, stored as the scalar of its own type.
    ERESULT SetProperty(const QString& name, T value)
    {
        return SetProperty(name, BVariant(value));
    }

    /// Read the text scalar of the SimpleProperty of that name. Bytes that are no UTF-8 come as U+FFFD.
    ///
    /// Errors: `*value` is untouched. ER_NOT_FOUND without such a child, ER_FAILED if its value is no text
    ///         scalar, ER_INVALID_ARGUMENT for a null `value`.
    ERESULT GetProperty(const QString& name, QString* value) const;

    /// Bind the PropertyReference of that name to the target. It is made when it is missing, and takes the
    /// place of a child of another kind.
    ///
    /// Errors: ER_INVALID_ARGUMENT for a null target, one that is being destroyed, one that can't be
    ///         referenced from here, and one that lies in the child that would have to go; then the former
    ///         child is kept and no new one left. ER_FAILED if code of the host that runs on the way
    ///         destroys the target or this folder, or puts the target out of reach.
    ERESULT SetPropertyRef(const QString& name, const AbstractProperty* target);

    /// Fill the list with the children in the order of their names; former entries go.
    void GetPropertyList(QList<AbstractProperty*>* list) const;

    /// The children in the order of their names.
    QList<AbstractProperty*> GetPropertyListSorted() const;

    /// Fill the list with the children whose names begin with the prefix and go on with a number, ascending by
    /// that number; former entries go.
    ///
    /// Cost:   with the empty prefix the length of the list, whatever else the folder holds.
    void GetPrefixedChildrenProperties(QList<AbstractProperty*>* list, QString prefix) const;

    /// The last child of the list for the empty prefix: the one with the largest number. Null without one.
    ///
    /// Cost:   constant.
    AbstractProperty* lastNumberedChild() const;

    /// The name for the next numbered child: the largest number plus one, "0" without a numbered child.
    ///
    /// Errors: ER_FAILED past the largest number, ER_INVALID_ARGUMENT for null; `*name` is untouched.
    /// Cost:   constant.
    ERESULT nextNumberedChildName(QString* name) const;

    /// Whether a reference held under this folder can be bound to the target now: both are in one tree, or
    /// both trees belong to files. False for null.
    bool CanReferenceProperty(const AbstractProperty* target) const;

protected:
    void OnPathChanged() override;

private:
    friend class AbstractProperty;
    friend struct Internal::NodeAccess;

    using Children = QMap<QString, AbstractProperty*>;
    using Clones = std::vector<std::unique_ptr<AbstractProperty>>;

    static void Destroy(AbstractProperty* orphan);

    void ExpectRoomFor(int height) const;
    void ReplaceChildren(Internal::CloneRun& cloning);
    ERESULT CheckInsertion(const AbstractProperty* property) const;
    ERESULT InsertAt(Children::const_iterator place, AbstractProperty* property);
    ERESULT ReplaceBy(AbstractProperty* property, Children::iterator former);
    bool CanBindChild(const QString& name, const AbstractProperty& target) const;
    ERESULT ReplaceByReference(const QString& name, const AbstractProperty* target);
    void Link(Children::const_iterator hint, AbstractProperty* property);
    AbstractProperty* Unlink(Children::iterator position);
    AbstractProperty* UnlinkAlive(const QString& name);
    ERESULT Rename(AbstractProperty* child, const QString& name);
    void Adopt(Clones clones);
    void HandChildrenTo(PropertyObject* doomed);
    void DestroyChildren();

    Children m_children; // an entry is null when its child went while this folder is being destroyed
    std::unique_ptr<Internal::NumberedChildren> m_numbered; // made for the first numbered child
};

} // namespace Orrery
