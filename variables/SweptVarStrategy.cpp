#include "variables/SweptVarStrategy.h"

#include "foundations/property/PropertyHandle.h"
#include "foundations/property/PropertyReference.h"
#include "variables/ConcatMembers_p.h"
#include "variables/ConcatVar.h"
#include "variables/OffsetCountRun_p.h"
#include "variables/ReadInProgress_p.h"
#include "variables/SweptValues_p.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace Orrery {
namespace {

/// What the child refers to, or the child itself, as a T; null if it is none.
template <class T>
const T* linked(const PropertyObject& owner, const QString& name)
{
    const AbstractProperty* node = owner.GetPropertyConstPtr(name);
    if (!node)
        return nullptr;
    if (const AbstractProperty* const found = targetAtHand(*node))
        return dynamic_cast<const T*>(found);
    const OffsetCountRun::Pause pause;
    if (node->IsPropertyReference()) {
        const auto* const reference = dynamic_cast<const PropertyReference*>(node);
        node = reference ? reference->ResolveConst() : nullptr;
    } else if (!node->IsVariable()) {
        node = nullptr;
    }
    return dynamic_cast<const T*>(node);
}

constexpr std::size_t s_membersAtOnce = 64;

/// An end before the start gives more elements than any array can have, however far that wraps around.
std::uint64_t lengthOf(std::uint64_t start, std::uint64_t end)
{
    const std::uint64_t length = end - start;
    return end < start ? std::max(length, std::uint64_t(1) << 63U) : length;
}

/// The two variables that a sweep is computed from.
class Sources
{
public:
    Sources(const PropertyObject& sweep, const QString& parameter, const QString& concatenation)
        : m_sweep(&sweep)
        , m_parameter(linked<Variable>(sweep, parameter))
        , m_concatenation(m_sweep.IsExpired() ? nullptr : linked<ConcatVar>(sweep, concatenation))
    {
    }

    /// Whether both are there and can be read.
    ERESULT check() const;

    /// The parameter's value of the member that the offset lies in.
    ERESULT valueAt(BVariant* out, std::uint64_t offset) const;

    /// Append each member's value, as often as `runs` takes an offset of the member. `code` is the result if
    /// none is.
    ERESULT fill(SweptValues& values, MemberRuns runs, ERESULT code) const;

private:
    bool nextSizes(ConcatMembers& members, std::size_t most, std::vector<std::uint64_t>* sizes) const;
    const BVariant* storedParameter() const;
    ERESULT append(SweptValues& values, const BVariant* stored, std::uint64_t position,
                   std::uint64_t length) const;
    ERESULT parameterAt(BVariant* out, std::uint64_t position) const;

    // Whatever is resolved or read may run code of a host that destroys them.
    PropertyHandle m_sweep;
    PropertyHandle m_parameter;
    PropertyHandle m_concatenation;
};

ERESULT Sources::check() const
{
    if (m_sweep.IsExpired())
        return ER_FAILED;
    const AbstractProperty* const parameter = m_parameter.Get();
    const AbstractProperty* const concatenation = m_concatenation.Get();
    if (!parameter || !concatenation)
        return ER_INVALID_ARGUMENT;
    return ReadInProgress::covers(*parameter) || ReadInProgress::covers(*concatenation) ? ER_FAILED
                                                                                        : ER_SUCCESS;
}

/// The numbers of offsets of the next members; false if one doesn't resolve. The concatenation counts as
/// being read only here: a sweep may well take the concatenation's own values as its parameter.
///
/// They are as many as can't be told from reading one by one: of members that run code of a host there is one
/// alone.
bool Sources::nextSizes(ConcatMembers& members, std::size_t most, std::vector<std::uint64_t>* sizes) const
{
    sizes->clear();
    const AbstractProperty* const concatenation = m_concatenation.Get();
    if (!concatenation)
        return false;
    const ReadInProgress reading(*concatenation);
    if (reading.isRefused())
        return false;
    while (sizes->size() < most && members.next()) {
        const bool isFirst = sizes->empty();
        const bool isReadNow = isFirst || members.isAtHand();
        if (isReadNow && !members.resolve())
            return false;
        if (!isReadNow || (!isFirst && !members.member().isPlain())) {
            members.back();
            break;
        }
        sizes->push_back(members.member().GetMaxIndepOffset());
        if (!members.member().isPlain())
            break;
    }
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
    std::vector<std::uint64_t> sizes;
    std::uint64_t position = 0;
    std::uint64_t end = 0;
    bool areThere = true;
    do {
        areThere = nextSizes(members, s_membersAtOnce, &sizes);
        for (const std::uint64_t size : sizes) {
            end += size;
            if (offset < end)
                return parameterAt(out, position);
            ++position;
        }
    } while (areThere && !sizes.empty());
    return areThere ? ER_INVALID_ARGUMENT : ER_FAILED;
}

/// Lengths first and values then, some members at a time: two short loops wait for memory less often than a
/// long one.
ERESULT Sources::fill(SweptValues& values, MemberRuns runs, ERESULT code) const
{
    if (!m_concatenation.Get() || !m_parameter.Get())
        return ER_FAILED;
    ConcatMembers members(*static_cast<const ConcatVar*>(m_concatenation.Get()));
    const bool isPlain = MemberReader(*static_cast<const Variable*>(m_parameter.Get())).isPlain();
    if (!isPlain)
        members.hold();
    std::vector<std::uint64_t> sizes;
    std::uint64_t position = 0;
    bool areThere = true;
    do {
        areThere = nextSizes(members, isPlain ? s_membersAtOnce : 1, &sizes);
        const BVariant* const stored = isPlain ? storedParameter() : nullptr;
        for (const std::uint64_t size : sizes) {
            const MemberRuns::Run run = runs.next(size);
            if (run.isTaken)
                code = append(values, stored, position, run.end - run.start);
            if (code < 0)
                return code;
            ++position;
        }
    } while (areThere && !sizes.empty());
    return areThere ? code : ER_FAILED;
}

/// The parameter's values where they stand in memory, if they do; valid until a member is asked for its
/// offsets.
const BVariant* Sources::storedParameter() const
{
    const auto* const parameter = static_cast<const Variable*>(m_parameter.Get());
    if (!parameter)
        return nullptr;
    MemberReader reader(*parameter);
    reader.GetMaxIndepOffset();
    return reader.storedVector();
}

ERESULT Sources::append(SweptValues& values, const BVariant* stored, std::uint64_t position,
                        std::uint64_t length) const
{
    if (stored && position < stored->elementCount()) {
        values.appendElement(*stored, position, length);
        return ER_SUCCESS;
    }
    BVariant value; // fresh, so that a read that fails doesn't repeat the one before
    const ERESULT code = parameterAt(&value, position);
    values.append(value, length);
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
    const PropertyHandle owner(backRef());
    if (end == 0)
        end = GetMaxIndepOffset();
    if (owner.IsExpired())
        return ER_FAILED; // destroyed by what a member has told when it was computed
    const ReadInProgress reading(*backRef());
    if (reading.isRefused())
        return ER_FAILED;
    const Sources sources(*backRef(), sParam(), sConcatData());
    ERESULT code = sources.check();
    if (code < 0)
        return code;
    BVariant sample;
    code = sources.valueAt(&sample, 0);
    SweptValues values(sample, lengthOf(start, end));
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
    return concatenation ? MemberReader(*concatenation).GetMaxIndepOffset() : 0;
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
