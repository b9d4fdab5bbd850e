#include "variables/VariableDefaults.h"

#include "foundations/property/ErrorResult.h"
#include "foundations/property/PropertyHandle.h"
#include "units/Units.h"
#include "variables/RangeVarStrategy.h"
#include "variables/Variable.h"

#include <cstdint>
#include <memory>

namespace Orrery {
namespace {

QString freeIndexName(const Variable& variable)
{
    const QString base = variable.GetName() + QStringLiteral("_index");
    QString name = base;
    for (int i = 0; variable.HasProperty(name); ++i)
        name = base + QString::number(i);
    return name;
}

/// Owned by the folder if it takes the node; else the node is destroyed. Returns whether it is there afterwards.
bool insertOrDestroy(PropertyObject& folder, std::unique_ptr<AbstractProperty> node)
{
    const PropertyHandle handle(node.get());
    if (folder.InsertProperty(node.get()) < 0)
        return false;
    static_cast<void>(node.release());
    return !handle.IsExpired(); // a handler of the insertion may have deleted it again
}

} // namespace

void VariableDefaults::GenerateDefaultIndep(Variable& variable) const
{
    const PropertyHandle owner(&variable);
    const std::uint64_t count = variable.GetMaxIndepOffset(); // which may compute, and call handlers
    if (owner.IsExpired())
        return;
    auto index = std::make_unique<Variable>(freeIndexName(variable));
    auto* range = index->SetStrategy<RangeVarStrategy>();
    range->SetCount(BVariant(count));
    range->SetStart(BVariant(0.0));
    range->SetStep(BVariant(1.0));
    const Variable* inserted = index.get();
    if (insertOrDestroy(variable, std::move(index)) && !owner.IsExpired())
        variable.AddIndepVariableRef(inserted);
}

void VariableDefaults::InsertDefaultIndepFolder(Variable& variable) const
{
    insertOrDestroy(variable, std::make_unique<PropertyObject>(Variable::sIndependentVars()));
}

void VariableDefaults::InsertDefaultUnits(Variable& variable) const
{
    if (variable.GetPtr<PropertyObject>(Variable::sUnitsPropertyName()))
        return;
    variable.SetUnits(Units());
}

void VariableDefaults::ClearIndepRefs(Variable& variable) const
{
    if (!variable.HasProperty(Variable::sIndependentVars()))
        return;
    const ERESULT deleted = variable.DeleteProperty(Variable::sIndependentVars());
    if (deleted < 0)
        throw OrreryException(deleted);
}

} // namespace Orrery
