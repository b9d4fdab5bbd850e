#pragma once

namespace Orrery {

class PropertyObject;

namespace Internal {

/// Let the references below the folder that only have a path, as restored and cloned ones do, follow from now
/// on the node that stands there, if there is one. For a tree that has just been completed: until somebody
/// asks such a reference, it wouldn't notice that its target is renamed or moved.
///
/// Calls nothing of a host's. References into other files are left to be resolved when they are used.
///
/// Cost:   the nodes below the folder, and the steps of the paths.
void bindReferences(PropertyObject& root);

} // namespace Internal
} // namespace Orrery
