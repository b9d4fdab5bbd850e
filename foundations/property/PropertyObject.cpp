#include "foundations/property/PropertyObject.h"

#include "foundations/property/BindReferences_p.h"
#include "foundations/property/CloneRun_p.h"
#include "foundations/property/NodeAccess_p.h"
#include "foundations/property/NumberedChildren_p.h"
#include "foundations/property/PropertyHandle.h"
#include "foundations/property/SimpleProperty.h"
#include "foundations/property/TextCodec_p.h"
#include "foundations/property/TreeWalk_p.h"

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

namespace Orrery {

using Internal::CloneRun;
using Internal::NodeAccess;

PropertyObject::PropertyObject()
{
    m_kind = Kind::Folder;
}

PropertyObject::PropertyObject(const QString& name)
    : AbstractProperty(name)
{
    m_kind = Kind::Folder;
}

PropertyObject::PropertyObject(const PropertyObject& other)
    : AbstractProperty(other)
{
    m_kind = Kind::Folder;
    const auto cloning = std::make_unique<CloneRun>(other, *this);
    cloning->run();
    if (!cloning->isNested())
        ExpectRoomFor(cloning->height());
    Adopt(cloning->takeClones());
    if (!cloning->isNested())
        Internal::bindReferences(*this);
}

PropertyObject& PropertyObject::operator=(const PropertyObject& other)
{
    if (this == &other || m_doomed)
        return *this;
    if (m_parent &&
        Internal::folderDepth(*this) > Internal::folderDepth(other)) // else it fits where the other one fits
        ExpectRoomFor(Internal::folderHeight(other) - 1);
    // First all that may throw; the other folder may be one of those that go, so it isn't touched afterwards.
    const auto cloning = std::make_unique<CloneRun>(other, *this);
    cloning->run();
    if (cloning->targetLives())
        ReplaceChildren(*cloning);
    return *this;
}

// Asked again after the cloning: a DoClone may make more than there is in its source.
void PropertyObject::ExpectRoomFor(int height) const
{
    if (Internal::folderDepth(*this) + height > MaxDepth)
        throw OrreryException(ER_FAILED);
}

void PropertyObject::ReplaceChildren(CloneRun& cloning)
{
    const bool whole = m_parent || !cloning.isNested();
    if (whole)
        ExpectRoomFor(cloning.height());
    const bool fresh = m_name.isEmpty() && !m_parent;
    if (fresh)
        m_name = cloning.sourceName();
    {
        PropertyObject doomed;
        HandChildrenTo(&doomed);
        Adopt(cloning.takeClones());
    }
    if (whole && cloning.targetLives())
        Internal::bindReferences(*this);
    if (!fresh && cloning.targetLives())
        Internal::tellPathChangedBelow(*this);
}

PropertyObject::~PropertyObject()
{
    if (m_parent) {
        Internal::rememberDepartures(*this);
        m_parent->Unlink(m_parent->m_children.find(m_name));
    }
    ExpireHandles();
    DestroyChildren();
    m_kind = Kind::Other;
}

const QString& PropertyObject::StaticType()
{
    static const QString type = QStringLiteral("PropertyObject");
    return type;
}

const QString& PropertyObject::PropertyObjType() const
{
    return StaticType();
}

unsigned int PropertyObject::GetTypeFlags() const
{
    return PropertyTypeFlagObject;
}

void PropertyObject::OnDeserialization() {}

void PropertyObject::OnPathChanged() {}

AbstractProperty* PropertyObject::DoClone() const
{
    return new PropertyObject(*this);
}

int PropertyObject::GetPropertyCount() const
{
    if (!m_doomed)
        return m_children.size();
    const auto gone = std::count(m_children.cbegin(), m_children.cend(), nullptr);
    return m_children.size() - static_cast<int>(gone);
}

AbstractProperty* PropertyObject::GetPropertyPtr(const QString& name)
{
    const auto position = m_children.constFind(name);
    return position == m_children.constEnd() ? nullptr : *position;
}

const AbstractProperty* PropertyObject::GetPropertyConstPtr(const QString& name) const
{
    const auto position = m_children.constFind(name);
    return position == m_children.constEnd() ? nullptr : *position;
}

bool PropertyObject::HasProperty(const QString& name) const
{
    return GetPropertyConstPtr(name) != nullptr;
}

ERESULT PropertyObject::InsertProperty(AbstractProperty* property)
{
    const ERESULT code = CheckInsertion(property);
    if (code < 0)
        return code;
    const Children::iterator place = m_children.lowerBound(property->m_name);
    if (place != m_children.end() && place.key() == property->m_name)
        return ER_ALREADY_EXISTS;
    return InsertAt(place, property);
}

ERESULT PropertyObject::InsertOrReplaceProperty(AbstractProperty* property)
{
    if (property && property->m_parent == this)
        return ER_SUCCESS;
    const ERESULT code = CheckInsertion(property);
    if (code < 0)
        return code;
    const Children::iterator place = m_children.lowerBound(property->m_name);
    if (place != m_children.end() && place.key() == property->m_name)
        return ReplaceBy(property, place);
    return InsertAt(place, property);
}

ERESULT PropertyObject::InsertAt(Children::const_iterator place, AbstractProperty* property)
{
    Internal::rememberLostTargets(*property);
    Link(place, property);
    Internal::tellPathChanged(*property);
    return ER_SUCCESS;
}

ERESULT PropertyObject::ReplaceBy(AbstractProperty* property, Children::iterator former)
{
    const PropertyHandle self(this);
    const PropertyHandle incoming(property);
    Internal::rememberDepartures(**former);
    Destroy(Unlink(former));
    if (!self.Get() || !incoming.Get())
        return ER_FAILED;
    // The destruction may have changed anything here, so all is checked anew.
    return property->m_parent == this ? ER_SUCCESS : InsertProperty(property);
}

ERESULT PropertyObject::DeleteProperty(const QString& name)
{
    const Children::iterator position = m_children.find(name);
    if (position == m_children.end() || !*position)
        return ER_NOT_FOUND;
    Internal::rememberDepartures(**position);
    Destroy(Unlink(position));
    return ER_SUCCESS;
}

ERESULT PropertyObject::RemoveProperty(const QString& name)
{
    AbstractProperty* const child = UnlinkAlive(name);
    if (!child)
        return ER_NOT_FOUND;
    Internal::tellPathChanged(*child);
    return ER_SUCCESS;
}

AbstractProperty* PropertyObject::TakeProperty(const QString& name)
{
    AbstractProperty* const child = UnlinkAlive(name);
    if (!child)
        return nullptr;
    const PropertyHandle handle(child);
    Internal::tellPathChanged(*child);
    return handle.Get() && !child->m_parent ? child : nullptr;
}

void PropertyObject::DeleteProperties()
{
    if (m_doomed) {
        DestroyChildren();
        return;
    }
    PropertyObject doomed;
    HandChildrenTo(&doomed);
}

ERESULT PropertyObject::SetProperty(const QString& name, const BVariant& value)
{
    if (AbstractProperty* const child = GetPropertyPtr(name)) {
        if (!NodeAccess::isSimple(*child))
            return ER_INVALID_ARGUMENT;
        return static_cast<SimpleProperty*>(child)->SetValue(value, IsCellArrayFalse);
    }
    auto child = std::make_unique<SimpleProperty>(name);
    child->SetValue(value, IsCellArrayFalse);
    const ERESULT code = InsertProperty(child.get());
    if (code >= 0)
        static_cast<void>(child.release()); // the folder's now
    return code;
}

ERESULT PropertyObject::SetProperty(const QString& name, const QString& value)
{
    return SetProperty(name, BVariant(Internal::toTextBytes(value)));
}

ERESULT PropertyObject::GetProperty(const QString& name, QString* value) const
{
    if (!value)
        return ER_INVALID_ARGUMENT;
    const AbstractProperty* const child = GetPropertyConstPtr(name);
    if (!child || !NodeAccess::isSimple(*child))
        return ER_NOT_FOUND;
    const BVariant& text = static_cast<const SimpleProperty*>(child)->GetValueRef();
    if (!text.isScalar() || text.getWellKnownType() != Brindle::Quay::WellKnownType::of<std::string>())
        return ER_FAILED;
    *value = Internal::fromTextBytes(*static_cast<const std::string*>(text.constData()));
    return ER_SUCCESS;
}

ERESULT PropertyObject::SetPropertyRef(const QString& name, const AbstractProperty* target)
{
    const PropertyHandle aim(target); // empty for a target that is being destroyed
    if (!aim.Get() || !CanBindChild(name, *target))
        return ER_INVALID_ARGUMENT;
    AbstractProperty* const former = GetPropertyPtr(name);
    if (former && NodeAccess::isReference(*former)) {
        const PropertyHandle self(this);
        auto* const reference = static_cast<PropertyReference*>(former);
        const ERESULT code = reference->SetPropertyRef(target);
        // A reference that answers by other means than its path isn't bound by that; it is replaced below,
        // unless the answer has changed the tree.
        if (code < 0 || reference->Resolve() == target)
            return code;
        if (!self.Get() || !aim.Get() || !CanBindChild(name, *target))
            return ER_FAILED;
    }
    return ReplaceByReference(name, target);
}

bool PropertyObject::CanBindChild(const QString& name, const AbstractProperty& target) const
{
    const AbstractProperty* const former = GetPropertyConstPtr(name);
    return CanReferenceProperty(&target) && !(former && Internal::isSelfOrAbove(*former, target));
}

// The nodes that are called on the way may destroy each other, so each step asks who is still there.
ERESULT PropertyObject::ReplaceByReference(const QString& name, const AbstractProperty* target)
{
    auto fresh = std::make_unique<PropertyReference>(name);
    const PropertyHandle self(this);
    const PropertyHandle handle(fresh.get());
    const PropertyHandle aim(target);
    const ERESULT inserted = InsertOrReplaceProperty(fresh.get());
    if (inserted < 0 && handle.Get())
        return inserted;
    PropertyReference* const reference = fresh.release();
    if (!handle.Get())
        return ER_FAILED;
    const ERESULT code = aim.Get() ? reference->SetPropertyRef(target) : ER_FAILED;
    if (code < 0 && self.Get() && reference->GetParent() == this)
        DeleteProperty(reference->GetName());
    return code;
}

void PropertyObject::GetPropertyList(QList<AbstractProperty*>* list) const
{
    if (list)
        *list = GetPropertyListSorted();
}

QList<AbstractProperty*> PropertyObject::GetPropertyListSorted() const
{
    QList<AbstractProperty*> list;
    list.reserve(m_children.size());
    for (AbstractProperty* const child : m_children) {
        if (child)
            list.append(child);
    }
    return list;
}

// The prefix comes by value because hosts are built against that form.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void PropertyObject::GetPrefixedChildrenProperties(QList<AbstractProperty*>* list, QString prefix) const
{
    if (!list)
        return;
    list->clear();
    if (prefix.isEmpty()) {
        if (m_numbered)
            m_numbered->fill(list);
        return;
    }
    std::vector<std::pair<std::int64_t, AbstractProperty*>> numbered;
    for (auto child = m_children.lowerBound(prefix);
         child != m_children.constEnd() && child.key().startsWith(prefix); ++child) {
        std::int64_t number = 0;
        if (*child && Internal::parseChildNumber(child.key(), prefix.size(), &number))
            numbered.emplace_back(number, *child);
    }
    std::stable_sort(numbered.begin(), numbered.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& entry : numbered)
        list->append(entry.second);
}

AbstractProperty* PropertyObject::lastNumberedChild() const
{
    return m_numbered ? m_numbered->last() : nullptr;
}

ERESULT PropertyObject::nextNumberedChildName(QString* name) const
{
    if (!name)
        return ER_INVALID_ARGUMENT;
    std::int64_t next = 0;
    if (m_numbered && m_numbered->last(&next)) {
        if (next == std::numeric_limits<std::int64_t>::max())
            return ER_FAILED;
        ++next;
    }
    *name = QString::number(qlonglong{next});
    return ER_SUCCESS;
}

bool PropertyObject::CanReferenceProperty(const AbstractProperty* target) const
{
    return target && Internal::canReach(*this, *target);
}

void PropertyObject::Destroy(AbstractProperty* orphan)
{
    // At once, not when the base class's destructor gets to it: those that a derived destructor calls
    // shall not find the node by a handle, nor give it a place in a tree again.
    orphan->ExpireHandles();
    delete orphan;
}

ERESULT PropertyObject::CheckInsertion(const AbstractProperty* property) const
{
    if (!property || property == this)
        return ER_INVALID_ARGUMENT;
    if (property->m_parent)
        return property->m_parent == this ? ER_ALREADY_EXISTS : ER_INVALID_ARGUMENT;
    if (property->m_doomed)
        return ER_INVALID_ARGUMENT;
    if (m_doomed)
        return ER_FAILED;
    const PropertyObject* const folder = NodeAccess::asFolder(*property);
    if (!folder)
        return ER_SUCCESS; // a leaf is no folder of the way, and is above nothing
    if (!folder->m_children.isEmpty() && Internal::isSelfOrAbove(*folder, *this))
        return ER_INVALID_ARGUMENT;
    const int depth = Internal::folderDepth(*this) + Internal::folderHeight(*folder);
    return depth > MaxDepth ? ER_FAILED : ER_SUCCESS;
}

void PropertyObject::Link(Children::const_iterator hint, AbstractProperty* property)
{
    m_children.insert(hint, property->m_name, property);
    property->m_parent = this;
    std::int64_t number = 0;
    if (!Internal::parseChildNumber(property->m_name, 0, &number))
        return;
    if (!m_numbered)
        m_numbered = std::make_unique<Internal::NumberedChildren>();
    m_numbered->add(number, property);
}

AbstractProperty* PropertyObject::Unlink(Children::iterator position)
{
    AbstractProperty* const child = *position;
    std::int64_t number = 0;
    if (m_numbered && Internal::parseChildNumber(child->m_name, 0, &number))
        m_numbered->remove(number, child);
    child->m_parent = nullptr;
    if (m_doomed)
        *position = nullptr; // the walk that destroys the children stands on this map
    else
        m_children.erase(position);
    return child;
}

AbstractProperty* PropertyObject::UnlinkAlive(const QString& name)
{
    const Children::iterator position = m_children.find(name);
    if (position == m_children.end() || !*position)
        return nullptr;
    Internal::rememberDepartures(**position);
    Internal::rememberTargets(**position);
    return Unlink(position);
}

ERESULT PropertyObject::Rename(AbstractProperty* child, const QString& name)
{
    if (m_doomed)
        return ER_FAILED;
    if (m_children.contains(name))
        return ER_ALREADY_EXISTS;
    Unlink(m_children.find(child->m_name));
    child->m_name = name;
    Link(std::as_const(m_children).lowerBound(name), child);
    return ER_SUCCESS;
}

void PropertyObject::Adopt(Clones clones)
{
    for (std::unique_ptr<AbstractProperty>& clone : clones) {
        const QString& name = clone->m_name;
        // Clones come in the order of their names, unless a DoClone has renamed what was still to be cloned.
        const bool last = m_children.isEmpty() || m_children.lastKey() < name;
        if (last || !m_children.contains(name))
            Link(last ? m_children.cend() : std::as_const(m_children).lowerBound(name), clone.release());
    }
}

// The children are orphans of a folder that nobody knows from here on; it destroys them when it goes.
void PropertyObject::HandChildrenTo(PropertyObject* doomed)
{
    for (const AbstractProperty* const child : std::as_const(m_children))
        Internal::rememberDepartures(*child);
    doomed->ExpireHandles();
    doomed->m_children.swap(m_children);
    m_numbered.reset();
    for (AbstractProperty* const child : std::as_const(doomed->m_children))
        child->m_parent = doomed;
}

// Each child is taken off before it is destroyed, so that destructors may destroy or take further ones.
void PropertyObject::DestroyChildren()
{
    m_numbered.reset();
    for (AbstractProperty*& entry : m_children) {
        if (AbstractProperty* const child = std::exchange(entry, nullptr)) {
            child->m_parent = nullptr;
            Destroy(child);
        }
    }
}

} // namespace Orrery
