#include "Core/FunctionProperty.h"

#include "Core/MeasurementManager.h"
#include "foundations/property/PropertyHandle.h"
#include "foundations/property/SimpleProperty.h"

#include <QDebug>
#include <QList>

#include <typeinfo>
#include <utility>

namespace Orrery {
namespace {

std::unique_ptr<Measurement<Variable>> cloneOf(const Measurement<Variable>* measurement)
{
    return std::unique_ptr<Measurement<Variable>>(measurement ? measurement->clone() : nullptr);
}

const PropertyObject* asFolder(const AbstractProperty* node)
{
    return node && node->IsPropertyObject() ? dynamic_cast<const PropertyObject*>(node) : nullptr;
}

/// A checked cast costs more than the copy of a value; the class that is nearly always there is told without one.
const SimpleProperty* asValue(const AbstractProperty* node)
{
    if (typeid(*node) == typeid(SimpleProperty))
        return static_cast<const SimpleProperty*>(node);
    return node->IsSimpleProperty() ? dynamic_cast<const SimpleProperty*>(node) : nullptr;
}

} // namespace

Function::Function()
{
    SetProperty(s_functionName, StaticType());
}

Function::Function(const QString& name)
{
    if (SetProperty(s_functionName, name) >= 0)
        SetMeasurementFromName(name);
}

Function::Function(const Function& other, std::unique_ptr<Measurement<Variable>> measurement)
    : PropertyObject(other)
    , m_measurement(measurement.release())
{
}

// The measurement is cloned first: to clone a host's child may destroy `other`.
Function::Function(const Function& other)
    : Function(other, cloneOf(other.m_measurement))
{
}

Function& Function::operator=(const Function& other)
{
    if (this == &other)
        return *this;
    // First, as `other` may stand below this folder and go with the former children.
    auto measurement = cloneOf(other.m_measurement);
    const PropertyHandle self(this);
    PropertyObject::operator=(other);
    if (self.IsExpired())
        return *this; // a handler of a former child's end has destroyed this Function
    delete std::exchange(m_measurement, measurement.release());
    return *this;
}

Function::~Function()
{
    delete m_measurement;
}

const QString& Function::StaticType()
{
    static const QString type = QStringLiteral("Function");
    return type;
}

const QString& Function::PropertyObjType() const
{
    return StaticType();
}

AbstractProperty* Function::DoClone() const
{
    return new Function(
        *this); // what an assignment to a new one gives, without the properties that it would replace
}

void Function::OnDeserialization()
{
    QString name;
    if (GetProperty(s_functionName, &name) < 0) {
        qDebug().noquote().nospace() << s_functionName << " Fail at deserialize in "
                                     << "Core/FunctionProperty";
        return;
    }
    SetMeasurementFromName(name);
}

QString Function::GetFunctionName() const
{
    QString name;
    GetProperty(s_functionName, &name);
    m_dirtyTracker->resetStateFromSourceStates();
    return name;
}

ERESULT Function::SetFunctionName(const QString& name)
{
    const ERESULT written = SetProperty(s_functionName, name);
    if (written < 0)
        return written;
    return SetMeasurementFromName(name) ? written : ER_NOT_FOUND;
}

std::vector<BVariant> Function::GetParameters() const
{
    std::vector<BVariant> values;
    const PropertyObject* const group = asFolder(GetPropertyConstPtr(s_parameters));
    if (!group) {
        qDebug().noquote().nospace() << "Orrery::Function::GetParameters"
                                     << " tries to get parameters on invalid Property* param_group";
        return values;
    }
    QList<AbstractProperty*> children;
    group->GetPrefixedChildrenProperties(&children, QString());
    values.reserve(static_cast<std::size_t>(children.size()));
    for (const AbstractProperty* child : qAsConst(children)) {
        if (const SimpleProperty* value = asValue(child))
            values.push_back(value->GetValueRef());
    }
    m_dirtyTracker->resetStateFromSourceStates();
    return values;
}

ERESULT Function::SetParameters(const std::vector<BVariant>& values)
{
    const std::shared_ptr<Tracker> tracker =
        m_dirtyTracker; // what is replaced may hold handlers that destroy this
    const ERESULT result = replaceParameters(values);
    tracker->setDirty();
    return result;
}

ERESULT Function::replaceParameters(const std::vector<BVariant>& values)
{
    auto* const group = new PropertyObject(s_parameters);
    const PropertyHandle handle(group);
    ERESULT result = InsertOrReplaceProperty(group);
    if (result < 0) {
        delete handle.Get();
        return result;
    }
    int position = 0;
    for (const BVariant& value : values) {
        if (!handle.Get())
            return ER_FAILED; // a handler has destroyed the group
        result = group->SetProperty(QString::number(position++), value);
        if (result < 0)
            break;
    }
    return result;
}

const Measurement<Variable>* Function::GetMeasurement() const
{
    if (m_measurement)
        m_measurement->set_parameter_values(GetParameters());
    m_dirtyTracker->resetStateFromSourceStates();
    return m_measurement;
}

ERESULT Function::SetMeasurement(const Measurement<Variable>& measurement)
{
    m_dirtyTracker->setDirty();
    replaceMeasurement(measurement);
    SetProperty(s_functionName, m_measurement->get_name());
    SetParameters(m_measurement->get_parameter_values());
    return ER_SUCCESS;
}

bool Function::SetMeasurementFromName(const QString& name)
{
    auto* const manager = MeasurementManager<Variable>::Instance();
    bool found = false;
    const QStringList categories = manager->GetCategories();
    for (const QString& category : categories) {
        const QList<Measurement<Variable>*> measurements = manager->GetMeasurements(category);
        for (Measurement<Variable>* measurement : measurements) {
            if (measurement->get_name() != name)
                continue;
            replaceMeasurement(*measurement);
            found = true;
        }
        if (found)
            break;
    }
    if (found)
        m_dirtyTracker->setDirty();
    return found;
}

bool Function::holdsNoMeasurement(const PropertyObject& function)
{
    return !static_cast<const Function&>(function).m_measurement;
}

// Lets the former measurement go without destroying it. Both ways that do so lead through here, and no other: the leak
// checker knows the clones that may be lost by the name of this function.
void Function::replaceMeasurement(const Measurement<Variable>& pattern)
{
    m_measurement = pattern.clone();
}

std::shared_ptr<Function::Tracker> Function::getDirtyTracker() const
{
    return m_dirtyTracker;
}

const QString Function::sFunctionName()
{
    return s_functionName;
}

const QString Function::sParameters()
{
    return s_parameters;
}

} // namespace Orrery
