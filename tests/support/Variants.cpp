#include "tests/support/Variants.h"

#include "tests/support/ElementTypes.h"

#include <algorithm>
#include <ostream>
#include <sstream>

namespace TestSupport {
namespace {
std::string typeText(std::uint16_t code)
{
    if (code == 0)
        return "null";
    if (code == 32)
        return "run-time type";
    return elementRow(code).name;
}

// The text of up to `limit` elements, as far as the library has a text for them.
void describeElements(const BVariant& variant, std::ostream& out)
{
    constexpr std::size_t limit = 12;
    std::vector<std::string> texts;
    if (variant.getWellKnownType() == Brindle::Quay::WellKnownType::of<std::string>())
        texts = ToTexts(variant);
    else if (!convertedTo(variant, Brindle::Quay::WellKnownType::of<std::string>()).isNull())
        texts = ToTexts(convertedTo(variant, Brindle::Quay::WellKnownType::of<std::string>()));
    out << " {";
    for (std::size_t i = 0; i < std::min(limit, texts.size()); ++i)
        out << (i ? ", " : "") << texts[i];
    out << (texts.size() > limit ? ", ...}" : "}");
}
} // namespace

std::vector<double> ToDoubles(const BVariant& variant)
{
    if (variant.isNull())
        return {};
    const BVariant doubles = convertedTo(variant, Brindle::Quay::WellKnownType::of<double>());
    if (doubles.isNull())
        throw std::runtime_error("no numbers: " + Describe(variant));
    return ToElements<double>(doubles);
}

std::vector<std::string> ToTexts(const BVariant& variant)
{
    if (variant.isNull())
        return {};
    if (variant.getWellKnownType() != Brindle::Quay::WellKnownType::of<std::string>())
        throw std::runtime_error("no texts: " + typeText(variant.getWellKnownType().code()));
    return ToElements<std::string>(variant);
}

std::vector<std::uint64_t> ToDimensions(const BVariant& variant)
{
    const auto dimensions = variant.getDimensions();
    return std::vector<std::uint64_t>(dimensions.begin(), dimensions.end());
}

std::string Describe(const BVariant& variant)
{
    std::ostringstream out;
    out << typeText(variant.getWellKnownType().code());
    if (variant.isNull())
        return out.str();
    out << (variant.isScalar() ? " scalar [" : " [");
    for (std::uint64_t size : ToDimensions(variant))
        out << ' ' << size;
    out << (variant.getDataOrdering() == DataOrdering::RowMajor ? " ] row-major" : " ] column-major");
    describeElements(variant, out);
    return out.str();
}
} // namespace TestSupport

namespace Brindle::Quay {
void PrintTo(const BVariant& variant, std::ostream* out)
{
    *out << TestSupport::Describe(variant);
}
} // namespace Brindle::Quay
