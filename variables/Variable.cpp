#include "variables/Variable.h"

#include "foundations/property/PropertyHandle.h"
#include "foundations/property/SimpleProperty.h"
#include "foundations/variant/VariantOperations.h"
#include "tracking/DataObserver.h"
#include "tracking/Notifier.h"
#include "variables/ConcatVarStrategy.h"
#include "variables/ExplicitDataVarStrategy.h"
#include "variables/FunctionVarStrategy.h"
#include "variables/RangeVarStrategy.h"
#include "variables/SweptVarStrategy.h"

#include <QDebug>
#include <QList>

#include <stdexcept>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace Orrery {
namespace {

bool isWithin(const AbstractProperty* node, const PropertyObject& folder)
{
    while (node && node != &folder)
        node = node->GetParent();
    return node != nullptr;
}

void unlink(AbstractProperty& node)
{
    if (PropertyObject* parent = node.GetParent())
        parent->RemoveProperty(node.GetName());
}

/// The folder behind a handle that was made for one.
PropertyObject* folderOf(const PropertyHandle& handle)
{
    return static_cast<PropertyObject*>(handle.Get());
}

// A host's handlers of path changes run while a Variable is moved, and may destroy, rename and move whatever
// takes part. Hence the handles below: each step looks anew at what is still there.

bool isLoose(const PropertyHandle& handle)
{
    const AbstractProperty* node = handle.Get();
    return node && !node->GetParent();
}

bool insertInto(const PropertyHandle& folder, const PropertyHandle& node)
{
    return folderOf(folder) && folderOf(folder)->InsertOrReplaceProperty(node.Get()) >= 0;
}

/// What can't be put in (the tree would get too deep, or the folder stand below itself) stays where it was.
void moveChild(const PropertyHandle& child, const PropertyHandle& from, const PropertyHandle& to)
{
    AbstractProperty* node = child.Get();
    if (!node || !from.Get() || node->GetParent() != from.Get())
        return;
    unlink(*node);
    if (isLoose(child))
        insertInto(to, child);
    if (isLoose(child) && !insertInto(from, child))
        delete child.Get();
}

void moveChildren(const PropertyHandle& from, const PropertyHandle& to)
{
    QList<AbstractProperty*> children;
    folderOf(from)->GetPropertyList(&children);
    std::vector<PropertyHandle> snapshot;
    for (const AbstractProperty* child : qAsConst(children))
        snapshot.emplace_back(child);
    for (const PropertyHandle& child : snapshot)
        moveChild(child, from, to);
}

/// Puts `node` where `source` stands, which is taken out; nothing happens if that stands nowhere.
void takePlace(const PropertyHandle& source, const PropertyHandle& node)
{
    if (!source.Get() || !source.Get()->GetParent() || !node.Get())
        return;
    const PropertyHandle place(source.Get()->GetParent());
    const PropertyHandle former(node.Get()->GetParent());
    unlink(*source.Get());
    if (node.Get())
        unlink(*node.Get());
    if (isLoose(node))
        insertInto(place, node);
    if (isLoose(node))
        insertInto(former, node);
}

QString textOf(const BVariant& value)
{
    if (value.isEmpty())
        return QString();
    return QString::fromStdString(Brindle::Quay::getScalar<std::string>(value));
}

template <class S>
bool isExactly(const IVariableStrategy* strategy)
{
    return strategy && typeid(*strategy) == typeid(S);
}

/// Selects S if `type` is its text; false leaves the strategy as it is.
template <class S>
bool selectIfNamed(Variable& variable, const QString& type)
{
    if (type != S::StaticType())
        return false;
    variable.SetStrategy<S>();
    return true;
}

} // namespace

template ORRERYCOREVARIABLES_EXPORT Variable* PropertyObject::GetPtr<Variable>(const QString& name);

Variable::Variable()
{
    Init();
}

Variable::Variable(const QString& name)
    : PropertyObject(name)
{
    Init();
}

Variable::Variable(const QString& name, const BVariant& data)
    : Variable(name)
{
    Variable::UpdateData(data, true, IsCellArrayFalse);
}

// The assignment brings what the base class would copy.
Variable::Variable(const Variable& other) // NOLINT(bugprone-copy-constructor-init)
    : PropertyObject()
{
    operator=(other);
}

Variable::Variable(Variable&& other) // NOLINT(performance-noexcept-move-constructor)
    : PropertyObject(other.GetName())
{
    operator=(std::move(other));
}

Variable::~Variable()
{
    announceRemoval();
}

void Variable::announceRemoval()
{
    ExpireHandles();
    if (m_notifier)
        m_notifier->Remove();
}

void Variable::Init()
{
    if (!m_notifier)
        m_notifier = std::make_shared<Notifier>();
    m_dirtyTracker = std::make_shared<Tracker>(this);
    SetStrategy<ExplicitDataVarStrategy>();
}

template <class S>
S* Variable::SetStrategy()
{
    static_assert(std::is_base_of_v<IVariableStrategy, S>);
    std::shared_ptr<IVariableStrategy> strategy = strategyInUse();
    if (!isExactly<S>(strategy.get()))
        m_strategy = strategy = std::make_shared<S>(this);
    verifyBackref(*strategy);
    if (SetProperty(sStrategyPropertyName(), BVariant(strategy->GetType().toStdString())) < 0)
        throw std::logic_error("fatal error in SetStrategy()");
    return static_cast<S*>(strategy.get());
}

template ORRERYCOREVARIABLES_EXPORT ExplicitDataVarStrategy* Variable::SetStrategy<ExplicitDataVarStrategy>();
template ORRERYCOREVARIABLES_EXPORT RangeVarStrategy* Variable::SetStrategy<RangeVarStrategy>();
template ORRERYCOREVARIABLES_EXPORT FunctionVarStrategy* Variable::SetStrategy<FunctionVarStrategy>();
template ORRERYCOREVARIABLES_EXPORT ConcatVarStrategy* Variable::SetStrategy<ConcatVarStrategy>();
template ORRERYCOREVARIABLES_EXPORT SweptVarStrategy* Variable::SetStrategy<SweptVarStrategy>();

const Variable& Variable::verifyBackref(IVariableStrategy& strategy) const
{
    Variable& owner = *strategy.m_backRef;
    // One that stands above this Variable would destroy it together with its own former children.
    if (!isWithin(this, owner))
        owner = *this;
    return *this;
}

Variable& Variable::operator=(const Variable& other)
{
    if (this == &other)
        return *this;
    // `other` may stand below this folder and go with the former children; this is needed after that.
    const std::shared_ptr<IVariableStrategy> source = other.m_strategy;
    const bool isObserved = other.getObserver() != nullptr;
    const PropertyHandle self(this);
    PropertyObject::operator=(other);
    if (self.IsExpired())
        return *this; // a handler of a former child's end has destroyed this Variable
    Init();
    if (source)
        m_strategy = source->Copy(this);
    else if (m_strategy->m_backRef != this)
        m_strategy = m_strategy->Copy(this);
    if (isObserved)
        ensureObserver(this);
    return *this;
}

Variable& Variable::operator=(Variable&& other) // NOLINT(performance-noexcept-move-constructor)
{
    const PropertyHandle self(this);
    const PropertyHandle source(&other);
    if (!source.Get()) // it is being destroyed: nothing can be taken out of it any more, but it can be copied
        return operator=(static_cast<const Variable&>(other));
    // To the end both Variables have all three: `other` still announces that it leaves its place. What this one
    // has had goes last, since a QObject tells of its end too.
    const std::shared_ptr<Notifier> former = m_notifier;
    m_notifier = other.m_notifier;
    m_dirtyTracker = other.m_dirtyTracker;
    if (const std::shared_ptr<DataObserver> observer = getObserver())
        observer->setVariable(this);
    m_strategy = other.m_strategy;
    if (m_strategy && m_strategy->m_backRef == &other)
        m_strategy->m_movedFrom = source;
    // The place of a source below this folder can't be taken, and it must not go with a child that is replaced.
    if (this != &other && isWithin(&other, *this))
        unlink(other);
    if (source.Get())
        moveChildren(source, self);
    takePlace(source, self);
    if (source.Get()) {
        other.m_strategy.reset();
        other.m_dirtyTracker.reset();
        other.m_notifier.reset();
    }
    return *this;
}

const QString& Variable::StaticType()
{
    static const QString type = QStringLiteral("Variable");
    return type;
}

const QString& Variable::PropertyObjType() const
{
    return StaticType();
}

unsigned int Variable::GetTypeFlags() const
{
    return PropertyTypeFlagObject | PropertyTypeFlagVariable;
}

AbstractProperty* Variable::DoClone() const
{
    auto copy = std::make_unique<Variable>();
    *copy = *this;
    return copy.release();
}

void Variable::OnDeserialization()
{
    const auto* selected = GetPtr<SimpleProperty>(sStrategyPropertyName());
    if (!selected)
        return;
    const QString type = textOf(selected->GetValue());
    // One line for each kind of strategy.
    const bool known =
        selectIfNamed<ExplicitDataVarStrategy>(*this, type) || selectIfNamed<RangeVarStrategy>(*this, type) ||
        selectIfNamed<FunctionVarStrategy>(*this, type) || selectIfNamed<ConcatVarStrategy>(*this, type) ||
        selectIfNamed<SweptVarStrategy>(*this, type);
    if (known)
        return;
    SetStrategy<ExplicitDataVarStrategy>();
    qWarning().noquote().nospace() << "defaulted to ExplicitDataVar; unknown strategy type " << type;
}

void Variable::OnPathChanged()
{
    PropertyObject::OnPathChanged();
    if (m_notifier)
        m_notifier->PathChanged();
}

std::shared_ptr<IVariableStrategy> Variable::strategyInUse() const
{
    if (m_strategy && m_strategy->m_backRef != this && m_strategy->ownerIsGone())
        m_strategy = m_strategy->Copy(const_cast<Variable*>(this));
    return m_strategy;
}

const IVariableStrategy* Variable::plainStrategy() const
{
    const IVariableStrategy* const strategy = m_strategy.get();
    if (!strategy || strategy->m_backRef != this)
        return nullptr;
    const bool isPlain =
        isExactly<ExplicitDataVarStrategy>(strategy) || isExactly<RangeVarStrategy>(strategy);
    return isPlain ? strategy : nullptr;
}

std::shared_ptr<Variable> Variable::strategyOwner() const
{
    const std::shared_ptr<IVariableStrategy> strategy = strategyInUse();
    return strategy ? std::shared_ptr<Variable>(strategy, strategy->m_backRef) : nullptr;
}

void Variable::setObserver(std::shared_ptr<DataObserver> observer)
{
    if (m_notifier)
        m_notifier->setObserver(std::move(observer));
}

std::shared_ptr<DataObserver> Variable::getObserver() const
{
    return m_notifier ? m_notifier->getObserver() : nullptr;
}

Variable& Variable::UpdateData(const BVariant& data, bool notify, IsCellArray flag)
{
    const std::shared_ptr<IVariableStrategy> strategy = strategyInUse();
    if (!strategy)
        return *this;
    // A handler of what happens below may destroy this Variable.
    const std::shared_ptr<Notifier> notifier = m_notifier;
    if (m_dirtyTracker)
        m_dirtyTracker->markDirty();
    verifyBackref(*strategy);
    if (strategy->m_backRef != this && strategy->ownerIsGone())
        return *this; // a handler has destroyed the moved-from Variable that the data would have gone to
    strategy->UpdateData(data, flag);
    if (notify && notifier)
        notifier->Modify();
    return *this;
}

Variable& Variable::UpdateData()
{
    if (m_notifier)
        m_notifier->Modify();
    return *this;
}

Variable& Variable::UpdateDataAsCellArrayFromBVariant(const BVariant& data)
{
    return UpdateData(BVariant(data), true, IsCellArrayTrue);
}

BVariant Variable::GetData(IsCellArray* flag) const
{
    const std::shared_ptr<IVariableStrategy> strategy = strategyInUse();
    if (strategy)
        return strategy->GetData(flag);
    if (flag)
        *flag = IsCellArrayFalse;
    return BVariant();
}

std::uint64_t Variable::GetMaxIndepOffset() const
{
    const std::shared_ptr<IVariableStrategy> strategy = strategyInUse();
    return strategy ? strategy->GetMaxIndepOffset() : 0;
}

ERESULT Variable::GetValueAt(BVariant* out, std::uint64_t offset) const
{
    const std::shared_ptr<IVariableStrategy> strategy = strategyInUse();
    return strategy ? strategy->GetValueAt(out, offset) : ER_FAILED;
}

ERESULT Variable::GetValueRange(BVariant* out, std::uint64_t start, std::uint64_t end) const
{
    const std::shared_ptr<IVariableStrategy> strategy = strategyInUse();
    return strategy ? strategy->GetValueRange(out, start, end) : ER_FAILED;
}

std::uint64_t Variable::GetElementDimCount() const
{
    const std::shared_ptr<IVariableStrategy> strategy = strategyInUse();
    return strategy ? strategy->GetElementDimCount() : 0;
}

ERESULT Variable::GetElementShape(std::vector<std::uint64_t>* shape) const
{
    const std::shared_ptr<IVariableStrategy> strategy = strategyInUse();
    return strategy ? strategy->GetElementShape(shape) : ER_FAILED;
}

std::weak_ptr<IVariableStrategy> Variable::GetStrategyPtr() const
{
    return strategyInUse();
}

const QString& Variable::sIndependentVars()
{
    return s_independentVars;
}

const QString& Variable::sUnitsPropertyName()
{
    return s_units;
}

const QString& Variable::sDisplayUnitsPropertyName()
{
    return s_displayUnits;
}

const QString& Variable::sStrategyPropertyName()
{
    return s_strategy;
}

const QString& Variable::sIndependentMapPropertyName()
{
    return s_independentMap;
}

} // namespace Orrery
