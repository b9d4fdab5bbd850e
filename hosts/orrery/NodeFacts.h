#pragma once

#include "foundations/property/PropertyObject.h"
#include "foundations/variant/BVariant.h"
#include "variables/Variable.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Orrery::Host {

/// What a listing tells of the values of a node.
struct ValueFacts
{
    std::optional<std::vector<std::uint64_t>> shape;
    std::string elements; ///< name of the element type; empty where it isn't known
    std::string ordering; ///< of arrays with more than one dimension, "row-major" or "column-major"
    std::optional<std::uint64_t> count;
    Brindle::Quay::BVariant single; ///< the value itself if it is the only one
    bool isUnreadable = false;
};

ValueFacts factsOf(const Brindle::Quay::BVariant& value);

/// The same of a variable. Nothing is computed but the first of computed values, which tells their type.
///
/// Errors: none; what is wrong with one variable leaves the rest of a listing worth having.
ValueFacts factsOf(const Variable& variable);

using NodeVisitor = std::function<void(AbstractProperty& node, std::size_t depth)>;

/// Visit what a listing of `node` shows: what stands below it, or the node itself if it isn't a folder that is listed.
///
/// Shape:  folders and variables that aren't hidden, or with `showsAll` every node. Children follow their folder, by
///         name, and numbers in names by their value.
void visitListed(AbstractProperty& node, bool showsAll, const NodeVisitor& visitor);

} // namespace Orrery::Host
