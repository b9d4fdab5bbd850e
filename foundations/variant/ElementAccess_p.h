#pragma once

#include "foundations/variant/ArrayPayloads_p.h"
#include "foundations/variant/BVariant.h"

namespace Brindle::Quay::Internal {
/// Copies a run of storage positions; a payload that is read piece by piece fetches only what it must.
template <class T>
void readElements(const IVariantData* payload, std::uint64_t first, std::uint64_t count, T* target)
{
    if (!payload->readRun(first, count, target))
        copyRun(static_cast<const T*>(payload->constData()) + first, count, target);
}

template <class T>
T readElement(const IVariantData* payload, std::uint64_t position)
{
    T value{};
    if (payload->readRun(position, 1, &value)) {
        if constexpr (std::is_same_v<T, bool>)
            return loadElement(&value);
        else
            return value;
    }
    return loadElement(static_cast<const T*>(payload->constData()) + position);
}

/// Whether the payload holds that type: by its code, or as a run-time type by its std::type_info.
inline bool holds(const IVariantData* payload, WellKnownType type, const std::type_info& info)
{
    const WellKnownType held = payload->getWellKnownType();
    if (held == WellKnownType::RunTime)
        return payload->getTypeInfo() == info;
    return held == type;
}
} // namespace Brindle::Quay::Internal
