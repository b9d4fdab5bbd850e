// What a Variable is measured against: the references in its child "Indep" and the child "IndependentMap".

#include "foundations/property/PropertyHandle.h"
#include "foundations/property/PropertyReference.h"
#include "foundations/property/SimpleProperty.h"
#include "foundations/variant/VariantOperations.h"
#include "tracking/ObservablePropertyReference.h"
#include "variables/NodeSnapshot_p.h"
#include "variables/Variable.h"
#include "variables/VariableAxes_p.h"

#include <QDebug>

#include <exception>
#include <memory>
#include <vector>

namespace Orrery {
namespace {

const PropertyObject* axesOf(const Variable& variable)
{
    const AbstractProperty* child = variable.GetPropertyConstPtr(Variable::sIndependentVars());
    return child && child->IsPropertyObject() ? dynamic_cast<const PropertyObject*>(child) : nullptr;
}

/// The folder of the references, made when it is missing and in place of what is no folder.
ERESULT ensureAxes(Variable& variable, PropertyObject** axes)
{
    const QString& name = Variable::sIndependentVars();
    const PropertyHandle owner(&variable);
    if (variable.HasProperty(name) && !axesOf(variable)) {
        qWarning().noquote().nospace() << "invalid pIndepGroup, is not a property object; clearing it...";
        variable.DeleteProperty(name);
    }
    if (owner.IsExpired())
        return ER_FAILED; // by what its former child has told when it went
    if (!variable.HasProperty(name)) {
        auto made = std::make_unique<PropertyObject>(name);
        const ERESULT inserted = variable.InsertOrReplaceProperty(made.get());
        if (inserted < 0)
            return inserted;
        static_cast<void>(made.release());
    }
    if (owner.IsExpired())
        return ER_FAILED;
    *axes = const_cast<PropertyObject*>(axesOf(variable));
    return *axes ? ER_SUCCESS : ER_FAILED; // a handler of the insertion may have taken it away again
}

/// The Variable that an entry is or refers to; null for none, with a warning unless the entry is null itself.
Variable* resolveAxis(AbstractProperty* entry)
{
    if (!entry)
        return nullptr;
    Variable* variable = nullptr;
    if (entry->IsVariable())
        variable = dynamic_cast<Variable*>(entry);
    else if (const auto* reference = dynamic_cast<const PropertyReference*>(entry);
             reference && entry->IsPropertyReference())
        variable = dynamic_cast<Variable*>(reference->Resolve());
    if (!variable) {
        qWarning().noquote().nospace() << "!! Indep is either nonexistent or it's not a variable !!"
                                       << "Orrery::Variable::GetIndepVariable";
    }
    return variable;
}

} // namespace

ERESULT Variable::AddIndepVariableRef(const Variable* indep)
{
    if (!indep)
        return ER_INVALID_ARGUMENT;
    if (m_dirtyTracker)
        m_dirtyTracker->markDirty();
    const PropertyHandle target(indep);
    PropertyObject* axes = nullptr;
    const ERESULT prepared = ensureAxes(*this, &axes);
    if (prepared < 0)
        return prepared;
    QString name;
    const ERESULT named = axes->nextNumberedChildName(&name);
    if (named < 0)
        return named;
    if (target.IsExpired())
        return ER_FAILED; // it stood in the place of the folder
    return insertVariableReference(*axes, name, const_cast<Variable*>(indep));
}

ERESULT Variable::SetIndepVariableRef(const Variable* indep)
{
    const PropertyHandle self(this);
    const PropertyHandle target(indep);
    if (HasProperty(sIndependentVars())) {
        const ERESULT deleted = DeleteProperty(sIndependentVars());
        if (deleted < 0)
            return deleted;
    }
    if (self.IsExpired())
        return ER_FAILED;
    return target.IsExpired() ? ER_INVALID_ARGUMENT : AddIndepVariableRef(indep);
}

int Variable::GetIndepCount() const
{
    const PropertyObject* axes = axesOf(*this);
    return axes ? axes->GetPropertyCount() : 0;
}

ERESULT Variable::GetIndepVariable(Variable** out, int index) const
{
    if (!out)
        return ER_INVALID_ARGUMENT;
    const PropertyObject* axes = axesOf(*this);
    if (!axes)
        return ER_NOT_FOUND;
    QList<AbstractProperty*> entries;
    axes->GetPrefixedChildrenProperties(&entries, QString());
    if (index < 0 || index >= entries.size())
        return ER_NOT_FOUND;
    Variable* variable = resolveAxis(entries[index]);
    if (!variable)
        return ER_NOT_FOUND;
    *out = variable;
    return ER_SUCCESS;
}

std::vector<PropertyHandle> independentsOf(const Variable& variable)
{
    QList<AbstractProperty*> entries;
    if (const PropertyObject* axes = axesOf(variable))
        axes->GetPrefixedChildrenProperties(&entries, QString());
    std::vector<PropertyHandle> independents;
    for (const PropertyHandle& entry : snapshotOf(entries)) {
        if (const Variable* independent = resolveAxis(entry.Get()))
            independents.emplace_back(independent);
    }
    return independents;
}

ERESULT Variable::GetIndependentMap(QVector<int>* out) const
{
    if (!out)
        return ER_INVALID_ARGUMENT;
    const auto* stored =
        dynamic_cast<const SimpleProperty*>(GetPropertyConstPtr(sIndependentMapPropertyName()));
    if (!stored) {
        *out = QVector<int>(GetIndepCount(), 0);
        return ER_SUCCESS;
    }
    try {
        for (const int entry : Brindle::Quay::getIntVector(stored->GetValue(), 1))
            out->append(entry);
        return ER_SUCCESS;
    } catch (...) { // whatever a host's own element type throws
        return ER_FAILED;
    }
}

ERESULT Variable::SetIndependentMap(const QVector<int>& map)
{
    auto property = std::make_unique<SimpleProperty>(sIndependentMapPropertyName());
    const ERESULT set =
        property->SetValue(BVariant(std::vector<int>(map.begin(), map.end())), IsCellArrayFalse);
    if (set < 0)
        return set;
    const ERESULT inserted = InsertOrReplaceProperty(property.get());
    if (inserted >= 0)
        static_cast<void>(property.release());
    return inserted;
}

bool Variable::IsExpanded() const
{
    QVector<int> map;
    if (GetIndependentMap(&map) < 0)
        return true;
    for (const int entry : qAsConst(map)) {
        if (entry != 0)
            return false;
    }
    return true;
}

} // namespace Orrery
