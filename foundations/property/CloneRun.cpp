#include "foundations/property/CloneRun_p.h"

#include "foundations/property/NodeAccess_p.h"
#include "foundations/property/SimpleProperty.h"
#include "foundations/property/TreeWalk_p.h"

#include <algorithm>
#include <cstdint>
#include <typeinfo>
#include <utility>

namespace Orrery::Internal {

namespace {

// The run that calls a DoClone in this thread; those around it wait for it.
thread_local const CloneRun* s_running = nullptr;

class Running
{
public:
    explicit Running(const CloneRun* run)
        : m_outer(std::exchange(s_running, run))
    {
    }
    ~Running() { s_running = m_outer; }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

private:
    const CloneRun* m_outer;
};

// How far down a folder is looked at: far enough for what variables and units are made of. Each level of a clone asks
// anew, so that to look at all of a deep tree would cost its depth squared.
constexpr int s_plainLevels = 2;

constexpr std::uint16_t s_runTimeCode = 32;

/// Whether nothing but this library's own code runs when the node is cloned. A value of a run-time type is copied by
/// the host's code.
bool isPlain(const AbstractProperty* node, int levels)
{
    if (!node)
        return false;
    if (typeid(*node) == typeid(SimpleProperty))
        return static_cast<const SimpleProperty*>(node)->GetValueRef().getWellKnownType().code() !=
               s_runTimeCode;
    if (levels == 0 || typeid(*node) != typeid(PropertyObject))
        return false;
    const auto& children = NodeAccess::children(static_cast<const PropertyObject&>(*node));
    return std::all_of(children.begin(), children.end(),
                       [levels](const AbstractProperty* child) { return isPlain(child, levels - 1); });
}

bool hasOnlyPlainChildren(const PropertyObject& folder)
{
    const auto& children = NodeAccess::children(folder);
    return std::all_of(children.begin(), children.end(),
                       [](const AbstractProperty* child) { return isPlain(child, s_plainLevels); });
}

} // namespace

CloneRun::CloneRun(const PropertyObject& source, const PropertyObject& target)
    : m_source(&source)
    , m_nested(s_running && s_running->m_current == &source)
    , m_watchesChildren(!hasOnlyPlainChildren(source))
    , m_watchesTarget(m_watchesChildren || !NodeAccess::children(target).isEmpty())
    , m_sourceName(NodeAccess::name(source))
    , m_target(m_watchesTarget ? &target : nullptr)
{
    const auto& children = NodeAccess::children(source);
    m_children.reserve(static_cast<std::size_t>(children.size()));
    for (const AbstractProperty* const child : children)
        m_children.push_back({child, m_watchesChildren ? PropertyHandle(child) : PropertyHandle()});
    m_clones.reserve(m_children.size()); // so that keep() can't fail and lose a clone
}

CloneRun::~CloneRun() = default;

void CloneRun::run()
{
    const Running running(this);
    while ((m_current = next()))
        keep(m_current->Clone());
}

const AbstractProperty* CloneRun::next()
{
    while (m_next < m_children.size()) {
        const Child& entry = m_children[m_next++];
        if (!m_watchesChildren)
            return entry.node;
        const AbstractProperty* const child = entry.handle.Get();
        if (child && child->GetParent() == m_source)
            return child;
    }
    return nullptr;
}

void CloneRun::keep(AbstractProperty* clone)
{
    if (clone)
        m_clones.emplace_back(clone);
}

int CloneRun::height() const
{
    int height = 0;
    for (const std::unique_ptr<AbstractProperty>& clone : m_clones)
        height = std::max(height, folderHeight(*clone));
    return height;
}

CloneRun::Clones CloneRun::takeClones()
{
    return std::move(m_clones);
}

} // namespace Orrery::Internal
