#include "hosts/orrery/SweepAccess.h"

#include "foundations/property/PropertyReference.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"
#include "variables/ConcatVar.h"

#include <QSet>
#include <QStringList>

#include <algorithm>
#include <string>
#include <vector>

namespace Orrery::Host {

namespace {

AbstractProperty* targetOf(AbstractProperty* node)
{
    if (node && node->IsPropertyReference())
        return static_cast<PropertyReference*>(node)->Resolve();
    return node;
}

std::vector<ParameterizedResultData*> nestedSweeps(const ParameterizedResultData& sweep)
{
    QList<AbstractProperty*> members;
    sweep.GetPrefixedChildrenProperties(&members, QString());
    std::vector<ParameterizedResultData*> sweeps;
    for (AbstractProperty* const member : members) {
        if (auto* const nested = dynamic_cast<ParameterizedResultData*>(targetOf(member)))
            sweeps.push_back(nested);
    }
    return sweeps;
}

// The library passes a circle over, and the result looks as if members were missing. A file may nest deeply, so the
// way down is kept here and not on the stack.
void requireNoCircle(const ParameterizedResultData& sweep)
{
    struct Step
    {
        const ParameterizedResultData* sweep;
        std::vector<ParameterizedResultData*> nested;
    };
    QSet<const ParameterizedResultData*> open{&sweep};
    QSet<const ParameterizedResultData*> done;
    std::vector<Step> way;
    way.push_back({&sweep, nestedSweeps(sweep)});
    while (!way.empty()) {
        if (way.back().nested.empty()) {
            open.remove(way.back().sweep);
            done.insert(way.back().sweep);
            way.pop_back();
            continue;
        }
        const ParameterizedResultData* const next = way.back().nested.back();
        way.back().nested.pop_back();
        if (open.contains(next))
            throw Failure("the sweep contains itself, through '" +
                          printable(way.back().sweep->GetFullPath().toStdString()) + "'");
        if (done.contains(next))
            continue;
        open.insert(next);
        way.push_back({next, nestedSweeps(*next)});
    }
}

std::string namesText(const QStringList& names)
{
    constexpr int most = 8;
    QStringList shown = names.mid(0, most);
    for (QString& name : shown)
        name = QString::fromStdString(inQuotes(name.toStdString()));
    if (names.size() > most)
        shown += QStringLiteral("...");
    return shown.join(QStringLiteral(", ")).toStdString();
}

// Asking for a joined variable deletes whatever else has its name or that of its folder of axes.
void requireNoPartOf(const ParameterizedResultData& sweep, const QString& name)
{
    const AbstractProperty* const present = sweep.GetPropertyConstPtr(name);
    if (present && present->IsVariable())
        return;
    for (const QString& taken : {name, QString(name + QStringLiteral("_Indeps"))}) {
        if (sweep.HasProperty(taken))
            throw Failure(inQuotes(name.toStdString()) + " can't be joined: " +
                          inQuotes(taken.toStdString()) + " is a part of the sweep itself");
    }
}

void requireEnoughValues(const Variable& parameter, const Variable& joined)
{
    QList<AbstractProperty*> members;
    joined.GetPrefixedChildrenProperties(&members, QString());
    const std::uint64_t values = parameter.GetMaxIndepOffset();
    if (values < static_cast<std::uint64_t>(members.size()))
        throw Failure("the parameter " + inQuotes(parameter.GetName().toStdString()) + " has " +
                      std::to_string(values) + (values == 1 ? " value for " : " values for ") +
                      std::to_string(members.size()) + " members");
}

} // namespace

const Variable* parameterOf(const ParameterizedResultData& sweep)
{
    const AbstractProperty* const child = sweep.GetPropertyConstPtr(ParameterizedResultData::ParameterVar);
    return dynamic_cast<const Variable*>(targetOf(const_cast<AbstractProperty*>(child)));
}

Variable* joinedVariable(ParameterizedResultData& sweep, const QString& name)
{
    const Variable* const parameter = parameterOf(sweep);
    if (!parameter)
        throw Failure("the sweep has no parameter");
    requireNoCircle(sweep);
    QStringList names;
    sweep.GetVariableNameList(&names);
    if (!names.contains(name))
        throw Failure("there is no variable " + inQuotes(name.toStdString()) + "; the sweep has " +
                      (names.isEmpty() ? "none" : namesText(names)));
    requireNoPartOf(sweep, name);
    Variable* const joined = sweep.FindOrCreateResultVar(name);
    if (!joined)
        throw Failure(inQuotes(name.toStdString()) + " can't be joined");
    requireEnoughValues(*parameter, *joined);
    return joined;
}

} // namespace Orrery::Host
