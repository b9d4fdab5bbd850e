#include "hosts/orrery/NumberReader.h"

#include "foundations/variant/VariantOperations.h"
#include "hosts/orrery/ElementNumber.h"
#include "hosts/orrery/ElementText.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/TreeAccess.h"

namespace Orrery::Host {

using namespace Brindle::Quay;

NumberReader::NumberReader(const Variable& variable)
    : m_variable(variable)
    , m_count(variable.GetMaxIndepOffset())
{
    if (!holdsStoredData(variable))
        return;
    m_stored = variable.GetData();
    if (m_stored.elementCount() != m_count)
        fail("holds arrays, one at each offset");
}

void NumberReader::fail(const std::string& what) const
{
    throw Failure(inQuotes(m_variable.GetName().toStdString()) + " " + what);
}

BVariant NumberReader::readRun(std::uint64_t begin, std::uint64_t end) const
{
    BVariant run;
    if (!m_stored.isNull()) {
        run = createUninitializedArray(m_stored.getWellKnownType(), std::vector<std::uint64_t>{end - begin});
        copyElements(m_stored, begin, end - begin, run.mutableData());
    } else if (m_variable.GetValueRange(&run, begin, end) < 0) {
        fail("has values that can't be computed");
    }
    return run;
}

void NumberReader::read(std::uint64_t begin, std::uint64_t end, std::vector<std::complex<double>>* values)
{
    values->clear();
    if (begin == end)
        return;
    const BVariant run = readRun(begin, end);
    if (run.elementCount() != end - begin)
        fail("holds arrays, one at each offset");
    const ReadElementNumber number = numberReader(run.getWellKnownType());
    if (!number)
        fail("holds no numbers but " + Host::elementTypeName(run.getWellKnownType()));
    m_isComplex = m_isComplex || (run.getWellKnownType().code() & WellKnownType::ComplexBit) != 0;
    const void* const data = run.constData();
    values->reserve(end - begin);
    for (std::uint64_t i = 0; i < end - begin; ++i)
        values->emplace_back(number(data, i));
}

} // namespace Orrery::Host
