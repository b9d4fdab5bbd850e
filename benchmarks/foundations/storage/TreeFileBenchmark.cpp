// Many folders with an array each: save and open beside the HDF5 library writing and reading the same datasets.
//
// The peer does what a careful program would do by hand: the same format, contiguous datasets without times or fill,
// one group and one dataset for each folder, an attribute for each text; then it syncs and renames.
#include "benchmarks/foundations/storage/BenchmarkFiles.h"

#include <benchmark/benchmark.h>

#include <QFile>

#include <hdf5.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Orrery;
using namespace Orrery::StorageBenchmark;
using Brindle::Quay::BVariant;

constexpr std::size_t s_elements = 1000;

std::vector<double> NumbersOf(std::int64_t folder)
{
    return std::vector<double>(s_elements, static_cast<double>(folder));
}

void Build(PropertyObject& root, std::int64_t folders)
{
    for (std::int64_t i = 0; i < folders; ++i) {
        auto* const folder = new PropertyObject(QStringLiteral("V%1").arg(i));
        if (root.InsertProperty(folder) < 0)
            throw std::runtime_error("a folder can't be inserted");
        AddValue(*folder, QStringLiteral("Data"), BVariant(NumbersOf(i)));
        AddValue(*folder, QStringLiteral("Strategy"), BVariant(std::string("explicit")));
        AddValue(*folder, QStringLiteral("Unit"), BVariant(std::string("kg*m^2/(A*s^3)")));
        AddValue(*folder, QStringLiteral("Scale"), BVariant(1.0));
    }
}

hid_t Checked(hid_t id)
{
    if (id < 0)
        throw std::runtime_error("HDF5 fails");
    return id;
}

void WriteTextAttribute(hid_t object, const char* name, const std::string& text)
{
    const hid_t type = Checked(H5Tcopy(H5T_C_S1));
    H5Tset_size(type, text.size());
    const hid_t space = Checked(H5Screate(H5S_SCALAR));
    const hid_t attribute = Checked(H5Acreate2(object, name, type, space, H5P_DEFAULT, H5P_DEFAULT));
    Checked(H5Awrite(attribute, type, text.data()));
    H5Aclose(attribute);
    H5Sclose(space);
    H5Tclose(type);
}

void WriteFolder(hid_t file, std::int64_t number, const std::vector<double>& data, hid_t space,
                 hid_t creation, bool withTexts)
{
    const hid_t group = Checked(
        H5Gcreate2(file, ("V" + std::to_string(number)).c_str(), H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT));
    const hid_t dataset =
        Checked(H5Dcreate2(group, "Data", H5T_IEEE_F64LE, space, H5P_DEFAULT, creation, H5P_DEFAULT));
    Checked(H5Dwrite(dataset, H5T_NATIVE_DOUBLE, H5S_ALL, H5S_ALL, H5P_DEFAULT, data.data()));
    if (withTexts) {
        WriteTextAttribute(dataset, "Strategy", "explicit");
        WriteTextAttribute(dataset, "Unit", "kg*m^2/(A*s^3)");
    }
    H5Dclose(dataset);
    H5Gclose(group);
}

void RawSave(const Folder& folder, const std::vector<std::vector<double>>& arrays, bool withTexts)
{
    const QString beside = folder.Path(QStringLiteral("new.h5"));
    const hid_t access = Checked(H5Pcreate(H5P_FILE_ACCESS));
    H5Pset_libver_bounds(access, H5F_LIBVER_V18, H5F_LIBVER_V18);
    const hid_t creation = Checked(H5Pcreate(H5P_DATASET_CREATE));
    H5Pset_layout(creation, H5D_CONTIGUOUS);
    H5Pset_fill_time(creation, H5D_FILL_TIME_NEVER);
    H5Pset_obj_track_times(creation, false);
    const hsize_t size = s_elements;
    const hid_t space = Checked(H5Screate_simple(1, &size, nullptr));
    const hid_t file =
        Checked(H5Fcreate(QFile::encodeName(beside).constData(), H5F_ACC_TRUNC, H5P_DEFAULT, access));
    std::int64_t number = 0;
    for (const std::vector<double>& array : arrays)
        WriteFolder(file, number++, array, space, creation, withTexts);
    H5Fclose(file);
    H5Sclose(space);
    H5Pclose(creation);
    H5Pclose(access);
    SyncAndRename(beside, folder.Path(QStringLiteral("tree.h5")));
}

std::vector<std::vector<double>> Arrays(std::int64_t folders)
{
    std::vector<std::vector<double>> arrays;
    for (std::int64_t i = 0; i < folders; ++i)
        arrays.push_back(NumbersOf(i));
    return arrays;
}

// Every dataset is opened, asked for its size, and read into memory of its own, which is kept.
std::size_t RawOpen(const QString& path, std::int64_t folders)
{
    const hid_t file = Checked(H5Fopen(QFile::encodeName(path).constData(), H5F_ACC_RDONLY, H5P_DEFAULT));
    std::vector<std::vector<double>> arrays;
    for (std::int64_t i = 0; i < folders; ++i) {
        const hid_t dataset =
            Checked(H5Dopen2(file, ("V" + std::to_string(i) + "/Data").c_str(), H5P_DEFAULT));
        const hid_t space = Checked(H5Dget_space(dataset));
        std::vector<double> array(static_cast<std::size_t>(H5Sget_simple_extent_npoints(space)));
        Checked(H5Dread(dataset, H5T_NATIVE_DOUBLE, H5S_ALL, H5S_ALL, H5P_DEFAULT, array.data()));
        arrays.push_back(std::move(array));
        H5Sclose(space);
        H5Dclose(dataset);
    }
    H5Fclose(file);
    return arrays.size();
}

void Report(benchmark::State& state)
{
    const auto runs = static_cast<std::int64_t>(state.iterations());
    state.SetItemsProcessed(runs * state.range(0));
    state.SetBytesProcessed(runs * state.range(0) * static_cast<std::int64_t>(s_elements * sizeof(double)));
}

void SaveTree(benchmark::State& state)
{
    const Folder folder;
    const auto file = Open(folder.Path(QStringLiteral("tree.h5")), DataFile::Create);
    Build(*file->GetRoot(), state.range(0));
    Save(*file);
    for (auto _ : state)
        Save(*file);
    Report(state);
}

void RawHdf5Write(benchmark::State& state, bool withTexts)
{
    const Folder folder;
    const std::vector<std::vector<double>> arrays = Arrays(state.range(0));
    RawSave(folder, arrays, withTexts);
    for (auto _ : state)
        RawSave(folder, arrays, withTexts);
    Report(state);
}

void OpenTree(benchmark::State& state)
{
    const Folder folder;
    const QString path = folder.Path(QStringLiteral("tree.h5"));
    {
        const auto file = Open(path, DataFile::Create);
        Build(*file->GetRoot(), state.range(0));
        Save(*file);
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(Open(path, DataFile::ReadOnly));
    Report(state);
}

void RawHdf5Read(benchmark::State& state)
{
    const Folder folder;
    RawSave(folder, Arrays(state.range(0)), /*withTexts=*/true);
    for (auto _ : state)
        benchmark::DoNotOptimize(RawOpen(folder.Path(QStringLiteral("tree.h5")), state.range(0)));
    Report(state);
}

void Folders(benchmark::internal::Benchmark* benchmark)
{
    benchmark->ArgName("folders")->Arg(1000)->Arg(10'000)->UseRealTime()->Unit(benchmark::kMillisecond);
}

BENCHMARK(SaveTree)->Apply(Folders);
BENCHMARK_CAPTURE(RawHdf5Write, datasets, /*withTexts=*/false)->Apply(Folders);
BENCHMARK_CAPTURE(RawHdf5Write, datasetsAndTexts, /*withTexts=*/true)->Apply(Folders);
BENCHMARK(OpenTree)->Apply(Folders);
BENCHMARK(RawHdf5Read)->Apply(Folders);

} // namespace
