#pragma once

#include <cstdint>
#include <ostream>
#include <random>

namespace TestSupport {
/// A fixed seed of a random test; streamed into SCOPED_TRACE, a failure prints it.
///
///     const RandomSeed seed{17};
///     SCOPED_TRACE(seed);
///     auto random = seed.engine();
struct RandomSeed
{
    std::uint64_t value;

    std::mt19937_64 engine() const { return std::mt19937_64(value); }

    friend std::ostream& operator<<(std::ostream& out, const RandomSeed& seed)
    {
        return out << "random seed " << seed.value;
    }
};

/// A number in [0, bound). The standard distributions differ between libraries, this doesn't.
///
/// Edge: the bias of the remainder doesn't matter for the small bounds of tests; a bound of 0 gives 0.
inline std::uint64_t randomBelow(std::mt19937_64& random, std::uint64_t bound)
{
    return bound == 0 ? 0 : random() % bound;
}
} // namespace TestSupport
