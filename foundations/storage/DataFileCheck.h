#pragma once

#include "orrerycore_export.h"

#include <QString>

#include <cstdint>
#include <functional>

namespace Orrery {

class PropertyObject;

/// Looks at all of a data file and tells everything that is wrong with it, where opening it stops at the first.
///
/// The file is only read. What is damaged badly enough may bring down the HDF5 library, and this process with it:
/// for a file of unknown origin, run the check in a process of its own and judge that process's end as well.
///
/// Threads: any thread; one data file is looked at at a time.
class ORRERYCORE_EXPORT DataFileCheck
{
public:
    /// How bad a finding is.
    enum Severity
    {
        Warning, ///< the tree can be read whole, but not all around it is as a save leaves it
        Error    ///< something can't be read, or other programs would be led out of the file
    };

    /// One thing that is wrong.
    struct Finding
    {
        Severity severity; ///< whether the tree can be read all the same
        QString path; ///< of the node, or of the HDF5 object that isn't one; empty for the file as a whole
        QString text; ///< what is wrong, on one line
    };

    /// What has been looked at.
    struct Summary
    {
        std::uint64_t folders = 0;    ///< without the root
        std::uint64_t values = 0;     ///< leaves with a value
        std::uint64_t references = 0; ///< in this file or into others
        std::uint64_t fileBytes = 0;  ///< the size of the file
        std::uint64_t errors = 0;     ///< findings that are errors
        std::uint64_t warnings = 0;   ///< findings that are warnings
    };

    using Report = std::function<void(const Finding& finding)>; ///< receives each finding when it is found

    /// Receives how many bytes of arrays of how many have been read, at least once for each 4 MiB.
    using Progress = std::function<void(std::uint64_t done, std::uint64_t all)>;

    /// Look at the file at `path`: its structure, every array against its checksums, every reference, in this file
    /// or into another one, and every HDF5 object, link and attribute, whether the tree knows of it or not.
    ///
    /// Errors: everything that is wrong, also with opening the file, is a finding. What the callbacks throw comes
    ///         out.
    /// Cost:   reads the file once; large arrays piece by piece, where their layout allows.
    static Summary Run(const QString& path, const Report& report, const Progress& progress = {});

    /// Look at the tree of an open file alone: every array below `root` against its checksums, every reference.
    ///
    /// Errors: as Run.
    /// Edge:   arrays that have been read already were tested then, and an array of 64 MiB and more is read again later,
    ///         as if it hadn't been.
    static Summary RunOnTree(const PropertyObject& root, const Report& report, const Progress& progress = {});
};

} // namespace Orrery
