#pragma once

#include "foundations/property/ErrorResult.h"
#include "orrerycore_export.h"

#include <QString>

#include <vector>

namespace Orrery {

class SimpleProperty;

/// What other programs are told of one array of a data file: attributes of its dataset. Nothing reads them back.
///
/// This library knows no units and no axes; who does registers a source, which is asked for every array that is
/// saved.
class ORRERYCORE_EXPORT ArrayAttributes
{
public:
    /// Fills the attributes of one array. It may read the tree, which it must not change.
    ///
    /// Errors: what it throws fails the save.
    using Source = void (*)(const SimpleProperty& array, ArrayAttributes* attributes);

    /// Ask `source` too from here on; sources are asked in the order of their registration.
    ///
    /// Errors: ER_INVALID_ARGUMENT for null, ER_ALREADY_EXISTS for one that is registered.
    /// Threads: any.
    static ERESULT RegisterSource(Source source);

    /// One attribute of one text. Of two with one name the first stays; an empty text is passed over, and a name that
    /// no attribute can have: an empty one, one of more than 1,000 characters, with NUL, or with half a surrogate pair.
    void AddText(const QString& name, const QString& text);

    /// One attribute with the path of the dataset of each of these arrays, in their order; an empty text for an array
    /// that has no dataset in the file, and for null. The arrays are not owned and are looked up when the tree has
    /// been walked. An empty list is passed over, and names as above.
    void AddPaths(const QString& name, const std::vector<const SimpleProperty*>& arrays);

private:
    friend class Hdf5FileWriter;
    struct Attribute
    {
        QString name;
        QString text;
        std::vector<const SimpleProperty*> arrays; ///< empty for a text
    };

    bool Takes(const QString& name) const;
    static void Ask(const SimpleProperty& array, ArrayAttributes* attributes);

    std::vector<Attribute> m_attributes;
};

} // namespace Orrery
