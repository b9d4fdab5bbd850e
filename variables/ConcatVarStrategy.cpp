#include "variables/ConcatVarStrategy.h"

#include "variables/ConcatMembers_p.h"
#include "variables/OffsetCountRun_p.h"
#include "variables/ReadInProgress_p.h"
#include "variables/ValueJoiner_p.h"
#include "variables/Variable.h"

namespace Orrery {
namespace {

/// The first member if it is a Variable itself. One that is referred to doesn't tell the shape of elements.
const Variable* firstMemberVariable(const PropertyObject& owner)
{
    QList<AbstractProperty*> members;
    owner.GetPrefixedChildrenProperties(&members, QString());
    if (members.isEmpty() || !members.first()->IsVariable())
        return nullptr;
    return dynamic_cast<const Variable*>(members.first());
}

/// The first piece goes straight to *out, so that it comes as it is.
ERESULT joinPiece(const MemberReader& member, const MemberRuns::Run& run, BVariant* out, ValueJoiner& joiner)
{
    if (joiner.isEmpty())
        return member.GetValueRange(out, run.start, run.end);
    if (run.isWhole) {
        if (const BVariant* const stored = member.storedVector()) {
            joiner.append(*stored);
            return ER_SUCCESS;
        }
    }
    BVariant piece;
    const ERESULT code = member.GetValueRange(&piece, 0, run.end);
    joiner.append(piece);
    return code;
}

ERESULT joinMembers(ConcatMembers& members, std::uint64_t start, std::uint64_t end, BVariant* out,
                    ValueJoiner& joiner)
{
    MemberRuns runs(start, end);
    ERESULT code = ER_SUCCESS;
    while (members.next()) {
        if (!members.resolve())
            return ER_FAILED;
        const MemberRuns::Run run = runs.next(members.member().GetMaxIndepOffset());
        if (!run.isTaken)
            continue;
        code = members.resolveAgain() ? joinPiece(members.member(), run, out, joiner) : ER_FAILED;
        if (code < 0)
            return code;
    }
    return runs.endsBeyond() ? ER_INVALID_ARGUMENT : code;
}

} // namespace

ConcatVarStrategy::ConcatVarStrategy(Variable* owner)
    : IVariableStrategy(owner)
{
}

ConcatVarStrategy::~ConcatVarStrategy() = default;

const QString& ConcatVarStrategy::StaticType()
{
    static const QString type = QStringLiteral("ConcatStrategy");
    return type;
}

QString ConcatVarStrategy::GetType() const
{
    return StaticType();
}

std::shared_ptr<IVariableStrategy> ConcatVarStrategy::Copy(Variable* owner) const
{
    return std::make_shared<ConcatVarStrategy>(owner);
}

ERESULT ConcatVarStrategy::AddVariable(const Variable* variable)
{
    return addMember(*backRef(), variable);
}

ERESULT ConcatVarStrategy::GetValueAt(BVariant* out, std::uint64_t offset) const
{
    if (!out)
        return ER_INVALID_ARGUMENT;
    const ReadInProgress reading(*backRef());
    if (reading.isRefused())
        return ER_FAILED;
    ConcatMembers members(*backRef());
    std::uint64_t end = 0;
    while (members.next()) {
        if (!members.resolve())
            return ER_FAILED;
        const std::uint64_t begin = end;
        end += members.member().GetMaxIndepOffset();
        if (offset < end)
            return members.resolveAgain() ? members.member().GetValueAt(out, offset - begin) : ER_FAILED;
    }
    return ER_INVALID_ARGUMENT;
}

ERESULT ConcatVarStrategy::GetValueRange(BVariant* out, std::uint64_t start, std::uint64_t end) const
{
    if (!out)
        return ER_INVALID_ARGUMENT;
    const PropertyHandle owner(backRef());
    if (end == 0)
        end = GetMaxIndepOffset();
    if (owner.IsExpired())
        return ER_FAILED; // destroyed by what a member has told when it was computed
    *out = BVariant();
    ReadInProgress reading(*backRef());
    if (end == 0 || reading.isRefused())
        return ER_FAILED;
    ConcatMembers members(*backRef());
    if (members.isEmpty())
        return ER_INVALID_ARGUMENT;
    const std::uint64_t expected = end > start ? end - start : 0;
    reading.expectElements(expected);
    ValueJoiner joiner(out, expected);
    const ERESULT code = joinMembers(members, start, end, out, joiner);
    joiner.finish();
    return code;
}

std::uint64_t ConcatVarStrategy::GetMaxIndepOffset() const
{
    const Variable& owner = *backRef();
    std::uint64_t sum = 0;
    if (OffsetCountRun::find(owner, &sum))
        return sum;
    const ReadInProgress reading(owner);
    if (reading.isRefused())
        return 0;
    ConcatMembers members(owner);
    OffsetCountRun run(owner, reading, members.count());
    while (members.next()) {
        if (members.resolve())
            sum += members.member().GetMaxIndepOffset();
    }
    return run.keep(sum);
}

std::uint64_t ConcatVarStrategy::GetElementDimCount() const
{
    const ReadInProgress reading(*backRef());
    const Variable* const first = reading.isRefused() ? nullptr : firstMemberVariable(*backRef());
    return first ? first->GetElementDimCount() : 0;
}

ERESULT ConcatVarStrategy::GetElementShape(std::vector<std::uint64_t>* shape) const
{
    if (!shape)
        return ER_INVALID_ARGUMENT;
    shape->clear();
    const ReadInProgress reading(*backRef());
    if (reading.isRefused())
        return ER_FAILED;
    const Variable* const first = firstMemberVariable(*backRef());
    return first ? first->GetElementShape(shape) : ER_SUCCESS;
}

} // namespace Orrery
