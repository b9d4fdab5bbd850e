#pragma once

#include "foundations/property/PropertyObject.h"
#include "foundations/property/PropertyReference.h"
#include "foundations/property/SimpleProperty.h"
#include "foundations/storage/DataFileCheck.h"

#include <QString>

#include <cstdint>

namespace Orrery {

/// The part of a DataFileCheck that looks at the tree of an opened file: reads every array and follows every
/// reference.
class TreeCheck
{
public:
    /// `report` must outlive the check; `progress` may be empty.
    TreeCheck(const QString& filePath, const DataFileCheck::Report& report,
              const DataFileCheck::Progress& progress);

    /// Look at everything below `root`, and count it in `*summary`.
    void Look(const PropertyObject& root, DataFileCheck::Summary* summary);

private:
    void Count(const PropertyObject& folder, DataFileCheck::Summary* summary);
    void LookBelow(const PropertyObject& folder);
    void LookAtValue(const SimpleProperty& simple);
    void LookAtReference(const PropertyReference& reference);
    QString ReadArray(const BVariant& array);
    void Tell(DataFileCheck::Severity severity, const AbstractProperty& node, const QString& text);

    QString m_filePath;
    const DataFileCheck::Report& m_report;
    const DataFileCheck::Progress& m_progress;
    std::uint64_t m_done = 0;
    std::uint64_t m_all = 0;
};

} // namespace Orrery
