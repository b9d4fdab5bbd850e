#include "results/ParameterizedResultData.h"

#include "foundations/property/PropertyHandle.h"
#include "foundations/property/PropertyReference.h"
#include "tracking/Notifier.h"
#include "variables/ConcatVar.h"
#include "variables/NodeSnapshot_p.h"
#include "variables/ReadInProgress_p.h"
#include "variables/SweptVariable.h"
#include "variables/VariableAxes_p.h"

#include <memory>
#include <utility>
#include <vector>

namespace Orrery {
namespace {

/// The folder of data that a child of a sweep is or refers to; null for none.
ResultData* dataOf(AbstractProperty& child)
{
    if (auto* data = dynamic_cast<ResultData*>(&child))
        return data;
    const auto* reference =
        child.IsPropertyReference() ? dynamic_cast<const PropertyReference*>(&child) : nullptr;
    return reference ? dynamic_cast<ResultData*>(reference->Resolve()) : nullptr;
}

/// The parameter of a sweep, null for none. One that is bound late counts as none.
Variable* parameterOf(const PropertyObject& sweep)
{
    auto* child =
        const_cast<AbstractProperty*>(sweep.GetPropertyConstPtr(ParameterizedResultData::ParameterVar));
    if (child && child->IsVariable())
        return dynamic_cast<Variable*>(child);
    const auto* reference = dynamic_cast<const PropertyReference*>(child);
    if (!reference || !reference->IsPropertyReference())
        return nullptr;
    return dynamic_cast<Variable*>(const_cast<AbstractProperty*>(reference->ResolveConst()));
}

void copyUnits(const Variable& from, Variable& to)
{
    if (from.HasProperty(Variable::sUnitsPropertyName()))
        to.SetUnits(from.GetUnits());
}

/// One joined variable in the making.
///
/// Each insertion tells handlers of the host, which may delete whatever takes part. The handles know, and what was
/// built so far is then the outcome.
class Join
{
public:
    Join(ParameterizedResultData& sweep, QString name)
        : m_sweep(&sweep)
        , m_name(std::move(name))
    {
    }

    /// The joined variable, owned by the sweep; null if the sweep can't take it.
    Variable* build()
    {
        if (!insertEmpty())
            return nullptr;
        Variable* const parameter = parameterOf(sweep());
        if (!parameter)
            return joined();
        m_parameter = PropertyHandle(parameter);
        if (!isWhole())
            return joined(); // to find the parameter may run code of the host
        for (const PropertyHandle& child : members()) {
            if (!isWhole())
                return joined();
            if (child.Get())
                addMember(*child.Get());
        }
        if (isWhole())
            addSweptParameter();
        return joined();
    }

private:
    ParameterizedResultData& sweep() const { return *static_cast<ParameterizedResultData*>(m_sweep.Get()); }
    ConcatVar* joined() const { return static_cast<ConcatVar*>(m_joined.Get()); }
    PropertyObject& independents() const { return *static_cast<PropertyObject*>(m_independents.Get()); }
    const Variable& parameter() const { return *static_cast<const Variable*>(m_parameter.Get()); }

    bool isWhole() const
    {
        return m_sweep.Get() && m_joined.Get() && m_independents.Get() && m_parameter.Get();
    }

    /// Inserts a node, or keeps it as long as the joined variable lives: it can't be found by its name then, but
    /// references may lead to it.
    void insertOrKeep(PropertyObject& folder, std::unique_ptr<AbstractProperty> node) const
    {
        if (folder.InsertProperty(node.get()) >= 0) {
            static_cast<void>(node.release());
            return;
        }
        if (!joined())
            return;
        const std::shared_ptr<AbstractProperty> kept = std::move(node);
        QObject::connect(joined()->getNotifier(), &Variable::Notifier::Removed, [kept] {});
    }

    bool insertEmpty()
    {
        const QString independentsName = m_name + QStringLiteral("_Indeps");
        sweep().DeleteProperty(m_name);
        if (m_sweep.Get())
            sweep().DeleteProperty(independentsName);
        if (!m_sweep.Get())
            return false;
        auto joinedVariable = std::make_unique<ConcatVar>(m_name);
        joinedVariable->SetSerializable(false);
        m_joined = PropertyHandle(joinedVariable.get());
        if (sweep().InsertProperty(joinedVariable.get()) < 0)
            return false;
        static_cast<void>(joinedVariable.release());
        if (!m_sweep.Get() || !joined())
            return joined() != nullptr;
        auto folder = std::make_unique<PropertyObject>(independentsName);
        folder->SetSerializable(false);
        m_independents = PropertyHandle(folder.get());
        insertOrKeep(sweep(), std::move(folder));
        return m_sweep.Get() && joined();
    }

    std::vector<PropertyHandle> members() const
    {
        QList<AbstractProperty*> children;
        sweep().GetPrefixedChildrenProperties(&children, QString());
        return snapshotOf(children);
    }

    Variable* variableOf(ResultData& member) const
    {
        if (auto* nested = dynamic_cast<ParameterizedResultData*>(&member))
            return nested->FindOrCreateResultVar(m_name);
        return member.FindResultVar(m_name);
    }

    void addMember(AbstractProperty& child)
    {
        ResultData* const member = dataOf(child);
        Variable* const variable = member ? variableOf(*member) : nullptr;
        if (!variable || !isWhole())
            return;
        const PropertyHandle source(variable);
        if (!joined()->HasProperty(Variable::sUnitsPropertyName()))
            copyUnits(*variable, *joined());
        if (!source.Get() || !isWhole())
            return;
        joined()->AddVariable(variable);
        if (!source.Get() || !isWhole())
            return;
        for (const PropertyHandle& axis : independentsOf(*variable)) {
            if (axis.Get() && isWhole())
                addIndependent(*static_cast<const Variable*>(axis.Get()));
        }
    }

    void addIndependent(const Variable& independent)
    {
        const PropertyHandle source(&independent);
        const QString name = independent.GetName();
        if (!independents().HasProperty(name))
            insertIndependent(independent);
        if (!source.Get() || !isWhole())
            return;
        if (auto* concatenation = independents().GetPtr<ConcatVar>(name))
            concatenation->AddVariable(&independent);
    }

    void insertIndependent(const Variable& independent)
    {
        auto made = std::make_unique<ConcatVar>(independent.GetName());
        const PropertyHandle concatenation(made.get());
        copyUnits(independent, *made);
        if (!isWhole())
            return;
        insertOrKeep(independents(), std::move(made));
        if (isWhole() && concatenation.Get())
            joined()->AddIndepVariableRef(static_cast<const Variable*>(concatenation.Get()));
    }

    void addSweptParameter()
    {
        auto made = std::make_unique<SweptVariable>(parameter().GetName());
        const PropertyHandle swept(made.get());
        insertOrKeep(independents(), std::move(made));
        const std::vector<PropertyHandle> axes =
            m_parameter.Get() ? independentsOf(parameter()) : std::vector<PropertyHandle>();
        for (const PropertyHandle& axis : axes) {
            if (swept.Get() && axis.Get())
                static_cast<SweptVariable*>(swept.Get())
                    ->AddIndepVariableRef(static_cast<const Variable*>(axis.Get()));
        }
        if (!swept.Get() || !isWhole())
            return;
        auto& variable = static_cast<SweptVariable&>(*swept.Get());
        variable.SetParameter(&parameter());
        if (swept.Get() && isWhole())
            variable.SetConcatVar(joined());
        if (swept.Get() && isWhole())
            copyUnits(parameter(), variable);
        if (swept.Get() && isWhole())
            joined()->AddIndepVariableRef(&variable);
    }

    PropertyHandle m_sweep;
    QString m_name;
    PropertyHandle m_joined;
    PropertyHandle m_independents;
    PropertyHandle m_parameter;
};

} // namespace

template ORRERYCOREVARIABLES_EXPORT ParameterizedResultData*
PropertyObject::GetPtr<ParameterizedResultData>(const QString& name);

ParameterizedResultData::ParameterizedResultData() = default;

ParameterizedResultData::ParameterizedResultData(const QString& name)
    : ResultData(name)
{
}

ParameterizedResultData::ParameterizedResultData(const ParameterizedResultData& other) = default;

ParameterizedResultData& ParameterizedResultData::operator=(const ParameterizedResultData& other) = default;

ParameterizedResultData::~ParameterizedResultData() = default;

const QString& ParameterizedResultData::StaticType()
{
    static const QString type = QStringLiteral("ParameterizedResultData");
    return type;
}

const QString& ParameterizedResultData::PropertyObjType() const
{
    return StaticType();
}

AbstractProperty* ParameterizedResultData::DoClone() const
{
    return std::make_unique<ParameterizedResultData>(*this).release();
}

namespace {

/// Puts a reference to the target into the folder under that name, in place of what is there.
ERESULT replaceByReference(PropertyObject& folder, const QString& name, const AbstractProperty* target)
{
    const PropertyHandle self(&folder);
    auto made = std::make_unique<PropertyReference>(name);
    const PropertyHandle reference(made.get());
    const ERESULT inserted = folder.InsertOrReplaceProperty(made.get());
    if (inserted < 0)
        return inserted;
    static_cast<void>(made.release());
    // Handlers of the insertion may have taken it away again.
    if (!self.Get() || !reference.Get())
        return ER_FAILED;
    const ERESULT bound = static_cast<PropertyReference*>(reference.Get())->SetPropertyRef(target);
    if (bound < 0 && reference.Get() && reference.Get()->GetParent())
        reference.Get()->GetParent()->DeleteProperty(name);
    return bound;
}

} // namespace

ERESULT ParameterizedResultData::SetParameterRef(const Variable* variable)
{
    const PropertyHandle self(this);
    const PropertyHandle target(variable);
    DeleteProperty(ParameterVar);
    if (!self.Get())
        return ER_FAILED;
    return replaceByReference(*this, ParameterVar, target.Get()); // which may have been the former parameter
}

ERESULT ParameterizedResultData::AddResultDataRef(const ResultData* data)
{
    if (!data)
        return ER_INVALID_ARGUMENT;
    const AbstractProperty* root = data->GetRootProperty();
    if (root != GetRootProperty() && !root->IsFileRoot())
        return ER_INVALID_ARGUMENT;
    QString name;
    const ERESULT named = nextNumberedChildName(&name);
    return named < 0 ? named : replaceByReference(*this, name, data);
}

Variable* ParameterizedResultData::FindOrCreateResultVar(const QString& name)
{
    if (AbstractProperty* present = GetPropertyPtr(name); present && present->IsVariable())
        return dynamic_cast<Variable*>(present);
    // A circle of sweeps ends above, since each has its joined variable before it asks its members.
    const ReadInProgress reading(*this);
    const bool isTooDeep = reading.isRefused() && !ReadInProgress::covers(*this);
    return isTooDeep ? nullptr : Join(*this, name).build();
}

Variable* ParameterizedResultData::FindResultVar(const QString& name)
{
    const PropertyHandle self(this);
    QStringList names;
    GetVariableNameList(&names);
    return self.Get() && names.contains(name) ? FindOrCreateResultVar(name) : nullptr;
}

const Variable* ParameterizedResultData::FindResultVar(const QString& name) const
{
    return const_cast<ParameterizedResultData*>(this)->FindResultVar(name);
}

void ParameterizedResultData::GetVariableNameList(QStringList* list) const
{
    const ReadInProgress reading(*this);
    if (!list || reading.isRefused())
        return;
    QList<AbstractProperty*> children;
    GetPropertyList(&children);
    for (const PropertyHandle& child : snapshotOf(children)) {
        const ResultData* member = child.Get() ? dataOf(*child.Get()) : nullptr;
        if (member && !ReadInProgress::covers(*member)) {
            member->GetVariableNameList(list);
            return;
        }
    }
}

void ParameterizedResultData::GetVariableList(QList<AbstractProperty*>* list)
{
    if (!list)
        return;
    const PropertyHandle self(this);
    QStringList names;
    GetVariableNameList(&names);
    // To build one may delete another: a variable called "X_Indeps" stands in the way of the independents of "X".
    std::vector<PropertyHandle> built;
    for (const QString& name : qAsConst(names)) {
        if (self.Get())
            built.emplace_back(FindOrCreateResultVar(name));
    }
    for (const PropertyHandle& variable : built) {
        if (variable.Get())
            list->append(variable.Get());
    }
}

} // namespace Orrery
