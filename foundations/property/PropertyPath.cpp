#include "foundations/property/PropertyPath.h"

#include "foundations/property/NodeAccess_p.h"

#include <QStringView>

#include <algorithm>

namespace Orrery::Property {

namespace {

constexpr QChar s_separator = u'/';
constexpr QChar s_escape = u'%';

int hexDigit(QChar digit)
{
    const ushort unit = digit.unicode();
    if (unit >= u'0' && unit <= u'9')
        return unit - u'0';
    if (unit >= u'a' && unit <= u'f')
        return unit - u'a' + 10;
    if (unit >= u'A' && unit <= u'F')
        return unit - u'A' + 10;
    return -1;
}

bool isStep(QStringView step, QLatin1String text)
{
    return step.compare(text) == 0;
}

QString decode(QStringView step)
{
    if (isStep(step, QLatin1String("%")))
        return QStringLiteral("");
    if (!step.contains(s_escape))
        return step.toString();
    QString name;
    name.reserve(static_cast<int>(step.size()));
    for (qsizetype i = 0; i < step.size(); ++i) {
        const bool escaped = step[i] == s_escape && i + 2 < step.size() && hexDigit(step[i + 1]) >= 0 &&
                             hexDigit(step[i + 2]) >= 0;
        if (!escaped) {
            name.append(step[i]);
            continue;
        }
        name.append(QChar(static_cast<ushort>(hexDigit(step[i + 1]) * 16 + hexDigit(step[i + 2]))));
        i += 2;
    }
    return name;
}

// Calls use(step) for each step of a path; empty ones are passed over. Ends early when that gives false.
template <class Use>
bool forEachStep(QStringView path, Use use)
{
    qsizetype start = 0;
    while (start < path.size()) {
        const qsizetype slash = path.indexOf(s_separator, start);
        const qsizetype end = slash < 0 ? path.size() : slash;
        if (end > start && !use(path.mid(start, end - start)))
            return false;
        start = end + 1;
    }
    return true;
}

// Walks the steps of a path from the node with these names. Gives false when it leads out of the tree, which
// counts as staying at the root.
bool appendSteps(QStringView path, QStringList* names)
{
    bool inside = true;
    forEachStep(path, [&](QStringView step) {
        if (isStep(step, QLatin1String(".")))
            return true;
        if (!isStep(step, QLatin1String("..")))
            names->append(decode(step));
        else if (names->isEmpty())
            inside = false;
        else
            names->removeLast();
        return true;
    });
    return inside;
}

AbstractProperty* childOf(const AbstractProperty& node, QStringView step)
{
    const PropertyObject* const folder = Internal::NodeAccess::asFolder(node);
    return folder ? Internal::NodeAccess::children(*folder).value(decode(step), nullptr) : nullptr;
}

} // namespace

QString EncodeName(const QString& name)
{
    if (name.isEmpty())
        return QString(s_escape);
    if (name == QLatin1String(".") || name == QLatin1String(".."))
        return QStringLiteral("%2E").repeated(name.size());
    if (!name.contains(s_separator) && !name.contains(s_escape))
        return name;
    QString step = name;
    step.replace(s_escape, QLatin1String("%25"));
    step.replace(s_separator, QLatin1String("%2F"));
    return step;
}

QString DecodeName(const QString& step)
{
    return decode(step);
}

QString BuildPath(const QStringList& names)
{
    if (names.isEmpty())
        return QString(s_separator);
    QString path;
    for (const QString& name : names) {
        path.append(s_separator);
        path.append(EncodeName(name));
    }
    return path;
}

QStringList SplitPath(const QString& path)
{
    QStringList names;
    appendSteps(path, &names);
    return names;
}

QString GetRelativePath(const QString& fromPath, const QString& toPath)
{
    const QStringList from = SplitPath(fromPath);
    const QStringList to = SplitPath(toPath);
    const auto parting = std::mismatch(from.begin(), from.end(), to.begin(), to.end());

    QStringList steps;
    std::fill_n(std::back_inserter(steps), from.end() - parting.first, QStringLiteral(".."));
    std::transform(parting.second, to.end(), std::back_inserter(steps), EncodeName);
    return steps.isEmpty() ? QStringLiteral(".") : steps.join(s_separator);
}

QString ResolvePath(const QString& fromPath, const QString& path)
{
    if (path.isEmpty())
        return QString();
    QStringList names = path.startsWith(s_separator) ? QStringList() : SplitPath(fromPath);
    return appendSteps(path, &names) ? BuildPath(names) : QString();
}

AbstractProperty* FindProperty(const AbstractProperty* from, const QString& path)
{
    if (!from || path.isEmpty())
        return nullptr;
    const AbstractProperty* node = path.startsWith(s_separator) ? from->GetRootProperty() : from;
    forEachStep(path, [&](QStringView step) {
        if (isStep(step, QLatin1String("..")))
            node = node->GetParent();
        else if (!isStep(step, QLatin1String(".")))
            node = childOf(*node, step);
        return node != nullptr;
    });
    return const_cast<AbstractProperty*>(node);
}

} // namespace Orrery::Property
