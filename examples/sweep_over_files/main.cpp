// A sweep over several files: each run saves a file of its own, and one more file joins them without copying a value.
#include "foundations/property/Property.h"
#include "foundations/storage/DataFile.h"
#include "foundations/storage/DataFileFactory.h"
#include "foundations/variant/Variant.h"
#include "results/ParameterizedResultData.h"
#include "results/ResultData.h"
#include "units/Units.h"
#include "variables/ExplicitDataVar.h"
#include "variables/RangeVar.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cmath>
#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>
#include <vector>

using namespace Orrery;
using Brindle::Quay::IterableContainer;

namespace {

const std::vector<double> s_resistances = {100.0, 220.0, 470.0};

void check(ERESULT code, const QString& what)
{
    if (code < 0)
        throw std::runtime_error(what.toStdString());
}

/// The tree owns the node from here on. Returns it.
template <class Node>
Node* insert(PropertyObject& folder, std::unique_ptr<Node> node)
{
    check(folder.InsertProperty(node.get()), "can't insert " + node->GetName());
    return node.release();
}

std::shared_ptr<DataFile> open(const QString& path, DataFile::OpenMode mode)
{
    std::shared_ptr<DataFile> file;
    QString why;
    check(DataFileFactory::Instance().Open(path, mode, &file, &why), why);
    return file;
}

void save(DataFile& file)
{
    QString why;
    check(file.Save(&why), why);
}

QString runName(std::size_t number)
{
    return "run-" + QString::number(number + 1) + ".h5";
}

// The voltage of a capacitor that discharges through a resistor.
void saveRun(const QString& path, double resistance)
{
    const std::shared_ptr<DataFile> file = open(path, DataFile::Create);
    ResultData* const run = insert(*file->GetRoot(), std::make_unique<ResultData>("run"));

    RangeVar* const time = insert<RangeVar>(*run, std::make_unique<RangeVar>("time"));
    time->SetStart(0.0);
    time->SetStep(0.1);
    time->SetCount(4);
    time->SetUnits(Units::FromSIString("ms"));

    std::vector<double> values;
    for (int i = 0; i < 4; ++i)
        values.push_back(5.0 * std::exp(-0.0001 * i / (resistance * 1e-6)));
    auto* const voltage = insert(*run, std::make_unique<ExplicitDataVar>("voltage"));
    voltage->UpdateData(BVariant(std::move(values)));
    voltage->SetUnits(Units::FromSIString("V"));
    voltage->AddIndepVariableRef(time);
    save(*file);
}

// Holds the resistances, and references to what stands in the other files.
void saveSweep(const QDir& folder)
{
    const std::shared_ptr<DataFile> file = open(folder.filePath("sweep.h5"), DataFile::Create);
    auto* const resistance = insert(*file->GetRoot(), std::make_unique<ExplicitDataVar>("resistance"));
    resistance->UpdateData(BVariant(s_resistances));
    resistance->SetUnits(Units::FromSIString("Ohm"));

    auto* const sweep = insert(*file->GetRoot(), std::make_unique<ParameterizedResultData>("sweep"));
    check(sweep->SetParameterRef(resistance), "can't set the parameter");
    std::vector<std::shared_ptr<DataFile>> runs; // open until the references have been saved
    for (std::size_t i = 0; i < s_resistances.size(); ++i) {
        runs.push_back(open(folder.filePath(runName(i)), DataFile::ReadOnly));
        check(sweep->AddResultDataRef(runs.back()->GetRoot()->GetPtr<ResultData>("run")), "can't add a run");
    }
    save(*file);
}

// Only the sweep's file is opened here. The runs' files are opened as they are needed, once each.
std::size_t printJoined(const QString& path)
{
    const std::shared_ptr<DataFile> file = open(path, DataFile::ReadOnly);
    auto* const sweep = file->GetRoot()->GetPtr<ParameterizedResultData>("sweep");
    if (!sweep)
        throw std::runtime_error("the file doesn't hold the sweep");
    const Variable* const voltage = sweep->FindResultVar("voltage");
    if (!voltage) {
        std::printf("  no run is there\n");
        return 0;
    }
    Variable* time = nullptr;
    Variable* resistance = nullptr;
    check(voltage->GetIndepVariable(&time, 0), "the time is missing");
    check(voltage->GetIndepVariable(&resistance, 1), "the resistance is missing");

    const IterableContainer<double> volts(voltage->GetData());
    const IterableContainer<double> milliseconds(time->GetData());
    const IterableContainer<double> ohms(resistance->GetData());
    auto moment = milliseconds.begin();
    auto ohm = ohms.begin();
    std::size_t count = 0;
    for (const double volt : volts) {
        std::printf("  %3g Ohm  %.1f ms  %.3f V\n", *ohm, *moment, volt);
        ++ohm;
        ++moment;
        ++count;
    }
    return count;
}

} // namespace

int main()
{
    try {
        const QTemporaryDir temporary;
        QDir(temporary.path()).mkdir("bench");
        const QDir bench(temporary.filePath("bench"));
        for (std::size_t i = 0; i < s_resistances.size(); ++i)
            saveRun(bench.filePath(runName(i)), s_resistances[i]);
        saveSweep(bench);

        std::printf("joined from three files:\n");
        const std::size_t all = printJoined(bench.filePath("sweep.h5"));

        // References know where the files stand from one another: a folder moves as one.
        QDir(temporary.path()).rename("bench", "archive");
        const QDir archive(temporary.filePath("archive"));
        std::printf("and from another place:\n");
        const std::size_t moved = printJoined(archive.filePath("sweep.h5"));
        return all == 12 && moved == 12 ? 0 : 1;
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "%s\n", problem.what());
        return 1;
    }
}
