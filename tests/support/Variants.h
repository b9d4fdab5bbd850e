#pragma once

#include "foundations/variant/Variant.h"

#include <cstdint>
#include <initializer_list>
#include <iosfwd>
#include <stdexcept>
#include <string>
#include <vector>

namespace TestSupport {
using Brindle::Quay::BVariant;
using Brindle::Quay::DataOrdering;

/// What ToDimensions and ToDoubles give, written short: `(Sizes{2, 3})`.
using Sizes = std::vector<std::uint64_t>;
using Doubles = std::vector<double>;

/// The elements as doubles in storage order, whatever numbers they are stored as; null gives {}.
///
/// Errors: std::runtime_error for a variant that doesn't convert to double.
std::vector<double> ToDoubles(const BVariant& variant);

/// The texts of a text variant in storage order; null gives {}. Errors: std::runtime_error for another type.
std::vector<std::string> ToTexts(const BVariant& variant);

/// The dimension list; null gives {}.
std::vector<std::uint64_t> ToDimensions(const BVariant& variant);

/// Type, dimensions, ordering and the first elements on one line, for failure messages.
std::string Describe(const BVariant& variant);

/// The elements as they are stored; an empty variant gives {}.
///
/// Errors: std::invalid_argument for a variant that holds another type.
template <class T>
std::vector<T> ToElements(const BVariant& variant)
{
    if (variant.isEmpty())
        return {};
    Brindle::Quay::checkElementType<T>(variant);
    const T* data = static_cast<const T*>(variant.constData());
    return std::vector<T>(data, data + variant.elementCount());
}

/// A one-dimensional array.
template <class T>
BVariant MakeVector(std::initializer_list<T> elements)
{
    return BVariant(std::vector<T>(elements));
}

/// An array whose elements are 0, 1, 2, ... in storage order.
template <class T = double>
BVariant MakeCounting(const std::vector<std::uint64_t>& dimensions,
                      DataOrdering ordering = DataOrdering::RowMajor)
{
    std::uint64_t count = dimensions.empty() ? 0 : 1;
    for (std::uint64_t size : dimensions)
        count *= size;
    std::vector<T> elements;
    elements.reserve(count);
    for (std::uint64_t i = 0; i < count; ++i)
        elements.push_back(static_cast<T>(i));
    return BVariant(std::move(elements), dimensions, ordering);
}
} // namespace TestSupport

namespace Brindle::Quay {
/// GoogleTest shows a variant by its content, not by its bytes.
void PrintTo(const BVariant& variant, std::ostream* out);
} // namespace Brindle::Quay
