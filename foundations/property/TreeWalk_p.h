#pragma once

#include "foundations/property/PropertyHandle.h"

namespace Orrery {

class AbstractProperty;
class PropertyObject;

namespace Internal {

/// How many folders stand on the way from the root down to this one, both included.
int folderDepth(const PropertyObject& folder);

/// How many folders stand on the longest way from the node downward, the node included; 0 for a leaf.
int folderHeight(const AbstractProperty& node);

/// Whether `candidate` is `node` or a folder above it.
bool isSelfOrAbove(const AbstractProperty& candidate, const AbstractProperty& node);

/// Whether a reference at `from` can stand for `to`: both are in one tree, or both trees belong to files.
bool canReach(const AbstractProperty& from, const AbstractProperty& to);

/// Call OnPathChanged of the node and then of all that stand below it at the time of the call, parents first
/// and siblings in their order. What a handler destroys is passed over, and so is what it moves, with all
/// below: the move has told them. May destroy the node; the caller must not use it afterwards.
void tellPathChanged(AbstractProperty& node);

/// The same for all that stand below the folder, without the folder itself.
void tellPathChangedBelow(const PropertyObject& folder);

/// To be called before the node, which is a root, gets a place in another tree: references whose targets have
/// left or died remember where these stood, as long as that can be told by the root.
void rememberLostTargets(const AbstractProperty& node);

/// To be called before the node is taken out of its folder: let the handles to it and to what stands below
/// remember the paths that get lost.
void rememberDepartures(const AbstractProperty& node);

/// To be called while the root of a file's tree, about to be destroyed or let go, still knows its file: let the handles of other
/// trees remember where in this file their nodes have stood.
void rememberFilePlaces(const PropertyObject& root);

/// To be called when the node dies: nobody comes back to a tree whose root it was.
void forgetTree(const AbstractProperty& root);

/// To be called before the node is taken out of its folder and left alive: let references, itself and below,
/// remember the paths of their targets.
void rememberTargets(const AbstractProperty& node);

} // namespace Internal
} // namespace Orrery
