#include "variables/FunctionVar.h"

#include "foundations/storage/DataFile.h"
#include "variables/NodeSnapshot_p.h"

#include <memory>
#include <utility>

namespace Orrery {
namespace {

/// The strategy of a Variable, held for the length of a call, where it is the one that computes.
std::shared_ptr<FunctionVarStrategy> computingStrategyOf(const Variable& variable)
{
    return std::dynamic_pointer_cast<FunctionVarStrategy>(variable.GetStrategyPtr().lock());
}

} // namespace

template ORRERYCOREVARIABLES_EXPORT FunctionVar* PropertyObject::GetPtr<FunctionVar>(const QString& name);

FunctionVar::FunctionVar()
{
    Init();
}

FunctionVar::FunctionVar(const QString& name)
    : Variable(name)
{
    Init();
}

FunctionVar::FunctionVar(const FunctionVar& other)
    : Variable(other)
{
    operator=(other); // as each typed Variable
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): the base class knows the way back
FunctionVar& FunctionVar::operator=(const FunctionVar& other)
{
    Variable::operator=(other);
    return *this;
}

FunctionVar::~FunctionVar()
{
    announceRemoval();
}

void FunctionVar::Init()
{
    SetStrategy<FunctionVarStrategy>();
}

const QString& FunctionVar::StaticType()
{
    static const QString type = QStringLiteral("FunctionVar");
    return type;
}

const QString& FunctionVar::PropertyObjType() const
{
    return StaticType();
}

Variable*
FunctionVar::New(QString name) // NOLINT(performance-unnecessary-value-param): so since the first hosts
{
    auto variable = std::make_unique<Variable>(name);
    variable->SetStrategy<FunctionVarStrategy>();
    return variable.release();
}

AbstractProperty* FunctionVar::DoClone() const
{
    std::unique_ptr<Variable> copy(New(QString()));
    *copy = *this;
    return copy.release();
}

ERESULT FunctionVar::AddArgumentRef(const Variable* argument)
{
    if (const auto strategy = computingStrategyOf(*this))
        return strategy->AddArgumentRef(argument);
    return FunctionVarStrategy::AppendArgument(*this, const_cast<Variable*>(argument));
}

void FunctionVar::DeleteArguments()
{
    if (const auto strategy = computingStrategyOf(*this))
        strategy->DeleteArguments();
    else
        FunctionVarStrategy::ClearArguments(*this);
}

ERESULT FunctionVar::GetArguments(QList<AbstractProperty*>* list) const
{
    if (const auto strategy = computingStrategyOf(*this))
        return strategy->GetArguments(list);
    return FunctionVarStrategy::ListArguments(*this, list);
}

ERESULT FunctionVar::SetFunction(Function* function)
{
    if (const auto strategy = computingStrategyOf(*this))
        return strategy->SetFunction(function);
    return FunctionVarStrategy::ReplaceFunction(*this, function);
}

Function* FunctionVar::GetFunction() const
{
    if (const auto strategy = computingStrategyOf(*this))
        return strategy->GetFunction();
    return FunctionVarStrategy::FunctionOf(*this);
}

namespace {

ERESULT relinkAllIn(PropertyObject& tree)
{
    ERESULT result = ER_SUCCESS;
    const auto note = [&result](ERESULT code) {
        if (result >= 0 && code < 0)
            result = code;
    };
    if (const auto* variable = dynamic_cast<const Variable*>(&tree)) {
        const PropertyHandle self(variable);
        if (const auto strategy = computingStrategyOf(*variable))
            note(strategy->Relink());
        if (self.IsExpired())
            return result;
    }
    for (const PropertyHandle& child : snapshotOf(tree.GetPropertyListSorted())) {
        if (auto* folder = dynamic_cast<PropertyObject*>(child.Get()))
            note(relinkAllIn(*folder));
    }
    return result;
}

} // namespace

ERESULT RelinkFunctionVariables(PropertyObject& tree)
{
    if (const auto* const root = dynamic_cast<const DataFile::RootProperty*>(tree.GetRootProperty());
        root && root->GetParentFile())
        root->GetParentFile()->RetryReferences();
    return relinkAllIn(tree);
}

} // namespace Orrery
