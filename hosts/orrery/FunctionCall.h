#pragma once

#include "foundations/property/PropertyObject.h"
#include "foundations/variant/BVariant.h"
#include "variables/Variable.h"

#include <QString>

#include <string>
#include <vector>

namespace Orrery::Host {

/// A function as it is asked for on the command line.
struct FunctionCall
{
    QString name; ///< of a registered measurement
    std::vector<Brindle::Quay::BVariant> parameters;
};

/// "NAME" with the function's own parameters, or "NAME:P1,P2,..." with as many as it declares.
///
/// Errors: Failure (ExitUsage) with the names that there are; with the parameters that the function takes; for a
///         parameter that is no number.
FunctionCall parseFunction(const std::string& text);

/// Put a function variable of this argument into the folder, which owns it: "magnitude(v(out))", over the axes of the
/// argument. Nothing is computed yet.
///
/// Errors: Failure for an argument that is computed and longer than can be held, and when the tree refuses a node.
Variable& addFunction(PropertyObject& folder, const Variable& argument, const FunctionCall& call);

/// Whether the values of a variable are the result of a function.
bool isFunction(const Variable& variable);

/// The result of a function, computed if it is out of date. Of a function that this process doesn't know, the result
/// that is stored, with a warning.
///
/// Errors: Failure when the function can't be computed, also where the library would answer with an old result.
Brindle::Quay::BVariant resultOf(const Variable& function);

} // namespace Orrery::Host
