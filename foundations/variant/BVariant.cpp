#include "foundations/variant/BVariant.h"

#include "foundations/variant/ArrayPayloads_p.h"

namespace Brindle::Quay {
template <class Storage>
BVariantGeneric<Storage> BVariantGeneric<Storage>::fromPayload(IVariantData* payload)
{
    if (!payload)
        return {};
    BVariantGeneric variant{Storage(payload)};
    checkedElementCount(payload->getDimensions());
    return variant;
}

template <class Storage>
BVariantGeneric<Storage> BVariantGeneric<Storage>::reordered(DataOrdering ordering) const
{
    const DataOrdering wanted = Internal::normalized(ordering);
    if (isInline()) {
        if (getDataOrdering() == wanted)
            return *this;
        if (getWellKnownType() != WellKnownType::RunTime) {
            return Internal::dispatchElement(getWellKnownType(), [&](auto tag) {
                using T = typename decltype(tag)::type;
                return scalar<T>(*static_cast<const T*>(constData()), wanted);
            });
        }
    }
    return fromPayload(payload()->reordered(wanted));
}

template class BVariantGeneric<Internal::BVariantDirectStorage>;
} // namespace Brindle::Quay
