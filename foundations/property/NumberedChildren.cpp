#include "foundations/property/NumberedChildren_p.h"

#include "foundations/property/NodeAccess_p.h"

#include <limits>

namespace Orrery::Internal {

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
    // Members are nearly always added behind the last one; the hint makes that a step of constant cost.
    m_entries.insert(m_entries.end(), {number, child});
}

void NumberedChildren::remove(std::int64_t number, AbstractProperty* child)
{
    m_entries.erase({number, child});
}

void NumberedChildren::fill(QList<AbstractProperty*>* list) const
{
    list->reserve(static_cast<int>(m_entries.size()));
    for (const Entry& entry : m_entries)
        list->append(entry.child);
}

} // namespace Orrery::Internal
