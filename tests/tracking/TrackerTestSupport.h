#pragma once

#include "tracking/DirtyTracker.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace TestSupport {
class TrackerOwner;
using TrackerNode = Orrery::DirtyTracker<TrackerOwner, TrackerOwner*>;

/// An owner as the library's own classes are: it alone sets the state of its tracker directly.
class TrackerOwner
{
public:
    static void setClean(TrackerNode& node) { node.setClean(); }
    static void setDirty(TrackerNode& node) { node.setDirty(); }
    static bool setUpdating(TrackerNode& node) { return node.setUpdating(); }
    static void addObserver(TrackerNode& node, const std::shared_ptr<TrackerNode>& other)
    {
        node.addObserver(other);
    }
    static void addSource(TrackerNode& node, const std::shared_ptr<TrackerNode>& other)
    {
        node.addSource(other);
    }
};

inline std::shared_ptr<TrackerNode> makeNode()
{
    return std::make_shared<TrackerNode>(nullptr);
}

inline std::shared_ptr<TrackerNode> makeDirtyNode()
{
    auto node = makeNode();
    node->markDirty();
    return node;
}

inline std::shared_ptr<TrackerNode> makeUpdatingNode()
{
    auto node = makeDirtyNode();
    TrackerOwner::setUpdating(*node);
    return node;
}

inline std::vector<std::shared_ptr<TrackerNode>> makeNodes(std::size_t count)
{
    std::vector<std::shared_ptr<TrackerNode>> nodes(count);
    for (auto& node : nodes)
        node = makeNode();
    return nodes;
}

inline void bindEdge(const std::shared_ptr<TrackerNode>& source, const std::shared_ptr<TrackerNode>& observer)
{
    Orrery::AbstractDirtyTracker::bind(source, observer);
}

inline void dropEdge(const std::shared_ptr<TrackerNode>& source, const std::shared_ptr<TrackerNode>& observer)
{
    Orrery::AbstractDirtyTracker::drop(source, observer);
}
} // namespace TestSupport
