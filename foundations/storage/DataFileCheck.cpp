#include "foundations/storage/DataFileCheck.h"

#include "foundations/storage/Catalogue_p.h"
#include "foundations/storage/DataFile.h"
#include "foundations/storage/DataFileFactory.h"
#include "foundations/storage/Hdf5CatalogueIo_p.h"
#include "foundations/storage/Hdf5FileWalk_p.h"
#include "foundations/storage/StorageError_p.h"
#include "foundations/storage/TreeCheck_p.h"

#include <QFile>
#include <QFileInfo>

#include <exception>
#include <memory>

namespace Orrery {

namespace {

void LookAtTree(const QString& path, const DataFileCheck::Report& report,
                const DataFileCheck::Progress& progress, DataFileCheck::Summary* summary)
{
    std::shared_ptr<DataFile> file;
    QString why;
    if (DataFileFactory::Instance().Open(path, DataFile::ReadOnly, &file, &why) < 0) {
        if (why.startsWith(path + QStringLiteral(": ")))
            why.remove(0, path.size() + 2);
        report({DataFileCheck::Error, QString(), why});
        return;
    }
    TreeCheck(report, progress).Look(*file->GetRoot(), summary);
}

// What is wrong with the catalogue has been told when the tree was opened.
bool ReadCatalogue(hid_t file, Catalogue* catalogue)
{
    try {
        Hdf5CatalogueIo::Read(file, catalogue);
        catalogue->Check();
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

void LookAroundTree(const QString& path, const DataFileCheck::Report& report)
{
    const Hdf5Session session;
    const Hdf5Handle file(H5Fopen(QFile::encodeName(path).constData(), H5F_ACC_RDONLY, H5P_DEFAULT),
                          &H5Fclose);
    if (!file.IsValid())
        return; // told already
    Catalogue catalogue;
    const bool isSound = ReadCatalogue(file.Id(), &catalogue);
    Hdf5FileWalk(file.Id(), isSound ? &catalogue : nullptr, report).Run();
}

} // namespace

DataFileCheck::Summary DataFileCheck::Run(const QString& path, const Report& report, const Progress& progress)
{
    Summary summary;
    const Report counted = [&](const Finding& finding) {
        ++(finding.severity == Error ? summary.errors : summary.warnings);
        report(finding);
    };
    LookAtTree(path, counted, progress, &summary);
    // A FIFO would be waited for, and a device has no end.
    if (!QFileInfo(path).isFile())
        return summary;
    summary.fileBytes = static_cast<std::uint64_t>(QFileInfo(path).size());
    LookAroundTree(path, counted);
    return summary;
}

} // namespace Orrery
