#include "hosts/orrery/FunctionCall.h"

#include "Core/FunctionProperty.h"
#include "Core/MeasurementManager.h"
#include "foundations/property/PropertyReference.h"
#include "hosts/orrery/Diagnostics.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/Numbers.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/TreeAccess.h"
#include "variables/FunctionVar.h"

#include <QStringList>

#include <memory>
#include <stdexcept>

namespace Orrery::Host {

using Brindle::Quay::BVariant;

namespace {

/// A function has all of its argument in memory: a gigabyte of doubles.
constexpr std::uint64_t s_mostComputedOffsets = std::uint64_t(1) << 27U;

std::string knownNames()
{
    auto* const manager = MeasurementManager<Variable>::Instance();
    QStringList names;
    const QStringList categories = manager->GetCategories();
    for (const QString& category : categories) {
        const QList<Measurement<Variable>*> measurements = manager->GetMeasurements(category);
        for (Measurement<Variable>* const measurement : measurements)
            names.append(measurement->get_name());
    }
    names.sort();
    return printable(names.join(QStringLiteral(", ")).toStdString());
}

/// "3 parameters (C-0, C-1, C-2)".
std::string parametersText(const QList<IO::Parameter>& parameters)
{
    if (parameters.isEmpty())
        return "no parameters";
    QStringList names;
    for (const IO::Parameter& parameter : parameters)
        names.append(parameter.name);
    return std::to_string(parameters.size()) + (parameters.size() == 1 ? " parameter (" : " parameters (") +
           printable(names.join(QStringLiteral(", ")).toStdString()) + ")";
}

std::vector<BVariant> parseParameters(const std::string& text)
{
    std::vector<BVariant> values;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        const std::string part = text.substr(begin, end - begin);
        double value = 0.0;
        if (!parseNumber(trimmed(part), &value))
            throw Failure("--function: expected a number, found " + inQuotes(part), ExitUsage);
        values.emplace_back(value);
        begin = end + 1;
    }
    return values;
}

QString freeName(const PropertyObject& folder, const QString& wanted)
{
    QString name = wanted;
    for (int number = 2; folder.HasProperty(name); ++number)
        name = wanted + QLatin1Char('_') + QString::number(number);
    return name;
}

void requireHoldable(const Variable& argument)
{
    const std::uint64_t offsets = argument.GetMaxIndepOffset();
    if (!holdsStoredData(argument) && offsets > s_mostComputedOffsets)
        throw Failure("there are " + std::to_string(offsets) + " values, and a function takes at most " +
                      std::to_string(s_mostComputedOffsets) + " that are computed");
}

/// What a node among the arguments of a function stands for; null if it leads nowhere.
const Variable* argumentAt(const AbstractProperty& node)
{
    if (!node.IsPropertyReference())
        return dynamic_cast<const Variable*>(&node);
    return dynamic_cast<const Variable*>(static_cast<const PropertyReference&>(node).Resolve());
}

/// A function of a function takes what that has stored, whatever its length.
void requireHoldableArguments(const FunctionVarStrategy& strategy)
{
    QList<AbstractProperty*> arguments;
    strategy.GetArguments(&arguments);
    for (const AbstractProperty* const node : qAsConst(arguments)) {
        const Variable* const argument = argumentAt(*node);
        if (argument && !isFunction(*argument))
            requireHoldable(*argument);
    }
}

const Function* functionOf(const Variable& variable)
{
    const auto strategy = std::dynamic_pointer_cast<FunctionVarStrategy>(variable.GetStrategyPtr().lock());
    return strategy ? strategy->GetFunction() : nullptr;
}

std::string functionName(const Variable& variable)
{
    const Function* const function = functionOf(variable);
    return function ? "function " + inQuotes(function->GetFunctionName().toStdString()) : "function";
}

} // namespace

FunctionCall parseFunction(const std::string& text)
{
    const std::size_t colon = text.find(':');
    FunctionCall call;
    call.name = QString::fromStdString(text.substr(0, colon));
    const Measurement<Variable>* const measurement =
        MeasurementManager<Variable>::Instance()->FindMeasurement(call.name);
    if (!measurement)
        throw Failure("--function: there is no function " + inQuotes(text.substr(0, colon)) + "; there are " +
                          knownNames(),
                      ExitUsage);
    const QList<IO::Parameter> declared = measurement->get_parameters();
    if (colon == std::string::npos) {
        for (const IO::Parameter& parameter : declared)
            call.parameters.push_back(parameter.value);
        return call;
    }
    call.parameters = parseParameters(text.substr(colon + 1));
    if (call.parameters.size() != static_cast<std::size_t>(declared.size()))
        throw Failure("--function: " + inQuotes(call.name.toStdString()) + " takes " +
                          parametersText(declared) + ", found " + std::to_string(call.parameters.size()),
                      ExitUsage);
    return call;
}

Variable& addFunction(PropertyObject& folder, const Variable& argument, const FunctionCall& call)
{
    requireHoldable(argument);
    const QString name = QStringLiteral("%1(%2)").arg(call.name, argument.GetName());
    auto owned = std::make_unique<FunctionVar>(freeName(folder, name));
    FunctionVar& variable = *owned;
    insertNode(&folder, std::move(owned));
    auto function = std::make_unique<Function>(call.name);
    if (function->SetParameters(call.parameters) < 0 || variable.AddArgumentRef(&argument) < 0 ||
        variable.SetFunction(function.get()) < 0)
        throw Failure(inQuotes(name.toStdString()) + " can't be put into the tree");
    static_cast<void>(function.release());
    // One that hands its argument on leaves the units as they are; the others set or remove them.
    const Units* units = nullptr;
    if (argument.GetUnits(&units) >= 0)
        variable.SetUnits(*units);
    for (int i = 0; i < argument.GetIndepCount(); ++i) {
        Variable* axis = nullptr;
        if (argument.GetIndepVariable(&axis, i) >= 0 && axis)
            variable.AddIndepVariableRef(axis);
    }
    return variable;
}

bool isFunction(const Variable& variable)
{
    return dynamic_cast<FunctionVarStrategy*>(variable.GetStrategyPtr().lock().get()) != nullptr;
}

BVariant resultOf(const Variable& function)
{
    if (const auto strategy =
            std::dynamic_pointer_cast<FunctionVarStrategy>(function.GetStrategyPtr().lock()))
        requireHoldableArguments(*strategy);
    if (const Function* const described = functionOf(function); described && !described->GetMeasurement())
        warn("the " + functionName(function) + " is not known here; these are the values that were stored");
    const LogWatch log;
    BVariant result;
    try {
        result = function.GetData();
    } catch (const std::logic_error& error) { // such as an argument that leads nowhere
        throw Failure(functionName(function) + ": " + printable(error.what()));
    }
    // The library tells its log of a failed computation and answers with what was stored before.
    const QString failure = log.after(QStringLiteral("Error in Orrery::FunctionVarStrategy::Compute, "));
    if (!failure.isNull())
        throw Failure(functionName(function) + ": " +
                      printable(failure.left(failure.lastIndexOf(QLatin1Char('\n'))).toStdString()));
    return result;
}

} // namespace Orrery::Host
