#pragma once

#include "foundations/variant/BVariant.h"
#include "foundations/variant/VariantOperations.h"
#include "variables/Variable.h"

#include <complex>
#include <cstdint>
#include <utility>
#include <vector>

namespace Orrery::Host {

/// Values of a variable as numbers that can be reckoned with.
struct Samples
{
    Brindle::Quay::BVariant data;          ///< double or std::complex<double>, in row-major order, not empty
    std::vector<std::uint64_t> dimensions; ///< of the data
    std::uint64_t offsets = 0;
    std::uint64_t lanes = 0; ///< values at each offset; they follow each other

    std::uint64_t count() const { return offsets * lanes; }
    bool isComplex() const;
};

/// Read a variable.
///
/// Errors: std::invalid_argument for values that are no numbers, and for none; what reading them throws.
Samples samplesOf(const Variable& variable);

/// The same, as real numbers.
///
/// Errors: as samplesOf(); std::invalid_argument if an imaginary part isn't 0.
Samples realSamplesOf(const Variable& variable);

/// Calls `make` with a pointer to the values, which are double or std::complex<double>. It returns a std::vector of the
/// same length, which becomes a variant of the same dimensions.
template <class Make>
Brindle::Quay::BVariant computedFrom(const Samples& samples, const Make& make)
{
    using Brindle::Quay::BVariant;
    if (samples.isComplex())
        return BVariant(make(static_cast<const std::complex<double>*>(samples.data.constData())),
                        samples.dimensions);
    return BVariant(make(static_cast<const double*>(samples.data.constData())), samples.dimensions);
}

/// Calls `make` with each value by itself; it returns a double for real and complex ones.
template <class Make>
Brindle::Quay::BVariant mapped(const Samples& samples, const Make& make)
{
    return computedFrom(samples, [&](const auto* values) {
        std::vector<double> results(samples.count());
        for (std::size_t i = 0; i < results.size(); ++i)
            results[i] = make(values[i]);
        return results;
    });
}

} // namespace Orrery::Host
