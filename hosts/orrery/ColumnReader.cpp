#include "hosts/orrery/ColumnReader.h"

#include "foundations/variant/VariantOperations.h"
#include "hosts/orrery/ElementText.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/UnitText.h"

#include <algorithm>
#include <complex>
#include <stdexcept>
#include <utility>
#include <vector>

namespace Orrery::Host {

using Brindle::Quay::BVariant;
using Brindle::Quay::WellKnownType;

namespace {

constexpr std::uint64_t s_blockElements = std::uint64_t(1) << 20U;

// By the type alone: the values may be many, and still on the disk.
bool isComplex(const BVariant& data)
{
    return !data.isEmpty() && (data.getWellKnownType().code() & WellKnownType::ComplexBit) != 0;
}

std::uint64_t countOf(const std::vector<std::uint64_t>& shape)
{
    std::uint64_t count = 1;
    for (const std::uint64_t size : shape)
        count *= size;
    return count;
}

} // namespace

ColumnReader::ColumnReader(const Variable& variable)
    : m_name(variable.GetName().toStdString())
    , m_path(variable.GetFullPath())
    , m_reader(variable)
    , m_units(unitsOf(variable)) // a function has told them by now
{
}

std::uint64_t ColumnReader::blockLength() const
{
    const std::uint64_t elements =
        m_reader.isHeld() ? std::max<std::uint64_t>(countOf(m_reader.held().elementShape), 1) : 1;
    return std::max<std::uint64_t>(s_blockElements / elements, 1);
}

void ColumnReader::convertTo(const Units& target)
{
    if (!m_units)
        throw Failure("has no units, and can't be converted to " + unitsLabel(target));
    requireCommensurable(*m_units, target);
    if (*m_units != target)
        m_target = target;
}

void ColumnReader::preferDisplayUnits(const Variable& variable)
{
    if (const std::optional<Units> shown = shownUnitsOf(variable); m_units && shown)
        convertTo(*shown);
}

void ColumnReader::preferReal()
{
    BVariant data;
    if (m_reader.isHeld())
        data = m_reader.held().data;
    else if (m_reader.offsets() > 0 &&
             m_reader.offsets() <= s_blockElements) // worth a look before it is printed
        data = m_reader.read(0, m_reader.offsets()).data;
    if (!isComplex(data))
        return;
    static_cast<void>(data.constData()); // damaged data tell so themselves
    try {
        convertInPlace(data, WellKnownType::of<double>());
        m_isShownAsReal = true;
    } catch (const std::runtime_error&) {
        m_isShownAsReal = false; // there are imaginary parts
    }
}

// Blocks of a joined variable may be of several types; the columns are those of the first.
void ColumnReader::keepParts(BVariant* data)
{
    if (data->isEmpty())
        return;
    const bool hasParts = isComplex(*data);
    if (!m_isComplex)
        m_isComplex = hasParts;
    if (*m_isComplex && !hasParts)
        convertInPlace(*data, WellKnownType::of<std::complex<double>>());
    if (!*m_isComplex && hasParts)
        throw Failure("the values are real at first and complex later; --range shows them apart");
}

ValueColumn ColumnReader::prepared(Selection values)
{
    if (m_isShownAsReal)
        convertInPlace(values.data, WellKnownType::of<double>());
    keepParts(&values.data);
    if (m_target && !values.data.isEmpty()) {
        static_cast<void>(values.data.constData()); // damaged data tell so themselves
        BVariant converted;
        if (m_units->ConvertedTo(*m_target, values.data, &converted) < 0)
            throw Failure("values of the type " + Host::elementTypeName(values.data.getWellKnownType()) +
                          " can't be converted");
        values.data = std::move(converted);
    }
    return {m_name, unitsSuffix(m_target ? m_target : m_units), std::move(values)};
}

ValueColumn ColumnReader::read(std::uint64_t begin, std::uint64_t end)
{
    return prepared(begin == end ? Selection() : m_reader.read(begin, end));
}

ValueColumn ColumnReader::readOne(std::uint64_t offset)
{
    return prepared(m_reader.readOne(offset));
}

} // namespace Orrery::Host
