#include "Instrument.h"

#include "foundations/variant/Variant.h"
#include "units/Units.h"

#include <cmath>

using namespace Orrery;

namespace {

constexpr double s_secondsPerValue = 0.02;

} // namespace

Instrument::Instrument(PropertyObject& folder)
    : m_time(new RangeVar("time"))
    , m_voltage(new ExplicitDataVar("voltage"))
{
    m_time->SetStart(0.0);
    m_time->SetStep(s_secondsPerValue);
    m_time->SetCount(0);
    m_time->SetUnits(Units::FromSIString("s"));
    folder.InsertProperty(m_time);

    m_voltage->SetUnits(Units::FromSIString("V"));
    folder.InsertProperty(m_voltage);
    m_voltage->AddIndepVariableRef(m_time);
    Publish();
}

void Instrument::Measure()
{
    const double time = s_secondsPerValue * static_cast<double>(m_values.size());
    m_values.push_back(5.0 * std::exp(-time / 1.5) * std::cos(2.0 * M_PI * m_hertz * time));
    Publish();
}

void Instrument::Restart(double hertz)
{
    m_hertz = hertz;
    m_values.clear();
    Publish();
}

// The axis first: whoever hears of the new voltage finds both of one length.
void Instrument::Publish()
{
    m_time->SetCount(static_cast<int>(m_values.size()));
    m_voltage->UpdateData(BVariant(m_values));
}
