#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/TreeAccess.h"
#include "hosts/orrery/commands/Commands.h"
#include "units/SystemOfUnits.h"

#include <QList>
#include <QStringList>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Orrery::Host {

namespace {

bool startsWith(std::string_view text, std::string_view beginning)
{
    return text.substr(0, beginning.size()) == beginning;
}

// Folders end with "/", so that the shell goes on in them. The values of a variable are its own business.
bool isOffered(const AbstractProperty& node, const PropertyObject& folder)
{
    return !node.IsHidden() && (node.IsPropertyObject() || (node.IsSimpleProperty() && !folder.IsVariable()));
}

/// The paths in a file that begin with what is typed, one step further.
std::vector<std::string> nodes(const std::string& fileName, const std::string& typed)
{
    const std::size_t slash = typed.rfind('/');
    const std::string above = slash == std::string::npos ? std::string() : typed.substr(0, slash + 1);
    const std::string begun = typed.substr(above.size());
    const std::shared_ptr<DataFile> file = openForReading(fileName);
    std::vector<std::string> paths;
    AbstractProperty* const node = findNode(*file, fileName, above.substr(0, slash == 0 ? 1 : slash));
    if (!node->IsPropertyObject())
        return paths;
    const auto& folder = static_cast<const PropertyObject&>(*node);
    QList<AbstractProperty*> children;
    folder.GetPropertyList(&children);
    for (const AbstractProperty* const child : children) {
        const std::string name = pathName(child->GetName());
        if (isOffered(*child, folder) && startsWith(name, begun))
            paths.push_back(above + name + (child->IsPropertyObject() && !child->IsVariable() ? "/" : ""));
    }
    return paths;
}

std::vector<std::string> beginningWith(const std::string& typed, const QStringList& names)
{
    std::vector<std::string> found;
    for (const QString& name : names) {
        const std::string text = name.toStdString();
        if (!text.empty() && text == printable(text) && startsWith(text, typed))
            found.push_back(text);
    }
    return found;
}

std::vector<std::string> answer(const std::vector<std::string>& words)
{
    QStringList names;
    const QList<Units> all = SystemOfUnits::instance().GetAllUnits();
    if (words.size() == 3 && words[0] == "nodes")
        return nodes(words[1], words[2]);
    if (words.size() == 2 && words[0] == "units") {
        for (const Units& units : all)
            names += SystemOfUnits::instance().GetUnitNames(units.GetUnitType());
    } else if (words.size() == 2 && words[0] == "types") {
        for (const Units& units : all)
            names += units.GetUnitType().GetName();
    }
    names.sort();
    names.removeDuplicates();
    return beginningWith(words.back(), names);
}

} // namespace

void addCompleteCommand(CLI::App& program, Action* action)
{
    CLI::App* const command = program.add_subcommand("__complete", "Answer the completion of a shell");
    const auto words = std::make_shared<std::vector<std::string>>();
    command->add_option("WORDS", *words, "nodes FILE TEXT, units TEXT or types TEXT")->required();
    command->group(""); // no help shows it
    command->callback([words, action] {
        *action = [words](Output& out) {
            for (const std::string& line : answer(*words))
                out.write(line + '\n');
        };
    });
}

} // namespace Orrery::Host
