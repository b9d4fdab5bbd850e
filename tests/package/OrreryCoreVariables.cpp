#include "foundations/property/Property.h"
#include "foundations/storage/DataFile.h"
#include "foundations/storage/DataFileFactory.h"
#include "foundations/variant/Variant.h"
#include "variables/ExplicitDataVar.h"

#include <QTemporaryDir>

#include <cstdio>
#include <memory>
#include <vector>

using namespace Orrery;
using Brindle::Quay::getScalar;

namespace {

// Saves one variable and reads one of its values back from the file.
double SaveAndRead(const QString& path)
{
    std::shared_ptr<DataFile> file;
    if (DataFileFactory::Instance().Open(path, DataFile::Create, &file) < 0)
        return -1.0;
    auto voltage = std::make_unique<ExplicitDataVar>(QStringLiteral("voltage"));
    voltage->UpdateData(BVariant(std::vector<double>{0.0, 0.5, 1.5}), true, IsCellArrayFalse);
    if (file->GetRoot()->InsertProperty(voltage.get()) < 0)
        return -1.0;
    voltage.release();
    if (file->Save() < 0)
        return -1.0;
    file.reset();

    if (DataFileFactory::Instance().Open(path, DataFile::ReadOnly, &file) < 0)
        return -1.0;
    const auto* const loaded = file->GetRoot()->GetPtr<Variable>(QStringLiteral("voltage"));
    BVariant value;
    if (!loaded || loaded->GetValueAt(&value, 2) < 0)
        return -1.0;
    return getScalar<double>(value);
}

} // namespace

int main()
{
    const QTemporaryDir folder;
    const double value = SaveAndRead(folder.filePath(QStringLiteral("first.h5")));
    std::printf("voltage at offset 2: %g\n", value);
    return value == 1.5 ? 0 : 1;
}
