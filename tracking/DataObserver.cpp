#include "tracking/DataObserver.h"

#include "variables/Variable.h"

#include <utility>

namespace Orrery {

DataObserver::DataObserver()
    : locator([](const QString&, const QString&) -> Variable* { return nullptr; })
    , notifier([](Variable*) {})
    , m_dirtyTracker(std::make_shared<Tracker>(this))
{
}

DataObserver::DataObserver(const DataObserver& other) = default;

DataObserver& DataObserver::operator=(const DataObserver& other) = default;

DataObserver::~DataObserver() = default;

DataObserver& DataObserver::setVariable(Variable* variable)
{
    // A new Variable may stand where a destroyed one has stood.
    if (variable == m_variable && livingVariable() == variable)
        return *this;
    if (const Variable* former = livingVariable())
        AbstractDirtyTracker::drop(former->getDirtyTracker(), m_dirtyTracker);
    AbstractDirtyTracker::drop(m_source.lock(), m_dirtyTracker);
    m_variable = variable;
    m_life = PropertyHandle(variable);
    const std::shared_ptr<AbstractDirtyTracker> source = variable ? variable->getDirtyTracker() : nullptr;
    m_source = source;
    AbstractDirtyTracker::bind(source, m_dirtyTracker);
    return *this;
}

DataObserver& DataObserver::setLocator(Locator function)
{
    locator = std::move(function);
    return *this;
}

DataObserver& DataObserver::setNotifier(Notifier function)
{
    notifier = std::move(function);
    return *this;
}

Variable* DataObserver::livingVariable() const
{
    return static_cast<Variable*>(m_life.Get());
}

QString DataObserver::getVariableName() const
{
    return QString::fromStdString(variableName);
}

QString DataObserver::getVariablePath() const
{
    return QString::fromStdString(variablePath);
}

std::shared_ptr<DataObserver> ensureObserver(Variable* variable)
{
    if (!variable)
        return nullptr;
    if (auto present = variable->getObserver())
        return present;
    const auto fresh = std::make_shared<DataObserver>();
    variable->setObserver(fresh);
    fresh->setVariable(variable);
    return variable->getObserver();
}

} // namespace Orrery
