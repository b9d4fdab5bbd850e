#include "results/ResultData.h"

#include "variables/Variable.h"

#include <memory>

namespace Orrery {
namespace {

template <class Visitor>
void forEachVariable(const PropertyObject& folder, Visitor visit)
{
    QList<AbstractProperty*> children;
    folder.GetPropertyList(&children);
    for (AbstractProperty* child : qAsConst(children)) {
        if (child->IsVariable())
            visit(child);
    }
}

} // namespace

template ORRERYCOREVARIABLES_EXPORT ResultData* PropertyObject::GetPtr<ResultData>(const QString& name);

ResultData::ResultData() = default;

ResultData::ResultData(const QString& name)
    : PropertyObject(name)
{
}

// The assignment brings what the base class would copy.
ResultData::ResultData(const ResultData& other) // NOLINT(bugprone-copy-constructor-init)
    : PropertyObject()
{
    PropertyObject::operator=(other);
}

ResultData& ResultData::operator=(const ResultData& other) = default;

ResultData::~ResultData() = default;

const QString& ResultData::StaticType()
{
    static const QString type = QStringLiteral("ResultData");
    return type;
}

const QString& ResultData::PropertyObjType() const
{
    return StaticType();
}

AbstractProperty* ResultData::DoClone() const
{
    return std::make_unique<ResultData>(*this).release();
}

Variable* ResultData::FindResultVar(const QString& name)
{
    AbstractProperty* child = GetPropertyPtr(name);
    return child && child->IsVariable() ? dynamic_cast<Variable*>(child) : nullptr;
}

const Variable* ResultData::FindResultVar(const QString& name) const
{
    const AbstractProperty* child = GetPropertyConstPtr(name);
    return child && child->IsVariable() ? dynamic_cast<const Variable*>(child) : nullptr;
}

void ResultData::GetVariableList(QList<AbstractProperty*>* list)
{
    if (list)
        forEachVariable(*this, [list](AbstractProperty* variable) { list->append(variable); });
}

void ResultData::GetVariableNameList(QStringList* list) const
{
    if (list)
        forEachVariable(*this,
                        [list](const AbstractProperty* variable) { list->append(variable->GetName()); });
}

} // namespace Orrery
