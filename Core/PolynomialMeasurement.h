#pragma once

#include "Core/Measurement.h"
#include "foundations/variant/BVariant.h"
#include "orrerycorevariables_export.h"

#include <QVector>

namespace Orrery {

class Variable;

/// The coefficients of a polynomial, from the constant one upward.
class ORRERYCOREVARIABLES_EXPORT Polynomial
{
public:
    Polynomial();                                   ///< no coefficients
    Polynomial(const Polynomial& other);            ///< shares the coefficients until one of both is changed
    Polynomial& operator=(const Polynomial& other); ///< shares the coefficients of `other`
    virtual ~Polynomial();

    /// The kind of curve, of which there is but one: 0.
    virtual int kind() const;

    /// Take over a copy of these numbers.
    void SetCoefficients(const QVector<double>& numbers);

private:
    BVariant m_coefficients;
};

/// The measurement "polynomial-N" of the category "Math", with N + 1 coefficients "C-0" ... "C-N" as its parameters,
/// of which the last is 1 by default and the others are 0.
///
/// It declares, checks and holds its coefficients, and hands the data of its input on unchanged: it describes a
/// polynomial for those who read the description, and evaluates none.
template <int N>
class ORRERYCOREVARIABLES_EXPORT PolynomialMeasurement : public Measurement<Variable>
{
    static_assert(N >= 1 && N <= 3, "the library holds the degrees 1 to 3");

public:
    PolynomialMeasurement();                                              ///< with the default coefficients
    PolynomialMeasurement(const PolynomialMeasurement& other);            ///< all fields and the coefficients
    PolynomialMeasurement& operator=(const PolynomialMeasurement& other); ///< fields and coefficients

    ~PolynomialMeasurement() override;
    QString get_name() override;
    AbstractProbe* make_probe() override;
    Measurement<Variable>* clone() const override;

    /// Check the parameter values and store the data of `input`, as its strategy gives them, in the output; all
    /// clients of that are told. The stack plays no part. Without an output each call makes a new Variable, which
    /// the caller owns.
    ///
    /// Errors: in this order, and with the output untouched: std::out_of_range "invalid vector subscript" for fewer
    ///         than N + 1 parameter values; std::runtime_error for one that is no number ("unknown type" for null);
    ///         std::invalid_argument for a null `input`. What reading or storing the data throws passes through.
    /// Edge:   the dirty state of `input` isn't looked at. A moved-from `input` gives null data. Coefficients that
    ///         were read before a failure stay.
    Variable* apply(Variable* input);

protected:
    /// The three below, one after the other.
    void init();

    void init_tags();       ///< the name, the category and the description
    void init_parameters(); ///< declares the coefficients with their defaults

    /// Make the declared defaults the parameter values and the coefficients.
    ///
    /// Errors: std::runtime_error for a default that is no number.
    void init_parameter_values();

    /// Make the parameter values the coefficients; those beyond N are passed over. Returns this object.
    ///
    /// Errors: as apply(), but for the null input.
    PolynomialMeasurement<N>* read_params();

    QVector<double> coefficients; ///< always N + 1
};

extern template class ORRERYCOREVARIABLES_EXPORT PolynomialMeasurement<1>;
extern template class ORRERYCOREVARIABLES_EXPORT PolynomialMeasurement<2>;
extern template class ORRERYCOREVARIABLES_EXPORT PolynomialMeasurement<3>;

extern template class ORRERYCOREVARIABLES_EXPORT ProbeTable<PolynomialMeasurement<1>>;
extern template class ORRERYCOREVARIABLES_EXPORT ProbeTable<PolynomialMeasurement<2>>;
extern template class ORRERYCOREVARIABLES_EXPORT ProbeTable<PolynomialMeasurement<3>>;

extern template class ORRERYCOREVARIABLES_EXPORT Probe<PolynomialMeasurement<1>, Variable, Variable>;
extern template class ORRERYCOREVARIABLES_EXPORT Probe<PolynomialMeasurement<2>, Variable, Variable>;
extern template class ORRERYCOREVARIABLES_EXPORT Probe<PolynomialMeasurement<3>, Variable, Variable>;

} // namespace Orrery
