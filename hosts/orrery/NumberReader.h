#pragma once

#include "foundations/variant/BVariant.h"
#include "variables/Variable.h"

#include <complex>
#include <cstdint>
#include <string>
#include <vector>

namespace Orrery::Host {

/// The values of a variable as numbers, read run by run; one value at each offset.
class NumberReader
{
public:
    /// `variable` is not owned and must outlive the reader.
    ///
    /// Errors: Failure that names the variable if its stored elements are arrays or no numbers.
    explicit NumberReader(const Variable& variable);

    std::uint64_t count() const { return m_count; }

    /// The values at offsets [begin, end), which the variable has.
    ///
    /// Errors: Failure for values that can't be computed, are arrays or no numbers; what reading them throws.
    /// Cost:   linear in the run; stored arrays are read from the file only as far as they are asked for.
    void read(std::uint64_t begin, std::uint64_t end, std::vector<std::complex<double>>* values);

    /// Whether the values that have been read are of a complex type.
    bool isComplex() const { return m_isComplex; }

private:
    Brindle::Quay::BVariant readRun(std::uint64_t begin, std::uint64_t end) const;
    [[noreturn]] void fail(const std::string& what) const;

    const Variable& m_variable;
    Brindle::Quay::BVariant m_stored; ///< null for computed values
    std::uint64_t m_count = 0;
    bool m_isComplex = false;
};

} // namespace Orrery::Host
