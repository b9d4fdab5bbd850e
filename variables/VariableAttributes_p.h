#pragma once

namespace Orrery {

class ArrayAttributes;
class SimpleProperty;

/// What other programs are told of the data of a Variable in a data file: "type", the name of its class; "units", the
/// SI string of its units, unless it is a plain number; "axes", the datasets of its independent variables in their
/// order. Other arrays than the child "Data" of a Variable get nothing.
void describeVariableData(const SimpleProperty& array, ArrayAttributes* attributes);

} // namespace Orrery
