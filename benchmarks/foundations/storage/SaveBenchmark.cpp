// Saves beside what others need for the same bytes: compare the rows of one group.
//
// Variables: 10,000 of 1,000 doubles with units and one axis. The bare HDF5 library, in C, and h5py write the same
// datasets under the same paths with the same attributes type, units and axes. Limits: twice the one, a quarter of the other.
// Packed: the same variables in the pool, beside fwrite of the same bytes. Limit: 3.
// Array: one of 800 MB beside a plain write. Limit: 1.1, and a peak of memory of 1.1 times the array.
// Everybody ends as a safe save does: the file is synced, renamed, and its folder is synced.
#include "benchmarks/foundations/storage/BenchmarkFiles.h"
#include "benchmarks/foundations/storage/ProcessMemory.h"
#include "units/Units.h"
#include "variables/Variable.h"

#include <benchmark/benchmark.h>

#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <hdf5.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Orrery;
using namespace Orrery::StorageBenchmark;
using Brindle::Quay::BVariant;

constexpr int s_variables = 10'000;
constexpr std::size_t s_elements = 1000;
constexpr std::size_t s_largeElements = 100'000'000; // 800 MB

Variable* AddVariable(PropertyObject& root, const QString& name, const QString& units, double first)
{
    auto variable = std::make_unique<Variable>(name, BVariant(std::vector<double>(s_elements, first)));
    if (variable->SetUnits(Units::FromSIString(units)) < 0 || root.InsertProperty(variable.get()) < 0)
        throw std::runtime_error("a variable can't be put in");
    return variable.release();
}

std::shared_ptr<DataFile> MakeVariables(const QString& path)
{
    auto file = Open(path, DataFile::Create);
    PropertyObject& root = *file->GetRoot();
    const Variable* const axis = AddVariable(root, QStringLiteral("Time"), QStringLiteral("s"), 0.0);
    for (int i = 0; i < s_variables; ++i) {
        Variable* const variable = AddVariable(root, QStringLiteral("V%1").arg(i), QStringLiteral("m/s"), i);
        if (variable->AddIndepVariableRef(axis) < 0)
            throw std::runtime_error("an axis can't be set");
    }
    return file;
}

void SaveVariables(benchmark::State& state, bool packed)
{
    const Folder folder;
    const auto file = MakeVariables(folder.Path(QStringLiteral("variables.h5")));
    file->SetPacked(packed);
    Save(*file);
    for (auto _ : state)
        Save(*file);
    state.counters["file_MB"] = static_cast<double>(QFileInfo(file->GetPath()).size()) / 1e6;
}

hid_t Checked(hid_t id)
{
    if (id < 0)
        throw std::runtime_error("HDF5 fails");
    return id;
}

hid_t TextType(std::size_t length)
{
    const hid_t type = Checked(H5Tcopy(H5T_C_S1));
    H5Tset_size(type, length);
    H5Tset_strpad(type, H5T_STR_NULLPAD);
    H5Tset_cset(type, H5T_CSET_UTF8);
    return type;
}

void WriteAttribute(hid_t object, const char* name, hid_t type, hid_t space, const char* text)
{
    const hid_t attribute = Checked(H5Acreate2(object, name, type, space, H5P_DEFAULT, H5P_DEFAULT));
    Checked(H5Awrite(attribute, type, text));
    H5Aclose(attribute);
}

void RawWrite(const Folder& folder, const std::vector<std::vector<double>>& arrays)
{
    const QString beside = folder.Path(QStringLiteral("new.h5"));
    const hid_t access = Checked(H5Pcreate(H5P_FILE_ACCESS));
    H5Pset_libver_bounds(access, H5F_LIBVER_V18, H5F_LIBVER_V18);
    const hid_t creation = Checked(H5Pcreate(H5P_DATASET_CREATE));
    H5Pset_layout(creation, H5D_CONTIGUOUS);
    H5Pset_fill_time(creation, H5D_FILL_TIME_NEVER);
    H5Pset_obj_track_times(creation, false);
    const hsize_t size = s_elements;
    const hsize_t one = 1;
    const hid_t space = Checked(H5Screate_simple(1, &size, nullptr));
    const hid_t scalar = Checked(H5Screate(H5S_SCALAR));
    const hid_t list = Checked(H5Screate_simple(1, &one, nullptr));
    const hid_t classType = TextType(8);
    const hid_t unitsType = TextType(3);
    const hid_t pathType = TextType(10);
    const hid_t file =
        Checked(H5Fcreate(QFile::encodeName(beside).constData(), H5F_ACC_TRUNC, H5P_DEFAULT, access));
    int number = 0;
    for (const std::vector<double>& array : arrays) {
        const std::string name = number == 0 ? "Time" : "V" + std::to_string(number - 1);
        const hid_t group = Checked(H5Gcreate2(file, name.c_str(), H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT));
        const hid_t dataset =
            Checked(H5Dcreate2(group, "Data", H5T_IEEE_F64LE, space, H5P_DEFAULT, creation, H5P_DEFAULT));
        Checked(H5Dwrite(dataset, H5T_NATIVE_DOUBLE, H5S_ALL, H5S_ALL, H5P_DEFAULT, array.data()));
        WriteAttribute(dataset, "type", classType, scalar, "Variable");
        WriteAttribute(dataset, "units", unitsType, scalar, "m/s");
        WriteAttribute(dataset, "axes", pathType, list, "/Time/Data");
        H5Dclose(dataset);
        H5Gclose(group);
        ++number;
    }
    H5Fclose(file);
    for (const hid_t type : {classType, unitsType, pathType})
        H5Tclose(type);
    for (const hid_t used : {space, scalar, list})
        H5Sclose(used);
    H5Pclose(creation);
    H5Pclose(access);
    SyncAndRename(beside, folder.Path(QStringLiteral("variables.h5")));
}

std::vector<std::vector<double>> Arrays()
{
    std::vector<std::vector<double>> arrays;
    for (int i = 0; i <= s_variables; ++i)
        arrays.emplace_back(s_elements, i);
    return arrays;
}

void RawHdf5(benchmark::State& state)
{
    const Folder folder;
    const auto arrays = Arrays();
    RawWrite(folder, arrays);
    for (auto _ : state)
        RawWrite(folder, arrays);
    state.counters["file_MB"] =
        static_cast<double>(QFileInfo(folder.Path(QStringLiteral("variables.h5"))).size()) / 1e6;
}

// A process of its own, which prints the seconds that it needs without its start.
void H5py(benchmark::State& state)
{
    static const char* const script = "import h5py, numpy, os, sys, time\n"
                                      "arrays = [numpy.full(1000, float(i)) for i in range(10001)]\n"
                                      "begin = time.perf_counter()\n"
                                      "with h5py.File(sys.argv[1] + '.new', 'w') as file:\n"
                                      "    for i, array in enumerate(arrays):\n"
                                      "        name = f'V{i - 1}/Data' if i else 'Time/Data'\n"
                                      "        data = file.create_dataset(name, data=array)\n"
                                      "        data.attrs['type'] = numpy.bytes_('Variable')\n"
                                      "        data.attrs['units'] = numpy.bytes_('m/s')\n"
                                      "        data.attrs['axes'] = numpy.array([b'/Time/Data'])\n"
                                      "with open(sys.argv[1] + '.new', 'rb') as file:\n"
                                      "    os.fsync(file.fileno())\n"
                                      "os.rename(sys.argv[1] + '.new', sys.argv[1])\n"
                                      "print(time.perf_counter() - begin)\n";
    const Folder folder;
    for (auto _ : state) {
        QProcess peer;
        peer.start(QStringLiteral("/usr/bin/python3"), {QStringLiteral("-c"), QString::fromLatin1(script),
                                                        folder.Path(QStringLiteral("h5py.h5"))});
        bool isNumber = false;
        double seconds = 0.0;
        if (peer.waitForFinished(-1))
            seconds = QString::fromLatin1(peer.readAllStandardOutput()).trimmed().toDouble(&isNumber);
        if (!isNumber)
            state.SkipWithError("h5py can't be run");
        state.SetIterationTime(seconds);
    }
}

void Fwrite(benchmark::State& state)
{
    const Folder folder;
    const auto arrays = Arrays();
    const QString beside = folder.Path(QStringLiteral("new"));
    const auto write = [&] {
        std::FILE* const file = std::fopen(QFile::encodeName(beside).constData(), "wb");
        for (const std::vector<double>& array : arrays) {
            if (std::fwrite(array.data(), sizeof(double), array.size(), file) != array.size())
                throw std::runtime_error("can't write");
        }
        std::fclose(file);
        SyncAndRename(beside, folder.Path(QStringLiteral("bytes")));
    };
    write();
    for (auto _ : state)
        write();
}

void SaveArray(benchmark::State& state)
{
    const Folder folder;
    const auto file = Open(folder.Path(QStringLiteral("array.h5")), DataFile::Create);
    AddValue(*file->GetRoot(), QStringLiteral("Data"), BVariant(std::vector<double>(s_largeElements, 1.5)));
    Save(*file);
    ForgetPeak();
    for (auto _ : state)
        Save(*file);
    state.counters["peak_ratio"] =
        static_cast<double>(PeakBytes()) / static_cast<double>(s_largeElements * sizeof(double));
}

// Nothing of it passes through this process; the peak is that of the program itself.
void SaveUnreadArray(benchmark::State& state)
{
    const Folder folder;
    const QString path = folder.Path(QStringLiteral("array.h5"));
    {
        const auto file = Open(path, DataFile::Create);
        AddValue(*file->GetRoot(), QStringLiteral("Data"),
                 BVariant(std::vector<double>(s_largeElements, 1.5)));
        Save(*file);
    }
    const auto file = Open(path, DataFile::ReadWrite);
    ForgetPeak();
    for (auto _ : state)
        Save(*file);
    state.counters["peak_ratio"] =
        static_cast<double>(PeakBytes()) / static_cast<double>(s_largeElements * sizeof(double));
}

void PlainWrite(benchmark::State& state)
{
    const Folder folder;
    const std::vector<double> numbers(s_largeElements, 1.5);
    const auto save = [&] {
        PlainSave(folder.Path(QStringLiteral("new")), folder.Path(QStringLiteral("array")), numbers.data(),
                  numbers.size() * sizeof(double));
    };
    save();
    for (auto _ : state)
        save();
}

void InMilliseconds(benchmark::internal::Benchmark* benchmark)
{
    benchmark->UseRealTime()->Unit(benchmark::kMillisecond)->Iterations(5);
}

BENCHMARK_CAPTURE(SaveVariables, variables, /*packed=*/false)->Apply(InMilliseconds);
BENCHMARK(RawHdf5)->Apply(InMilliseconds);
BENCHMARK(H5py)->UseManualTime()->Iterations(2)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SaveVariables, packed, /*packed=*/true)->Apply(InMilliseconds);
BENCHMARK(Fwrite)->Apply(InMilliseconds);
BENCHMARK(SaveArray)->Apply(InMilliseconds);
BENCHMARK(PlainWrite)->Apply(InMilliseconds);
BENCHMARK(SaveUnreadArray)->Apply(InMilliseconds);

} // namespace
