#include "tracking/ObservablePropertyReference.h"

#include "foundations/property/PropertyPath.h"
#include "foundations/storage/DataFile.h"
#include "tracking/DataObserver.h"
#include "variables/Variable.h"

#include <QDebug>

#include <utility>

namespace Orrery {
namespace {

void logUnknownPlace(const Variable* variable)
{
    const QString name = variable ? variable->GetName() : QString();
    qDebug().noquote().nospace() << "Can't set reference to " << name << "@"
                                 << QString::asprintf("%8p", static_cast<const void*>(variable));
}

} // namespace

ObservablePropertyReference::ObservablePropertyReference(const QString& name)
    : PropertyReference(name)
{
}

ObservablePropertyReference::ObservablePropertyReference(const ObservablePropertyReference& other) = default;

ObservablePropertyReference&
ObservablePropertyReference::operator=(const ObservablePropertyReference& other) = default;

ObservablePropertyReference::~ObservablePropertyReference() = default;

AbstractProperty* ObservablePropertyReference::DoClone() const
{
    return new ObservablePropertyReference(*this);
}

AbstractProperty* ObservablePropertyReference::GetPropertyRef() const
{
    return m_observer ? m_observer->livingVariable() : PropertyReference::GetPropertyRef();
}

AbstractProperty* ObservablePropertyReference::ResolveExternalRef() const
{
    return m_observer ? m_observer->livingVariable() : PropertyReference::ResolveExternalRef();
}

ObservablePropertyReference::Place ObservablePropertyReference::placeOf(const Variable* variable) const
{
    const AbstractProperty* root = variable ? variable->GetRootProperty() : nullptr;
    if (root && root == GetRootProperty())
        return Place::SameTree;
    if (root && root->IsFileRoot())
        return Place::DataFile;
    logUnknownPlace(variable);
    return Place::Unknown;
}

QString ObservablePropertyReference::ReferencePath() const
{
    if (!m_observer)
        return PropertyReference::ReferencePath();
    const Variable* variable = m_observer->livingVariable();
    switch (placeOf(variable)) {
    case Place::SameTree:
        return Property::GetRelativePath(GetFullPath(), variable->GetFullPath());
    case Place::DataFile:
        return variable->GetFullPath();
    case Place::Unknown:
        break;
    }
    return PropertyReference::ReferencePath();
}

QString ObservablePropertyReference::ReferenceFilePath() const
{
    if (!m_observer)
        return PropertyReference::ReferenceFilePath();
    const Variable* variable = m_observer->livingVariable();
    const Place place = placeOf(variable);
    if (place == Place::Unknown)
        return PropertyReference::ReferenceFilePath();
    const DataFile* file = place == Place::DataFile ? variable->GetDataFile() : nullptr;
    return file ? file->GetPath() : QString();
}

QString ObservablePropertyReference::ReferenceFileType() const
{
    if (!m_observer)
        return PropertyReference::ReferenceFileType();
    const Variable* variable = m_observer->livingVariable();
    const Place place = placeOf(variable);
    if (place == Place::Unknown)
        return PropertyReference::ReferenceFileType();
    const DataFile* file = place == Place::DataFile ? variable->GetDataFile() : nullptr;
    return file ? file->GetFileType() : QString();
}

void ObservablePropertyReference::setObserver(std::shared_ptr<DataObserver> observer)
{
    m_observer = std::move(observer);
}

namespace {

ERESULT insertBound(PropertyObject& holder, std::unique_ptr<ObservablePropertyReference> reference,
                    const Variable& target)
{
    const ERESULT inserted = holder.InsertProperty(reference.get());
    if (inserted < 0)
        return inserted;
    // Only from its place in the tree can the reference tell its way to the target.
    ObservablePropertyReference* held = reference.release();
    const ERESULT bound = held->SetPropertyRef(&target);
    if (bound < 0)
        holder.DeleteProperty(held->GetName());
    return bound;
}

ERESULT insertDelayed(PropertyObject& holder, std::unique_ptr<ObservablePropertyReference> reference,
                      Variable& target)
{
    reference->setObserver(ensureObserver(&target));
    qDebug().noquote().nospace() << "used observer to delay reference binding!";
    const ERESULT inserted = holder.InsertProperty(reference.get());
    if (inserted >= 0)
        static_cast<void>(reference.release()); // the holder has it now
    return inserted;
}

} // namespace

ERESULT insertVariableReference(PropertyObject& holder, const QString& name, Variable* target)
{
    if (!target)
        return ER_INVALID_ARGUMENT;
    const bool bindable = holder.CanReferenceProperty(target);
    auto reference = std::make_unique<ObservablePropertyReference>(name);
    return bindable ? insertBound(holder, std::move(reference), *target)
                    : insertDelayed(holder, std::move(reference), *target);
}

} // namespace Orrery
