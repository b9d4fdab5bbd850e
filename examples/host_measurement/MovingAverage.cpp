#include "MovingAverage.h"

#include "foundations/variant/Variant.h"
#include "variables/Variable.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <vector>

using Brindle::Quay::BVariant;
using Brindle::Quay::IterableContainer;
using Brindle::Quay::WellKnownType;
using Orrery::Variable;

namespace {

std::vector<double> smooth(const IterableContainer<double>& values, std::size_t window)
{
    std::vector<double> means;
    means.reserve(values.size());
    double sum = 0.0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        sum += values[i];
        if (i >= window)
            sum -= values[i - window];
        means.push_back(sum / static_cast<double>(std::min(i + 1, window)));
    }
    return means;
}

} // namespace

MovingAverage::MovingAverage()
{
    category = QStringLiteral("Filter");
    inputType = Orrery::IO::InputType::Variable;
    set_name(QStringLiteral("moving-average"));
    set_description(QStringLiteral("mean over a window of values"));
    set_parameters({{QStringLiteral("window"), QStringLiteral("number of values"), BVariant(3)}});
    set_parameter_values({BVariant(3)});
}

QString MovingAverage::get_name()
{
    return name;
}

Orrery::AbstractProbe* MovingAverage::make_probe()
{
    return new Orrery::Probe<MovingAverage, Variable, Variable>(this);
}

Orrery::Measurement<Variable>* MovingAverage::clone() const
{
    return new MovingAverage(*this);
}

Variable* MovingAverage::apply(Variable* input)
{
    if (!input)
        throw std::invalid_argument("a moving average needs an input");
    BVariant data = input->GetData();
    Brindle::Quay::convertInPlace(data, WellKnownType::of<double>());
    const BVariant means(smooth(IterableContainer<double>(data), window()));

    std::unique_ptr<Variable> made;
    if (!output)
        made = std::make_unique<Variable>();
    Variable* const target = made ? made.get() : output;
    target->UpdateData(means);
    made.release();
    return target;
}

std::size_t MovingAverage::window() const
{
    const BVariant value = parameterValues.empty() ? parameters.first().value : parameterValues.front();
    const auto count = Brindle::Quay::getScalar<std::int64_t>(value);
    if (count < 1)
        throw std::invalid_argument("the window of a moving average is at least 1");
    return static_cast<std::size_t>(count);
}
