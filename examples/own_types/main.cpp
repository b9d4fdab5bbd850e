// A host that adds to the library: a property type and a file type, used through the library's own factories.
#include "Sensor.h"
#include "TableFile.h"

#include "foundations/property/Property.h"
#include "foundations/storage/DataFileFactory.h"
#include "foundations/variant/Variant.h"
#include "units/Units.h"
#include "variables/Variable.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>

using namespace Orrery;

namespace {

void check(ERESULT code, const QString& what)
{
    if (code < 0)
        throw std::runtime_error(what.toStdString());
}

std::shared_ptr<DataFile> open(const QString& path, DataFile::OpenMode mode, const QString& type)
{
    std::shared_ptr<DataFile> file;
    QString why;
    check(DataFileFactory::Instance().Open(path, mode, &file, &why, type), why);
    return file;
}

void save(DataFile& file)
{
    QString why;
    check(file.Save(&why), why);
}

void registerOurs()
{
    check(PropertyObjectFactory::Instance().RegisterType(Sensor::StaticType(),
                                                         []() -> PropertyObject* { return new Sensor; }),
          "the type Sensor is taken");
    check(DataFileFactory::Instance().RegisterFileType(TableFile::FileType(), &TableFile::Create),
          "the file type Table is taken");
}

void writeTable(const QString& path)
{
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write("time [ms]; voltage [V]\n0; 2\n0.5; 1\n1; 0.5\n");
}

// From a table to a data file, with the sensor beside the values.
void convert(const QString& tablePath, const QString& dataPath)
{
    const std::shared_ptr<DataFile> table = open(tablePath, DataFile::ReadOnly, TableFile::FileType());
    const std::shared_ptr<DataFile> data = open(dataPath, DataFile::Create, "HDF5");
    // Copies of the variables: a reference from "voltage" to "time" leads to the copy of "time".
    *data->GetRoot() = *table->GetRoot();
    auto sensor = std::make_unique<Sensor>("sensor", "2024-0815");
    check(data->GetRoot()->InsertProperty(sensor.get()), "there is a sensor already");
    sensor.release(); // the tree owns it now
    save(*data);
}

void report(const QString& dataPath)
{
    const std::shared_ptr<DataFile> data = open(dataPath, DataFile::ReadOnly, "HDF5");
    const auto* const voltage = data->GetRoot()->GetPtr<Variable>("voltage");
    const auto* const sensor = data->GetRoot()->GetPtr<Sensor>("sensor");
    if (!voltage || !sensor)
        throw std::runtime_error("the file doesn't hold what was saved");
    Variable* time = nullptr;
    check(voltage->GetIndepVariable(&time, 0), "the axis is missing");
    std::printf("%d values of %s [%s] over %s [%s]\n", static_cast<int>(voltage->GetMaxIndepOffset()),
                qPrintable(voltage->GetName()), qPrintable(voltage->GetUnits().GetSIUnits()),
                qPrintable(time->GetName()), qPrintable(time->GetUnits().GetSIUnits()));
    std::printf("%s %s, made in %d\n", qPrintable(sensor->PropertyObjType()),
                qPrintable(sensor->SerialNumber()), sensor->YearOfMake());
}

// The sensor has no place in a table: the save says so, and the table stays as it was.
void tryToSaveAsTable(const QString& dataPath, const QString& tablePath)
{
    const std::shared_ptr<DataFile> data = open(dataPath, DataFile::ReadOnly, "HDF5");
    const std::shared_ptr<DataFile> table = open(tablePath, DataFile::ReadWrite, TableFile::FileType());
    *table->GetRoot() = *data->GetRoot();
    QString why;
    if (table->Save(&why) >= 0)
        throw std::runtime_error("a table took a sensor");
    std::printf("not saved: %s\n", qPrintable(why.section('/', -1)));
}

} // namespace

int main()
{
    try {
        registerOurs();
        const QTemporaryDir folder;
        const QString table = folder.filePath("decay.txt");
        const QString data = folder.filePath("decay.h5");
        writeTable(table);
        convert(table, data);
        report(data);
        tryToSaveAsTable(data, table);
        return 0;
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "%s\n", problem.what());
        return 1;
    }
}
