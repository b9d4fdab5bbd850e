#include "hosts/orrery/measurements/MovingAverage.h"

#include "hosts/orrery/UnitText.h"
#include "hosts/orrery/measurements/Samples.h"

#include <algorithm>
#include <cmath>

namespace Orrery::Host {

namespace {

constexpr int s_defaultWindow = 3;

/// The running sums from each position to the end of a block of values that lie `stride` apart.
template <class T>
void sumToTheEnd(const T* block, std::uint64_t stride, std::vector<T>* sums)
{
    T sum = T();
    for (std::size_t i = sums->size(); i-- > 0;) {
        sum += block[i * stride];
        (*sums)[i] = sum;
    }
}

/// A window is the end of one block of its length and the beginning of the next, so that nothing is ever subtracted:
/// a large value leaves no rounding behind, and a NaN no trace, once the window has passed it.
template <class T>
void smoothLane(const T* values, T* means, std::uint64_t count, std::uint64_t stride, std::uint64_t window)
{
    std::vector<T> tail(window);
    T head = T();
    for (std::uint64_t i = 0; i < count; ++i) {
        const std::uint64_t position = i % window;
        if (position == 0) {
            head = T();
            if (i > 0)
                sumToTheEnd(values + (i - window) * stride, stride, &tail);
        }
        head += values[i * stride];
        const bool reachesBack = i >= window && position + 1 < window;
        const T sum = reachesBack ? tail[position + 1] + head : head;
        means[i * stride] = sum / static_cast<double>(std::min(i + 1, window));
    }
}

template <class T>
std::vector<T> smooth(const T* values, const Samples& samples, std::uint64_t window)
{
    std::vector<T> means(samples.count());
    for (std::uint64_t lane = 0; lane < samples.lanes; ++lane)
        smoothLane(values + lane, means.data() + lane, samples.offsets, samples.lanes,
                   std::min(window, samples.offsets));
    return means;
}

} // namespace

MovingAverage::MovingAverage()
{
    category = QStringLiteral("Filter");
    set_name(QStringLiteral("moving-average"));
    set_description(QStringLiteral("mean over a window of values"));
    set_parameters(
        {{QStringLiteral("window"), QStringLiteral("number of values"), BVariant(s_defaultWindow)}});
    set_parameter_values({BVariant(s_defaultWindow)});
}

Measured MovingAverage::measure(const Variable& input) const
{
    const std::uint64_t length = window();
    const Samples samples = samplesOf(input);
    const auto make = [&](const auto* values) { return smooth(values, samples, length); };
    return {computedFrom(samples, make), unitsOf(input)};
}

std::uint64_t MovingAverage::window() const
{
    const BVariant value = parameterValues.empty() ? parameters.first().value : parameterValues.front();
    double number = 0.0;
    if (!Brindle::Quay::tryGetScalar(value, &number) || !(number >= 1.0) || number != std::floor(number))
        throw std::invalid_argument("the window must be a whole number from 1");
    constexpr double most = 9007199254740992.0; // no array is as long
    return static_cast<std::uint64_t>(std::min(number, most));
}

} // namespace Orrery::Host
