#include "Core/MeasurementManager.h"

#include "variables/Variable.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <utility>

namespace Orrery {

template <class T>
MeasurementManager<T>* MeasurementManager<T>::s_instance = nullptr;

// Made during the load of the library, so that it is destroyed before the statics that were made earlier. Whoever asks
// later than that gets a new, empty one instead of one that is gone.
template <class T>
MeasurementManager<T>* MeasurementManager<T>::Instance()
{
    if (!s_instance) {
        s_instance = new MeasurementManager<T>;
        std::atexit(&MeasurementManager<T>::destroyInstance);
    }
    return s_instance;
}

template <class T>
void MeasurementManager<T>::destroyInstance()
{
    delete s_instance;
    s_instance = nullptr;
}

template <class T>
MeasurementManager<T>::MeasurementManager() = default;

template <class T>
MeasurementManager<T>::~MeasurementManager()
{
    // A measurement may stand under two names, and its destructor may come back to this manager.
    std::set<const Measurement<T>*> destroyed;
    const auto byName = std::exchange(m_byName, {});
    m_measurements.clear();
    for (const ByName& measurements : byName) {
        for (const Measurement<T>* measurement : measurements) {
            if (destroyed.insert(measurement).second)
                delete measurement;
        }
    }
}

template <class T>
ERESULT MeasurementManager<T>::Register(Measurement<T>* measurement)
{
    const QString category = measurement->get_category();
    const QString name =
        measurement->get_name(); // asked first: it is the host's code, and may come back to here
    if (!m_measurements.contains(category)) {
        m_measurements[category] = {};
        m_byName[category] = {};
    }
    m_measurements[category].append(measurement);
    m_byName[category][name] = measurement;
    return ER_SUCCESS;
}

template <class T>
QStringList MeasurementManager<T>::GetCategories() const
{
    return m_measurements.keys();
}

template <class T>
QList<Measurement<T>*> MeasurementManager<T>::GetMeasurements(const QString& category)
{
    return m_measurements[category];
}

template <class T>
Measurement<T>* MeasurementManager<T>::GetMeasurement(const QString& category, const QString& name)
{
    const ByName& known = m_byName[category];
    return known.value(name);
}

template <class T>
Measurement<T>* MeasurementManager<T>::FindMeasurement(const QString& name)
{
    // The categories of the list count. Both maps have their keys in one order, so that one walk passes both.
    auto names = m_byName.constBegin();
    for (auto category = m_measurements.constBegin(); category != m_measurements.constEnd(); ++category) {
        while (names != m_byName.constEnd() && names.key() < category.key())
            ++names;
        if (names == m_byName.constEnd())
            return nullptr;
        if (names.key() != category.key())
            continue;
        if (Measurement<T>* found = names->value(name))
            return found;
    }
    return nullptr;
}

template <class T>
void MeasurementManager<T>::RemoveCategory(QString category) // NOLINT(performance-unnecessary-value-param)
{
    m_measurements.remove(category);
    m_byName.remove(category);
}

template <class T>
QList<Measurement<T>*> MeasurementManager<T>::RemoveMeasurements(QList<QString>& names)
{
    QList<Measurement<T>*> removed;
    if (names.isEmpty())
        return removed;
    const QStringList categories = GetCategories();
    for (const QString& category : categories) {
        std::set<Measurement<T>*> taken;
        ByName& known = m_byName[category];
        for (const QString& name : qAsConst(names)) {
            removed.append(known.take(name));
            taken.insert(removed.last());
        }
        // All at once: to search the list for each of many names would cost their product.
        QList<Measurement<T>*>& list = m_measurements[category];
        const auto isTaken = [&taken](Measurement<T>* measurement) { return taken.count(measurement) != 0; };
        list.erase(std::remove_if(list.begin(), list.end(), isTaken), list.end());
        if (list.isEmpty())
            m_measurements.remove(category);
    }
    return removed;
}

template class MeasurementManager<Variable>;

} // namespace Orrery
