#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/UnitText.h"
#include "hosts/orrery/commands/Commands.h"
#include "units/SystemOfUnits.h"

#include <QMap>

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
};

const char s_help[] = R"(Each line is a name, what one of the unit is in SI base units, and other names
of the same unit. Wherever a unit is asked for, SI strings such as mm^2 or
kg*m^2/(A*s^3) are good as well, with any of the 20 SI prefixes.

Examples: orrery units --type power
          orrery units --like in)";

struct Row
{
    std::string name;
    std::string definition;
    std::string otherNames;
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

/// One row for each different unit of the type, in the order of their first names.
std::vector<Row> rowsOf(const UnitType& type)
{
    const SystemOfUnits& system = SystemOfUnits::instance();
    std::vector<Row> rows;
    std::vector<Units> shown;
    const QStringList names = system.GetUnitNames(type);
    for (const QString& name : names) {
        Units units;
        system.GetUnitsByName(name, &units);
        const QString main = mainName(units, name);
        const auto same = std::find(shown.begin(), shown.end(), units);
        const auto position = static_cast<std::size_t>(same - shown.begin());
        if (same == shown.end()) {
            rows.push_back({shownName(main), definitionText(units), std::string()});
            shown.push_back(units);
        }
        if (name == main)
            continue;
        std::string& others = rows[position].otherNames;
        others += (others.empty() ? "" : ", ") + shownName(name);
    }
    return rows;
}

std::vector<Row> rowsLike(const Units& units)
{
    std::vector<Row> rows;
    const QList<Units> compatible = SystemOfUnits::instance().GetCompatibleUnits(units);
    for (const Units& other : compatible)
        rows.push_back({unitsLabel(other), definitionText(other), std::string()});
    return rows;
}

void print(Output& out, const std::vector<Row>& rows)
{
    std::size_t nameWidth = 0;
    std::size_t definitionWidth = 0;
    for (const Row& row : rows) {
        nameWidth = std::max(nameWidth, columnsOf(row.name));
        definitionWidth = std::max(definitionWidth, columnsOf(row.definition));
    }
    for (const Row& row : rows) {
        std::string line = "  " + padded(row.name, nameWidth) + "  ";
        line += row.otherNames.empty() ? row.definition
                                       : padded(row.definition, definitionWidth) + "  also " + row.otherNames;
        out.write(line + "\n");
    }
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

std::string heading(const UnitType& type)
{
    return printable(type.GetName().toStdString()) + " (" +
           printable(type.GetReferenceSIString().toStdString()) + ")";
}

void printType(Output& out, const UnitType& type)
{
    out.write(heading(type) + "\n");
    print(out, rowsOf(type));
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

void list(const UnitsOptions& options, Output& out)
{
    if (!options.like.empty()) {
        const Units units = parseUnits(options.like);
        out.write(heading(units.GetUnitType()) + "\n");
        print(out, rowsLike(units));
        return;
    }
    if (!options.type.empty()) {
        printType(out, findType(options.type));
        return;
    }
    bool isFirst = true;
    const QMap<QString, UnitType> types = catalogueTypes();
    for (const UnitType& type : types) {
        if (!std::exchange(isFirst, false))
            out.write("\n");
        printType(out, type);
    }
}

} // namespace

void addUnitsCommand(CLI::App& program, Action* action)
{
    CLI::App* const command = program.add_subcommand("units", "List the units that have a name");
    const auto options = std::make_shared<UnitsOptions>();
    CLI::Option* const type =
        command->add_option("--type", options->type, "Only those of one type, such as power")
            ->type_name("NAME");
    command->add_option("--like", options->like, "Only those of the type of a unit")
        ->type_name("UNIT")
        ->excludes(type);
    command->footer(s_help);
    command->callback([options, action] { *action = [options](Output& out) { list(*options, out); }; });
}

} // namespace Orrery::Host
