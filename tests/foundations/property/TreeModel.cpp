#include "tests/foundations/property/TreeModel.h"

#include "foundations/variant/Variant.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace Orrery::TreeTest {

namespace {
int nextNumber()
{
    static int s_number = 0;
    return ++s_number;
}
} // namespace

ModelNode::ModelNode(Kind nodeKind, const QString& nodeName, AbstractProperty* node)
    : kind(nodeKind)
    , name(nodeName.toStdU16String())
    , real(node)
    , number(nextNumber())
    , life(std::make_shared<Life>(Life{this, {}}))
{
}

ModelNode::~ModelNode()
{
    life->node = nullptr;
}

ModelNode* ModelNode::root()
{
    ModelNode* node = this;
    while (node->parent)
        node = node->parent;
    return node;
}

bool ModelNode::isBelow(const ModelNode* other) const
{
    for (const ModelNode* node = this; node; node = node->parent) {
        if (node == other)
            return true;
    }
    return false;
}

int ModelNode::depth() const
{
    return parent ? parent->depth() + 1 : 1;
}

int ModelNode::height() const
{
    if (kind != Kind::Folder)
        return 0;
    int below = 0;
    for (const auto& entry : children)
        below = std::max(below, entry.second->height());
    return below + 1;
}

std::size_t ModelNode::size() const
{
    std::size_t count = 1;
    for (const auto& entry : children)
        count += entry.second->size();
    return count;
}

ModelNode::Place ModelNode::place() const
{
    Place names;
    for (const ModelNode* node = this; node->parent; node = node->parent)
        names.insert(names.begin(), node->name);
    return names;
}

void ModelNode::rememberPlaces()
{
    if (life.use_count() > 1)
        life->lastPlaces[root()->number] = place();
    for (const auto& entry : children)
        entry.second->rememberPlaces();
}

void ModelNode::forgetUnreferenced()
{
    if (life.use_count() == 1)
        life->lastPlaces.clear();
    for (const auto& entry : children)
        entry.second->forgetUnreferenced();
}

void ModelNode::adopt(const Pointer& child)
{
    child->parent = this;
    children[child->name] = child;
}

ModelNode::Pointer ModelNode::unlink()
{
    Pointer self = shared_from_this();
    if (parent)
        parent->children.erase(name);
    parent = nullptr;
    return self;
}

void ModelNode::tellPathChange()
{
    ++pathChanges;
    for (const auto& entry : children)
        entry.second->tellPathChange();
}

ModelNode::Pointer ModelNode::clone() const
{
    auto copy = std::make_shared<ModelNode>(kind, qName(), nullptr);
    copy->flags = flags;
    copy->value = value;
    copy->way = way;
    for (const auto& entry : children)
        copy->adopt(entry.second->clone());
    return copy;
}

ModelNode::Way ModelNode::wayTo(const Place& to) const
{
    const Place from = place();
    std::size_t common = 0;
    while (common < from.size() && common < to.size() && from[common] == to[common])
        ++common;
    Way result;
    result.isSet = true;
    result.up = from.size() - common;
    result.down.assign(to.begin() + static_cast<std::ptrdiff_t>(common), to.end());
    return result;
}

ModelNode* ModelNode::follow(const Way& wayFromHere)
{
    if (!wayFromHere.isSet)
        return nullptr;
    ModelNode* node = this;
    for (std::size_t i = 0; i < wayFromHere.up && node; ++i)
        node = node->parent;
    for (const std::u16string& step : wayFromHere.down) {
        if (!node)
            return nullptr;
        const auto found = node->children.find(step);
        node = found == node->children.end() ? nullptr : found->second.get();
    }
    return node;
}

ModelNode* ModelNode::resolve()
{
    if (target && target->node && target->node->root() == root()) {
        way = wayTo(target->node->place());
        return target->node;
    }
    if (target) {
        const auto last = target->lastPlaces.find(root()->number);
        if (last != target->lastPlaces.end())
            way = wayTo(last->second);
        if (!target->node)
            target.reset();
    }
    ModelNode* found = follow(way);
    if (!found || found == this)
        return nullptr;
    if (!target) { // one that lives elsewhere may come back; what stands in its place isn't followed
        target = found->life;
        way = wayTo(found->place());
    }
    return found;
}

void ModelNode::collect(std::vector<ModelNode*>& nodes)
{
    nodes.push_back(this);
    for (const auto& entry : children)
        entry.second->collect(nodes);
}

void pairUp(ModelNode& model, AbstractProperty* real)
{
    ASSERT_NE(real, nullptr) << model.qName().toStdString();
    model.real = real;
    if (const auto* folder = dynamic_cast<HostFolder*>(real))
        model.pathChanges = folder->pathChanges;
    for (const auto& entry : model.children) {
        auto* folder = dynamic_cast<PropertyObject*>(real);
        ASSERT_NE(folder, nullptr);
        pairUp(*entry.second, folder->GetPropertyPtr(QString::fromStdU16String(entry.first)));
    }
}

namespace {
/// One step of a path, decoded by what is said of paths and not by the code that is tested.
std::u16string decoded(const QString& step)
{
    if (step == QLatin1String("%"))
        return {};
    std::u16string name;
    for (int i = 0; i < step.size(); ++i) {
        if (step.at(i) == QLatin1Char('%')) {
            bool isHex = false;
            name.push_back(static_cast<char16_t>(step.midRef(i + 1, 2).toUShort(&isHex, 16)));
            EXPECT_TRUE(isHex) << step.toStdString();
            i += 2;
        } else {
            name.push_back(step.at(i).unicode());
        }
    }
    return name;
}

std::vector<std::u16string> decodedSteps(const QString& path)
{
    std::vector<std::u16string> names;
    if (path.isEmpty())
        return names;
    for (const QString& step : path.split(QLatin1Char('/')))
        names.push_back(decoded(step));
    return names;
}

void expectPath(ModelNode& model)
{
    const QString path = model.real->GetFullPath();
    ASSERT_TRUE(path.startsWith(QLatin1Char('/')));
    EXPECT_EQ(decodedSteps(path.mid(1)), model.place()) << path.toStdString();
}

/// A number by the plainest means; -1 for a name that is none.
std::int64_t numberOf(const std::u16string& name, const std::u16string& prefix)
{
    if (name.size() <= prefix.size() || name.compare(0, prefix.size(), prefix) != 0)
        return -1;
    std::int64_t number = 0;
    for (std::size_t i = prefix.size(); i < name.size(); ++i) {
        if (name[i] < u'0' || name[i] > u'9')
            return -1;
        const std::int64_t digit = name[i] - u'0';
        if (number > (INT64_MAX - digit) / 10)
            return -1;
        number = number * 10 + digit;
    }
    return number;
}

void expectNumbered(const ModelNode& model, const PropertyObject& folder, const std::u16string& prefix)
{
    std::vector<std::pair<std::int64_t, const AbstractProperty*>> expected;
    for (const auto& entry : model.children) {
        const std::int64_t number = numberOf(entry.first, prefix);
        if (number >= 0)
            expected.emplace_back(number, entry.second->real);
    }
    std::stable_sort(expected.begin(), expected.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    QList<AbstractProperty*> list;
    folder.GetPrefixedChildrenProperties(&list, QString::fromStdU16String(prefix));
    ASSERT_EQ(static_cast<std::size_t>(list.size()), expected.size());
    for (int i = 0; i < list.size(); ++i)
        ASSERT_EQ(list.at(i), expected[static_cast<std::size_t>(i)].second) << i;
    if (!prefix.empty())
        return;
    EXPECT_EQ(folder.lastNumberedChild(), list.isEmpty() ? nullptr : list.last());
    QString next;
    const ERESULT code = folder.nextNumberedChildName(&next);
    if (!expected.empty() && expected.back().first == INT64_MAX) {
        EXPECT_EQ(code, ER_FAILED);
    } else {
        EXPECT_EQ(code, ER_SUCCESS);
        EXPECT_EQ(next, QString::number(expected.empty() ? 0 : expected.back().first + 1));
    }
}

void expectFolder(ModelNode& model)
{
    auto* folder = dynamic_cast<PropertyObject*>(model.real);
    ASSERT_NE(folder, nullptr);
    if (const auto* host = dynamic_cast<HostFolder*>(folder)) {
        EXPECT_EQ(host->pathChanges, model.pathChanges);
    }
    ASSERT_EQ(static_cast<std::size_t>(folder->GetPropertyCount()), model.children.size());
    const QList<AbstractProperty*> sorted = folder->GetPropertyListSorted();
    QList<AbstractProperty*> list;
    folder->GetPropertyList(&list);
    ASSERT_EQ(list, sorted);
    int index = 0;
    for (const auto& entry : model.children) {
        ASSERT_EQ(sorted.at(index++), entry.second->real);
        ASSERT_EQ(folder->GetPropertyPtr(QString::fromStdU16String(entry.first)), entry.second->real);
        ASSERT_EQ(entry.second->real->GetParent(), folder);
    }
    expectNumbered(model, *folder, u"");
    expectNumbered(model, *folder, u"n");
    for (const auto& entry : model.children)
        expectAsPictured(*entry.second);
}

void expectReference(ModelNode& model)
{
    const auto* reference = dynamic_cast<PropertyReference*>(model.real);
    ASSERT_NE(reference, nullptr);
    const ModelNode* target = model.resolve();
    const AbstractProperty* expected = target ? target->real : nullptr;
    EXPECT_EQ(reference->Resolve(), expected);
    EXPECT_EQ(reference->ResolveConst(), expected);
    EXPECT_EQ(reference->IsRefPropertyObject(), target && target->kind == ModelNode::Kind::Folder);
    EXPECT_FALSE(reference->IsRefVariable());
    const QString path = reference->ReferencePath();
    std::vector<std::u16string> steps(model.way.up, u"..");
    steps.insert(steps.end(), model.way.down.begin(), model.way.down.end());
    if (model.way.isSet && steps.empty())
        steps.emplace_back(u"."); // a copy can come to stand where its own path leads
    EXPECT_EQ(decodedSteps(path), steps) << path.toStdString();
    if (target && target->life == model.target) { // else the path may be a detour to what stands there
        EXPECT_EQ(path, Property::GetRelativePath(reference->GetFullPath(), target->real->GetFullPath()));
    }
}
} // namespace

void expectAsPictured(ModelNode& model)
{
    ASSERT_NE(model.real, nullptr);
    EXPECT_EQ(model.real->GetName().toStdU16String(), model.name);
    EXPECT_EQ(model.real->GetPropertyFlags(), model.flags);
    EXPECT_EQ(model.real->GetRootProperty(), model.root()->real);
    if (!model.parent) {
        EXPECT_EQ(model.real->GetParent(), nullptr);
    }
    expectPath(model);
    switch (model.kind) {
    case ModelNode::Kind::Folder:
        expectFolder(model);
        return;
    case ModelNode::Kind::Reference:
        expectReference(model);
        return;
    case ModelNode::Kind::Value:
        const auto* leaf = dynamic_cast<SimpleProperty*>(model.real);
        ASSERT_NE(leaf, nullptr);
        EXPECT_EQ(Brindle::Quay::getScalar<double>(leaf->GetValue()), model.value);
    }
}

} // namespace Orrery::TreeTest
