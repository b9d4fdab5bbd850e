#include "hosts/orrery/UnitText.h"

#include "hosts/orrery/Failure.h"
#include "hosts/orrery/Numbers.h"
#include "hosts/orrery/PlainText.h"
#include "units/SystemOfUnits.h"
#include "variables/Variable.h"

namespace Orrery::Host {

namespace {

/// What the catalogue makes of a text before it reads it.
QString asRead(QString text)
{
    return text.replace(QLatin1String("Ohm"), QString(QChar(0x3A9))).replace(QLatin1Char('u'), QChar(0xB5));
}

std::string refusal(const QString& text)
{
    const QString read = asRead(text);
    const SIStringDiagnosis diagnosis = Units::DiagnoseSIString(read);
    std::string line = "there is no unit " + inQuotes(text.toStdString()) + ": " +
                       printable(diagnosis.message().toStdString());
    if (read.size() > 60)
        return line;
    const std::size_t column = columnsOf(printable(read.left(diagnosis.position).toStdString()));
    return line + "\n  " + printable(read.toStdString()) + "\n  " + std::string(column, ' ') + "^";
}

/// "x", or "10^(x/20)" for a unit with a logarithm.
std::string linearValue(const Units& units)
{
    if (!units.IsLogarithmic())
        return "x";
    if (units.GetLogScale() == 1.0)
        return "10^x";
    return "10^(x/" + shortestText(units.GetLogScale()) + ")";
}

} // namespace

Units parseUnits(const std::string& text)
{
    const QString name = QString::fromStdString(text);
    Units units = SystemOfUnits::instance().GetUnitsFromString(name);
    if (!units.IsValid())
        throw Failure(refusal(name));
    return units;
}

std::string unitsLabel(const Units& units)
{
    const QString label = units.GetUnitsLabel();
    return label.isEmpty() ? "1" : printable(label.toStdString());
}

std::string kindText(const Units& units)
{
    const UnitType& type = units.GetUnitType();
    const std::string dimensions = type.GetDimensions().SIUnitsString().toStdString();
    const std::string name = printable(type.GetName().toStdString());
    return name == dimensions ? name : name + " (" + dimensions + ")";
}

std::string definitionText(const Units& units)
{
    if (Dimensionless(units) && units.GetUnitsLabel().isEmpty())
        return "a plain number";
    const QString base = units.GetUnitType().GetReferenceSIString();
    const std::string unit = base == QLatin1String("1") ? "" : " " + printable(base.toStdString());
    const std::string label = unitsLabel(units);
    if (!units.IsLogarithmic() && units.GetOffset() == 0.0)
        return "1 " + label + " = " + shortestText(units.GetScale()) + unit;
    std::string text = "x " + label + " = " + linearValue(units);
    if (units.GetScale() != 1.0)
        text += " * " + shortestText(units.GetScale());
    if (units.GetOffset() != 0.0)
        text += " + " + shortestText(units.GetOffset());
    return text + unit;
}

std::string unitsSuffix(const std::optional<Units>& units)
{
    return units ? " [" + unitsLabel(*units) + "]" : std::string();
}

Units recognized(const Units& units)
{
    if (!Dimensionless(units))
        return units;
    const Units base = Units::FromSIString(units.GetSIUnits());
    if (!base.IsValid() || Dimensionless(base))
        return units;
    return Units(base.GetUnitType(), units.GetUnitsLabel(), units.GetScale(), units.GetOffset(),
                 units.GetLogScale());
}

std::optional<Units> unitsOf(const Variable& variable)
{
    const Units* units = nullptr;
    if (variable.GetUnits(&units) < 0 || !units->IsValid())
        return std::nullopt;
    return recognized(*units);
}

std::optional<Units> shownUnitsOf(const Variable& variable)
{
    std::optional<Units> units = unitsOf(variable);
    const Units* shown = nullptr;
    if (!units || variable.GetDisplayUnits(&shown) < 0 || !shown->IsValid())
        return units;
    const Units display = recognized(*shown);
    if (display.IsCommensurable(*units))
        units = display;
    return units;
}

void requireCommensurable(const Units& from, const Units& to)
{
    if (!from.IsCommensurable(to)) {
        throw Failure("can't convert " + unitsLabel(from) + ", " + kindText(from) + ", to " + unitsLabel(to) +
                      ", " + kindText(to));
    }
}

} // namespace Orrery::Host
