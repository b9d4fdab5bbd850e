#pragma once

#include <QList>
#include <QString>

#include <cstdint>
#include <set>

namespace Orrery {

class AbstractProperty;

namespace Internal {

/// Read what follows the first `start` characters of a name as a child's number.
///
/// Edge:   only ASCII digits, at least one, and no more than fits a signed 64-bit number; zeros may lead.
bool parseChildNumber(const QString& name, int start, std::int64_t* number);

/// The children of one folder whose names are numbers, ascending; equal numbers in the order of their names.
///
/// A child must be removed before its name changes.
class NumberedChildren
{
public:
    void add(std::int64_t number, AbstractProperty* child);
    void remove(std::int64_t number, AbstractProperty* child);

    bool isEmpty() const { return m_entries.empty(); }
    AbstractProperty* last() const { return m_entries.rbegin()->child; }
    std::int64_t lastNumber() const { return m_entries.rbegin()->number; }
    void fill(QList<AbstractProperty*>* list) const;

private:
    struct Entry
    {
        std::int64_t number;
        AbstractProperty* child;

        bool operator<(const Entry& other) const;
    };

    std::set<Entry> m_entries;
};

} // namespace Internal
} // namespace Orrery
