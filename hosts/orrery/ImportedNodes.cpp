#include "hosts/orrery/ImportedNodes.h"

#include "foundations/property/SimpleProperty.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/TreeAccess.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

namespace Orrery::Host {

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

void setUnits(Variable* variable, const std::optional<Units>& units, const std::vector<Units>& displayUnits)
{
    if (!units)
        return;
    const auto shown = std::find_if(displayUnits.begin(), displayUnits.end(),
                                    [&units](const Units& wanted) { return wanted.IsCommensurable(*units); });
    if (variable->SetUnits(*units) < 0 ||
        (shown != displayUnits.end() && variable->SetDisplayUnits(*shown) < 0))
        throw Failure("the units of " + inQuotes(variable->GetName().toStdString()) +
                      " can't be put into the tree");
}

void addAxis(Variable* variable, const Variable* axis)
{
    if (variable->AddIndepVariableRef(axis) < 0)
        throw Failure("the axis of " + inQuotes(variable->GetName().toStdString()) +
                      " can't be put into the tree");
}

PropertyObject* setupFolderOf(Result* result)
{
    PropertyObject* const setup = result->GetOrCreateSetupInfoFolder();
    if (!setup)
        throw Failure("the setup folder can't be put into the tree");
    return setup;
}

PropertyObject* addHiddenFolder(PropertyObject* parent, const QString& name)
{
    auto owned = std::make_unique<PropertyObject>(name);
    PropertyObject* const folder = owned.get();
    folder->SetPropertyFlags(folder->GetPropertyFlags() | PropertyFlagHidden);
    insertNode(parent, std::move(owned));
    return folder;
}

} // namespace Orrery::Host
