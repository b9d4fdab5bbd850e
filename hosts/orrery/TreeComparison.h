#pragma once

#include "foundations/property/PropertyObject.h"
#include "hosts/orrery/ValueComparison.h"

#include <functional>
#include <string>

namespace Orrery::Host {

/// One of the trees to compare, and how it is called.
struct ComparedTree
{
    PropertyObject* root;
    std::string name;
};

/// One difference, safe to print.
struct Difference
{
    enum Kind
    {
        Changed,
        OnlyInFirst,
        OnlyInSecond
    };

    Kind kind;
    std::string path; ///< of the node, in the tree that has it
    std::string what;
};

using DifferenceSink = std::function<void(const Difference& difference)>;

/// Walk two trees side by side and tell every difference, on either side.
///
/// Nodes are paired by name. Compared are kinds, type names, flags, values with their element types and shapes, and
/// the paths and files of references. What stands in one tree only is told once, at its top; two such nodes of one
/// folder that are the same below their names are told as one that is named differently, and so are the only two
/// Results of a folder, which are compared then.
/// Errors: Failure with the tree's name for values that can't be read; differences before it have been told.
/// Edge:   computed variables are compared by what they consist of, and nothing is computed. Units are compared as
///         they are kept: "in" and "m" that convert alike are different.
/// Cost:   one pass through both trees and all their values, see differencesOf(). Nothing of an array is kept.
void compareTrees(const ComparedTree& first, const ComparedTree& second, const ComparisonOptions& options,
                  const DifferenceSink& sink);

} // namespace Orrery::Host
