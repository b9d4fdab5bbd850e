#include "foundations/storage/Hdf5FileWriter_p.h"

#include "foundations/storage/Hdf5CatalogueIo_p.h"
#include "foundations/storage/Hdf5Folders_p.h"
#include "foundations/storage/Hdf5WriteDriver_p.h"
#include "foundations/storage/NameCodec_p.h"
#include "foundations/storage/StorageError_p.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace Orrery {

namespace {

[[noreturn]] void CannotWrite()
{
    throw StorageError(QStringLiteral("can't be written: ") + Hdf5Session::LastError());
}

void ThrowOnWriteError(const Hdf5WriteDriver& driver)
{
    if (driver.Error() != 0)
        throw StorageError(QStringLiteral("can't be written: ") +
                           QString::fromLocal8Bit(std::strerror(driver.Error())));
}

// The headers of many objects come in pieces of the file of their own, so that the elements between them lie together.
// A small tree needs no large piece.
hsize_t HeaderBlock(std::size_t arrays)
{
    constexpr hsize_t least = 2048;
    constexpr hsize_t most = hsize_t(1) << 20U;
    constexpr hsize_t perArray = 512;
    return std::min(std::max<hsize_t>(arrays / 8 * perArray, least), most);
}

Hdf5Handle FileAccess(Hdf5WriteDriver* driver, std::size_t arrays)
{
    Hdf5Handle access(H5Pcreate(H5P_FILE_ACCESS), &H5Pclose);
    H5Pset_fclose_degree(access.Id(), H5F_CLOSE_STRONG);
    // The format of 1.8 is read by older tools too, and a file of it is never left marked as open for writing.
    H5Pset_libver_bounds(access.Id(), H5F_LIBVER_V18, H5F_LIBVER_V18);
    H5Pset_meta_block_size(access.Id(), HeaderBlock(arrays));
    if (!driver->Use(access.Id()))
        CannotWrite();
    return access;
}

Hdf5Handle CreateFile(const Hdf5Handle& access)
{
    const Hdf5Handle creation(H5Pcreate(H5P_FILE_CREATE), &H5Pclose);
    H5Pset_obj_track_times(creation.Id(), false); // the same tree gives the same bytes
    Hdf5Handle file(H5Fcreate("replacement", H5F_ACC_TRUNC, creation.Id(), access.Id()), &H5Fclose);
    if (!file.IsValid())
        CannotWrite();
    return file;
}

std::uint64_t RowBytes(const Catalogue& catalogue)
{
    return catalogue.rows.size() * sizeof(CatalogueFormat::Row);
}

} // namespace

Hdf5FileWriter::Hdf5FileWriter(TreeWriter* tree, const SaveOptions& options)
    : m_tree(tree)
    , m_options(options)
{
    m_arrays.reserve(tree->arrays.size());
    for (TreeWriter::PendingArray& pending : tree->arrays) {
        Array array{pending.row, Hdf5ArrayWriter::Source(pending.value), false, {}};
        array.isPooled = Hdf5ArrayWriter::IsPooled(array.source, options);
        if (!array.isPooled) {
            m_datasets.insert(pending.node, pending.row);
            ArrayAttributes::Ask(*pending.node, &array.attributes);
        }
        m_arrays.push_back(std::move(array));
    }
    tree->arrays.clear();
}

void Hdf5FileWriter::Write(int descriptor, const QByteArray& uid, const DataFile::SaveProgress& progress)
{
    std::uint64_t total = RowBytes(m_tree->catalogue);
    for (const Array& array : m_arrays)
        total += array.source.Weight();
    SaveMeter meter(progress, total);

    Hdf5WriteDriver driver(descriptor);
    const Hdf5Handle access = FileAccess(&driver, m_arrays.size());
    Hdf5Handle file = CreateFile(access);
    try {
        WriteArrays(file.Id(), &driver, &meter);
        Hdf5CatalogueIo::Write(file.Id(), m_tree->catalogue, uid, m_options);
        meter.Finish();
    } catch (...) {
        driver.GiveUp(); // closing the file would write what nobody needs
        throw;
    }
    if (!file.Close())
        CannotWrite();
    ThrowOnWriteError(driver);
}

void Hdf5FileWriter::WriteArrays(hid_t file, Hdf5WriteDriver* driver, SaveMeter* meter)
{
    Catalogue& catalogue = m_tree->catalogue;
    Hdf5Folders folders(file, catalogue, Hdf5Folders::MakeGroups);
    Hdf5ArrayWriter writer(file, driver, m_options, meter);
    Hdf5AttributeWriter attributes;
    std::uint64_t pool = 0;
    for (const Array& array : m_arrays)
        pool += array.isPooled ? array.source.Weight() : 0;
    if (pool != 0)
        writer.MakePool(pool);
    for (const Array& array : m_arrays) {
        CatalogueFormat::Row& row = catalogue.rows[array.row];
        try {
            if (array.isPooled) {
                catalogue.SetArray(&row, writer.WritePooled(array.source));
            } else {
                const hid_t group = folders.Of(row.parent);
                const QByteArray link = LinkName(catalogue.Name(row), row.parent == 0);
                Hdf5Handle dataset;
                catalogue.SetArray(&row, writer.Write(group, link, array.source, &dataset));
                if (dataset.IsValid())
                    WriteAttributes(dataset.Id(), array.attributes, &attributes);
                if (!dataset.Close())
                    CannotWrite();
            }
        } catch (const StorageError& error) {
            throw StorageError(catalogue.Path(array.row) + QStringLiteral(": ") + error.Text(), error.Code());
        }
        ThrowOnWriteError(*driver);
    }
    writer.FlushPool();
    ThrowOnWriteError(*driver);
}

void Hdf5FileWriter::WriteAttributes(hid_t dataset, const ArrayAttributes& attributes,
                                     Hdf5AttributeWriter* writer)
{
    for (const ArrayAttributes::Attribute& attribute : attributes.m_attributes) {
        const QByteArray name = attribute.name.toUtf8();
        if (attribute.arrays.empty()) {
            writer->Write(dataset, name, attribute.text.toUtf8());
            continue;
        }
        QByteArrayList paths;
        for (const SimpleProperty* const array : attribute.arrays)
            paths.append(DatasetPath(array));
        writer->Write(dataset, name, paths);
    }
}

QByteArray Hdf5FileWriter::DatasetPath(const SimpleProperty* array)
{
    const auto dataset = m_datasets.constFind(array);
    if (dataset == m_datasets.constEnd())
        return QByteArray();
    QByteArray& path = m_paths[array];
    if (path.isEmpty()) {
        const Catalogue& catalogue = m_tree->catalogue;
        for (std::size_t at = *dataset; at != 0; at = catalogue.rows[at].parent) {
            const CatalogueFormat::Row& row = catalogue.rows[at];
            path.prepend('/' + LinkName(catalogue.Name(row), row.parent == 0));
        }
    }
    return path;
}

} // namespace Orrery
