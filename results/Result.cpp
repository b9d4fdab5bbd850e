#include "results/Result.h"

#include "foundations/property/PropertyHandle.h"
#include "results/ResultData.h"

#include <memory>

namespace Orrery {
namespace {

template <class Data>
void appendData(const PropertyObject& folder, QList<Data*>& list)
{
    QList<AbstractProperty*> children;
    folder.GetPropertyList(&children);
    for (AbstractProperty* child : qAsConst(children)) {
        if (auto* data = dynamic_cast<Data*>(child))
            list.append(data);
    }
}

} // namespace

template ORRERYCOREVARIABLES_EXPORT Result* PropertyObject::GetPtr<Result>(const QString& name);

Result::Result()
    : Result(QString(), QStringLiteral("Unknown"))
{
}

Result::Result(const QString& name, const QString& applicationId)
    : PropertyObject(name)
{
    SetSerializable(SetProperty(s_applicationId, applicationId) >= 0);
}

// The assignment brings what the base class would copy.
Result::Result(const Result& other) // NOLINT(bugprone-copy-constructor-init)
    : PropertyObject()
{
    PropertyObject::operator=(other);
}

Result& Result::operator=(const Result& other) = default;

Result::~Result() = default;

const QString& Result::StaticType()
{
    static const QString type = QStringLiteral("Result");
    return type;
}

const QString& Result::PropertyObjType() const
{
    return StaticType();
}

AbstractProperty* Result::DoClone() const
{
    auto copy = std::make_unique<Result>();
    *copy = *this;
    return copy.release();
}

QString Result::ApplicationID()
{
    return s_applicationId;
}

QString Result::Setup()
{
    return s_setup;
}

QString Result::DefaultDisplayTemplate()
{
    return s_displayTemplate;
}

ResultData* Result::GetResultData(const QString& name)
{
    return GetPtr<ResultData>(name);
}

const ResultData* Result::GetResultData(const QString& name) const
{
    return dynamic_cast<const ResultData*>(GetPropertyConstPtr(name));
}

ERESULT Result::GetResultDataList(QList<ResultData*>* list)
{
    if (!list)
        return ER_INVALID_ARGUMENT;
    appendData(*this, *list);
    return ER_SUCCESS;
}

ERESULT Result::GetResultDataList(QList<const ResultData*>* list) const
{
    if (!list)
        return ER_INVALID_ARGUMENT;
    appendData(*this, *list);
    return ER_SUCCESS;
}

QList<ResultData*> Result::GetResultDataList()
{
    QList<ResultData*> list;
    appendData(*this, list);
    return list;
}

PropertyObject* Result::GetSetupObjectPtr() const
{
    auto* child = const_cast<AbstractProperty*>(GetPropertyConstPtr(s_setup));
    return child && child->IsPropertyObject() ? dynamic_cast<PropertyObject*>(child) : nullptr;
}

PropertyObject* Result::GetOrCreateSetupInfoFolder()
{
    if (PropertyObject* folder = GetSetupObjectPtr())
        return folder;
    auto made = std::make_unique<PropertyObject>(s_setup);
    if (InsertProperty(made.get()) < 0)
        return nullptr;
    static_cast<void>(made.release());
    return GetSetupObjectPtr(); // asked anew: a handler of the insertion may have deleted it
}

bool Result::HasSetupInformation() const
{
    const PropertyObject* folder = GetSetupObjectPtr();
    return folder && folder->GetPropertyCount() > 0;
}

const Metadata* Result::GetDefaultDisplayTemplate() const
{
    const AbstractProperty* child = GetPropertyConstPtr(s_displayTemplate);
    return child && child->IsMetadata() ? dynamic_cast<const Metadata*>(child) : nullptr;
}

ERESULT Result::SetDefaultDisplayTemplate(Metadata* metadata)
{
    if (!metadata)
        return ER_INVALID_ARGUMENT;
    // Both steps tell the host's class, which may destroy either.
    const PropertyHandle self(this);
    const PropertyHandle handle(metadata);
    if (metadata->GetParent() == this && metadata->GetName() != s_displayTemplate)
        DeleteProperty(s_displayTemplate); // else its own child couldn't take the name
    if (handle.Get())
        metadata->SetName(s_displayTemplate);
    return self.Get() && handle.Get() ? InsertOrReplaceProperty(metadata) : ER_FAILED;
}

} // namespace Orrery
