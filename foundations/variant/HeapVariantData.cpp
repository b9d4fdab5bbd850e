#include "foundations/variant/HeapVariantData.h"

#include "foundations/variant/ArrayPayloads_p.h"

namespace Brindle::Quay {
namespace {
using Internal::ArrayPayload;

/// The distances in storage of neighbours along each dimension.
std::vector<std::uint64_t> distancesOf(ArrayDimensionsView dimensions, DataOrdering ordering)
{
    std::vector<std::uint64_t> distances(dimensions.size());
    std::uint64_t distance = 1;
    for (std::size_t i = 0; i < dimensions.size(); ++i) {
        const std::size_t next = ordering == DataOrdering::RowMajor ? dimensions.size() - 1 - i : i;
        distances[next] = distance;
        distance *= dimensions[next];
    }
    return distances;
}

/// One dimension of a rearrangement: its size and the distances of neighbours on both sides.
struct Axis
{
    std::uint64_t size;
    std::uint64_t from;
    std::uint64_t to;
};

/// Copies a plane in squares, so that the lines read and the lines written both stay in the cache.
template <class T>
void copyPlane(const T* source, T* target, Axis a, Axis b)
{
    constexpr std::uint64_t side = 32;
    for (std::uint64_t i0 = 0; i0 < a.size; i0 += side) {
        const std::uint64_t iEnd = std::min(i0 + side, a.size);
        for (std::uint64_t j0 = 0; j0 < b.size; j0 += side) {
            const std::uint64_t jEnd = std::min(j0 + side, b.size);
            for (std::uint64_t i = i0; i < iEnd; ++i) {
                for (std::uint64_t j = j0; j < jEnd; ++j)
                    target[i * a.to + j * b.to] = Internal::loadElement(source + i * a.from + j * b.from);
            }
        }
    }
}

/// Steps through all positions of the axes from `first` up to, not including, `last`, adding up both offsets.
class PlaneWalk
{
public:
    PlaneWalk(const std::vector<Axis>& axes, std::size_t first, std::size_t last)
        : m_axes(axes)
        , m_first(first)
        , m_indices(last - first)
    {
    }

    /// False after the last position.
    bool next()
    {
        for (std::size_t i = 0; i < m_indices.size(); ++i) {
            const Axis& axis = m_axes[m_first + i];
            from += axis.from;
            to += axis.to;
            if (++m_indices[i] < axis.size)
                return true;
            from -= axis.from * axis.size;
            to -= axis.to * axis.size;
            m_indices[i] = 0;
        }
        return false;
    }

    std::uint64_t from = 0;
    std::uint64_t to = 0;

private:
    const std::vector<Axis>& m_axes;
    std::size_t m_first;
    std::vector<std::uint64_t> m_indices;
};

/// Both orderings mirror each other: the first dimension is fastest in one of them, the last in the other, so planes
/// of these two are copied for each position of the dimensions between.
template <class T>
void rearrange(const T* source, T* target, ArrayDimensionsView dimensions, DataOrdering to)
{
    const DataOrdering from =
        to == DataOrdering::RowMajor ? DataOrdering::ColumnMajor : DataOrdering::RowMajor;
    const std::vector<std::uint64_t> fromDistances = distancesOf(dimensions, from);
    const std::vector<std::uint64_t> toDistances = distancesOf(dimensions, to);
    std::vector<Axis> axes;
    for (std::size_t i = 0; i < dimensions.size(); ++i) {
        if (dimensions[i] > 1)
            axes.push_back({dimensions[i], fromDistances[i], toDistances[i]});
    }
    PlaneWalk walk(axes, 1, axes.size() - 1);
    do {
        copyPlane(source + walk.from, target + walk.to, axes.front(), axes.back());
    } while (walk.next());
}
} // namespace

HeapVariantData::~HeapVariantData() = default;

IVariantData* HeapVariantData::detach()
{
    if (!isShared())
        return this;
    IVariantData* copy = Internal::copyPayload(this, getDimensions(), getDataOrdering(), isScalar());
    release();
    return copy;
}

IVariantData* HeapVariantData::placeInto(void* /*buffer*/, std::size_t /*size*/, bool /*move*/)
{
    return nullptr;
}

bool HeapVariantData::isScalar() const
{
    return false;
}

const std::type_info& HeapVariantData::getTypeInfo() const
{
    return Internal::dispatchElement(getWellKnownType(), [](auto tag) -> const std::type_info& {
        return typeid(typename decltype(tag)::type);
    });
}

const TypeOperations* HeapVariantData::getTypeOperations() const
{
    return nullptr;
}

IVariantData* HeapVariantData::reordered(DataOrdering ordering) const
{
    const DataOrdering wanted = Internal::normalized(ordering);
    const ArrayDimensionsView dimensions = getDimensions();
    if (Internal::normalized(getDataOrdering()) == wanted) {
        addRef();
        return const_cast<HeapVariantData*>(this); // shared, hence not written to before it is detached
    }
    if (!dimensions.isMultiDimensional())
        return Internal::ViewPayload::make(this, dimensions, wanted, isScalar());
    return Internal::dispatchElement(getWellKnownType(), [&](auto tag) -> IVariantData* {
        using T = typename decltype(tag)::type;
        const auto* elements = static_cast<const T*>(constData());
        auto* result = ArrayPayload<T>::make(dimensions, wanted, Internal::Fill::Raw);
        Internal::PayloadPtr owner(result);
        rearrange(elements, result->data(), dimensions, wanted);
        return owner.release();
    });
}

bool HeapVariantData::readRun(std::uint64_t /*first*/, std::uint64_t /*count*/, void* /*target*/) const
{
    return false;
}

IVariantData* HeapVariantData::reshaped(const IVariantData* source, ArrayDimensionsView dimensions,
                                        DataOrdering ordering) const
{
    Internal::checkCount(dimensions, source->getDimensions().elementCount());
    const bool staysScalar = source->isScalar() && dimensions.size() == 1;
    // what lies in a variant's buffer goes with that variant
    if (!dynamic_cast<const HeapVariantData*>(source))
        return Internal::copyPayload(source, dimensions, ordering, staysScalar);
    return Internal::ViewPayload::make(source, dimensions, ordering, staysScalar);
}

IVariantData* HeapVariantData::convertedTo(WellKnownType type, int /*flag*/) const
{
    if (type == getWellKnownType()) {
        addRef();
        return const_cast<HeapVariantData*>(this); // shared, hence not written to before it is detached
    }
    return Internal::convertPayload(this, type);
}
} // namespace Brindle::Quay
