#include "foundations/property/NumberedChildren_p.h"

#include "foundations/property/NodeAccess_p.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace Orrery::Internal {

namespace {

// Below that many it isn't worth while to merge or to close gaps.
constexpr std::size_t s_few = 16;

} // namespace

bool parseChildNumber(const QString& name, int start, std::int64_t* number)
{
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    if (name.size() <= start)
        return false;
    std::int64_t value = 0;
    for (int i = start; i < name.size(); ++i) {
        const int digit = name.at(i).unicode() - u'0';
        if (digit < 0 || digit > 9)
            return false;
        if (value > (largest - digit) / 10)
            return false;
        value = value * 10 + digit;
    }
    *number = value;
    return true;
}

bool NumberedChildren::Entry::operator<(const Entry& other) const
{
    if (number != other.number)
        return number < other.number;
    return child != other.child && NodeAccess::name(*child) < NodeAccess::name(*other.child);
}

void NumberedChildren::add(std::int64_t number, AbstractProperty* child)
{
    const Entry entry{number, child};
    if (m_block.empty() || m_block.back() < entry) {
        m_block.push_back(entry);
        return;
    }
    if (!m_late)
        m_late = std::make_unique<Late>();
    m_late->insert(entry);
    // An eighth of the block: what a merge costs is paid by the entries that it merges.
    if (m_late->size() > s_few + m_block.size() / 8)
        mergeLate();
}

void NumberedChildren::remove(std::int64_t number, AbstractProperty* child)
{
    if (removeLate({number, child}))
        return;
    auto entry = std::lower_bound(m_block.begin(), m_block.end(), number,
                                  [](const Entry& e, std::int64_t wanted) { return e.number < wanted; });
    while (entry->child != child)
        ++entry; // numbers are equal only where zeros lead
    entry->child = nullptr;
    ++m_gaps;
    while (!m_block.empty() && !m_block.back().child) {
        m_block.pop_back();
        --m_gaps;
    }
    if (m_gaps > s_few + m_block.size() / 2)
        closeGaps();
}

AbstractProperty* NumberedChildren::last(std::int64_t* number) const
{
    const Entry* const entry = lastEntry();
    if (!entry)
        return nullptr;
    if (number)
        *number = entry->number;
    return entry->child;
}

void NumberedChildren::fill(QList<AbstractProperty*>* list) const
{
    const std::size_t late = m_late ? m_late->size() : 0;
    list->reserve(list->size() + static_cast<int>(m_block.size() - m_gaps + late));
    const Late none;
    const Late& ahead = m_late ? *m_late : none;
    auto next = ahead.begin();
    for (const Entry& entry : m_block) {
        if (!entry.child)
            continue;
        for (; next != ahead.end() && *next < entry; ++next)
            list->append(next->child);
        list->append(entry.child);
    }
    for (; next != ahead.end(); ++next)
        list->append(next->child);
}

const NumberedChildren::Entry* NumberedChildren::lastEntry() const
{
    const Entry* const block = m_block.empty() ? nullptr : &m_block.back();
    const Entry* const late = !m_late || m_late->empty() ? nullptr : &*m_late->rbegin();
    if (!block || !late)
        return block ? block : late;
    return *block < *late ? late : block;
}

bool NumberedChildren::removeLate(const Entry& entry)
{
    return m_late && m_late->erase(entry) != 0;
}

void NumberedChildren::mergeLate()
{
    closeGaps();
    std::vector<Entry> merged;
    merged.reserve(m_block.size() + m_late->size());
    std::merge(m_block.begin(), m_block.end(), m_late->begin(), m_late->end(), std::back_inserter(merged));
    m_block = std::move(merged);
    m_late.reset();
}

void NumberedChildren::closeGaps()
{
    m_block.erase(std::remove_if(m_block.begin(), m_block.end(), [](const Entry& e) { return !e.child; }),
                  m_block.end());
    m_gaps = 0;
}

} // namespace Orrery::Internal
