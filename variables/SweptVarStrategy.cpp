#include "variables/SweptVarStrategy.h"

#include "foundations/property/PropertyHandle.h"
#include "foundations/property/PropertyReference.h"
#include "variables/ConcatMembers_p.h"
#include "variables/ConcatVar.h"
#include "variables/ReadInProgress_p.h"
#include "variables/SweptValues_p.h"

#include <limits>

namespace Orrery {
namespace {

/// What the child refers to, or the child itself, as a T; null if it is none.
template <class T>
const T* linked(const PropertyObject& owner, const QString& name)
{
    const AbstractProperty* node = owner.GetPropertyConstPtr(name);
    if (node && node->IsPropertyReference()) {
        const auto* const reference = dynamic_cast<const PropertyReference*>(node);
        node = reference ? reference->ResolveConst() : nullptr;
    } else if (node && !node->IsVariable()) {
        node = nullptr;
    }
    return dynamic_cast<const T*>(node);
}

/// The two variables that a sweep is computed from.
class Sources
{
public:
    Sources(const PropertyObject& sweep, const QString& parameter, const QString& concatenation)
        : m_parameter(linked<Variable>(sweep, parameter))
        , m_concatenation(linked<ConcatVar>(sweep, concatenation))
    {
    }

    /// Whether both are there and can be read.
    ERESULT check() const;

    /// The parameter's value of the member that the offset lies in.
    ERESULT valueAt(BVariant* out, std::uint64_t offset) const;

    /// Append each member's value, as often as `runs` takes an offset of the member. `code` is the result if none is.
    ERESULT fill(SweptValues& values, MemberRuns runs, ERESULT code) const;

private:
    bool nextSize(ConcatMembers& members, std::uint64_t* size) const;
    ERESULT parameterAt(BVariant* out, std::uint64_t position) const;

    PropertyHandle m_parameter; // a member may run code of a host that destroys it
    PropertyHandle m_concatenation;
};

ERESULT Sources::check() const
{
    const AbstractProperty* const parameter = m_parameter.Get();
    const AbstractProperty* const concatenation = m_concatenation.Get();
    if (!parameter || !concatenation)
        return ER_INVALID_ARGUMENT;
    return ReadInProgress::covers(*parameter) || ReadInProgress::covers(*concatenation) ? ER_FAILED
                                                                                        : ER_SUCCESS;
}

/// The number of offsets of the present member; false if it doesn't resolve. The concatenation counts as being read
/// only here: a sweep may well take the concatenation's own values as its parameter.
bool Sources::nextSize(ConcatMembers& members, std::uint64_t* size) const
{
    const AbstractProperty* const concatenation = m_concatenation.Get();
    if (!concatenation)
        return false;
    const ReadInProgress reading(*concatenation);
    if (reading.isRefused() || !members.resolve())
        return false;
    *size = members.member().GetMaxIndepOffset();
    return true;
}

ERESULT Sources::parameterAt(BVariant* out, std::uint64_t position) const
{
    const auto* const parameter = static_cast<const Variable*>(m_parameter.Get());
    return parameter ? MemberReader(*parameter).GetValueAt(out, position) : ER_FAILED;
}

ERESULT Sources::valueAt(BVariant* out, std::uint64_t offset) const
{
    ConcatMembers members(*static_cast<const ConcatVar*>(m_concatenation.Get()));
    std::uint64_t end = 0;
    while (members.next()) {
        std::uint64_t size = 0;
        if (!nextSize(members, &size))
            return ER_FAILED;
        end += size;
        if (offset < end)
            return parameterAt(out, members.position());
    }
    return ER_INVALID_ARGUMENT;
}

ERESULT Sources::fill(SweptValues& values, MemberRuns runs, ERESULT code) const
{
    if (!m_concatenation.Get())
        return ER_FAILED;
    ConcatMembers members(*static_cast<const ConcatVar*>(m_concatenation.Get()));
    while (members.next()) {
        std::uint64_t size = 0;
        if (!nextSize(members, &size))
            return ER_FAILED;
        const MemberRuns::Run run = runs.next(size);
        if (!run.isTaken)
            continue;
        BVariant value; // fresh, so that a read that fails doesn't repeat the one before
        code = parameterAt(&value, members.position());
        values.append(value, run.end - run.start);
        if (code < 0)
            return code;
    }
    return code;
}

} // namespace

SweptVarStrategy::SweptVarStrategy(Variable* owner)
    : IVariableStrategy(owner)
{
}

SweptVarStrategy::~SweptVarStrategy() = default;

const QString& SweptVarStrategy::StaticType()
{
    static const QString type = QStringLiteral("SweptStrategy");
    return type;
}

QString SweptVarStrategy::GetType() const
{
    return StaticType();
}

std::shared_ptr<IVariableStrategy> SweptVarStrategy::Copy(Variable* owner) const
{
    return std::make_shared<SweptVarStrategy>(owner);
}

ERESULT SweptVarStrategy::SetParameter(const Variable* variable)
{
    return backRef()->SetPropertyRef(sParam(), variable);
}

ERESULT SweptVarStrategy::SetConcatVar(const Variable* variable)
{
    return backRef()->SetPropertyRef(sConcatData(), variable);
}

const QString& SweptVarStrategy::sParam()
{
    return s_param;
}

const QString& SweptVarStrategy::sConcatData()
{
    return s_concatData;
}

ERESULT SweptVarStrategy::GetValueAt(BVariant* out, std::uint64_t offset) const
{
    if (!out)
        return ER_INVALID_ARGUMENT;
    const ReadInProgress reading(*backRef());
    if (reading.isRefused())
        return ER_FAILED;
    const Sources sources(*backRef(), sParam(), sConcatData());
    const ERESULT code = sources.check();
    return code < 0 ? code : sources.valueAt(out, offset);
}

ERESULT SweptVarStrategy::GetValueRange(BVariant* out, std::uint64_t start, std::uint64_t end) const
{
    if (!out)
        return ER_INVALID_ARGUMENT;
    if (end == 0)
        end = GetMaxIndepOffset();
    const ReadInProgress reading(*backRef());
    if (reading.isRefused())
        return ER_FAILED;
    const Sources sources(*backRef(), sParam(), sConcatData());
    ERESULT code = sources.check();
    if (code < 0)
        return code;
    BVariant sample;
    code = sources.valueAt(&sample, 0);
    // An end before the start is more than any array can have.
    SweptValues values(sample, end < start ? std::numeric_limits<std::uint64_t>::max() : end - start);
    if (code >= 0)
        code = sources.fill(values, MemberRuns(start, end), code);
    *out = values.take();
    return code;
}

std::uint64_t SweptVarStrategy::GetMaxIndepOffset() const
{
    const ReadInProgress reading(*backRef());
    const ConcatVar* const concatenation =
        reading.isRefused() ? nullptr : linked<ConcatVar>(*backRef(), sConcatData());
    return concatenation ? concatenation->GetMaxIndepOffset() : 0;
}

std::uint64_t SweptVarStrategy::GetElementDimCount() const
{
    return 0;
}

ERESULT SweptVarStrategy::GetElementShape(std::vector<std::uint64_t>* shape) const
{
    if (!shape)
        return ER_INVALID_ARGUMENT;
    shape->clear();
    return ER_SUCCESS;
}

} // namespace Orrery
