#pragma once

#include "Core/Measurement.h"
#include "foundations/property/PropertyObject.h"
#include "orrerycorevariables_export.h"
#include "tracking/DirtyTracker.h"

#include <QString>

#include <memory>
#include <vector>

namespace Orrery {

/// Says in the tree which measurement is meant, and with which parameter values.
///
/// The name of the measurement (child "Function") and the values (folder "Parameters" with the children "0", "1", ...)
/// are saved. The measurement itself is looked up in the MeasurementManager by its name, also after a reload; what a
/// Function holds is a clone of its own. The name of a Function can be one that no measurement has, or not that of the
/// measurement it holds.
///
/// A Function has a dirty tracker: whatever is bound to it learns of a new measurement and of new values. A source that
/// is bound to a Function itself counts each time that a getter has read: the tracker becomes clean if all its sources
/// are clean, else dirty.
///
/// Threads: no lock; one thread at a time.
class ORRERYCOREVARIABLES_EXPORT Function : public PropertyObject
{
public:
    using Tracker = DirtyTracker<Function, Function*>; ///< its node of the dirty graph

    /// With the name "Function" and no measurement.
    Function();

    /// For the measurement `name`, as SetMeasurementFromName() finds it. No parameter values are set.
    explicit Function(const QString& name);

    /// Clones of the children and of the measurement. The tracker is new, clean and without edges.
    Function(const Function& other);

    /// As the copy construction, but the tracker stays with its edges and isn't marked. The former measurement is
    /// destroyed.
    Function& operator=(const Function& other);

    const QString& PropertyObjType() const override;

    /// Look up the measurement by its saved name.
    ///
    /// Errors: a name that can't be read gives a line in the debug log; one that nothing has changes nothing.
    void OnDeserialization() override;

    ~Function() override;
    AbstractProperty* DoClone() const override;

    /// The saved name; empty when it can't be read.
    QString GetFunctionName() const;

    /// Save the name and look up the measurement that has it.
    ///
    /// Errors: what SetProperty() answers if the name can't be written. ER_NOT_FOUND if nothing has that name, which is
    ///         written all the same; the measurement is what it was.
    /// Edge:   parameter values stay as they are.
    /// Cost:   linear in the number of registered measurements: each is asked for its name.
    ERESULT SetFunctionName(const QString& name);

    /// The parameter values in their order.
    ///
    /// Errors: without a folder "Parameters" none, and a line in the debug log. Numbered children that are no values
    ///         are passed over.
    std::vector<BVariant> GetParameters() const;

    /// Replace all parameter values, and mark the tracker dirty, whatever the result.
    ///
    /// Errors: those of InsertOrReplaceProperty() and SetProperty(); values before the failing one are written.
    ERESULT SetParameters(const std::vector<BVariant>& values);

    /// The measurement with the present parameter values; null if there is none. It belongs to this Function.
    ///
    /// Edge: without a folder "Parameters" the measurement comes without parameter values.
    const Measurement<Variable>* GetMeasurement() const;

    /// Hold a clone of `measurement`, and save its name and its parameter values. Always ER_SUCCESS.
    ///
    /// Edge: the former measurement is never destroyed: who got it from GetMeasurement() may be using it still.
    ERESULT SetMeasurement(const Measurement<Variable>& measurement);

    std::shared_ptr<Tracker> getDirtyTracker() const; ///< never null, the same one for life

    static const QString sFunctionName(); ///< "Function", the child with the name
    static const QString sParameters();   ///< "Parameters", the folder with the values

    /// "Function", the name under which the class is saved.
    static const QString& StaticType();

protected:
    /// Hold a clone of the measurement `name` in the first category that has one, the last registered if there are
    /// several in it, and mark the tracker dirty. Returns whether there is one; if not, nothing changes.
    ///
    /// Edge: the former measurement is never destroyed, as with SetMeasurement().
    bool SetMeasurementFromName(const QString& name);

private:
    static const QString s_functionName;
    static const QString s_parameters;

    /// Whether the clone of a Function has nothing to do with the code of a measurement.
    static bool holdsNoMeasurement(const PropertyObject& function);
    static const bool s_clonesTrusted;

    Function(const Function& other, std::unique_ptr<Measurement<Variable>> measurement);

    void replaceMeasurement(const Measurement<Variable>& pattern);
    ERESULT replaceParameters(const std::vector<BVariant>& values);

    Measurement<Variable>* m_measurement = nullptr;
    std::shared_ptr<Tracker> m_dirtyTracker = std::make_shared<Tracker>(this);
};

} // namespace Orrery
