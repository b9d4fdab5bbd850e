#pragma once

#include <QString>

#include <atomic>
#include <cstdint>
#include <vector>

namespace Orrery {

class AbstractProperty;

namespace Internal {

/// What the handles to one node share. The handles own it together; the node knows it while it lives.
struct NodeLife
{
    /// Where the node stood when it was last taken out of a tree.
    struct Departure
    {
        std::uint32_t tree;
        QString path;
    };

    std::atomic<std::uint32_t> handles{0};
    AbstractProperty* node = nullptr;  // null once the node is dying or gone
    std::vector<Departure> departures; // one for each tree, the latest last
};

} // namespace Internal
} // namespace Orrery
