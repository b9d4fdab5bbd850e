// Writes data files that the library accepts and that no import makes, for the tests of the program.
//
// usage: orrery_odd_files OUT

#include "Core/FunctionProperty.h"
#include "foundations/property/SimpleProperty.h"
#include "foundations/storage/DataFile.h"
#include "foundations/storage/DataFileFactory.h"
#include "hosts/orrery/FunctionCall.h"
#include "hosts/orrery/TreeAccess.h"
#include "hosts/orrery/UnitText.h"
#include "hosts/orrery/measurements/Registration.h"
#include "results/ParameterizedResultData.h"
#include "variables/ConcatVar.h"
#include "variables/ExplicitDataVar.h"
#include "variables/FunctionVar.h"
#include "variables/RangeVar.h"

#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

using namespace Orrery;
using namespace Orrery::Host;

namespace {

using Doubles = std::vector<double>;

void check(ERESULT code)
{
    if (code < 0)
        throw std::runtime_error("the tree refuses it");
}

template <class V>
V& add(PropertyObject& folder, const char* name)
{
    auto owned = std::make_unique<V>(QString::fromUtf8(name));
    V& variable = *owned;
    insertNode(&folder, std::move(owned));
    return variable;
}

ExplicitDataVar& addValues(PropertyObject& folder, const char* name, Doubles values)
{
    auto& variable = add<ExplicitDataVar>(folder, name);
    variable.UpdateData(BVariant(std::move(values)));
    return variable;
}

void addRange(PropertyObject& folder, const char* name, double count)
{
    auto& range = add<RangeVar>(folder, name);
    check(range.SetStart(BVariant(0.5)));
    check(range.SetCount(BVariant(count)));
    check(range.SetUnits(parseUnits("km")));
}

void addAxes(PropertyObject& root)
{
    check(addValues(root, "lost", {1, 2}).AddIndepVariableRef(&addValues(root, "gone", {1, 2})));
    check(root.DeleteProperty(QStringLiteral("gone")));
    check(addValues(root, "long", {1, 2}).AddIndepVariableRef(&addValues(root, "short", {1})));
    auto& own = addValues(root, "own", {3, 4});
    check(own.AddIndepVariableRef(&own));
    auto& beside = addValues(root, "beside", {5, 6});
    check(beside.AddIndepVariableRef(&own));
    check(own.SetUnits(parseUnits("degC")));
    auto& many = addValues(root, "many", {7, 8});
    for (int i = 0; i < 1000; ++i)
        check(many.AddIndepVariableRef(&own));
    check(addValues(root, "folderless", {1, 2}).SetProperty(Variable::sIndependentVars(), 5));
}

void addUnits(PropertyObject& root)
{
    check(addValues(root, "unit-is-a-value", {1, 2}).SetProperty(Variable::sUnitsPropertyName(), 5));
    auto& hollow = addValues(root, "unit-is-hollow", {1, 2});
    check(hollow.SetUnits(Units()));
    auto& strange = addValues(root, "unit-is-strange", {1, 2});
    check(strange.SetUnits(Units(UnitType::length, QStringLiteral("\x1b[31m\n"), 0.0, 1e308, -1e-300)));
}

void addFunctions(PropertyObject& root)
{
    auto& y = addValues(root, "y", {1, 2, 6});
    static_cast<void>(addFunction(root, y, parseFunction("moving-average:2")).GetData());
    auto& broken = addFunction(root, y, parseFunction("moving-average:2"));
    check(broken.SetName(QStringLiteral("broken")));
    static_cast<void>(broken.GetData()); // an old result
    check(static_cast<FunctionVar&>(broken).GetFunction()->SetParameters({BVariant(0)}));
    auto& unknown = add<FunctionVar>(root, "unknown");
    unknown.UpdateData(BVariant(Doubles{7, 8}));
    check(unknown.SetFunction(std::make_unique<Function>(QStringLiteral("of-another-host")).release()));
    auto& orphan = add<FunctionVar>(root, "orphan");
    check(orphan.AddArgumentRef(&addValues(root, "parent", {1})));
    check(orphan.SetFunction(std::make_unique<Function>(QStringLiteral("magnitude")).release()));
    check(root.DeleteProperty(QStringLiteral("parent")));
    auto& circle = add<FunctionVar>(root, "circle");
    check(circle.AddArgumentRef(&circle));
    check(circle.SetFunction(std::make_unique<Function>(QStringLiteral("magnitude")).release()));
}

void addComputed(PropertyObject& root)
{
    addRange(root, "huge", 1e11);
    addRange(root, "largest", 1e19);
    check(add<RangeVar>(root, "startless").SetCount(BVariant(5)));
    auto& function = add<FunctionVar>(root, "of-huge");
    check(function.AddArgumentRef(root.GetPtr<Variable>(QStringLiteral("huge"))));
    check(function.SetFunction(std::make_unique<Function>(QStringLiteral("magnitude")).release()));
    auto& axis = addValues(root, "over-huge", {1, 2});
    check(axis.AddIndepVariableRef(root.GetPtr<Variable>(QStringLiteral("huge"))));
    check(root.GetPtr<Variable>(QStringLiteral("huge"))
              ->AddIndepVariableRef(root.GetPtr<Variable>(QStringLiteral("huge"))));
    auto& itself = add<ConcatVar>(root, "itself");
    check(itself.AddVariable(&itself));
    auto& joined = add<ConcatVar>(root, "joined");
    check(joined.AddVariable(root.GetPtr<Variable>(QStringLiteral("huge"))));
    check(joined.AddVariable(root.GetPtr<Variable>(QStringLiteral("y"))));
}

ParameterizedResultData& addSweep(PropertyObject& root, const char* name, std::vector<const char*> members)
{
    auto& sweep = add<ParameterizedResultData>(root, name);
    check(sweep.SetParameterRef(root.GetPtr<Variable>(QStringLiteral("pair"))));
    for (const char* const member : members)
        check(sweep.AddResultDataRef(root.GetPtr<ResultData>(QString::fromUtf8(member))));
    return sweep;
}

void addSweeps(PropertyObject& root)
{
    addValues(root, "pair", {10, 20});
    addValues(root, "one", {10});
    for (const char* const name : {"run0", "run1"}) {
        auto& run = add<ResultData>(root, name);
        auto& t = addValues(run, "t", {0, 1, 2});
        check(addValues(run, "v", {5, 6, 7}).AddIndepVariableRef(&t));
        add<ExplicitDataVar>(run, "matrix").UpdateData(BVariant(Doubles(6), {2, 3}));
        add<ExplicitDataVar>(run, "words").UpdateData(BVariant(std::vector<std::string>{"a", "b"}));
        for (const char* const taken : {"0", "Parameter", "v_Indeps"})
            addValues(run, taken, {1, 2});
        addRange(run, "huge-in-run", 1e11);
    }
    addSweep(root, "sweep", {"run0", "run1"});
    addValues(root, "outer", {1, 2});
    check(addSweep(root, "nested-sweep", {"sweep", "sweep"})
              .SetParameterRef(root.GetPtr<Variable>(QStringLiteral("outer"))));
    addSweep(root, "bare-sweep", {"run0"}).DeleteProperty(ParameterizedResultData::ParameterVar);
    check(addSweep(root, "short-sweep", {"run0", "run1"})
              .SetParameterRef(root.GetPtr<Variable>(QStringLiteral("one"))));
    auto& circle = addSweep(root, "circle-sweep", {"run0"});
    check(circle.AddResultDataRef(&circle));
    addSweep(root, "empty-sweep", {});
}

void write(const QString& path)
{
    std::shared_ptr<DataFile> file;
    QString why;
    if (DataFileFactory::Instance().Open(path, DataFile::Create, &file, &why) < 0)
        throw std::runtime_error(why.toStdString());
    PropertyObject& root = *file->GetRoot();
    addAxes(root);
    addUnits(root);
    addFunctions(root);
    addComputed(root);
    addSweeps(root);
    if (file->Save(&why) < 0)
        throw std::runtime_error(why.toStdString());
}

} // namespace

int main(int argc, char** argv)
{
    try {
        registerMeasurements();
        write(QString::fromLocal8Bit(argc > 1 ? argv[1] : ""));
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
