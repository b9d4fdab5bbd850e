// A host that adds to the library: a measurement and a property type of its own, both found again in a file.
#include "MovingAverage.h"
#include "Specimen.h"

#include "Core/FunctionProperty.h"
#include "Core/MeasurementManager.h"
#include "foundations/property/Property.h"
#include "foundations/storage/DataFile.h"
#include "foundations/storage/DataFileFactory.h"
#include "foundations/variant/Variant.h"
#include "variables/ExplicitDataVar.h"

#include <QTemporaryDir>

#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>
#include <vector>

using namespace Orrery;
using Brindle::Quay::IterableContainer;

namespace {

void check(ERESULT code, const QString& what)
{
    if (code < 0)
        throw std::runtime_error(qPrintable(what));
}

void registerOurs()
{
    MeasurementManager<Variable>::Instance()->Register(new MovingAverage);
    check(PropertyObjectFactory::Instance().RegisterType(Specimen::StaticType(),
                                                         []() -> PropertyObject* { return new Specimen; }),
          QStringLiteral("the type Specimen is taken"));
}

/// The tree owns the node if this returns.
void insert(PropertyObject& folder, std::unique_ptr<AbstractProperty> node)
{
    check(folder.InsertProperty(node.get()), QStringLiteral("can't insert ") + node->GetName());
    node.release();
}

std::shared_ptr<DataFile> open(const QString& path, DataFile::OpenMode mode)
{
    std::shared_ptr<DataFile> file;
    QString why;
    check(DataFileFactory::Instance().Open(path, mode, &file, &why), why);
    return file;
}

void save(const QString& path)
{
    const std::shared_ptr<DataFile> file = open(path, DataFile::Create);
    PropertyObject& root = *file->GetRoot();

    auto signal = std::make_unique<ExplicitDataVar>(QStringLiteral("signal"));
    signal->UpdateData(BVariant(std::vector<double>{1.0, 5.0, 3.0, 7.0, 5.0}));
    insert(root, std::move(signal));

    auto filter = std::make_unique<Function>(QStringLiteral("moving-average"));
    check(filter->SetName(QStringLiteral("filter")), QStringLiteral("can't name the function"));
    check(filter->SetParameters({BVariant(2)}), QStringLiteral("can't set the window"));
    insert(root, std::move(filter));

    insert(root, std::make_unique<Specimen>(QStringLiteral("specimen"), QStringLiteral("quartz")));

    QString why;
    check(file->Save(&why), why);
}

/// Runs the measurement that `function` names: always on a clone, as the registered one and the one that the function
/// holds are patterns.
std::vector<double> run(const Function& function, Variable& input)
{
    const Measurement<Variable>* const pattern = function.GetMeasurement();
    if (!pattern)
        throw std::runtime_error("this process has no such measurement");
    Variable result;
    const std::unique_ptr<Measurement<Variable>> working(pattern->clone());
    working->clear()->push(&input)->set_output(&result);
    const std::unique_ptr<AbstractProbe> probe(working->make_probe());
    const Variable* const output = probe->run();
    const IterableContainer<double> values(output->GetData());
    return std::vector<double>(values.begin(), values.end());
}

bool readBack(const QString& path)
{
    const std::shared_ptr<DataFile> file = open(path, DataFile::ReadOnly);
    PropertyObject& root = *file->GetRoot();
    auto* const signal = root.GetPtr<Variable>(QStringLiteral("signal"));
    const auto* const filter = root.GetPtr<Function>(QStringLiteral("filter"));
    const auto* const specimen = root.GetPtr<Specimen>(QStringLiteral("specimen"));
    if (!signal || !filter || !specimen)
        throw std::runtime_error("the file doesn't hold what was saved");

    std::printf("function from the file: %s, window %d\n", qPrintable(filter->GetFunctionName()),
                Brindle::Quay::getScalar<int>(filter->GetParameters().at(0)));
    const std::vector<double> smoothed = run(*filter, *signal);
    std::printf("smoothed:");
    for (const double value : smoothed)
        std::printf(" %g", value);
    std::printf("\nspecimen from the file: %s of %s\n", qPrintable(specimen->PropertyObjType()),
                qPrintable(specimen->Material()));
    return smoothed == std::vector<double>{1.0, 3.0, 4.0, 5.0, 6.0} &&
           specimen->Material() == QStringLiteral("quartz");
}

} // namespace

int main()
{
    try {
        registerOurs();
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("filtered.h5"));
        save(path);
        return readBack(path) ? 0 : 1;
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "%s\n", problem.what());
        return 1;
    }
}
