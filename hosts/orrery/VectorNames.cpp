#include "hosts/orrery/VectorNames.h"

#include "results/ParameterizedResultData.h"

#include <QHash>
#include <QSet>

#include <algorithm>

namespace Orrery::Host {

namespace {

bool isNumber(const QString& name)
{
    return !name.isEmpty() && std::all_of(name.begin(), name.end(), [](QChar c) {
        return c >= QLatin1Char('0') && c <= QLatin1Char('9');
    });
}

bool isKept(const QString& name, const QSet<QString>& names)
{
    const QString ending = QStringLiteral("_Indeps");
    return isNumber(name) || name == ParameterizedResultData::ParameterVar ||
           (name.endsWith(ending) && names.contains(name.left(name.size() - ending.size())));
}

// The next number of each name is remembered, so that many vectors of one name take no time squared.
QString uniqueName(const QSet<QString>& names, const QString& name, QHash<QString, int>* numbers)
{
    if (!names.contains(name))
        return name;
    int& number = (*numbers)[name];
    number = qMax(number, 1);
    QString unique;
    do {
        ++number;
        unique = name + QLatin1Char('_') + QString::number(number);
    } while (names.contains(unique));
    return unique;
}

// A new name may be the X of another vector, so this goes on until nothing changes. No name that ends with "_" is
// kept, so it ends.
void giveWay(QStringList* names, QSet<QString>* taken)
{
    bool isChanged = true;
    while (isChanged) {
        isChanged = false;
        for (QString& name : *names) {
            if (!isKept(name, *taken))
                continue;
            taken->remove(name);
            do
                name += QLatin1Char('_');
            while (taken->contains(name));
            taken->insert(name);
            isChanged = true;
        }
    }
}

} // namespace

QStringList vectorNames(const QStringList& given)
{
    QStringList names;
    QSet<QString> taken;
    QHash<QString, int> numbers;
    for (const QString& name : given) {
        names += uniqueName(taken, name, &numbers);
        taken.insert(names.back());
    }
    giveWay(&names, &taken);
    return names;
}

} // namespace Orrery::Host
