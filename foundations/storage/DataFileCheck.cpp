#include "foundations/storage/DataFileCheck.h"

#include "foundations/storage/DataFile.h"
#include "foundations/storage/DataFileFactory.h"
#include "foundations/storage/Hdf5FileWalk_p.h"
#include "foundations/storage/StorageError_p.h"
#include "foundations/storage/StoredFile_p.h"
#include "foundations/storage/TreeCheck_p.h"

#include <QFileInfo>

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
    TreeCheck(path, report, progress).Look(*file->GetRoot(), summary);
}

// Adds up what passes through to `report`; both must outlive it.
DataFileCheck::Report Counted(const DataFileCheck::Report& report, DataFileCheck::Summary* summary)
{
    return [&report, summary](const DataFileCheck::Finding& finding) {
        ++(finding.severity == DataFileCheck::Error ? summary->errors : summary->warnings);
        report(finding);
    };
}

// A file whose structure isn't sound has been told of already, and can't be looked at any further.
void LookAroundTree(const QString& path, const DataFileCheck::Report& report)
{
    const Hdf5Session session;
    std::shared_ptr<const StoredFile> file;
    try {
        file = StoredFile::Open(path);
    } catch (const StorageError&) {
        return;
    }
    Hdf5FileWalk(file->File(), file->Structure(), report).Run();
}

} // namespace

DataFileCheck::Summary DataFileCheck::Run(const QString& path, const Report& report, const Progress& progress)
{
    Summary summary;
    const Report counted = Counted(report, &summary);
    LookAtTree(path, counted, progress, &summary);
    // A FIFO would be waited for, and a device has no end.
    if (!QFileInfo(path).isFile())
        return summary;
    summary.fileBytes = static_cast<std::uint64_t>(QFileInfo(path).size());
    LookAroundTree(path, counted);
    return summary;
}

DataFileCheck::Summary DataFileCheck::RunOnTree(const PropertyObject& root, const Report& report,
                                                const Progress& progress)
{
    Summary summary;
    const Report counted = Counted(report, &summary);
    const auto* const fileRoot = dynamic_cast<const DataFile::RootProperty*>(&root);
    const DataFile* const file = fileRoot ? fileRoot->GetParentFile() : nullptr;
    TreeCheck(file ? file->GetPath() : QString(), counted, progress).Look(root, &summary);
    return summary;
}

} // namespace Orrery
