#include "variables/ExplicitDataVarStrategy.h"

#include "foundations/variant/VariantOperations.h"
#include "variables/DataProperty_p.h"
#include "variables/GetAt_p.h"
#include "variables/OffsetCount_p.h"
#include "variables/Variable.h"

#include <exception>

namespace Orrery {
namespace {

std::uint64_t elementDimCount(const BVariant& data)
{
    const auto dimensions = data.getDimensions();
    return dimensions.size() == 0 ? 0 : dimensions.size() - 1;
}

/// The value to read. With it in hand the Variable is up to date, as there is nothing to compute.
const SimpleProperty* readDataProperty(Variable& owner)
{
    const SimpleProperty* property = ensureDataProperty(owner);
    if (!property)
        return nullptr; // the owner itself may be gone: with what stood in the place of the data
    const std::shared_ptr<Variable::Tracker>& tracker = owner.getDirtyTracker();
    if (tracker && tracker->isDirty())
        tracker->updateIfDirty([] {});
    return property;
}

} // namespace

ExplicitDataVarStrategy::ExplicitDataVarStrategy(Variable* owner)
    : IVariableStrategy(owner)
{
    readDataProperty(*backRef());
}

ExplicitDataVarStrategy::~ExplicitDataVarStrategy() = default;

const QString& ExplicitDataVarStrategy::StaticType()
{
    static const QString type = QStringLiteral("ExplicitDataStrategy");
    return type;
}

QString ExplicitDataVarStrategy::GetType() const
{
    return StaticType();
}

std::shared_ptr<IVariableStrategy> ExplicitDataVarStrategy::Copy(Variable* owner) const
{
    return std::make_shared<ExplicitDataVarStrategy>(owner);
}

// The readers below ask about the value where it stands: a copy of an array costs two atomic operations, and one
// element is read in the time of a few.
const BVariant& ExplicitDataVarStrategy::storedData() const
{
    static const BVariant null;
    const SimpleProperty* property = readDataProperty(*backRef());
    return property ? property->GetValueRef() : null;
}

BVariant ExplicitDataVarStrategy::GetData(IsCellArray* flag) const
{
    const SimpleProperty* property = readDataProperty(*backRef());
    if (flag)
        *flag = property ? property->GetValueIsCellArray() : IsCellArrayFalse;
    return property ? property->GetValue() : BVariant();
}

Variable& ExplicitDataVarStrategy::UpdateData(const BVariant& data, IsCellArray flag)
{
    push(data, flag);
    return *backRef();
}

ERESULT ExplicitDataVarStrategy::GetValueAt(BVariant* out, std::uint64_t offset) const
{
    return readAt(out, storedData(), offset);
}

ERESULT ExplicitDataVarStrategy::GetValueRange(BVariant* out, std::uint64_t start, std::uint64_t end) const
{
    if (!out)
        return ER_INVALID_ARGUMENT;
    try {
        const BVariant& data = storedData();
        const std::uint64_t count = offsetCount(data);
        if (start >= count) {
            *out = BVariant();
            return ER_FAILED;
        }
        if (end == 0)
            end = count;
        if (start == 0 && end == count)
            *out = data;
        else
            *out = Brindle::Quay::sliceRange(data, start, end - 1);
        return ER_SUCCESS;
    } catch (const std::exception&) {
        return ER_FAILED;
    }
}

std::uint64_t ExplicitDataVarStrategy::GetMaxIndepOffset() const
{
    return offsetCount(storedData());
}

std::uint64_t ExplicitDataVarStrategy::GetElementDimCount() const
{
    return elementDimCount(storedData());
}

ERESULT ExplicitDataVarStrategy::GetElementShape(std::vector<std::uint64_t>* shape) const
{
    if (!shape)
        return ER_INVALID_ARGUMENT;
    const BVariant& data = storedData();
    const auto dimensions = data.getDimensions();
    shape->clear();
    if (elementDimCount(data) > 0)
        shape->assign(std::next(dimensions.begin()), dimensions.end());
    return ER_SUCCESS;
}

} // namespace Orrery
