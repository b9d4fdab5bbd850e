#include "Core/PolynomialMeasurement.h"

#include "foundations/property/PropertyHandle.h"
#include "foundations/variant/VariantOperations.h"
#include "variables/Variable.h"

#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

namespace Orrery {
namespace {

/// What the strategy answers, past the checks of the Variable itself; null data for a Variable without one.
BVariant readByStrategy(const Variable& variable)
{
    const std::shared_ptr<IVariableStrategy> strategy = variable.GetStrategyPtr().lock();
    return strategy ? strategy->GetData(nullptr) : BVariant();
}

IO::Parameter makeCoefficient(int exponent, double value)
{
    return {QStringLiteral("C-") + QString::number(exponent), QStringLiteral("polynomial coefficient"),
            BVariant(value)};
}

} // namespace

Polynomial::Polynomial() = default;
Polynomial::Polynomial(const Polynomial& other) = default;
Polynomial& Polynomial::operator=(const Polynomial& other) = default;
Polynomial::~Polynomial() = default;

int Polynomial::kind() const
{
    return 0;
}

void Polynomial::SetCoefficients(const QVector<double>& numbers)
{
    m_coefficients = BVariant(std::vector<double>(numbers.begin(), numbers.end()));
}

template <int N>
PolynomialMeasurement<N>::PolynomialMeasurement()
    : coefficients(N + 1)
{
    init();
}

template <int N>
PolynomialMeasurement<N>::PolynomialMeasurement(const PolynomialMeasurement& other) = default;

template <int N>
PolynomialMeasurement<N>& PolynomialMeasurement<N>::operator=(const PolynomialMeasurement& other) = default;

template <int N>
PolynomialMeasurement<N>::~PolynomialMeasurement() = default;

template <int N>
QString PolynomialMeasurement<N>::get_name()
{
    return name;
}

template <int N>
AbstractProbe* PolynomialMeasurement<N>::make_probe()
{
    return new Probe<PolynomialMeasurement<N>, Variable, Variable>(this);
}

template <int N>
Measurement<Variable>* PolynomialMeasurement<N>::clone() const
{
    return new PolynomialMeasurement<N>(*this);
}

template <int N>
void PolynomialMeasurement<N>::init()
{
    init_tags();
    init_parameters();
    init_parameter_values();
}

template <int N>
void PolynomialMeasurement<N>::init_tags()
{
    category = QStringLiteral("Math");
    set_description(QStringLiteral("polynomial of degree ") + QString::number(N));
    inputType = IO::InputType::Variable;
    set_name(QStringLiteral("polynomial-") + QString::number(N));
}

template <int N>
void PolynomialMeasurement<N>::init_parameters()
{
    parameters.clear();
    for (int i = 0; i < N; ++i)
        parameters.append(makeCoefficient(i, 0.0));
    parameters.append(makeCoefficient(N, 1.0));
}

template <int N>
void PolynomialMeasurement<N>::init_parameter_values()
{
    parameterValues.clear();
    for (int i = 0; i <= N; ++i) {
        coefficients[i] = Brindle::Quay::getScalar<double>(parameters.at(i).value);
        parameterValues.emplace_back(coefficients.at(i));
    }
}

template <int N>
PolynomialMeasurement<N>* PolynomialMeasurement<N>::read_params()
{
    for (int i = 0; i <= N; ++i) {
        const auto position = static_cast<std::size_t>(i);
        if (position >= parameterValues.size())
            throw std::out_of_range("invalid vector subscript");
        coefficients[i] = Brindle::Quay::getScalar<double>(parameterValues[position]);
    }
    return this;
}

template <int N>
Variable* PolynomialMeasurement<N>::apply(Variable* input)
{
    read_params();
    Polynomial polynomial;
    polynomial.SetCoefficients(coefficients);
    if (!input)
        throw std::invalid_argument("a polynomial measurement needs an input");
    std::unique_ptr<Variable> made;
    if (!output)
        made = std::make_unique<Variable>();
    Variable* const target = made ? made.get() : output;
    // To read an input that computes calls handlers of the host.
    const PropertyHandle alive(target);
    const BVariant data = readByStrategy(*input);
    if (alive.IsExpired())
        throw std::runtime_error(
            "the output of a polynomial measurement was destroyed while its input was read");
    target->UpdateData(data, true, IsCellArrayFalse);
    made.release(); // NOLINT(bugprone-unused-return-value): the caller's, as target
    return target;
}

template class PolynomialMeasurement<1>;
template class PolynomialMeasurement<2>;
template class PolynomialMeasurement<3>;

template class ProbeTable<PolynomialMeasurement<1>>;
template class ProbeTable<PolynomialMeasurement<2>>;
template class ProbeTable<PolynomialMeasurement<3>>;

template class Probe<PolynomialMeasurement<1>, Variable, Variable>;
template class Probe<PolynomialMeasurement<2>, Variable, Variable>;
template class Probe<PolynomialMeasurement<3>, Variable, Variable>;

} // namespace Orrery
