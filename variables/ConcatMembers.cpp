#include "variables/ConcatMembers_p.h"

#include "foundations/property/PropertyReference.h"
#include "variables/ConcatVar.h"
#include "variables/ExplicitDataVar.h"
#include "variables/OffsetCountRun_p.h"
#include "variables/RangeVar.h"
#include "variables/ReadInProgress_p.h"
#include "variables/SweptVariable.h"
#include "variables/Variable.h"

#include <algorithm>
#include <typeinfo>

namespace Orrery {
namespace {

/// The class behind a pointer is told in a few loads when it is the usual one; a cast takes many more.
template <class Usual, class T>
bool isExactly(const T& object)
{
    return typeid(object) == typeid(Usual);
}

void prefetch([[maybe_unused]] const void* object, [[maybe_unused]] std::size_t size)
{
#if defined(__GNUC__)
    for (std::size_t line = 0; line < size; line += 64)
        __builtin_prefetch(static_cast<const char*>(object) + line);
#endif
}

const AbstractProperty* targetOf(AbstractProperty& child)
{
    if (const AbstractProperty* const found = targetAtHand(child))
        return found;
    const OffsetCountRun::Pause pause;
    const unsigned int flags = child.GetTypeFlags();
    if ((flags & PropertyTypeFlagVariable) != 0)
        return &child;
    const auto* const reference =
        (flags & PropertyTypeFlagReference) != 0 ? dynamic_cast<PropertyReference*>(&child) : nullptr;
    return reference ? reference->Resolve() : nullptr;
}

const Variable* asVariable(const AbstractProperty* node)
{
    if (node && (isExactly<ExplicitDataVar>(*node) || isExactly<Variable>(*node)))
        return static_cast<const Variable*>(node);
    return dynamic_cast<const Variable*>(node);
}

} // namespace

const AbstractProperty* targetAtHand(const AbstractProperty& child)
{
    if (isExactly<PropertyReference>(child))
        return static_cast<const PropertyReference&>(child).BoundTarget();
    const bool isVariable = isExactly<Variable>(child) || isExactly<ExplicitDataVar>(child) ||
                            isExactly<RangeVar>(child) || isExactly<ConcatVar>(child) ||
                            isExactly<SweptVariable>(child);
    return isVariable ? &child : nullptr;
}

ERESULT addMember(PropertyObject& owner, const Variable* variable)
{
    QString name;
    const ERESULT code = owner.nextNumberedChildName(&name);
    return code < 0 ? code : owner.SetPropertyRef(name, variable);
}

ConcatMembers::ConcatMembers(const PropertyObject& owner)
{
    owner.GetPrefixedChildrenProperties(&m_children, QString());
}

bool ConcatMembers::next()
{
    if (m_next >= m_children.size())
        return false;
    ++m_next;
    if (m_held.empty())
        lookAhead();
    return true;
}

AbstractProperty* ConcatMembers::child() const
{
    if (m_held.empty())
        return m_children.at(m_next - 1);
    const auto fromEnd = static_cast<std::size_t>(m_children.size() - m_next) + 1;
    return m_held[m_held.size() - fromEnd].Get();
}

/// The target of the present child, if it is at hand and nothing is held yet.
const AbstractProperty* ConcatMembers::atHand() const
{
    return m_held.empty() ? m_ahead[static_cast<std::size_t>(m_next - 1) % m_ahead.size()] : nullptr;
}

const AbstractProperty* ConcatMembers::target()
{
    if (const AbstractProperty* const found = atHand())
        return found;
    hold();
    AbstractProperty* const node = child();
    return node ? targetOf(*node) : nullptr;
}

/// Of many members most lie in no cache, and each is five steps from one place in memory to another. As long
/// as nothing can change the tree, the first steps of the next members are taken while the present one is
/// waited for.
void ConcatMembers::lookAhead()
{
    const int present = m_next - 1;
    const int length = static_cast<int>(m_ahead.size());
    const int end = std::min(m_children.size(), present + length);
    for (; m_lookedUp < end; ++m_lookedUp) {
        const AbstractProperty*& found = m_ahead[static_cast<std::size_t>(m_lookedUp) % m_ahead.size()];
        found = targetAtHand(*m_children.at(m_lookedUp));
        prefetch(found, sizeof(Variable));
        if (m_lookedUp + length / 2 < m_children.size())
            prefetch(m_children.at(m_lookedUp + length / 2), sizeof(PropertyReference));
    }
    if (present + length / 2 < end) {
        if (const AbstractProperty* const found =
                m_ahead[static_cast<std::size_t>(present + length / 2) % m_ahead.size()])
            MemberReader::prefetch(*found);
    }
}

bool ConcatMembers::resolve()
{
    const Variable* const variable = asVariable(target());
    if (!variable || ReadInProgress::covers(*variable))
        return false;
    m_member = MemberReader(*variable);
    if (!m_member.isPlain())
        hold();
    return true;
}

void ConcatMembers::hold()
{
    if (!m_held.empty())
        return;
    const int first = std::max(m_next - 1, 0);
    m_held.reserve(static_cast<std::size_t>(m_children.size() - first));
    for (int i = first; i < m_children.size(); ++i)
        m_held.emplace_back(m_children.at(i));
}

MemberRuns::Run MemberRuns::next(std::uint64_t size)
{
    const std::uint64_t begin = m_position;
    m_position += size;
    const std::uint64_t localEnd = std::min(size, m_end - begin);
    if (begin <= m_start && m_start < m_position) {
        m_started = true;
        const bool isTaken = m_start != begin || localEnd != 0;
        return {isTaken, m_start == begin && localEnd == size, m_start - begin, localEnd};
    }
    return {m_started && m_end > begin && localEnd != 0, localEnd == size, 0, localEnd};
}

} // namespace Orrery
