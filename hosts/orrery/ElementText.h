#pragma once

#include "foundations/variant/BVariant.h"
#include "foundations/variant/WellKnownType.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Orrery::Host {

/// Short name of an element type for a person, such as "double", "complex<double>", "int32", "text"; "null" and
/// "run-time" for what is none.
std::string elementTypeName(Brindle::Quay::WellKnownType type);

/// "201", "2 x 3"; empty for no dimensions.
std::string shapeText(const std::vector<std::uint64_t>& dimensions);
std::vector<std::uint64_t> dimensionsOf(const Brindle::Quay::BVariant& value);

/// The elements of one array as text, by position in row-major order, whatever the ordering of the array.
///
/// Real numbers have the shortest text that reads back as the same number, complex ones the form "re+imi", bools
/// are "true" and "false", and text is itself. No locale has a say.
/// Errors: the constructor throws what the array throws when its elements can't be read; std::invalid_argument
///         for null and run-time types unless they are empty.
class ElementText
{
public:
    explicit ElementText(const Brindle::Quay::BVariant& array);

    std::uint64_t count() const { return m_count; }
    bool isComplex() const;

    void append(std::string* out, std::uint64_t position) const { m_append(out, m_data, position); }

    /// The parts of a complex element; for another element, the real part is the element.
    void appendReal(std::string* out, std::uint64_t position) const { m_appendReal(out, m_data, position); }
    void appendImaginary(std::string* out, std::uint64_t position) const
    {
        m_appendImaginary(out, m_data, position);
    }

    using Append = void (*)(std::string* out, const void* data, std::uint64_t position);

private:
    Brindle::Quay::BVariant m_array;
    const void* m_data = nullptr;
    std::uint64_t m_count = 0;
    Append m_append = nullptr;
    Append m_appendReal = nullptr;
    Append m_appendImaginary = nullptr;
};

} // namespace Orrery::Host
