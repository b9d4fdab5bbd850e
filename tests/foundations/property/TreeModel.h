#pragma once

#include "tests/foundations/property/TreeNodes.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Orrery::TreeTest {

/// A naive picture of one node: what the tree should look like, by the plainest means that say it.
///
/// Children are a std::map over std::u16string, so that the order and the look-up are not Qt's. Paths are lists
/// of names, not text.
struct ModelNode : std::enable_shared_from_this<ModelNode>
{
    enum class Kind
    {
        Folder,
        Value,
        Reference
    };
    using Pointer = std::shared_ptr<ModelNode>;
    using Children = std::map<std::u16string, Pointer>;

    /// The names from a root's child downward.
    using Place = std::vector<std::u16string>;

    /// What references share of their target, and keep when it is gone.
    struct Life
    {
        ModelNode* node;
        std::map<int, Place> lastPlaces; ///< by the root's number: where it was last taken out of that tree
    };

    ModelNode(Kind nodeKind, const QString& nodeName, AbstractProperty* node);
    ~ModelNode();
    ModelNode(const ModelNode&) = delete;
    ModelNode& operator=(const ModelNode&) = delete;

    Kind kind;
    std::u16string name;
    unsigned int flags = 4;
    double value = 0.0;
    ModelNode* parent = nullptr;
    Children children;

    AbstractProperty* real; ///< the node of the tree that this one pictures
    int pathChanges = 0;    ///< how often a folder should have been told
    const int number;       ///< never given twice, unlike an address
    const std::shared_ptr<Life> life;
    std::shared_ptr<Life> target; ///< what a reference is bound to

    /// The way to a node: so many folders up, then down by these names. A reference's: none is unset.
    struct Way
    {
        bool isSet = false;
        std::size_t up = 0;
        Place down;
    };
    Way way;

    QString qName() const { return QString::fromStdU16String(name); }
    ModelNode* root();
    bool isBelow(const ModelNode* other) const; ///< or is it
    int depth() const;                          ///< 1 for a root
    int height() const;                         ///< folders from here down to the deepest, 0 for a leaf
    std::size_t size() const;

    Place place() const;

    /// To be called before the subtree is unlinked or destroyed: references remember where it was.
    void rememberPlaces();

    /// A target that nobody refers to any more is met as a stranger next time.
    void forgetUnreferenced();

    /// Link and unlink; the caller has checked that it can be done.
    void adopt(const Pointer& child);
    Pointer unlink();

    void tellPathChange();

    /// A copy of the subtree without counterparts in the tree, references by their ways only.
    Pointer clone() const;

    /// The way from this node to a place in its tree, and what lies at the end of a way; null for nothing.
    Way wayTo(const Place& to) const;
    ModelNode* follow(const Way& wayFromHere);

    /// Bring the reference up to date, as each question to a reference does, and give its target: what it is
    /// bound to if that is in its tree, else what is found where that was last seen.
    ModelNode* resolve();

    /// Every node of the subtree, this one first.
    void collect(std::vector<ModelNode*>& nodes);
};

/// Connect the nodes of a freshly made subtree with the nodes that they picture; a test failure when the
/// subtrees don't match.
void pairUp(ModelNode& model, AbstractProperty* real);

/// Compare a subtree with its picture in all that can be asked; test failures tell the differences.
void expectAsPictured(ModelNode& model);

} // namespace Orrery::TreeTest
