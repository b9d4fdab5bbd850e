// Writes a data file with values of every kind, for the tests that compare what the program prints with what others read.
//
// usage: orrery_value_files OUT

#include "foundations/property/PropertyReference.h"
#include "foundations/storage/DataFile.h"
#include "foundations/storage/DataFileFactory.h"
#include "foundations/variant/WellKnownType.h"
#include "hosts/orrery/TreeAccess.h"
#include "hosts/orrery/UnitText.h"
#include "variables/ExplicitDataVar.h"
#include "variables/RangeVar.h"

#include <complex>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

using namespace Orrery;
using namespace Orrery::Host;
namespace Quay = Brindle::Quay;

namespace {

template <class V>
V& add(PropertyObject& folder, const QString& name)
{
    auto owned = std::make_unique<V>(name);
    V& node = *owned;
    insertNode(&folder, std::move(owned));
    return node;
}

ExplicitDataVar& addValues(PropertyObject& folder, const char* name, BVariant values)
{
    auto& variable = add<ExplicitDataVar>(folder, QString::fromUtf8(name));
    variable.UpdateData(std::move(values));
    return variable;
}

template <class T>
void addLimits(PropertyObject& root, const char* name)
{
    using Limits = std::numeric_limits<T>;
    addValues(root, name, BVariant(std::vector<T>{Limits::lowest(), T(), T(1), Limits::max()}));
}

void addNumbers(PropertyObject& root)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    addLimits<std::int8_t>(root, "int8");
    addLimits<std::int16_t>(root, "int16");
    addLimits<std::int32_t>(root, "int32");
    addLimits<std::int64_t>(root, "int64");
    addLimits<std::uint8_t>(root, "uint8");
    addLimits<std::uint16_t>(root, "uint16");
    addLimits<std::uint32_t>(root, "uint32");
    addLimits<std::uint64_t>(root, "uint64");
    addLimits<double>(root, "double");
    addValues(root, "bool", BVariant(std::vector<bool>{true, false}));
    addValues(root, "float", BVariant(std::vector<float>{0.1F, 16777216.0F, 1e-45F}));
    addValues(root, "beyond", BVariant(std::vector<std::int64_t>{(std::int64_t(1) << 53) + 1}));
    addValues(root, "special",
              BVariant(std::vector<double>{nan, infinity, -infinity, -0.0, 5e-324, 1e22, 0.1}));
    addValues(root, "complex",
              BVariant(std::vector<std::complex<double>>{{1.5, -2}, {nan, infinity}, {-0.0, 1e-9}}));
    addValues(root, "complex-float", BVariant(std::vector<std::complex<float>>{{0.1F, 2}}));
    addValues(root, "complex-int", BVariant(std::vector<Quay::Complex<std::int16_t>>{{-32768, 32767}}));
    addValues(root, "scalar", BVariant(7.25));
    addValues(root, "none", BVariant(std::vector<double>()));
    addValues(root, "null", BVariant());
}

void addShapes(PropertyObject& root)
{
    std::vector<double> counted;
    for (int i = 0; i < 24; ++i)
        counted.push_back(i);
    addValues(root, "cube", BVariant(counted, {2, 3, 4}));
    addValues(root, "row", BVariant(counted, {1, 24}));
    addValues(root, "column-major", BVariant(counted, {6, 4}).reordered(Quay::DataOrdering::ColumnMajor));
    auto& matrix = addValues(root, "matrix", BVariant(std::vector<double>{1, 2, 3, 4, 5, 6}, {3, 2}));
    if (matrix.AddIndepVariableRef(&addValues(root, "x", BVariant(std::vector<double>{10, 20, 30}))) < 0)
        throw std::runtime_error("no axis");
    matrix.SetUnits(parseUnits("mV"));
}

void addTexts(PropertyObject& root)
{
    using namespace std::string_literals;
    addValues(root, "text",
              BVariant(std::vector<std::string>{"plain \"\\/ \n\t", "nul\0x"s, "\x1b[31m\x7f", "\xc2\x9b 5n",
                                                "µ 𝄞 ü", "\xff\xfe", "\xed\xa0\x80", "\xc0\x80",
                                                "\xf4\x90\x80\x80", "cut \xe2\x82", ""}));
    root.SetProperty(QStringLiteral("single"), QStringLiteral("one"));
    addValues(root, "time", BVariant(std::vector<Quay::Duration>{Quay::Duration{{1, 2}}}));
    addValues(add<PropertyObject>(root, QStringLiteral("a b/c'd")), "q\"$x", BVariant(1.5));
    addValues(root, "half\x01", BVariant(2.5));
    addValues(root, "it's (50%) \"big\" & $HOME", BVariant(3.5));
}

void addReferences(PropertyObject& root)
{
    auto& good = add<PropertyReference>(root, QStringLiteral("good"));
    good.RestorePath(QStringLiteral("../cube"));
    add<PropertyReference>(root, QStringLiteral("dead")).RestorePath(QStringLiteral("../nothing"));
    add<PropertyReference>(root, QStringLiteral("unset"));
    add<PropertyReference>(root, QStringLiteral("far"))
        .RestorePath(QStringLiteral("/x"), QStringLiteral("none.h5"), QStringLiteral("HDF5"));
    auto& hidden = addValues(root, "hidden", BVariant(1.0));
    hidden.SetPropertyFlags(PropertyFlagHidden | PropertyFlagReadOnly | PropertyFlagSerializable);
}

void addLong(PropertyObject& root)
{
    auto& range = add<RangeVar>(root, QStringLiteral("long"));
    if (range.SetStart(BVariant(0.25)) < 0 || range.SetCount(BVariant(3e6)) < 0 ||
        range.SetStep(BVariant(0.5)) < 0)
        throw std::runtime_error("no range");
}

void write(const QString& path)
{
    std::shared_ptr<DataFile> file;
    QString why;
    if (DataFileFactory::Instance().Open(path, DataFile::Create, &file, &why) < 0)
        throw std::runtime_error(why.toStdString());
    PropertyObject& root = *file->GetRoot();
    addNumbers(root);
    addShapes(root);
    addTexts(root);
    addReferences(root);
    addLong(root);
    if (file->Save(&why) < 0)
        throw std::runtime_error(why.toStdString());
}

} // namespace

int main(int argc, char** argv)
{
    try {
        write(QString::fromLocal8Bit(argc > 1 ? argv[1] : ""));
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
