#include "hosts/orrery/Failure.h"
#include "hosts/orrery/JsonElements.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/UnitText.h"
#include "hosts/orrery/commands/Commands.h"
#include "units/SystemOfUnits.h"

#include <QMap>
#include <QStringList>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Orrery::Host {

namespace {

struct UnitsOptions
{
    std::string type;
    std::string like;
    bool isJson = false;
};

const char s_help[] = R"(Each line is a name, what one of the unit is in SI base units, and other names
of the same unit. Wherever a unit is asked for, SI strings such as mm^2 or
kg*m^2/(A*s^3) are good as well, with any of the 20 SI prefixes.

--json writes one JSON document: "types", each with its "units". A value x in a
unit is scale * x + offset in the base unit of its type, or, where "log_scale"
isn't null, scale * 10^(x / log_scale) + offset.

Examples: orrery units --type power
          orrery units --like in
          orrery units --type power --json)";

/// One unit of the catalogue, under the name that comes first and all that mean the same.
struct NamedUnit
{
    Units units;
    QString name;
    QStringList otherNames;
};

std::string shownName(const QString& name)
{
    return name.isEmpty() ? "''" : printable(name.toStdString());
}

/// The name under which a unit is listed: its label if that is a name, else the one that was found.
QString mainName(const Units& units, const QString& found)
{
    Units labelled;
    const QString label = units.GetUnitsLabel();
    const bool isName = SystemOfUnits::instance().GetUnitsByName(label, &labelled) >= 0;
    return isName && labelled == units ? label : found;
}

/// Each different unit of the type, in the order of their first names.
std::vector<NamedUnit> unitsOfType(const UnitType& type)
{
    const SystemOfUnits& system = SystemOfUnits::instance();
    std::vector<NamedUnit> all;
    const QStringList names = system.GetUnitNames(type);
    for (const QString& name : names) {
        Units units;
        system.GetUnitsByName(name, &units);
        const QString main = mainName(units, name);
        auto same =
            std::find_if(all.begin(), all.end(), [&](const NamedUnit& unit) { return unit.units == units; });
        if (same == all.end())
            same = all.insert(all.end(), {units, main, QStringList()});
        if (name != main)
            same->otherNames += name;
    }
    return all;
}

std::vector<NamedUnit> unitsLike(const Units& units)
{
    std::vector<NamedUnit> all;
    const QList<Units> compatible = SystemOfUnits::instance().GetCompatibleUnits(units);
    for (const Units& other : compatible)
        all.push_back({other, QString::fromStdString(unitsLabel(other)), QStringList()});
    return all;
}

std::string otherNamesText(const NamedUnit& unit)
{
    std::string text;
    for (const QString& name : unit.otherNames)
        text += (text.empty() ? "" : ", ") + shownName(name);
    return text;
}

/// Units of one type.
struct UnitGroup
{
    UnitType type;
    std::vector<NamedUnit> units;
};

std::string heading(const UnitType& type)
{
    return printable(type.GetName().toStdString()) + " (" +
           printable(type.GetReferenceSIString().toStdString()) + ")";
}

void print(Output& out, const UnitGroup& group)
{
    out.write(out.painted(Ink::Heading, heading(group.type)) + "\n");
    std::size_t nameWidth = 0;
    std::size_t definitionWidth = 0;
    for (const NamedUnit& unit : group.units) {
        nameWidth = std::max(nameWidth, columnsOf(shownName(unit.name)));
        definitionWidth = std::max(definitionWidth, columnsOf(definitionText(unit.units)));
    }
    for (const NamedUnit& unit : group.units) {
        const std::string name = shownName(unit.name);
        const std::string definition = definitionText(unit.units);
        std::string line =
            "  " + out.painted(Ink::Units, name) + std::string(nameWidth - columnsOf(name) + 2, ' ');
        line += unit.otherNames.empty() ? definition
                                        : padded(definition, definitionWidth) +
                                              out.painted(Ink::Dim, "  also ") + otherNamesText(unit);
        out.write(line + "\n");
    }
}

void writeUnit(JsonWriter& json, const NamedUnit& unit)
{
    json.openInline('{');
    json.key("names");
    json.openInline('[');
    json.string(unit.name);
    for (const QString& name : unit.otherNames)
        json.string(name);
    json.close();
    json.key("si");
    json.string(unit.units.GetSIUnits());
    writeUnitNumbers(json, unit.units);
    json.key("definition");
    json.string(definitionText(unit.units));
    json.close();
}

void printAsJson(Output& out, const std::vector<UnitGroup>& groups)
{
    JsonWriter json(out);
    json.open('{');
    json.key("types");
    json.open('[');
    for (const UnitGroup& group : groups) {
        json.open('{');
        json.key("name");
        json.string(group.type.GetName());
        json.key("base");
        json.string(group.type.GetReferenceSIString());
        json.key("dimensions");
        json.string(group.type.GetDimensions().SIUnitsString());
        json.key("units");
        json.open('[');
        for (const NamedUnit& unit : group.units)
            writeUnit(json, unit);
        json.close();
        json.close();
    }
    json.close();
    json.close();
}

/// The types of all units of the catalogue, by name.
QMap<QString, UnitType> catalogueTypes()
{
    QMap<QString, UnitType> types;
    const QList<Units> all = SystemOfUnits::instance().GetAllUnits();
    for (const Units& units : all)
        types.insert(units.GetUnitType().GetName(), units.GetUnitType());
    return types;
}

UnitType findType(const std::string& name)
{
    const QMap<QString, UnitType> types = catalogueTypes();
    const auto found = types.find(QString::fromStdString(name));
    if (found != types.end())
        return *found;
    const std::string known = QStringList(types.keys()).join(QStringLiteral(", ")).toStdString();
    throw Failure("there is no type of units " + inQuotes(name) + "; there are " + printable(known));
}

std::vector<UnitGroup> wantedGroups(const UnitsOptions& options)
{
    if (!options.like.empty()) {
        const Units units = parseUnits(options.like);
        return {{units.GetUnitType(), unitsLike(units)}};
    }
    if (!options.type.empty()) {
        const UnitType type = findType(options.type);
        return {{type, unitsOfType(type)}};
    }
    std::vector<UnitGroup> groups;
    const QMap<QString, UnitType> types = catalogueTypes();
    for (const UnitType& type : types)
        groups.push_back({type, unitsOfType(type)});
    return groups;
}

void list(const UnitsOptions& options, Output& out)
{
    const std::vector<UnitGroup> groups = wantedGroups(options);
    if (options.isJson)
        return printAsJson(out, groups);
    bool isFirst = true;
    for (const UnitGroup& group : groups) {
        if (!std::exchange(isFirst, false))
            out.write("\n");
        print(out, group);
    }
}

} // namespace

void addUnitsCommand(CLI::App& program, Action* action)
{
    CLI::App* const command = program.add_subcommand("units", "List the units that have a name");
    const auto options = std::make_shared<UnitsOptions>();
    CLI::Option* const type =
        command->add_option("--type", options->type, "Only those of one type, such as power")
            ->type_name("TYPE");
    command->add_option("--like", options->like, "Only those of the type of a unit")
        ->type_name("UNIT")
        ->excludes(type);
    command->add_flag("--json", options->isJson, "As JSON");
    command->footer(s_help);
    command->callback([options, action] { *action = [options](Output& out) { list(*options, out); }; });
}

} // namespace Orrery::Host
