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
#include "foundations/property/CloneRun_p.h"
#include "foundations/property/PropertyObjectFactory.h"
#include "foundations/storage/ArrayAttributes.h"
#include "results/ParameterizedResultData.h"
#include "results/Result.h"
#include "results/ResultData.h"
#include "units/SISymbols_p.h"
#include "units/Units.h"
#include "units/UnitsNames_p.h"
#include "variables/ConcatVar.h"
#include "variables/ExplicitDataVar.h"
#include "variables/FunctionVar.h"
#include "variables/RangeVar.h"
#include "variables/SweptVarStrategy.h"
#include "variables/Variable.h"
#include "variables/VariableAttributes_p.h"

#include <QObject>

#include <typeinfo>

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

// Units. The registry comes first, then the types in its order: of two with the same dimensions the earlier one is
// the default. What reads them comes after.
[[maybe_unused]] static const ERESULT s_unitsRegistered = registerType<Units>();
const QString Units::SIUnits = QStringLiteral("SIUnits");
const QString Units::DisplayUnit = QStringLiteral("DisplayUnit");
const QString Units::ConversionFunction = QStringLiteral("Function");
const QString Internal::s_logarithmicScaleName = QStringLiteral("logarithmicscale");
const QString Internal::s_linearScaleName = QStringLiteral("linearscale");
std::list<UnitType> UnitType::s_unitTypes;
// clang-format off
const UnitType& UnitType::length = CreateType(QObject::tr("length"), {1, 0, 0, 0, 0, 0, 0, 0, 0}, QStringLiteral("m"));
const UnitType& UnitType::mass = CreateType(QObject::tr("mass"), {0, 1, 0, 0, 0, 0, 0, 0, 0}, QStringLiteral("kg"));
const UnitType& UnitType::time = CreateType(QObject::tr("time"), {0, 0, 1, 0, 0, 0, 0, 0, 0}, QStringLiteral("s"));
const UnitType& UnitType::area = CreateType(QObject::tr("area"), {2, 0, 0, 0, 0, 0, 0, 0, 0}, QStringLiteral("m^2"));
const UnitType& UnitType::volume = CreateType(QObject::tr("volume"), {3, 0, 0, 0, 0, 0, 0, 0, 0}, QStringLiteral("m^3"));
const UnitType& UnitType::planeAngle = CreateType(QObject::tr("plane angle"), {0, 0, 0, 0, 0, 0, 0, 1, 0}, QStringLiteral("rad"));
const UnitType& UnitType::solidAngle = CreateType(QObject::tr("solid angle"), {0, 0, 0, 0, 0, 0, 0, 0, 1}, QStringLiteral("sr"));
const UnitType& UnitType::velocity = CreateType(QObject::tr("velocity"), {1, 0, -1, 0, 0, 0, 0, 0, 0}, QStringLiteral("m/s"));
const UnitType& UnitType::acceleration = CreateType(QObject::tr("acceleration"), {1, 0, -2, 0, 0, 0, 0, 0, 0}, QStringLiteral("m/s^2"));
const UnitType& UnitType::force = CreateType(QObject::tr("force"), {1, 1, -2, 0, 0, 0, 0, 0, 0}, QStringLiteral("N"));
const UnitType& UnitType::pressure = CreateType(QObject::tr("pressure"), {-1, 1, -2, 0, 0, 0, 0, 0, 0}, QStringLiteral("Pa"));
const UnitType& UnitType::energy = CreateType(QObject::tr("energy"), {2, 1, -2, 0, 0, 0, 0, 0, 0}, QStringLiteral("J"));
const UnitType& UnitType::power = CreateType(QObject::tr("power"), {2, 1, -3, 0, 0, 0, 0, 0, 0}, QStringLiteral("W"));
const UnitType& UnitType::frequency = CreateType(QObject::tr("frequency"), {0, 0, -1, 0, 0, 0, 0, 0, 0}, QStringLiteral("Hz"));
const UnitType& UnitType::electricCurrent = CreateType(QObject::tr("electric current"), {0, 0, 0, 1, 0, 0, 0, 0, 0}, QStringLiteral("A"));
const UnitType& UnitType::electricCharge = CreateType(QObject::tr("electric charge"), {0, 0, 1, 1, 0, 0, 0, 0, 0}, QStringLiteral("C"));
const UnitType& UnitType::electricPotential = CreateType(QObject::tr("electric potential"), {2, 1, -3, -1, 0, 0, 0, 0, 0}, QStringLiteral("V"));
const UnitType& UnitType::electricResistance = CreateType(QObject::tr("electric resistance"), {2, 1, -3, -2, 0, 0, 0, 0, 0}, QString(QChar(0x03A9)));
const UnitType& UnitType::electricCapacitance = CreateType(QObject::tr("electric capacitance"), {-2, -1, 4, 2, 0, 0, 0, 0, 0}, QStringLiteral("F"));
const UnitType& UnitType::magneticFlux = CreateType(QObject::tr("magnetic flux"), {2, 1, -2, -1, 0, 0, 0, 0, 0}, QStringLiteral("Wb"));
const UnitType& UnitType::magneticFluxDensity = CreateType(QObject::tr("magnetic flux density"), {0, 1, -2, -1, 0, 0, 0, 0, 0}, QStringLiteral("T"));
const UnitType& UnitType::inductance = CreateType(QObject::tr("inductance"), {2, 1, -2, -2, 0, 0, 0, 0, 0}, QStringLiteral("H"));
const UnitType& UnitType::conductance = CreateType(QObject::tr("conductance"), {-2, -1, 3, 2, 0, 0, 0, 0, 0}, QStringLiteral("S"));
const UnitType& UnitType::thermodynamicTemperature = CreateType(QObject::tr("thermodynamic temperature"), {0, 0, 0, 0, 1, 0, 0, 0, 0}, QStringLiteral("K"));
const UnitType& UnitType::amountOfSubstance = CreateType(QObject::tr("amount of substance"), {0, 0, 0, 0, 0, 1, 0, 0, 0}, QStringLiteral("mol"));
const UnitType& UnitType::luminousIntensity = CreateType(QObject::tr("luminous intensity"), {0, 0, 0, 0, 0, 0, 1, 0, 0}, QStringLiteral("cd"));
const UnitType& UnitType::luminousFlux = CreateType(QObject::tr("luminous flux"), {0, 0, 0, 0, 0, 0, 1, 0, 1}, QStringLiteral("lm"));
const UnitType& UnitType::illuminance = CreateType(QObject::tr("illuminance"), {-2, 0, 0, 0, 0, 0, 1, 0, 1}, QStringLiteral("lx"));
const UnitType& UnitType::radioactivity = CreateType(QObject::tr("radioactivity"), {0, 0, -1, 0, 0, 0, 0, 0, 0}, QStringLiteral("Bq"));
const UnitType& UnitType::absorbedDose = CreateType(QObject::tr("absorbed dose of radiation"), {2, 0, -2, 0, 0, 0, 0, 0, 0}, QStringLiteral("Gy"));
const UnitType& UnitType::equivalentDose = CreateType(QObject::tr("equivalent dose of radiation"), {2, 0, -2, 0, 0, 0, 0, 0, 0}, QStringLiteral("Sv"));
const UnitType& UnitType::catalyticActivity = CreateType(QObject::tr("catalytic activity"), {0, 0, -1, 0, 0, 1, 0, 0, 0}, QStringLiteral("kat"));
const UnitType& UnitType::dimensionless = CreateType(QObject::tr("scalar"), {0, 0, 0, 0, 0, 0, 0, 0, 0}, QString());
// clang-format on
const Internal::SISymbolTable Internal::SISymbolTable::s_instance;

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
[[maybe_unused]] static const ERESULT s_attributesRegistered =
    ArrayAttributes::RegisterSource(&describeVariableData);

// FunctionVar, and the measurements that it can compute from the first day
[[maybe_unused]] static const ERESULT s_functionVarRegistered = registerType<FunctionVar>();
[[maybe_unused]] static const ERESULT s_polynomialsRegistered[] = {
    registerPolynomial<1>(), registerPolynomial<2>(), registerPolynomial<3>()};

// ParameterizedResultData; the swept variables that it makes have a type that is never registered
[[maybe_unused]] static const ERESULT s_parameterizedResultDataRegistered =
    registerType<ParameterizedResultData>();
const QString ParameterizedResultData::ParameterVar = QStringLiteral("Parameter");
const QString SweptVarStrategy::s_param = QStringLiteral("Param");
const QString SweptVarStrategy::s_concatData = QStringLiteral("DependVar");

// Result
[[maybe_unused]] static const ERESULT s_resultRegistered = registerType<Result>();
const QString Result::s_applicationId = QStringLiteral("AppID");
const QString Result::s_setup = QStringLiteral("Setup");
const QString Result::s_displayTemplate = QStringLiteral("DisplayTemplate");

// ResultData
[[maybe_unused]] static const ERESULT s_resultDataRegistered = registerType<ResultData>();

// Function
[[maybe_unused]] static const ERESULT s_functionRegistered = registerType<Function>();
const bool Function::s_clonesTrusted =
    Internal::trustClonesOf(typeid(Function), &Function::holdsNoMeasurement);
const QString Function::s_functionName = QStringLiteral("Function");
const QString Function::s_parameters = QStringLiteral("Parameters");

} // namespace Orrery
