#include "foundations/property/TreeWalk_p.h"

#include "foundations/property/BindReferences_p.h"
#include "foundations/property/NodeAccess_p.h"
#include "foundations/storage/DataFile.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <unordered_set>
#include <vector>

namespace Orrery::Internal {

namespace {

using ChildIterator = NodeAccess::Children::const_iterator;

// Visits all nodes below a folder, parents first. enter(node) comes before and leave() after what is below a
// folder that has children; a leaf and an empty folder get visit(node). None of them may change the tree.
template <class Visitor>
void walkBelow(const PropertyObject& top, Visitor& visitor)
{
    struct Level
    {
        ChildIterator next;
        ChildIterator end;
    };
    const auto levelOf = [](const PropertyObject& folder) {
        const NodeAccess::Children& children = NodeAccess::children(folder);
        return Level{children.constBegin(), children.constEnd()};
    };

    std::vector<Level> levels{levelOf(top)};
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.next == level.end) {
            levels.pop_back();
            if (!levels.empty())
                visitor.leave();
            continue;
        }
        AbstractProperty* const node = *level.next++;
        if (!node)
            continue;
        const PropertyObject* const folder = NodeAccess::asFolder(*node);
        if (folder && !NodeAccess::children(*folder).isEmpty()) {
            visitor.enter(*node);
            levels.push_back(levelOf(*folder));
        } else {
            visitor.visit(*node);
        }
    }
}

bool hasChildren(const AbstractProperty& node)
{
    const PropertyObject* const folder = NodeAccess::asFolder(node);
    return folder && !NodeAccess::children(*folder).isEmpty();
}

struct HeightVisitor
{
    void enter(const AbstractProperty&) { height = std::max(height, ++depth); }
    void leave() { --depth; }
    void visit(const AbstractProperty& node)
    {
        if (NodeAccess::asFolder(node))
            height = std::max(height, depth + 1);
    }

    int depth = 1;
    int height = 1;
};

// All nodes below a folder as they stand now, to be told after the tree has changed under the walk.
class Snapshot
{
public:
    void enter(AbstractProperty& node)
    {
        m_open.push_back(m_entries.size());
        visit(node);
    }
    void leave()
    {
        m_entries[m_open.back()].end = m_entries.size();
        m_open.pop_back();
    }
    void visit(AbstractProperty& node)
    {
        m_entries.push_back({PropertyHandle(&node), node.GetParent(), m_entries.size() + 1});
    }

    void tell() const
    {
        std::size_t next = 0;
        while (next < m_entries.size()) {
            const Entry& entry = m_entries[next];
            AbstractProperty* const node = entry.node.Get();
            if (node && node->GetParent() == entry.parent) {
                ++next;
                NodeAccess::tellPathChanged(*node);
            } else {
                next = entry.end;
            }
        }
    }

private:
    struct Entry
    {
        PropertyHandle node;
        const PropertyObject* parent; // only compared
        std::size_t end;              // behind the last entry below this one
    };

    std::vector<Entry> m_entries;
    std::vector<std::size_t> m_open;
};

// The numbers of the trees that somebody has left and that still stand.
class TreeNumbers
{
public:
    static TreeNumbers& instance()
    {
        static auto* const s_numbers = new TreeNumbers; // never destroyed: a static tree may outlive it
        return *s_numbers;
    }

    std::uint32_t add()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_standing.insert(++m_last);
        return m_last;
    }
    void remove(std::uint32_t tree)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_standing.erase(tree);
    }
    void dropGone(std::map<std::uint32_t, NodeLife::Departure>* departures)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (auto place = departures->begin(); place != departures->end();)
            place = m_standing.count(place->first) != 0 ? std::next(place) : departures->erase(place);
    }

private:
    std::mutex m_mutex;
    std::uint32_t m_last = 0;
    std::unordered_set<std::uint32_t> m_standing;
};

std::uint32_t numberOfTree(const AbstractProperty& root)
{
    if (NodeAccess::treeNumber(root) == 0)
        NodeAccess::setTreeNumber(root, TreeNumbers::instance().add());
    return NodeAccess::treeNumber(root);
}

class DeparturesVisitor
{
public:
    explicit DeparturesVisitor(const AbstractProperty& node)
        : m_root(node.GetRootProperty())
    {
    }
    void enter(const AbstractProperty& node) { visit(node); }
    void leave() {}
    void visit(const AbstractProperty& node)
    {
        NodeLife* const life = NodeAccess::life(node);
        if (!life)
            return;
        if (m_tree == 0)
            learnTree();
        rememberDeparture(*life, node.GetFullPath());
    }

private:
    // Not before a node with handles is met: most that are removed have none.
    void learnTree()
    {
        m_tree = numberOfTree(*m_root);
        if (const DataFile* const file = m_root->GetDataFile()) {
            m_filePath = file->GetPath();
            m_fileType = NodeAccess::fileType(*file);
            m_fileUid = file->GetFileUid();
        }
    }

    void rememberDeparture(NodeLife& life, const QString& path) const
    {
        auto& places = life.departures;
        const std::uint64_t turn = ++life.lastTurn;
        places[m_tree] = NodeLife::Departure{path, turn};
        if (places.size() >= life.dropDeparturesAt) {
            TreeNumbers::instance().dropGone(&places);
            life.dropDeparturesAt = std::max<std::size_t>(8, 2 * places.size());
        }
        if (!m_filePath.isEmpty())
            life.lastInFile.reset(new NodeLife::FilePlace{path, m_filePath, m_fileType, m_fileUid, turn});
    }

    const AbstractProperty* m_root;
    std::uint32_t m_tree = 0;
    QString m_filePath;
    QString m_fileType;
    QString m_fileUid;
};

// Notes where the nodes of a file's tree stand. Nobody will come back to that tree, so its number is no matter.
class FilePlacesVisitor
{
public:
    explicit FilePlacesVisitor(const DataFile& file)
        : m_place{QString(), file.GetPath(), NodeAccess::fileType(file), file.GetFileUid(), 0}
    {
    }
    void enter(const AbstractProperty& node) { visit(node); }
    void leave() {}
    void visit(const AbstractProperty& node)
    {
        NodeLife* const life = NodeAccess::life(node);
        if (!life)
            return;
        m_place.path = node.GetFullPath();
        m_place.turn = ++life->lastTurn;
        life->lastInFile.reset(new NodeLife::FilePlace(m_place));
    }

private:
    NodeLife::FilePlace m_place;
};

// Calls an operation of each reference.
template <void (*remember)(const AbstractProperty& reference)>
struct ReferencesVisitor
{
    void enter(const AbstractProperty&) {}
    void leave() {}
    void visit(const AbstractProperty& node)
    {
        if (NodeAccess::isReference(node))
            remember(node);
    }
};

template <class Visitor>
void walkFrom(const AbstractProperty& node, Visitor visitor)
{
    visitor.visit(node);
    if (hasChildren(node))
        walkBelow(*NodeAccess::asFolder(node), visitor);
}

} // namespace

int folderDepth(const PropertyObject& folder)
{
    int depth = 1;
    for (const PropertyObject* above = folder.GetParent(); above; above = above->GetParent())
        ++depth;
    return depth;
}

int folderHeight(const AbstractProperty& node)
{
    const PropertyObject* const folder = NodeAccess::asFolder(node);
    if (!folder)
        return 0;
    HeightVisitor visitor;
    walkBelow(*folder, visitor);
    return visitor.height;
}

bool isSelfOrAbove(const AbstractProperty& candidate, const AbstractProperty& node)
{
    for (const AbstractProperty* above = &node; above; above = above->GetParent()) {
        if (above == &candidate)
            return true;
    }
    return false;
}

bool canReach(const AbstractProperty& from, const AbstractProperty& to)
{
    const AbstractProperty* const fromRoot = from.GetRootProperty();
    const AbstractProperty* const toRoot = to.GetRootProperty();
    return fromRoot == toRoot || (fromRoot->IsFileRoot() && toRoot->IsFileRoot());
}

void tellPathChanged(AbstractProperty& node)
{
    Snapshot snapshot;
    if (hasChildren(node))
        walkBelow(*NodeAccess::asFolder(node), snapshot);
    NodeAccess::tellPathChanged(node);
    snapshot.tell();
}

void tellPathChangedBelow(const PropertyObject& folder)
{
    Snapshot snapshot;
    walkBelow(folder, snapshot);
    snapshot.tell();
}

void rememberLostTargets(const AbstractProperty& node)
{
    walkFrom(node, ReferencesVisitor<&NodeAccess::rememberLostTarget>());
}

void rememberDepartures(const AbstractProperty& node)
{
    walkFrom(node, DeparturesVisitor(node));
}

void rememberFilePlaces(const PropertyObject& root)
{
    const DataFile* const file = root.GetDataFile();
    if (file && !file->GetPath().isEmpty())
        walkFrom(root, FilePlacesVisitor(*file));
}

void forgetTree(const AbstractProperty& root)
{
    if (NodeAccess::treeNumber(root) != 0)
        TreeNumbers::instance().remove(NodeAccess::treeNumber(root));
}

void bindReferences(PropertyObject& root)
{
    walkFrom(root, ReferencesVisitor<&NodeAccess::bindByPath>());
}

void rememberTargets(const AbstractProperty& node)
{
    walkFrom(node, ReferencesVisitor<&NodeAccess::rememberPath>());
}

} // namespace Orrery::Internal
