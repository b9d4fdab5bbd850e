#include "foundations/property/Property.h"
#include "foundations/storage/DataFile.h"
#include "foundations/storage/DataFileFactory.h"

#include <QTemporaryDir>

#include <cstdio>
#include <memory>

using namespace Orrery;

namespace {

// Saves a text in a folder of the tree and reads it back from the file.
QString SaveAndRead(const QString& path)
{
    std::shared_ptr<DataFile> file;
    if (DataFileFactory::Instance().Open(path, DataFile::Create, &file) < 0)
        return {};
    auto specimen = std::make_unique<PropertyObject>(QStringLiteral("specimen"));
    specimen->SetProperty(QStringLiteral("material"), QStringLiteral("quartz"));
    if (file->GetRoot()->InsertProperty(specimen.get()) < 0)
        return {};
    specimen.release();
    if (file->Save() < 0)
        return {};
    file.reset();

    if (DataFileFactory::Instance().Open(path, DataFile::ReadOnly, &file) < 0)
        return {};
    const auto* const loaded = file->GetRoot()->GetPtr<PropertyObject>(QStringLiteral("specimen"));
    QString material;
    if (!loaded || loaded->GetProperty(QStringLiteral("material"), &material) < 0)
        return {};
    return material;
}

} // namespace

int main()
{
    const QTemporaryDir folder;
    const QString material = SaveAndRead(folder.filePath(QStringLiteral("first.h5")));
    std::printf("material from the file: %s\n", qPrintable(material));
    return material == QStringLiteral("quartz") ? 0 : 1;
}
