#include "hosts/orrery/Replay.h"

#include "foundations/variant/VariantOperations.h"
#include "hosts/orrery/ElementText.h"
#include "hosts/orrery/TreeAccess.h"

#include <QCoreApplication>
#include <QMetaObject>

#include <algorithm>
#include <utility>

namespace Orrery::Host {

Replay::Replay(EventLoop& loop, const QString& name, const QString& folder, Brindle::Quay::BVariant data,
               std::uint64_t step)
    : m_loop(loop)
    , m_data(std::move(data))
    , m_step(step)
    , m_points(m_data.isEmpty() ? 0 : dimensionsOf(m_data).front())
    , m_folder(folder)
    , m_root(std::make_unique<PropertyObject>())
    , m_variable(std::make_unique<Variable>(name))
{
}

void Replay::start()
{
    queue(m_points > 0 ? &Replay::grow : &Replay::place);
}

void Replay::queue(void (Replay::*turn)())
{
    QMetaObject::invokeMethod(
        &m_context, [this, turn] { m_loop.guarded([&] { (this->*turn)(); }); }, Qt::QueuedConnection);
}

void Replay::grow()
{
    m_done += std::min(m_step, m_points - m_done);
    queue(m_done < m_points ? &Replay::grow : &Replay::place);
    m_variable->UpdateData(Brindle::Quay::sliceRange(m_data, 0, m_done - 1));
}

void Replay::place()
{
    auto owned = std::make_unique<PropertyObject>(m_folder);
    PropertyObject* const folder = owned.get();
    insertNode(m_root.get(), std::move(owned));
    insertNode(folder, std::move(m_variable));
    queue(
        &Replay::remove); // behind the signals: whoever hears of the new place still finds the variable there
}

void Replay::remove()
{
    m_root.reset();
    QMetaObject::invokeMethod(&m_context, &QCoreApplication::quit,
                              Qt::QueuedConnection); // behind the signals
}

} // namespace Orrery::Host
