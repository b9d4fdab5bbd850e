#include "hosts/orrery/touchstone/TouchstoneImporter.h"

#include "hosts/orrery/ImportedNodes.h"
#include "hosts/orrery/TreeAccess.h"
#include "results/ResultData.h"
#include "units/SystemOfUnits.h"
#include "variables/ExplicitDataVar.h"

#include <memory>
#include <utility>

namespace Orrery::Host {

namespace {

Units unitsNamed(const char* name)
{
    return SystemOfUnits::instance().GetUnitsFromString(QString::fromUtf8(name));
}

Units hertz()
{
    return unitsNamed("Hz");
}

Units ohm()
{
    return unitsNamed("\u03A9");
}

Units plainNumber()
{
    return Units::FromSIString(QStringLiteral("1"));
}

Units unitsOfElement(char parameter, std::size_t row, std::size_t column)
{
    const bool isHybrid = parameter == 'G' || parameter == 'H';
    if (parameter == 'S' || (isHybrid && row != column))
        return plainNumber();
    const bool isImpedance = parameter == 'Z' || (isHybrid && (row == 0) == (parameter == 'H'));
    return isImpedance ? ohm() : unitsNamed("S");
}

/// Makes the variables of one folder.
class FolderFiller
{
public:
    FolderFiller(Result* result, const QString& name, const std::vector<Units>& displayUnits)
        : m_displayUnits(displayUnits)
    {
        auto owned = std::make_unique<ResultData>(name);
        m_folder = owned.get();
        insertNode(result, std::move(owned));
    }

    template <class T>
    Variable* add(const QString& name, std::vector<T> values, const Units& units,
                  const Variable* axis = nullptr)
    {
        auto variable = std::make_unique<ExplicitDataVar>(name);
        Variable* const placed = variable.get();
        variable->UpdateData(BVariant(std::move(values)));
        setUnits(placed, units, m_displayUnits);
        insertNode(m_folder, std::move(variable));
        if (axis)
            addAxis(placed, axis);
        return placed;
    }

private:
    ResultData* m_folder = nullptr;
    const std::vector<Units>& m_displayUnits;
};

void addTexts(Result* result, const TouchstoneData& data)
{
    const QString application = QStringLiteral("Touchstone ") + data.version;
    setText(result, Result::ApplicationID(), application);
    PropertyObject* const folder = addHiddenFolder(setupFolderOf(result), QStringLiteral("network"));
    setText(folder, QStringLiteral("Version"), data.version);
    setText(folder, QStringLiteral("Options"), data.options);
    setTexts(folder, QStringLiteral("Comment"), data.comments);
    setTexts(folder, QStringLiteral("Information"), data.information);
}

void addNoise(Result* result, TouchstoneNoise noise, const std::vector<Units>& displayUnits)
{
    FolderFiller folder(result, QStringLiteral("noise"), displayUnits);
    const Variable* const axis =
        folder.add(QStringLiteral("frequency"), std::move(noise.frequencies), hertz());
    folder.add(QStringLiteral("NFmin"), std::move(noise.minimumFigures), unitsNamed("dB10"), axis);
    folder.add(QStringLiteral("Gamma_opt"), std::move(noise.optimum), plainNumber(), axis);
    folder.add(QStringLiteral("Rn"), std::move(noise.resistances), ohm(), axis);
}

} // namespace

QString elementName(char parameter, std::size_t row, std::size_t column, std::size_t ports)
{
    const QString between = ports > 9 ? QStringLiteral("_") : QString();
    return QLatin1Char(parameter) + QString::number(row) + between + QString::number(column);
}

void importTouchstone(Result* result, TouchstoneData data, const std::vector<Units>& displayUnits)
{
    addTexts(result, data);
    FolderFiller folder(result, QStringLiteral("network"), displayUnits);
    const Variable* const axis =
        folder.add(QStringLiteral("frequency"), std::move(data.frequencies), hertz());
    for (std::size_t row = 0; row < data.ports; ++row) {
        for (std::size_t column = 0; column < data.ports; ++column)
            folder.add(elementName(data.parameter, row + 1, column + 1, data.ports),
                       std::move(data.values[row * data.ports + column]),
                       unitsOfElement(data.parameter, row, column), axis);
    }
    folder.add(QStringLiteral("reference"), std::move(data.references), ohm());
    if (data.noise)
        addNoise(result, std::move(*data.noise), displayUnits);
}

} // namespace Orrery::Host
