#include "foundations/property/CloneRun_p.h"

#include "foundations/property/NodeAccess_p.h"
#include "foundations/property/SimpleProperty.h"
#include "foundations/property/TreeWalk_p.h"

#include <algorithm>
#include <array>
#include <atomic>
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

struct TrustedClass
{
    const std::type_info* type;
    ClonesAlone clonesAlone;
};

// Written while libraries are loaded, which the loader does one at a time; any thread may be cloning meanwhile.
std::array<TrustedClass, 4> s_trustedClasses;
std::atomic<std::size_t> s_trustedCount{0};

bool isTrusted(const PropertyObject& folder)
{
    const std::type_info& type = typeid(folder);
    if (type == typeid(PropertyObject))
        return true;
    const std::size_t count = s_trustedCount.load(std::memory_order_acquire);
    for (std::size_t i = 0; i < count; ++i) {
        // by address: the one that a class and its objects have in the library of both
        if (s_trustedClasses[i].type == &type)
            return s_trustedClasses[i].clonesAlone(folder);
    }
    return false;
}

/// Whether nothing but this system's own code runs when the node is cloned. A value of a run-time type is copied by
/// the host's code.
bool isPlain(const AbstractProperty* node, int levels)
{
    if (!node)
        return false;
    if (typeid(*node) == typeid(SimpleProperty))
        return static_cast<const SimpleProperty*>(node)->GetValueRef().getWellKnownType().code() !=
               s_runTimeCode;
    const PropertyObject* const folder = levels > 0 ? NodeAccess::asFolder(*node) : nullptr;
    if (!folder || !isTrusted(*folder))
        return false;
    const auto& children = NodeAccess::children(*folder);
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

bool trustClonesOf(const std::type_info& type, ClonesAlone clonesAlone)
{
    const std::size_t count = s_trustedCount.load(std::memory_order_relaxed);
    if (count == s_trustedClasses.size())
        return false;
    s_trustedClasses[count] = {&type, clonesAlone};
    s_trustedCount.store(count + 1, std::memory_order_release);
    return true;
}

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
