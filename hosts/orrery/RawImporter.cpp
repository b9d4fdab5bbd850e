#include "hosts/orrery/RawImporter.h"

#include "hosts/orrery/ElementText.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/ImportedNodes.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/RawUnits.h"
#include "hosts/orrery/TreeAccess.h"
#include "hosts/orrery/VectorNames.h"
#include "results/ParameterizedResultData.h"
#include "variables/ExplicitDataVar.h"

#include <QStringList>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace Orrery::Host {

namespace {

struct Kind
{
    const char* beginning; // of the plot's name in lower case
    const char* name;
    bool hasAxis = true; // the first vector is what the others are plotted against
};

constexpr Kind s_kinds[] = {
    {"dc transfer", "dc"},
    {"ac analysis", "ac"},
    {"transient", "tran"},
    {"operating point", "op", false},
    {"noise", "noise"},
    {"integrated noise", "noise-total", false},
    {"pole-zero", "pz", false},
    {"transfer function", "tf", false},
    {"sensitivity", "sens", false},
    {"distortion", "disto"},
    {"harmonic", "hb"},
    {"fourier", "fourier"},
    {"s-parameter", "sp"},
    {"sp analysis", "sp"},
    {"periodic steady", "pss"},
    {"constant", "const", false},
};

// Lower case, and one hyphen for whatever stands between letters and digits.
QString plainWords(const QString& text)
{
    QString words;
    for (const QChar c : text.toLower()) {
        if (c.isLetterOrNumber())
            words += c;
        else if (!words.isEmpty() && !words.endsWith(QLatin1Char('-')))
            words += QLatin1Char('-');
    }
    while (words.endsWith(QLatin1Char('-')))
        words.chop(1);
    return words.left(40);
}

struct PlotKind
{
    QString name;
    bool hasAxis = true;
};

PlotKind kindOf(const QString& plotName)
{
    const QString lower = plotName.trimmed().toLower();
    for (const Kind& kind : s_kinds) {
        if (lower.startsWith(QLatin1String(kind.beginning)))
            return {QLatin1String(kind.name), kind.hasAxis};
    }
    QString words = plainWords(plotName);
    if (words.isEmpty())
        return {QStringLiteral("plot")};
    if (words.back().isDigit())
        words += QLatin1Char('-'); // "run-2" and the number 1 aren't "run-21"
    return {words};
}

// What has made the file, as far as it says so: simulators name themselves in a command line, or none.
QString applicationOf(const RawPlot& plot)
{
    QString simulator = QStringLiteral("SPICE");
    if (plot.commands.isEmpty())
        return simulator;
    const QString command = plot.commands.front();
    return command.startsWith(QLatin1String("version")) ? simulator + QLatin1Char(' ') + command : command;
}

void addHeader(PropertyObject* setup, const QString& name, const RawPlot& plot)
{
    PropertyObject* const folder = addHiddenFolder(setup, name);
    setText(folder, QStringLiteral("Title"), plot.title);
    setText(folder, QStringLiteral("Date"), plot.date);
    setText(folder, QStringLiteral("Plotname"), plot.name);
    setText(folder, QStringLiteral("Flags"), plot.flags);
    setTexts(folder, QStringLiteral("Command"), plot.commands);
    setTexts(folder, QStringLiteral("Option"), plot.options);
}

// One of the vectors in the tree, with the shape that its data had.
struct Placed
{
    Variable* variable;
    std::vector<std::uint64_t> dimensions;
};

Placed place(PropertyObject* folder, const QString& name, const RawVector& vector,
             const std::vector<Units>& displayUnits)
{
    auto variable = std::make_unique<ExplicitDataVar>(name);
    Placed placed = {variable.get(), dimensionsOf(vector.data)};
    variable->UpdateData(vector.data);
    setText(variable.get(), QStringLiteral("Type"), vector.type);
    setUnits(variable.get(), unitsOfRawType(vector.type), displayUnits);
    insertNode(folder, std::move(variable));
    return placed;
}

void setAxis(const Placed& vector, const Placed& axis)
{
    if (vector.dimensions == axis.dimensions)
        addAxis(vector.variable, axis.variable);
}

void placeSweep(Result* result, const QString& name, const Variable* parameter,
                const std::vector<ResultData*>& plots)
{
    auto owned = std::make_unique<ParameterizedResultData>(name);
    ParameterizedResultData* const sweep = owned.get();
    insertNode(result, std::move(owned));
    bool isDone = sweep->SetParameterRef(parameter) >= 0;
    for (const ResultData* const plot : plots)
        isDone = isDone && sweep->AddResultDataRef(plot) >= 0;
    if (!isDone)
        throw Failure(inQuotes(name.toStdString()) + " can't be put into the tree");
}

} // namespace

QString RawImporter::folderName(const QString& kind)
{
    int& number = m_numbers[kind];
    QString name;
    do {
        ++number;
        name = kind + QString::number(number);
    } while (m_result->HasProperty(name));
    return name;
}

ResultData* RawImporter::add(RawPlot plot)
{
    const PlotKind kind = kindOf(plot.name);
    if (m_plots.isEmpty())
        setText(m_result, Result::ApplicationID(), applicationOf(plot));
    auto owned = std::make_unique<ResultData>(folderName(kind.name));
    ResultData* const folder = owned.get();
    insertNode(m_result, std::move(owned));
    m_plots[kind.name].push_back(folder);
    addHeader(setupFolderOf(m_result), folder->GetName(), plot);

    QStringList given;
    for (const RawVector& vector : plot.vectors)
        given += vector.name;
    const QStringList names = vectorNames(given);
    std::vector<Placed> vectors;
    for (int i = 0; i < names.size(); ++i) {
        if (names[i] != given[i])
            m_renamed.insert(given[i], names[i]);
        vectors.push_back(place(folder, names[i],
                                std::exchange(plot.vectors[static_cast<std::size_t>(i)], RawVector()),
                                m_displayUnits));
    }
    for (std::size_t i = 1; kind.hasAxis && i < vectors.size(); ++i)
        setAxis(vectors[i], vectors.front());
    return folder;
}

// "5 dc, 1 op"
QString RawImporter::plotCounts() const
{
    QStringList counts;
    for (auto plots = m_plots.begin(); plots != m_plots.end(); ++plots)
        counts += QString::number(plots.value().size()) + QLatin1Char(' ') + plots.key();
    return counts.join(QStringLiteral(", "));
}

void RawImporter::addSweep(const SweepValues& sweep)
{
    QStringList kinds;
    for (auto plots = m_plots.begin(); plots != m_plots.end(); ++plots) {
        if (plots.value().size() == sweep.values.size())
            kinds += plots.key();
    }
    if (kinds.isEmpty())
        throw Failure("--sweep: " + inQuotes(sweep.name.toStdString()) + " has " +
                      std::to_string(sweep.values.size()) +
                      " values, but the file has these plots: " + printable(plotCounts().toStdString()));
    auto parameter = std::make_unique<ExplicitDataVar>(sweep.name);
    parameter->UpdateData(BVariant(sweep.values));
    setUnits(parameter.get(), sweep.units, m_displayUnits);
    const Variable* const placed = parameter.get();
    insertNode(setupFolderOf(m_result), std::move(parameter));
    for (const QString& kind : kinds)
        placeSweep(m_result, kind + QStringLiteral("-sweep"), placed, m_plots[kind]);
}

} // namespace Orrery::Host
