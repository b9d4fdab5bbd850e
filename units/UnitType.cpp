#include "units/Dimensions.h"

#include <cstdint>
#include <cstring>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Orrery {
namespace {

struct DimensionsHash
{
    std::size_t operator()(const Dimensions& dimensions) const
    {
        // Two exponents at a time; the last one stands alone.
        std::array<std::uint64_t, (Dimensions::Count + 1) / 2> words{};
        std::memcpy(words.data(), dimensions.Exponents().data(), sizeof dimensions.Exponents());
        std::uint64_t hash = 0;
        for (const std::uint64_t word : words)
            hash = (hash ^ word ^ (hash >> 29)) * 0x9E3779B97F4A7C15U; // 2^64 by the golden ratio
        return static_cast<std::size_t>(hash ^ (hash >> 32));
    }
};

using TypeIndex = std::unordered_map<Dimensions, std::vector<const UnitType*>, DimensionsHash>;

// The types of each combination of dimensions, in the order of the registry. Made with the first type.
TypeIndex& typeIndex()
{
    static TypeIndex index;
    return index;
}

} // namespace

UnitType::UnitType()
    : m_name(QStringLiteral("none"))
{
}

UnitType::UnitType(QString name, QString referenceSI, Dimensions dimensions)
    : m_name(std::move(name))
    , m_referenceSI(std::move(referenceSI))
    , m_dimensions(dimensions)
{
}

const UnitType& UnitType::CreateType(QString name, Dimensions dimensions, QString referenceSI)
{
    if (referenceSI.isEmpty())
        referenceSI = dimensions.SIUnitsString();
    s_unitTypes.push_back(UnitType(std::move(name), std::move(referenceSI), dimensions));
    const UnitType& type = s_unitTypes.back();
    typeIndex()[dimensions].push_back(&type);
    return type;
}

// Hosts are built against the form of the result.
// NOLINTNEXTLINE(readability-const-return-type)
const QList<UnitType> UnitType::FindCompatibleTypes(const Dimensions& dimensions)
{
    QList<UnitType> types;
    const auto found = typeIndex().find(dimensions);
    if (found != typeIndex().end()) {
        for (const UnitType* const type : found->second)
            types.append(*type);
    }
    return types;
}

// NOLINTNEXTLINE(readability-const-return-type)
const UnitType UnitType::FindUnitType(const Dimensions& dimensions, const QString& text)
{
    return TypeFor(dimensions, text);
}

const UnitType& UnitType::TypeFor(const Dimensions& dimensions, const QString& text)
{
    const auto found = typeIndex().find(dimensions);
    if (found == typeIndex().end())
        return CreateType(text, dimensions, QString());
    const std::vector<const UnitType*>& types = found->second;
    if (types.size() >= 2) {
        for (const UnitType* const type : types) {
            if (text.contains(type->m_referenceSI))
                return *type;
        }
    }
    return *types.front();
}

UnitType::decibelType UnitType::GetDBType(const UnitType& type)
{
    const Dimensions& dimensions = type.m_dimensions;
    const bool isField =
        dimensions == electricPotential.m_dimensions || dimensions == electricCurrent.m_dimensions;
    return isField ? fieldDecibel : powerDecibel;
}

bool UnitType::operator==(const UnitType& other) const
{
    return m_name == other.m_name && m_dimensions == other.m_dimensions;
}

} // namespace Orrery
