#pragma once

#include "variables/RangeVarStrategy.h"
#include "variables/Variable.h"

namespace Orrery {

/// A Variable that stands for an evenly spaced axis without storing it; the usual independent variable.
///
/// A plain Variable with the range strategy behaves alike. A fresh one has none of its three parameters, and
/// no values until "Start" and "Count" are set.
class ORRERYCOREVARIABLES_EXPORT RangeVar : public Variable
{
public:
    RangeVar();                                 ///< unnamed, without its three parameters
    explicit RangeVar(const QString& name);     ///< without its three parameters
    RangeVar(const RangeVar& other);            ///< as the copy of a Variable: with the parameters
    RangeVar& operator=(const RangeVar& other); ///< as the assignment of a Variable: with the parameters

    const QString& PropertyObjType() const override;
    ~RangeVar() override;
    AbstractProperty* DoClone() const override;

    /// Store a parameter of the range, as the operation of that name of RangeVarStrategy.
    ///
    /// Errors: as there; ER_FAILED for a moved-from Variable.
    /// Edge:   the kind of the present strategy doesn't matter.
    ERESULT SetStart(const BVariant& value);
    ERESULT SetStep(const BVariant& value);  ///< a range without one counts by 1
    ERESULT SetCount(const BVariant& value); ///< how many values there are

    /// The three parameters as numbers, as RangeVarStrategy::GetParams.
    ///
    /// Errors: as there; ER_FAILED if the present strategy is of another kind, and for a moved-from Variable.
    ERESULT GetParams(double* start, double* step, std::uint64_t* count) const;

    /// "RangeVar", the name under which the class is saved.
    static const QString& StaticType();

    // The names of the children that hold the parameters.
    static const QString Start; ///< "Start"
    static const QString Step;  ///< "Step"
    static const QString Count; ///< "Count"

private:
    void Init();
};

} // namespace Orrery
