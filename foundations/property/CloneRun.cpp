#include "foundations/property/CloneRun_p.h"

#include "foundations/property/NodeAccess_p.h"
#include "foundations/property/TreeWalk_p.h"

#include <algorithm>
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

} // namespace

CloneRun::CloneRun(const PropertyObject& source, const PropertyObject& target)
    : m_source(&source)
    , m_nested(s_running && s_running->m_current == &source)
    , m_sourceName(NodeAccess::name(source))
    , m_target(&target)
{
    const auto& children = NodeAccess::children(source);
    m_children.reserve(static_cast<std::size_t>(children.size()));
    for (const AbstractProperty* const child : children)
        m_children.emplace_back(child);
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
        const AbstractProperty* const child = m_children[m_next++].Get();
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
