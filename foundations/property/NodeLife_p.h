#pragma once

#include <QString>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>

namespace Orrery {

class AbstractProperty;

namespace Internal {

/// What the handles to one node share. The handles own it together; the node knows it while it lives.
struct NodeLife
{
    /// A place in the tree of a file, as other files name it.
    struct FilePlace
    {
        QString path;
        QString filePath;
        QString fileType; // empty when the file couldn't tell
        QString fileUid;
        std::uint64_t turn = 0; // as of a Departure
    };

    /// Where the node stood in a tree that it has left.
    struct Departure
    {
        QString path;
        std::uint64_t turn = 0; // later ones have greater numbers
    };

    std::atomic<std::uint32_t> handles{0};
    AbstractProperty* node = nullptr; // null once the node is dying or gone

    /// Where the node stood when it last left each tree, by the number of the tree. Those of trees that are
    /// gone serve nobody; they are dropped when so many have come together.
    std::map<std::uint32_t, Departure> departures;
    std::size_t dropDeparturesAt = 8;

    std::unique_ptr<FilePlace> lastInFile; // where it last left a file
    std::uint64_t lastTurn = 0;            // of the latest of all these
};

} // namespace Internal
} // namespace Orrery
