#pragma once

#include "foundations/property/Metadata.h"
#include "foundations/property/PropertyHandle.h"
#include "foundations/property/PropertyReference.h"
#include "foundations/property/SimpleProperty.h"
#include "foundations/storage/DataFile.h"
#include "results/ParameterizedResultData.h"
#include "results/ResultData.h"
#include "tests/support/Variants.h"
#include "tests/tracking/ChangeTestSupport.h"
#include "tests/variables/VariableTestSupport.h"
#include "tracking/DataObserver.h"
#include "tracking/ObservablePropertyReference.h"
#include "units/Units.h"
#include "variables/ConcatVar.h"
#include "variables/SweptVariable.h"
#include "variables/Variable.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

/// What the tests of results share.
namespace Orrery::ResultsTest {

using Doubles = std::vector<double>;

inline const QStringList noNames;

inline Variable* addData(PropertyObject& folder, const QString& name, Doubles values)
{
    return insert(folder, std::make_unique<Variable>(name, BVariant(std::move(values))));
}

inline ResultData* addRun(PropertyObject& folder, const QString& name)
{
    return insert(folder, std::make_unique<ResultData>(name));
}

inline ParameterizedResultData* addSweep(PropertyObject& folder, const QString& name)
{
    return insert(folder, std::make_unique<ParameterizedResultData>(name));
}

/// A reference that is bound; null when it can't be.
inline PropertyReference* addReference(PropertyObject& folder, const QString& name,
                                       const AbstractProperty& target)
{
    if (folder.HasProperty(name) || folder.SetPropertyRef(name, &target) < 0)
        return nullptr;
    return folder.GetPtr<PropertyReference>(name);
}

/// A reference that follows its Variable without a path, as one is made that can't be bound yet.
inline ObservablePropertyReference* addDelayedReference(PropertyObject& folder, const QString& name,
                                                        Variable* target)
{
    auto* const reference = insert(folder, std::make_unique<ObservablePropertyReference>(name));
    reference->setObserver(ensureObserver(target));
    return reference;
}

inline Doubles dataOf(const Variable* variable)
{
    return variable ? ToDoubles(variable->GetData()) : Doubles{-999};
}

inline QStringList childNames(const PropertyObject& folder)
{
    QStringList names;
    const QList<AbstractProperty*> children = folder.GetPropertyListSorted();
    for (const AbstractProperty* child : children)
        names.append(child->GetName());
    return names;
}

/// A Variable with an axis of its own, both in `run`.
inline Variable* addMeasured(PropertyObject& run, const QString& name, Doubles values,
                             const QString& axisName, Doubles axis)
{
    Variable* const variable = addData(run, name, std::move(values));
    EXPECT_EQ(variable->AddIndepVariableRef(addData(run, axisName, std::move(axis))), ER_SUCCESS);
    return variable;
}

/// The last folder of data of a sweep, which stands in `folder`.
inline ResultData* addMember(ParameterizedResultData& sweep, PropertyObject& folder, const QString& name)
{
    ResultData* const run = addRun(folder, name);
    EXPECT_EQ(sweep.AddResultDataRef(run), ER_SUCCESS);
    return run;
}

/// The folder of the independents of a joined variable; null without one.
inline PropertyObject* independentsOf(PropertyObject& sweep, const QString& name)
{
    return sweep.GetPtr<PropertyObject>(name + QStringLiteral("_Indeps"));
}

/// What the reference of that name stands for; null where there is none.
inline const AbstractProperty* targetOf(const PropertyObject& folder, const QString& name)
{
    const auto* reference = dynamic_cast<const PropertyReference*>(folder.GetPropertyConstPtr(name));
    return reference ? reference->ResolveConst() : nullptr;
}

/// The independent at a position; null where there is none.
inline Variable* indepAt(const Variable& variable, int index)
{
    Variable* found = nullptr;
    return variable.GetIndepVariable(&found, index) >= 0 ? found : nullptr;
}

/// The names of the independents in their order; "(none)" for one that isn't found.
inline QStringList indepNames(const Variable& variable)
{
    QStringList names;
    for (int i = 0; i < variable.GetIndepCount(); ++i) {
        const Variable* indep = indepAt(variable, i);
        names.append(indep ? indep->GetName() : QStringLiteral("(none)"));
    }
    return names;
}

inline QStringList namesIn(const ResultData& data)
{
    QStringList names;
    data.GetVariableNameList(&names);
    return names;
}

inline QString unitsOf(const Variable& variable)
{
    const Units* units = nullptr;
    return variable.GetUnits(&units) >= 0 ? units->GetSIUnits() : QStringLiteral("(none)");
}

/// Folders in one another, as many as it takes that the innermost is `depth` folders below the top, which counts
/// as the first.
inline PropertyObject* addNest(PropertyObject& top, int depth)
{
    PropertyObject* folder = &top;
    for (int at = 2; at <= depth; ++at)
        folder = insertFolder(*folder, QStringLiteral("d"));
    return folder;
}

/// A host's template.
class HostTemplate : public Metadata
{
public:
    HostTemplate() = default;
    explicit HostTemplate(const QString& name)
        : Metadata(name)
    {
    }

    const QString& PropertyObjType() const override { return StaticType(); }
    AbstractProperty* DoClone() const override
    {
        auto copy = std::make_unique<HostTemplate>();
        *copy = *this;
        return copy.release();
    }

    static const QString& StaticType()
    {
        static const QString name = QStringLiteral("HostTemplate");
        return name;
    }

    std::function<void()> onPath;

protected:
    void OnPathChanged() override
    {
        Metadata::OnPathChanged();
        if (const auto told = onPath) // it may destroy this
            told();
    }
};

/// A host's folder of data: finds and names what a test has set, else what every folder of data does.
class HostData : public ResultData
{
public:
    using ResultData::ResultData;

    Variable* FindResultVar(const QString& name) override
    {
        const auto found = find; // it may destroy this folder
        return found ? found(name) : ResultData::FindResultVar(name);
    }
    void GetVariableNameList(QStringList* list) const override
    {
        const auto listed = listNames; // as above
        if (listed)
            listed(list);
        else
            ResultData::GetVariableNameList(list);
    }

    std::function<Variable*(const QString&)> find;
    std::function<void(QStringList*)> listNames;
};

} // namespace Orrery::ResultsTest
