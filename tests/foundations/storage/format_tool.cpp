// Writes the file of variables that docs/file-format.md shows, for other programs to read.
//
//     format_tool FILE [more] [packed] [compressed]
#include "foundations/property/SimpleProperty.h"
#include "foundations/storage/DataFileFactory.h"
#include "units/Units.h"
#include "variables/RangeVar.h"
#include "variables/Variable.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <vector>

namespace {

using namespace Orrery;

template <class Node>
Node* Insert(PropertyObject& folder, std::unique_ptr<Node> node)
{
    if (folder.InsertProperty(node.get()) < 0)
        throw std::runtime_error("a node can't be inserted");
    return node.release();
}

Variable* AddVariable(PropertyObject& folder, const char* name, const char* units, const BVariant& data)
{
    auto variable = std::make_unique<Variable>(QString::fromLatin1(name), data);
    if (variable->SetUnits(Units::FromSIString(QString::fromLatin1(units))) < 0)
        throw std::runtime_error("units can't be set");
    return Insert(folder, std::move(variable));
}

void Build(PropertyObject& root)
{
    PropertyObject* const run = Insert(root, std::make_unique<PropertyObject>(QStringLiteral("run")));
    Variable* const time = AddVariable(*run, "time", "s", BVariant(std::vector<double>{0.0, 0.5, 1.0}));
    Variable* const speed = AddVariable(*run, "speed", "m/s", BVariant(std::vector<double>{2.0, 2.25, 2.5}));
    if (speed->AddIndepVariableRef(time) < 0)
        throw std::runtime_error("an axis can't be set");
}

// What the page doesn't show: names to be encoded, an axis without a dataset, and an array worth compressing.
void BuildMore(PropertyObject& root)
{
    PropertyObject* const more = Insert(root, std::make_unique<PropertyObject>(QStringLiteral("a/b")));
    Variable* const axis =
        AddVariable(*more, "1/f", "kg*m^2/(A*s^3)", BVariant(std::vector<double>{1.0, 2.0}));
    auto range = std::make_unique<RangeVar>(QStringLiteral("range"));
    RangeVar* const computed = Insert(*more, std::move(range));
    std::vector<double> numbers(300'000);
    std::iota(numbers.begin(), numbers.end(), 0.0);
    Variable* const both = AddVariable(*more, "both", "", BVariant(numbers));
    if (both->AddIndepVariableRef(axis) < 0 || both->AddIndepVariableRef(computed) < 0)
        throw std::runtime_error("an axis can't be set");
}

int Run(int count, char** arguments)
{
    std::shared_ptr<DataFile> file;
    QString why;
    if (DataFileFactory::Instance().Open(QString::fromLocal8Bit(arguments[1]), DataFile::Create, &file,
                                         &why) < 0)
        throw std::runtime_error(why.toStdString());
    Build(*file->GetRoot());
    for (int i = 2; i < count; ++i) {
        if (std::strcmp(arguments[i], "packed") == 0)
            file->SetPacked(true);
        else if (std::strcmp(arguments[i], "compressed") == 0)
            file->SetCompressionLevel(4);
        else
            BuildMore(*file->GetRoot());
    }
    if (file->Save(&why) < 0)
        throw std::runtime_error(why.toStdString());
    return 0;
}

} // namespace

int main(int count, char** arguments)
{
    if (count < 2) {
        std::fprintf(stderr, "usage: format_tool FILE [more] [packed] [compressed]\n");
        return 2;
    }
    try {
        return Run(count, arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
