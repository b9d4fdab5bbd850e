#pragma once

#include "Core/Measurement.h"
#include "foundations/property/ErrorResult.h"
#include "orrerycorevariables_export.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

namespace Orrery {

/// The catalogue of the measurements that this process knows, by category and name. T is Variable.
///
/// It owns what is registered, which serves as a pattern to clone. Categories come in the order of their UTF-16
/// code units, the measurements of one in the order of their registration. A name is meant to be unique inside its
/// category: a second one hides the first from look-up by name, and both stay in the list.
///
/// The one instance goes, with all measurements that can be found by name, at the end of the process. By then the
/// library that holds a measurement's class must not have been unloaded.
///
/// Threads: no lock. Look-ups may run on several threads at once while nobody registers or removes, but for
///          GetMeasurements() and GetMeasurement() of an unknown category, which add it.
template <class T>
class ORRERYCOREVARIABLES_EXPORT MeasurementManager
{
public:
    /// The one instance, made when it is first asked for. It belongs to the process.
    static MeasurementManager<T>* Instance();

    MeasurementManager(const MeasurementManager&) = delete;
    MeasurementManager& operator=(const MeasurementManager&) = delete;

    /// File `measurement`, which must not be null, under its category and name, and take it over. Always ER_SUCCESS.
    ///
    /// Edge: a measurement of the same category and name is found no more by its name, and never destroyed.
    /// Cost: logarithmic.
    ERESULT Register(Measurement<T>* measurement);

    /// All categories, ascending.
    QStringList GetCategories() const;

    /// The measurements of a category, which stay the manager's.
    ///
    /// Edge: an unknown category becomes a known, empty one.
    QList<Measurement<T>*> GetMeasurements(const QString& category);

    /// The last measurement that was registered under this category and name; null if there is none. It stays the
    /// manager's.
    ///
    /// Edge: an unknown category doesn't become a known one.
    Measurement<T>* GetMeasurement(const QString& category, const QString& name);

    /// The measurement of that name in the first category that has one; null if there is none. It stays the
    /// manager's.
    ///
    /// Cost: linear in the number of categories, logarithmic in that of the measurements of each.
    Measurement<T>* FindMeasurement(const QString& name);

    /// Forget a category. Its measurements live on and belong to whoever has them; the manager destroys them no
    /// more. An unknown category changes nothing.
    void RemoveCategory(QString category);

    /// Forget the measurements of these names in all categories, and every category that has none left or had none
    /// before. Returns one element for each pair of a category and a name, categories first: the measurement, which
    /// belongs to the caller now, or null where there was none.
    ///
    /// Edge: a measurement that is hidden by a later one of its name stays in the list. Without names nothing
    ///       changes.
    QList<Measurement<T>*> RemoveMeasurements(QList<QString>& names);

private:
    using ByName = QMap<QString, Measurement<T>*>;

    MeasurementManager();
    ~MeasurementManager();

    static void destroyInstance();

    static MeasurementManager<T>* s_instance;

    QMap<QString, QList<Measurement<T>*>> m_measurements;
    QMap<QString, ByName> m_byName;
};

extern template class ORRERYCOREVARIABLES_EXPORT MeasurementManager<Variable>;

} // namespace Orrery
