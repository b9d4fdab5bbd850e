#include "hosts/orrery/RawImporter.h"

#include "foundations/property/SimpleProperty.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/TreeAccess.h"
#include "variables/ExplicitDataVar.h"

#include <QSet>

#include <memory>
#include <utility>

namespace Orrery::Host {

namespace {

struct Kind
{
    const char* beginning; // of the plot's name in lower case
    const char* name;
};

constexpr Kind s_kinds[] = {
    {"dc transfer", "dc"},     {"ac analysis", "ac"},       {"transient", "tran"},
    {"operating point", "op"}, {"noise", "noise"},          {"integrated noise", "noise-total"},
    {"pole-zero", "pz"},       {"transfer function", "tf"}, {"sensitivity", "sens"},
    {"distortion", "disto"},   {"harmonic", "hb"},          {"fourier", "fourier"},
    {"s-parameter", "sp"},     {"sp analysis", "sp"},       {"periodic steady", "pss"},
    {"constant", "const"},
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

QString kindOf(const QString& plotName)
{
    const QString lower = plotName.trimmed().toLower();
    for (const Kind& kind : s_kinds) {
        if (lower.startsWith(QLatin1String(kind.beginning)))
            return QLatin1String(kind.name);
    }
    QString words = plainWords(plotName);
    if (words.isEmpty())
        return QStringLiteral("plot");
    if (words.back().isDigit())
        words += QLatin1Char('-'); // "run-2" and the number 1 aren't "run-21"
    return words;
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

} // namespace

QString RawImporter::folderName(const QString& plotName)
{
    const QString kind = kindOf(plotName);
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
    auto owned = std::make_unique<PropertyObject>(folderName(plot.name));
    PropertyObject* const folder = owned.get();
    insertNode(m_root, std::move(owned));
    setTexts(folder, plot);
    QHash<QString, int> numbers;
    for (RawVector& vector : plot.vectors) {
        auto variable = std::make_unique<ExplicitDataVar>(uniqueName(*folder, vector.name, &numbers));
        variable->UpdateData(std::exchange(vector.data, BVariant()));
        setText(variable.get(), QStringLiteral("Type"), vector.type);
        insertNode(folder, std::move(variable));
    }
    return folder;
}

} // namespace Orrery::Host
