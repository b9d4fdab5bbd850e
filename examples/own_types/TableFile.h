#pragma once

#include "foundations/storage/DataFile.h"

/// A file type of the host's own: variables as columns of a plain text.
///
///     time [s]; voltage [V]
///     0; 2
///     0.5; 1
///
/// It holds explicit variables of one length and nothing else; the first is the axis of the others.
class TableFile final : public Orrery::DataFile
{
public:
    /// The name under which it is registered with the factory.
    static QString FileType();
    static Orrery::DataFile* Create(const QString& path, OpenMode mode);

    TableFile(const QString& path, OpenMode mode);

    Orrery::ERESULT Load(QString* why) override;
    Orrery::ERESULT Save(QString* why) override;
    Orrery::ERESULT Close() override;
    QString GetFileType() const override;
};
