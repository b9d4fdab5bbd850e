#include "hosts/orrery/csv/CsvImporter.h"

#include "hosts/orrery/Failure.h"
#include "hosts/orrery/ImportedNodes.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/TreeAccess.h"
#include "hosts/orrery/VectorNames.h"
#include "results/ResultData.h"
#include "variables/ExplicitDataVar.h"

#include <memory>
#include <optional>
#include <utility>

namespace Orrery::Host {

namespace {

const char s_folder[] = "table";

/// The position of the axis among the variables, if there is one.
std::optional<std::size_t> findAxis(const CsvTable& table, const QStringList& names, const CsvAxis& axis)
{
    if (!axis.isWanted)
        return std::nullopt;
    if (axis.name.isEmpty())
        return table.variables.front().isSingle ? std::make_optional<std::size_t>(0) : std::nullopt;
    const int position = names.indexOf(axis.name);
    if (position < 0)
        throw Failure("--axis: there is no column " + inQuotes(axis.name.toStdString()));
    if (!table.variables[static_cast<std::size_t>(position)].isSingle)
        throw Failure("--axis: " + inQuotes(axis.name.toStdString()) +
                      " has more than one number in each record");
    return static_cast<std::size_t>(position);
}

QStringList namesOf(const CsvTable& table, QMap<QString, QString>* renamed)
{
    QStringList given;
    for (const CsvVariable& variable : table.variables)
        given += variable.name;
    QStringList names = vectorNames(given);
    for (int i = 0; i < names.size(); ++i) {
        if (names[i] != given[i])
            renamed->insert(given[i], names[i]);
    }
    return names;
}

} // namespace

void importCsv(Result* result, CsvTable table, const CsvAxis& axis, const std::vector<Units>& displayUnits,
               QMap<QString, QString>* renamed)
{
    const QStringList names = namesOf(table, renamed);
    const std::optional<std::size_t> axisPosition = findAxis(table, names, axis);
    setText(result, Result::ApplicationID(), QStringLiteral("CSV"));
    if (!table.comments.isEmpty())
        setTexts(addHiddenFolder(setupFolderOf(result), QLatin1String(s_folder)), QStringLiteral("Comment"),
                 table.comments);
    auto owned = std::make_unique<ResultData>(QLatin1String(s_folder));
    ResultData* const folder = owned.get();
    insertNode(result, std::move(owned));
    std::vector<Variable*> placed;
    for (CsvVariable& column : table.variables) {
        auto variable = std::make_unique<ExplicitDataVar>(names[static_cast<int>(placed.size())]);
        placed.push_back(variable.get());
        variable->UpdateData(std::exchange(column.data, {}));
        setUnits(placed.back(), column.units, displayUnits);
        insertNode(folder, std::move(variable));
    }
    for (std::size_t i = 0; axisPosition && i < placed.size(); ++i) {
        if (i != *axisPosition)
            addAxis(placed[i], placed[*axisPosition]);
    }
}

} // namespace Orrery::Host
