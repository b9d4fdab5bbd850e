#include "hosts/orrery/TreeAccess.h"

#include "foundations/property/PropertyPath.h"
#include "foundations/property/PropertyReference.h"
#include "foundations/storage/DataFileFactory.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"
#include "variables/ExplicitDataVarStrategy.h"

namespace Orrery::Host {

namespace {

// One line whatever the library put into its text.
std::string oneLine(const QString& text)
{
    return printable(text.simplified().toStdString());
}

} // namespace

std::string fileLine(const std::string& fileName, const QString& why)
{
    const std::string line = oneLine(why);
    const std::string beginning = printable(fileName) + ": ";
    return line.compare(0, beginning.size(), beginning) == 0 ? line : beginning + line;
}

std::shared_ptr<DataFile> openForReading(const std::string& path)
{
    std::shared_ptr<DataFile> file;
    QString why;
    if (DataFileFactory::Instance().Open(QString::fromStdString(path), DataFile::ReadOnly, &file, &why) < 0)
        throw Failure(fileLine(path, why));
    return file;
}

AbstractProperty* findNode(DataFile& file, const std::string& fileName, const std::string& path)
{
    AbstractProperty* node = file.GetRoot();
    if (!path.empty())
        node = Property::FindProperty(node, QString::fromStdString(path));
    const std::string place = printable(fileName) + ": " + printable(path);
    if (!node)
        throw Failure(place + ": there is nothing of that name");
    for (int steps = 0; node->IsPropertyReference(); ++steps) {
        const auto* const reference = static_cast<const PropertyReference*>(node);
        const QString target = reference->ReferencePath();
        node = steps < 100 ? reference->Resolve() : nullptr;
        if (!node)
            throw Failure(place + ": the reference leads nowhere: '" + oneLine(target) + "'");
    }
    return node;
}

void insertNode(PropertyObject* folder, std::unique_ptr<AbstractProperty> node)
{
    if (folder->InsertProperty(node.get()) < 0)
        throw Failure(inQuotes(node->GetName().toStdString()) + " can't be put into the tree");
    static_cast<void>(node.release());
}

bool holdsStoredData(const Variable& variable)
{
    return dynamic_cast<ExplicitDataVarStrategy*>(variable.GetStrategyPtr().lock().get()) != nullptr;
}

std::string pathName(const QString& name)
{
    QString step;
    for (const QChar c : Property::EncodeName(name)) {
        if (c.category() == QChar::Other_Control)
            step += QStringLiteral("%%1").arg(static_cast<int>(c.unicode()), 2, 16, QLatin1Char('0'));
        else
            step += c;
    }
    return step.toStdString();
}

} // namespace Orrery::Host
