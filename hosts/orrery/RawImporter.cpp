#include "hosts/orrery/RawImporter.h"

#include "foundations/property/SimpleProperty.h"
#include "hosts/orrery/ElementText.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/RawUnits.h"
#include "hosts/orrery/TreeAccess.h"
#include "variables/ExplicitDataVar.h"

#include <QSet>

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

void setText(PropertyObject* folder, const QString& name, const QString& text)
{
    if (folder->SetProperty(name, text) < 0)
        throw Failure("'" + name.toStdString() + "' can't be put into the tree");
}

void setTexts(PropertyObject* folder, const QString& name, const QStringList& texts)
{
    if (texts.size() == 1)
        return setText(folder, name, texts.front());
    std::vector<std::string> values;
    values.reserve(static_cast<std::size_t>(texts.size()));
    for (const QString& text : texts)
        values.push_back(text.toStdString());
    if (!values.empty() && folder->SetProperty(name, BVariant(std::move(values))) < 0)
        throw Failure("'" + name.toStdString() + "' can't be put into the tree");
}

void setTexts(PropertyObject* folder, const RawPlot& plot)
{
    setText(folder, QStringLiteral("Title"), plot.title);
    setText(folder, QStringLiteral("Date"), plot.date);
    setText(folder, QStringLiteral("Plotname"), plot.name);
    setText(folder, QStringLiteral("Flags"), plot.flags);
    setTexts(folder, QStringLiteral("Command"), plot.commands);
    setTexts(folder, QStringLiteral("Option"), plot.options);
}

// The next number of each name is remembered, so that many vectors of one name take no time squared.
QString uniqueName(const PropertyObject& folder, const QString& name, QHash<QString, int>* numbers)
{
    if (!folder.HasProperty(name))
        return name;
    int& number = (*numbers)[name];
    number = qMax(number, 1);
    QString unique;
    do {
        ++number;
        unique = name + QLatin1Char('_') + QString::number(number);
    } while (folder.HasProperty(unique));
    return unique;
}

// One of the vectors in the tree, with the shape that its data had.
struct Placed
{
    Variable* variable;
    std::vector<std::uint64_t> dimensions;
};

Placed place(PropertyObject* folder, const QString& name, const RawVector& vector)
{
    auto variable = std::make_unique<ExplicitDataVar>(name);
    Placed placed = {variable.get(), dimensionsOf(vector.data)};
    variable->UpdateData(vector.data);
    setText(variable.get(), QStringLiteral("Type"), vector.type);
    if (const std::optional<Units> units = unitsOfRawType(vector.type);
        units && variable->SetUnits(*units) < 0)
        throw Failure("the units of " + inQuotes(name.toStdString()) + " can't be put into the tree");
    insertNode(folder, std::move(variable));
    return placed;
}

void setAxis(const Placed& vector, const Placed& axis)
{
    if (vector.dimensions == axis.dimensions && vector.variable->AddIndepVariableRef(axis.variable) < 0)
        throw Failure("the axis of " + inQuotes(vector.variable->GetName().toStdString()) +
                      " can't be put into the tree");
}

} // namespace

QString RawImporter::folderName(const QString& kind)
{
    int& number = m_numbers[kind];
    QString name;
    do {
        ++number;
        name = kind + QString::number(number);
    } while (m_root->HasProperty(name));
    return name;
}

PropertyObject* RawImporter::add(RawPlot plot)
{
    const PlotKind kind = kindOf(plot.name);
    auto owned = std::make_unique<PropertyObject>(folderName(kind.name));
    PropertyObject* const folder = owned.get();
    insertNode(m_root, std::move(owned));
    setTexts(folder, plot);
    QHash<QString, int> numbers;
    std::vector<Placed> vectors;
    for (RawVector& vector : plot.vectors) {
        const QString name = uniqueName(*folder, vector.name, &numbers);
        vectors.push_back(place(folder, name, std::exchange(vector, RawVector())));
    }
    for (std::size_t i = 1; kind.hasAxis && i < vectors.size(); ++i)
        setAxis(vectors[i], vectors.front());
    return folder;
}

} // namespace Orrery::Host
