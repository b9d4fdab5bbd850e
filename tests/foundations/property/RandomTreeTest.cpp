#include "tests/foundations/property/TreeModel.h"
#include "tests/support/RandomSeed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

// Random operations on a few trees at once, each done to the naive picture too; after each one everything that
// can be asked is compared.

namespace Orrery {
namespace {

using namespace TreeTest;
using TestSupport::randomBelow;
using TestSupport::RandomSeed;
using Kind = ModelNode::Kind;

class RandomTree
{
public:
    explicit RandomTree(const RandomSeed& seed)
        : m_random(seed.engine())
    {
        addRoot(newNode(Kind::Folder, QStringLiteral("first")));
    }

    ~RandomTree()
    {
        for (const ModelNode::Pointer& root : m_roots)
            delete root->real;
        m_roots.clear();
        EXPECT_EQ(m_life.alive(), 0);
    }

    RandomTree(const RandomTree&) = delete;
    RandomTree& operator=(const RandomTree&) = delete;

    void step()
    {
        using Operation = void (RandomTree::*)();
        static constexpr Operation s_operations[] = {
            &RandomTree::insertNew,    &RandomTree::insertNew,  &RandomTree::insertNew,
            &RandomTree::insertRoot,   &RandomTree::insertRoot, &RandomTree::insertAnything,
            &RandomTree::unlink,       &RandomTree::destroy,    &RandomTree::rename,
            &RandomTree::rename,       &RandomTree::rename,     &RandomTree::clone,
            &RandomTree::assign,       &RandomTree::setValue,   &RandomTree::setReference,
            &RandomTree::setReference, &RandomTree::bind,       &RandomTree::setFlags,
            &RandomTree::destroyAll};
        (this->*s_operations[randomBelow(m_random, std::size(s_operations))])();
        keepSmall();
    }

    void expectAsPicturedAll()
    {
        int folders = 0;
        for (const ModelNode::Pointer& root : m_roots) {
            expectAsPictured(*root);
            std::vector<ModelNode*> nodes;
            root->collect(nodes);
            folders += static_cast<int>(std::count_if(
                nodes.begin(), nodes.end(), [](ModelNode* node) { return node->kind == Kind::Folder; }));
        }
        EXPECT_EQ(m_life.alive(), folders);
        for (const ModelNode::Pointer& root : m_roots)
            root->forgetUnreferenced();
    }

    const std::string& lastOperation() const { return m_operation; }

private:
    ModelNode::Pointer newNode(Kind kind, const QString& name)
    {
        AbstractProperty* real = nullptr;
        if (kind == Kind::Folder)
            real = new HostFolder(name, &m_life);
        else if (kind == Kind::Reference)
            real = new PropertyReference(name);
        else
            real = new SimpleProperty(name);
        auto node = std::make_shared<ModelNode>(kind, name, real);
        if (kind == Kind::Value) {
            node->value = static_cast<double>(randomBelow(m_random, 100));
            dynamic_cast<SimpleProperty*>(real)->SetValue(BVariant(node->value), IsCellArrayFalse);
        }
        return node;
    }

    void addRoot(const ModelNode::Pointer& root) { m_roots.push_back(root); }

    void dropRoot(const ModelNode* root)
    {
        m_roots.erase(std::find_if(m_roots.begin(), m_roots.end(),
                                   [root](const ModelNode::Pointer& other) { return other.get() == root; }));
    }

    ModelNode* anyNode()
    {
        std::vector<ModelNode*> nodes;
        for (const ModelNode::Pointer& root : m_roots)
            root->collect(nodes);
        return nodes[randomBelow(m_random, nodes.size())];
    }

    ModelNode* anyFolder()
    {
        for (;;) {
            ModelNode* node = anyNode();
            if (node->kind == Kind::Folder)
                return node;
        }
    }

    static PropertyObject* folderOf(const ModelNode* node)
    {
        return dynamic_cast<PropertyObject*>(node->real);
    }

    QString anyName()
    {
        static const QStringList s_names = {QStringLiteral("a"),   QStringLiteral("b"),
                                            QStringLiteral("0"),   QStringLiteral("1"),
                                            QStringLiteral("2"),   QStringLiteral("10"),
                                            QStringLiteral("01"),  QStringLiteral("9223372036854775807"),
                                            QStringLiteral("n1"),  QStringLiteral("n10"),
                                            QStringLiteral("n2"),  QStringLiteral("9223372036854775808"),
                                            QStringLiteral("a/b"), QString(),
                                            QStringLiteral(".."),  QStringLiteral("%2E"),
                                            QStringLiteral("n"),   QString(1, QChar(0xD800))};
        return s_names.at(
            static_cast<int>(randomBelow(m_random, static_cast<std::uint64_t>(s_names.size()))));
    }

    // --- the operations

    void insertNew()
    {
        m_operation = "insert a new node";
        const Kind kinds[] = {Kind::Folder, Kind::Folder, Kind::Value, Kind::Reference};
        const ModelNode::Pointer node = newNode(kinds[randomBelow(m_random, 4)], anyName());
        addRoot(node);
        insert(anyFolder(), node.get());
    }

    void insertRoot()
    {
        m_operation = "insert a tree";
        ModelNode* folder = anyFolder();
        insert(folder, m_roots[randomBelow(m_random, m_roots.size())].get());
    }

    void insertAnything()
    {
        m_operation = "insert any node";
        ModelNode* folder = anyFolder();
        insert(folder, anyNode());
    }

    void insert(ModelNode* folder, ModelNode* node)
    {
        const bool replaces = randomBelow(m_random, 2) == 0;
        m_operation += replaces ? " or replace" : "";
        const ERESULT code = replaces ? folderOf(folder)->InsertOrReplaceProperty(node->real)
                                      : folderOf(folder)->InsertProperty(node->real);
        if (node->parent == folder) {
            EXPECT_EQ(code, replaces ? ER_SUCCESS : ER_ALREADY_EXISTS);
            return;
        }
        if (node->parent || folder->isBelow(node)) {
            EXPECT_EQ(code, ER_INVALID_ARGUMENT);
            return;
        }
        const auto former = folder->children.find(node->name);
        if (former != folder->children.end()) {
            if (!replaces) {
                EXPECT_EQ(code, ER_ALREADY_EXISTS);
                return;
            }
            former->second->rememberPlaces();
            former->second->unlink();
        }
        EXPECT_EQ(code, ER_SUCCESS);
        folder->adopt(node->shared_from_this());
        dropRoot(node);
        node->tellPathChange();
    }

    void unlink()
    {
        ModelNode* node = anyNode();
        if (!node->parent)
            return;
        if (randomBelow(m_random, 2) == 0) {
            m_operation = "take";
            EXPECT_EQ(folderOf(node->parent)->TakeProperty(node->qName()), node->real);
        } else {
            m_operation = "remove";
            EXPECT_EQ(folderOf(node->parent)->RemoveProperty(node->qName()), ER_SUCCESS);
        }
        node->rememberPlaces();
        addRoot(node->unlink());
        node->tellPathChange();
    }

    void destroy()
    {
        ModelNode* node = anyNode();
        if (!node->parent)
            return;
        if (randomBelow(m_random, 2) == 0) {
            m_operation = "delete by name";
            EXPECT_EQ(folderOf(node->parent)->DeleteProperty(node->qName()), ER_SUCCESS);
        } else {
            m_operation = "delete";
            delete node->real;
        }
        node->rememberPlaces();
        node->unlink();
    }

    void destroyAll()
    {
        if (randomBelow(m_random, 4) != 0)
            return;
        m_operation = "delete all children";
        ModelNode* folder = anyFolder();
        folderOf(folder)->DeleteProperties();
        dropChildren(folder);
    }

    static void dropChildren(ModelNode* folder)
    {
        for (const auto& entry : folder->children)
            entry.second->rememberPlaces();
        folder->children.clear();
    }

    void rename()
    {
        m_operation = "rename";
        ModelNode* node = anyNode();
        const QString name = anyName();
        const std::u16string key = name.toStdU16String();
        const ERESULT code = node->real->SetName(name);
        if (key == node->name) {
            EXPECT_EQ(code, ER_SUCCESS);
            return;
        }
        if (node->parent && node->parent->children.count(key) != 0) {
            EXPECT_EQ(code, ER_ALREADY_EXISTS);
            return;
        }
        EXPECT_EQ(code, ER_SUCCESS);
        ModelNode* parent = node->parent;
        const ModelNode::Pointer self = node->unlink();
        node->name = key;
        if (parent)
            parent->adopt(self);
        node->tellPathChange();
    }

    void clone()
    {
        m_operation = "clone";
        const ModelNode* node = anyNode();
        if (node->size() > 60)
            return;
        const ModelNode::Pointer copy = node->clone();
        pairUp(*copy, node->real->Clone());
        addRoot(copy);
    }

    void assign()
    {
        m_operation = "assign";
        ModelNode* target = anyFolder();
        const ModelNode* source = anyFolder();
        if (source->size() > 60 || target->depth() + source->height() > 30)
            return;
        *folderOf(target) = *folderOf(source);
        if (source == target)
            return;
        const ModelNode::Pointer copy = source->clone(); // first of all: the source may lie in the target
        if (target->name.empty() && !target->parent)
            target->name = copy->name;
        dropChildren(target);
        for (const auto& entry : copy->children)
            target->adopt(entry.second);
        const int told = target->pathChanges;
        pairUp(*target, target->real); // whether the new children are told is their folder's affair
        target->pathChanges = told;
    }

    void setValue()
    {
        m_operation = "set a value";
        ModelNode* folder = anyFolder();
        const QString name = anyName();
        const double value = static_cast<double>(randomBelow(m_random, 1000));
        const ERESULT code = folderOf(folder)->SetProperty(name, value);
        ModelNode::Pointer& child = folder->children[name.toStdU16String()];
        if (!child) {
            child = std::make_shared<ModelNode>(Kind::Value, name, folderOf(folder)->GetPropertyPtr(name));
            child->parent = folder;
        } else if (child->kind != Kind::Value) {
            EXPECT_EQ(code, ER_INVALID_ARGUMENT);
            return;
        }
        EXPECT_EQ(code, ER_SUCCESS);
        child->value = value;
    }

    void setReference()
    {
        m_operation = "set a reference";
        ModelNode* folder = anyFolder();
        ModelNode* target = anyNode();
        const QString name = anyName();
        EXPECT_EQ(folderOf(folder)->CanReferenceProperty(target->real), folder->root() == target->root());
        const ERESULT code = folderOf(folder)->SetPropertyRef(name, target->real);
        const auto former = folder->children.find(name.toStdU16String());
        const bool goes = former != folder->children.end();
        if (folder->root() != target->root() || (goes && target->isBelow(former->second.get()))) {
            EXPECT_EQ(code, ER_INVALID_ARGUMENT);
            return;
        }
        EXPECT_EQ(code, ER_SUCCESS);
        ModelNode::Pointer reference;
        if (goes && former->second->kind == Kind::Reference) {
            reference = former->second;
        } else {
            if (goes)
                former->second->rememberPlaces();
            reference =
                std::make_shared<ModelNode>(Kind::Reference, name, folderOf(folder)->GetPropertyPtr(name));
            folder->adopt(reference);
        }
        reference->target = target->life;
    }

    void bind()
    {
        m_operation = "bind a reference";
        ModelNode* node = anyNode();
        ModelNode* target = anyNode();
        if (node->kind != Kind::Reference)
            return;
        const ERESULT code = dynamic_cast<PropertyReference*>(node->real)->SetPropertyRef(target->real);
        if (node == target || node->root() != target->root()) {
            EXPECT_EQ(code, ER_INVALID_ARGUMENT);
            return;
        }
        EXPECT_EQ(code, ER_SUCCESS);
        node->target = target->life;
    }

    void setFlags()
    {
        m_operation = "set flags";
        ModelNode* node = anyNode();
        node->flags = static_cast<unsigned int>(m_random());
        node->real->SetPropertyFlags(node->flags);
    }

    /// Few and small trees meet each other more often.
    void keepSmall()
    {
        while (m_roots.size() > 6) {
            const ModelNode::Pointer root = m_roots[randomBelow(m_random, m_roots.size())];
            delete root->real;
            dropRoot(root.get());
        }
        for (std::size_t i = 0; i < m_roots.size(); ++i) {
            if (m_roots[i]->size() <= 120)
                continue;
            const ModelNode::Pointer root = m_roots[i];
            delete root->real;
            dropRoot(root.get());
            --i;
        }
        const bool hasFolder =
            std::any_of(m_roots.begin(), m_roots.end(),
                        [](const ModelNode::Pointer& root) { return root->kind == Kind::Folder; });
        if (!hasFolder)
            addRoot(newNode(Kind::Folder, anyName()));
    }

    std::mt19937_64 m_random;
    LifeCount m_life;
    std::vector<ModelNode::Pointer> m_roots;
    std::string m_operation;
};

class RandomTreeOperations : public ::testing::TestWithParam<std::uint64_t>
{
};

TEST_P(RandomTreeOperations, DoWhatTheNaivePictureSays)
{
    const RandomSeed seed{GetParam()};
    SCOPED_TRACE(seed);
    RandomTree tree(seed);
    for (int step = 0; step < 3000; ++step) {
        tree.step();
        tree.expectAsPicturedAll();
        if (::testing::Test::HasFailure()) {
            ADD_FAILURE() << "after step " << step << ": " << tree.lastOperation();
            return;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomTreeOperations, ::testing::Range<std::uint64_t>(1, 9));

} // namespace
} // namespace Orrery
