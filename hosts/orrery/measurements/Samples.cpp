#include "hosts/orrery/measurements/Samples.h"

#include "hosts/orrery/ElementText.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace Orrery::Host {

using Brindle::Quay::BVariant;
using Brindle::Quay::DataOrdering;
using Brindle::Quay::WellKnownType;

namespace {

BVariant asNumbers(const BVariant& data)
{
    const std::string type = Host::elementTypeName(data.getWellKnownType());
    const bool isComplex = type.rfind("complex", 0) == 0;
    const bool isNumber = isComplex || type == "double" || type == "float" || type == "bool" ||
                          type.find("int") != std::string::npos;
    if (!isNumber)
        throw std::invalid_argument("values of the type " + type + " are no numbers");
    BVariant numbers = data;
    convertInPlace(numbers,
                   isComplex ? WellKnownType::of<std::complex<double>>() : WellKnownType::of<double>());
    return numbers;
}

/// `data` are double or complex.
Samples laidOut(const BVariant& data)
{
    Samples samples;
    samples.data =
        data.getDataOrdering() == DataOrdering::RowMajor ? data : data.reordered(DataOrdering::RowMajor);
    samples.dimensions = dimensionsOf(samples.data);
    const auto first = std::find_if(samples.dimensions.begin(), samples.dimensions.end(),
                                    [](std::uint64_t size) { return size > 1; });
    samples.offsets = first == samples.dimensions.end() ? 1 : *first;
    samples.lanes = data.elementCount() / samples.offsets;
    return samples;
}

BVariant dataOf(const Variable& variable)
{
    BVariant data = variable.GetData();
    if (data.isEmpty())
        throw std::invalid_argument("there are no values");
    return data;
}

} // namespace

bool Samples::isComplex() const
{
    return data.getWellKnownType() == WellKnownType::of<std::complex<double>>();
}

Samples samplesOf(const Variable& variable)
{
    return laidOut(asNumbers(dataOf(variable)));
}

Samples realSamplesOf(const Variable& variable)
{
    BVariant numbers = asNumbers(dataOf(variable));
    static_cast<void>(numbers.constData()); // damaged data tell so themselves
    try {
        convertInPlace(numbers, WellKnownType::of<double>());
    } catch (const std::runtime_error&) {
        throw std::invalid_argument("there are imaginary parts");
    }
    return laidOut(numbers);
}

} // namespace Orrery::Host
