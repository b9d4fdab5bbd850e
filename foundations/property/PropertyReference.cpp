#include "foundations/property/PropertyReference.h"

#include "foundations/property/NodeAccess_p.h"
#include "foundations/property/PropertyPath.h"
#include "foundations/property/TreeWalk_p.h"
#include "foundations/storage/DataFile.h"
#include "foundations/storage/ReferencedFiles_p.h"

#include <QFileInfo>
#include <QStringList>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <utility>

namespace Orrery {

using Internal::NodeAccess;
using Internal::NodeLife;

namespace {

std::atomic<PropertyReference::ExternalResolver> s_externalResolver{&ReferencedFiles::Resolve};

bool areInOneTree(const AbstractProperty& a, const AbstractProperty& b)
{
    return a.GetRootProperty() == b.GetRootProperty();
}

int depthOf(const AbstractProperty& node)
{
    int depth = 0;
    for (const AbstractProperty* above = node.GetParent(); above; above = above->GetParent())
        ++depth;
    return depth;
}

// As Property::GetRelativePath of the two full paths, which need not be built for that.
QString relativePath(const AbstractProperty& fromNode, const AbstractProperty& toNode)
{
    const AbstractProperty* from = &fromNode;
    const AbstractProperty* to = &toNode;
    int ups = depthOf(*from);
    int downs = depthOf(*to);
    const int common = std::min(ups, downs);
    QStringList steps;
    const auto goUp = [&] {
        steps.append(QStringLiteral(".."));
        from = from->GetParent();
    };
    QStringList below;
    const auto goDown = [&] {
        below.prepend(Property::EncodeName(to->GetName()));
        to = to->GetParent();
    };
    for (; ups > common; --ups)
        goUp();
    for (; downs > common; --downs)
        goDown();
    while (from != to) {
        goUp();
        goDown();
    }
    steps += below;
    return steps.isEmpty() ? QStringLiteral(".") : steps.join(QLatin1Char('/'));
}

QString pathOf(const DataFile* file)
{
    return file ? file->GetPath() : QString();
}

QString typeOf(const DataFile* file)
{
    return file ? NodeAccess::fileType(*file) : QString();
}

PropertyReference::TargetFile placeOf(const DataFile* file)
{
    if (!file)
        return {};
    return {file->GetPath(), QString(), NodeAccess::fileType(*file), file->GetFileUid()};
}

// Without a file's path there is no way back into the other tree: an absolute path alone would be looked up in
// the tree of the reference.
bool hasFilePath(const AbstractProperty& target)
{
    return !pathOf(target.GetDataFile()).isEmpty();
}

} // namespace

PropertyReference::PropertyReference()
{
    NodeAccess::markReference(*this);
}

PropertyReference::PropertyReference(const QString& name)
    : AbstractProperty(name)
{
    NodeAccess::markReference(*this);
}

PropertyReference::PropertyReference(const PropertyReference& other)
    : AbstractProperty(other)
{
    NodeAccess::markReference(*this);
    *this = other;
}

PropertyReference& PropertyReference::operator=(const PropertyReference& other)
{
    if (this == &other)
        return *this;
    if (GetParent()) {
        // Where that takes a look into another file, code of a host runs, which may destroy both.
        const PropertyHandle self(this);
        const PropertyHandle source(&other);
        const AbstractProperty* const target = other.Target();
        if (self.IsExpired() || SetPropertyRef(target) >= 0 || source.IsExpired())
            return *this;
    }

    other.RememberPath();
    RestorePath(other.m_path, other.m_file);
    if (m_file.path.isEmpty() && areInOneTree(*this, other)) {
        const QString place = Property::ResolvePath(other.GetFullPath(), m_path);
        m_path = place.isEmpty() ? m_path : Property::GetRelativePath(GetFullPath(), place);
    }
    return *this;
}

PropertyReference::~PropertyReference()
{
    NodeAccess::unmark(*this);
}

const QString& PropertyReference::StaticType()
{
    static const QString type = QStringLiteral("PropertyReference");
    return type;
}

const QString& PropertyReference::PropertyObjType() const
{
    return StaticType();
}

unsigned int PropertyReference::GetTypeFlags() const
{
    return PropertyTypeFlagReference;
}

AbstractProperty* PropertyReference::DoClone() const
{
    return new PropertyReference(*this);
}

AbstractProperty* PropertyReference::GetPropertyRef() const
{
    return Target();
}

const AbstractProperty* PropertyReference::GetPropertyConstRef() const
{
    return Target();
}

AbstractProperty* PropertyReference::ResolveExternalRef() const
{
    const ExternalResolver resolver = s_externalResolver.load(std::memory_order_acquire);
    return resolver && !m_file.path.isEmpty() ? resolver(*this) : nullptr;
}

QString PropertyReference::ReferencePath() const
{
    if (const AbstractProperty* const target = BoundTarget()) {
        if (areInOneTree(*this, *target))
            return relativePath(*this, *target);
        return hasFilePath(*target) ? target->GetFullPath() : QString();
    }
    TakeOverDeparture();
    return m_path;
}

QString PropertyReference::ReferenceFilePath() const
{
    if (const AbstractProperty* const target = BoundTarget())
        return areInOneTree(*this, *target) ? QString() : pathOf(target->GetDataFile());
    TakeOverDeparture();
    const bool elsewhere =
        !m_file.otherPath.isEmpty() && !QFileInfo::exists(m_file.path) && QFileInfo::exists(m_file.otherPath);
    return elsewhere ? m_file.otherPath : m_file.path;
}

QString PropertyReference::ReferenceFileType() const
{
    if (const AbstractProperty* const target = BoundTarget())
        return areInOneTree(*this, *target) ? QString() : typeOf(target->GetDataFile());
    TakeOverDeparture();
    return m_file.type;
}

PropertyReference::TargetFile PropertyReference::ReferenceFile() const
{
    if (const AbstractProperty* const target = BoundTarget())
        return areInOneTree(*this, *target) ? TargetFile() : placeOf(target->GetDataFile());
    TakeOverDeparture();
    return m_file;
}

AbstractProperty* PropertyReference::Resolve() const
{
    return GetPropertyRef();
}

const AbstractProperty* PropertyReference::ResolveConst() const
{
    return GetPropertyConstRef();
}

ERESULT PropertyReference::SetPropertyRef(const AbstractProperty* target)
{
    if (!target || target == this || !Internal::canReach(*this, *target))
        return ER_INVALID_ARGUMENT;
    PropertyHandle handle(target);
    if (!handle.Get())
        return ER_INVALID_ARGUMENT; // it is just being destroyed
    m_target = std::move(handle);
    if (areInOneTree(*this, *target))
        ForgetPath(); // the tree calls RememberPath() before it takes either of the two out
    else
        RememberPathOf(*target);
    return ER_SUCCESS;
}

void PropertyReference::RestorePath(const QString& path, const QString& filePath, const QString& fileType)
{
    RestorePath(path, TargetFile{filePath, QString(), fileType, QString()});
}

void PropertyReference::RestorePath(const QString& path, const TargetFile& file)
{
    m_target = PropertyHandle();
    m_path = path;
    m_file = file;
}

bool PropertyReference::IsRefVariable() const
{
    return RefHasTypeFlag(PropertyTypeFlagVariable);
}

bool PropertyReference::IsRefPropertyObject() const
{
    return RefHasTypeFlag(PropertyTypeFlagObject);
}

bool PropertyReference::IsRefMetadata() const
{
    return RefHasTypeFlag(PropertyTypeFlagMetadata);
}

bool PropertyReference::RefHasTypeFlag(unsigned int flag) const
{
    const AbstractProperty* const target = GetPropertyConstRef();
    return target && (target->GetTypeFlags() & flag) != 0;
}

void PropertyReference::SetExternalResolver(ExternalResolver resolver)
{
    s_externalResolver.store(resolver, std::memory_order_release);
}

PropertyReference::ExternalResolver PropertyReference::GetExternalResolver()
{
    return s_externalResolver.load(std::memory_order_acquire);
}

AbstractProperty* PropertyReference::Target() const
{
    AbstractProperty* const target = BoundTarget();
    return target ? target : LookUp();
}

AbstractProperty* PropertyReference::BoundTarget() const
{
    AbstractProperty* const target = m_target.Get();
    return target && Internal::canReach(*this, *target) ? target : nullptr;
}

AbstractProperty* PropertyReference::LookUp() const
{
    TakeOverDeparture();
    if (m_path.isEmpty())
        return nullptr;
    AbstractProperty* const found =
        m_file.path.isEmpty() ? Property::FindProperty(this, m_path) : LookUpOutside();
    if (!found || found == this)
        return nullptr;
    // A target that lives but has left the tree may come back; what stands in its place isn't followed.
    if (!m_target.Get())
        m_target = PropertyHandle(found);
    return found;
}

// The host's code that finds nodes in other files may destroy the very reference that it works for.
AbstractProperty* PropertyReference::LookUpOutside() const
{
    const PropertyHandle self(this);
    AbstractProperty* const found = ResolveExternalRef();
    return self.IsExpired() ? nullptr : found;
}

// A path that hasn't been followed yet. One into another file isn't followed before it is used: that opens the file.
void PropertyReference::BindByPath() const
{
    if (m_target.IsExpired())
        TakeOverDeparture(); // what stands there now takes the place of the one that is gone
    if (m_file.path.isEmpty() && !NodeAccess::life(m_target))
        static_cast<void>(LookUp());
}

void PropertyReference::ForgetPath() const
{
    m_path.clear();
    m_file = TargetFile();
}

// To be called while a reachable target may soon be out of reach.
void PropertyReference::RememberPath() const
{
    BindByPath();
    if (const AbstractProperty* const target = BoundTarget())
        RememberPathOf(*target);
    else
        TakeOverDeparture();
}

// To be called while the root of the tree still tells where a lost target stood.
void PropertyReference::RememberLostTarget() const
{
    if (NodeAccess::life(m_target) && !BoundTarget())
        TakeOverPath();
}

void PropertyReference::RememberPathOf(const AbstractProperty& target) const
{
    if (areInOneTree(*this, target)) {
        ForgetPath();
        m_path = relativePath(*this, target);
        return;
    }
    m_file = placeOf(target.GetDataFile());
    m_path = hasFilePath(target) ? target.GetFullPath() : QString();
}

// A target that is gone for good has told all that it can, once its path is taken over.
void PropertyReference::TakeOverDeparture() const
{
    TakeOverPath();
    if (m_target.IsExpired())
        m_target = PropertyHandle();
}

// Where a target that is out of reach was last seen, which it has left with its handles.
void PropertyReference::TakeOverPath() const
{
    const NodeLife* const life = NodeAccess::life(m_target);
    if (!life)
        return;
    const AbstractProperty* const root = GetRootProperty();
    const auto place = life->departures.find(NodeAccess::treeNumber(*root));
    const bool wasHere = place != life->departures.end();
    const bool wasFollowed = life->lastInFile && (!m_file.path.isEmpty() || root->IsFileRoot());
    // One that went from here to another file, and was lost there, was followed to that.
    if (wasFollowed && (!wasHere || life->lastInFile->turn > place->second.turn)) {
        TakeOverFilePlace(*life);
    } else if (wasHere) {
        ForgetPath();
        m_path = Property::GetRelativePath(GetFullPath(), place->second.path);
    }
}

void PropertyReference::TakeOverFilePlace(const Internal::NodeLife& life) const
{
    const NodeLife::FilePlace& place = *life.lastInFile;
    // A data file that is being destroyed can't tell its type and uid any more.
    const bool isKnownFile = place.filePath == m_file.path;
    m_path = place.path;
    m_file.path = place.filePath;
    m_file.otherPath.clear();
    if (!place.fileType.isEmpty())
        m_file.type = place.fileType;
    if (!place.fileUid.isEmpty() || !isKnownFile)
        m_file.uid = place.fileUid;
}

} // namespace Orrery
