#include "foundations/variant/BVariant.h"

#include "foundations/variant/ArrayPayloads_p.h"

namespace Brindle::Quay {
namespace Internal {
void BVariantDirectStorage::copyInline(const BVariantDirectStorage& other)
{
    m_payload = copyConstructVariantScalar(m_buffer, variantBufferSize, other.m_payload);
}

void BVariantDirectStorage::moveInline(BVariantDirectStorage& other) noexcept
{
    m_payload = moveConstructVariantScalar(m_buffer, variantBufferSize, other.m_payload);
    other.destroyInline();
    other.m_payload = nullptr;
}

void BVariantDirectStorage::destroyInline() noexcept
{
    m_payload->~IVariantData();
}
} // namespace Internal

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
                return scalar<T>(Internal::loadElement(static_cast<const T*>(constData())), wanted);
            });
        }
    }
    return fromPayload(payload()->reordered(wanted));
}

template class BVariantGeneric<Internal::BVariantDirectStorage>;
} // namespace Brindle::Quay
