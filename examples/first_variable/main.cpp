// A first variable: values with a unit over an axis with a unit, one value read in two ways, all of it in a file.
#include "foundations/property/Property.h"
#include "foundations/storage/DataFile.h"
#include "foundations/storage/DataFileFactory.h"
#include "foundations/variant/Variant.h"
#include "units/Units.h"
#include "variables/ExplicitDataVar.h"
#include "variables/RangeVar.h"

#include <cstdio>
#include <memory>
#include <vector>

using namespace Orrery;
using Brindle::Quay::getScalar;

int main()
{
    // A data file is a tree with a root. Nothing is on the disk before Save.
    std::shared_ptr<DataFile> file;
    QString why;
    if (DataFileFactory::Instance().Open("decay.h5", DataFile::Create, &file, &why) < 0) {
        std::fprintf(stderr, "%s\n", qUtf8Printable(why));
        return 1;
    }
    PropertyObject& root = *file->GetRoot();

    // The axis: 0, 0.5, 1 ... ms. Its five values are never stored.
    auto* const time = new RangeVar("time");
    time->SetStart(0.0);
    time->SetStep(0.5);
    time->SetCount(5);
    time->SetUnits(Units::FromSIString("ms"));
    root.InsertProperty(time); // the tree owns it from here on

    // The values, and what they are measured against.
    auto* const voltage = new ExplicitDataVar("voltage");
    voltage->UpdateData(BVariant(std::vector<double>{2.0, 1.0, 0.5, 0.25, 0.125}));
    voltage->SetUnits(Units::FromSIString("V"));
    root.InsertProperty(voltage);
    voltage->AddIndepVariableRef(time);

    // Reading: one value, and the same value in another unit.
    BVariant value;
    if (voltage->GetValueAt(&value, 3) < 0)
        return 1;
    BVariant inMillivolts;
    voltage->GetUnits().ConvertedTo(Units::FromSIString("mV"), value, &inMillivolts);
    Variable* axis = nullptr;
    voltage->GetIndepVariable(&axis, 0);
    BVariant moment;
    axis->GetValueAt(&moment, 3);
    std::printf("%s at %s = %g %s: %g V, which is %g mV\n", qPrintable(voltage->GetName()),
                qPrintable(axis->GetName()), getScalar<double>(moment),
                qPrintable(axis->GetUnits().GetUnitsLabel()), getScalar<double>(value),
                getScalar<double>(inMillivolts));

    if (file->Save(&why) < 0) {
        std::fprintf(stderr, "%s\n", qUtf8Printable(why));
        return 1;
    }
    std::printf("saved to %s; look at it with: orrery ls %s\n", qPrintable(file->GetPath()),
                qPrintable(file->GetPath()));
    return 0;
}
