#pragma once

#include "foundations/storage/Catalogue_p.h"
#include "foundations/storage/DataFile.h"
#include "foundations/storage/Hdf5Handle_p.h"

#include <QByteArray>
#include <QString>

namespace Orrery {

/// The built-in file type "HDF5": the structure in one table, each array as a dataset of its own at the readable
/// path of its folder.
class Hdf5DataFile final : public DataFile
{
public:
    static QString FileType();
    static DataFile* Create(const QString& path, OpenMode mode);

    Hdf5DataFile(const QString& path, OpenMode mode);
    ~Hdf5DataFile() override;

    ERESULT Load(QString* why) override;
    ERESULT Save(QString* why) override;
    ERESULT Close() override;
    QString GetFileType() const override;
    QString GetFileUid() const override;

protected:
    bool HasOption(Option option) const override;
    bool CanTurnReadWrite() const override;

private:
    void LoadOrThrow();
    void SaveOrThrow();
    QByteArray UidForSave() const;

    bool m_isSaving = false;
    QByteArray m_uid;  ///< identity of the file, kept for as long as it stays at its place
    QString m_uidPath; ///< the place that the identity belongs to
};

} // namespace Orrery
