#pragma once

#include "orrerycorevariables_export.h"

namespace Orrery {

class PropertyObject;

/// Tells whether two folders are the same, on several levels. Values are compared through conversion: an int 3 and
/// a double 3.0 are the same.
///
/// It answers whether `second` has what `first` has: children that only `second` has go unnoticed. References are
/// compared by name and class alone, and a NaN equals nothing, not even itself.
///
/// All operations give 0 or 1 and change nothing. Both folders must outlive the comparator.
class ORRERYCOREVARIABLES_EXPORT PropertyObjectComparator
{
public:
    /// Both must outlive the comparator.
    PropertyObjectComparator(const PropertyObject& first, const PropertyObject& second);

    int sameNames(); ///< whether the two folders have one name

    /// Whether the two are of one class; a derived class is another one.
    int sameTypes();

    /// Whether the data are the same; 1 if the two aren't both variables. A computed variable is brought up to date.
    ///
    /// Errors: what the reading of the data throws; data that can't be converted to one another are different.
    int sameValues();

    /// Whether name, class and all that stands below `first` are the same in `second`.
    int sameFields();

    int sameEverything(); ///< sameValues() and then sameFields()

private:
    const PropertyObject& m_first;
    const PropertyObject& m_second;
};

/// sameValues() and then sameFields(); false for an object and itself if it is a variable with a NaN.
ORRERYCOREVARIABLES_EXPORT bool operator==(const PropertyObject& left, const PropertyObject& right);
/// The opposite of ==.
ORRERYCOREVARIABLES_EXPORT bool operator!=(const PropertyObject& left, const PropertyObject& right);

} // namespace Orrery
