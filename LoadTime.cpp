// The one place where OrreryCoreVariables does work at load time. The order of initialisers across source
// files isn't defined, so every registration that has to happen before main() stands here, in its order:
// a class's type first, then the constants that name its children. The classes follow one another as
//
//     Units, Variable, RangeVar, ConcatVar, ExplicitDataVar, FunctionVar,
//     ParameterizedResultData, Result, ResultData, Function
//
// so that a later one may use the names of an earlier one. OrreryCore is loaded before this library, hence
// the factory is there.

#include "Core/FunctionProperty.h"
#include "Core/MeasurementManager.h"
#include "Core/PolynomialMeasurement.h"
#include "foundations/property/PropertyObjectFactory.h"
#include "variables/ConcatVar.h"
#include "variables/ExplicitDataVar.h"
#include "variables/FunctionVar.h"
#include "variables/RangeVar.h"
#include "variables/SweptVarStrategy.h"
#include "variables/Variable.h"

namespace Orrery {
namespace {

template <class T>
PropertyObject* create()
{
    return new T;
}

/// The code is kept for the debugger only: a type that can't be registered is loaded as a plain folder.
template <class T>
ERESULT registerType()
{
    return PropertyObjectFactory::Instance().RegisterType(T::StaticType(), &create<T>);
}

template <int N>
ERESULT registerPolynomial()
{
    return MeasurementManager<Variable>::Instance()->Register(new PolynomialMeasurement<N>);
}

} // namespace

// Variable
[[maybe_unused]] static const ERESULT s_variableRegistered = registerType<Variable>();
const QString Variable::s_independentVars = QStringLiteral("Indep");
const QString Variable::s_units = QStringLiteral("Unit");
const QString Variable::s_displayUnits = QStringLiteral("DisplayUnit");
const QString Variable::s_strategy = QStringLiteral("VariableStrategy");
const QString Variable::s_independentMap = QStringLiteral("IndependentMap");

// RangeVar
[[maybe_unused]] static const ERESULT s_rangeVarRegistered = registerType<RangeVar>();
const QString RangeVar::Start = QStringLiteral("Start");
const QString RangeVar::Step = QStringLiteral("Step");
const QString RangeVar::Count = QStringLiteral("Count");

// ConcatVar
[[maybe_unused]] static const ERESULT s_concatVarRegistered = registerType<ConcatVar>();

// ExplicitDataVar
[[maybe_unused]] static const ERESULT s_explicitDataVarRegistered = registerType<ExplicitDataVar>();
const QString ExplicitDataVar::s_data = QStringLiteral("Data");

// FunctionVar, and the measurements that it can compute from the first day
[[maybe_unused]] static const ERESULT s_functionVarRegistered = registerType<FunctionVar>();
[[maybe_unused]] static const ERESULT s_polynomialsRegistered[] = {
    registerPolynomial<1>(), registerPolynomial<2>(), registerPolynomial<3>()};

// ParameterizedResultData; a sweep is made by it, and has a type that is never registered
const QString SweptVarStrategy::s_param = QStringLiteral("Param");
const QString SweptVarStrategy::s_concatData = QStringLiteral("DependVar");

// Function
[[maybe_unused]] static const ERESULT s_functionRegistered = registerType<Function>();
const QString Function::s_functionName = QStringLiteral("Function");
const QString Function::s_parameters = QStringLiteral("Parameters");

} // namespace Orrery
