#pragma once

#include <QList>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <vector>

namespace Orrery {

class AbstractProperty;

namespace Internal {

/// Read what follows the first `start` characters of a name as a child's number.
///
/// Edge:   only ASCII digits, at least one, and no more than fits a signed 64-bit number; zeros may lead.
bool parseChildNumber(const QString& name, int start, std::int64_t* number);

/// The children of one folder whose names are numbers, ascending; equal numbers in the order of their names.
///
/// They stand in one block, so that reading the list costs no more than its length. What is added behind the
/// last one, as nearly always, goes to the end of the block; what is added further ahead waits in a small set
/// and is merged in when that has grown. A removed one leaves a gap, and gaps are closed when they are many.
/// A child must be removed before its name changes.
///
/// Cost:   add and remove are logarithmic on the average, last is constant.
class NumberedChildren
{
public:
    void add(std::int64_t number, AbstractProperty* child);
    void remove(std::int64_t number, AbstractProperty* child);

    /// The child with the largest number, and that number; null and untouched without any.
    AbstractProperty* last(std::int64_t* number = nullptr) const;

    /// Append all children to the list.
    void fill(QList<AbstractProperty*>* list) const;

private:
    struct Entry
    {
        std::int64_t number;
        AbstractProperty* child; // null in a gap

        bool operator<(const Entry& other) const;
    };
    using Late = std::set<Entry>;

    const Entry* lastEntry() const;
    bool removeLate(const Entry& entry);
    void mergeLate();
    void closeGaps();

    std::vector<Entry> m_block; // the last one is no gap
    std::unique_ptr<Late> m_late;
    std::size_t m_gaps = 0;
};

} // namespace Internal
} // namespace Orrery
