#include "tests/fuzz/CatalogueMutator.h"

#include <hdf5.h>
#include <xxhash.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace Orrery {

namespace {

using Bytes = std::vector<std::uint8_t>;
using Random = std::minstd_rand;

constexpr std::size_t s_rowSize = 56;
constexpr std::size_t s_largest = 1U << 20U;

// Where the fields of a row begin, and how long they are; see docs/file-format.md.
struct Field
{
    std::size_t offset;
    std::size_t size;
};
constexpr Field s_fields[] = {{0, 4},  {4, 4},  {8, 8},  {16, 8}, {24, 4}, {28, 4}, {32, 1},
                              {33, 1}, {34, 2}, {36, 1}, {37, 1}, {40, 8}, {48, 8}};

constexpr std::uint64_t s_words[] = {
    0,          1,         2,          3,          4,          5,          7,          8,     16,
    63,         64,        255,        256,        1023,       1024,       65535,      65536, 0x7FFFFFFF,
    0x80000000, 1U << 22U, 0xFFFFFFFF, 1ULL << 33, 1ULL << 40, 1ULL << 61, 1ULL << 63, ~0ULL};

std::uint64_t AnyWord(Random& random)
{
    return s_words[random() % std::size(s_words)];
}

void Put(Bytes& bytes, std::size_t at, std::uint64_t value, std::size_t size)
{
    std::memcpy(&bytes[at], &value, size);
}

void MutateRow(Bytes& rows, Random& random)
{
    const std::size_t row = random() % (rows.size() / s_rowSize) * s_rowSize;
    const Field& field = s_fields[random() % std::size(s_fields)];
    std::uint64_t value = 0;
    std::memcpy(&value, &rows[row + field.offset], field.size);
    switch (random() % 4) {
    case 0: { // what another row has there
        const std::size_t other = random() % (rows.size() / s_rowSize) * s_rowSize;
        std::memcpy(&value, &rows[other + field.offset], field.size);
        break;
    }
    case 1:
        value = AnyWord(random);
        break;
    case 2:
        value += random() % 2 == 0 ? 1 : ~0ULL;
        break;
    default:
        value ^= 1ULL << random() % (8 * field.size);
        break;
    }
    Put(rows, row + field.offset, value, field.size);
}

void CopyRow(Bytes& rows, Random& random)
{
    const std::size_t count = rows.size() / s_rowSize;
    const auto from = rows.begin() + static_cast<std::ptrdiff_t>(random() % count * s_rowSize);
    const Bytes row(from, from + s_rowSize);
    std::copy(row.begin(), row.end(),
              rows.begin() + static_cast<std::ptrdiff_t>(random() % count * s_rowSize));
}

// The records that rows point to begin anywhere, so the words to change are those counted from a row's own.
void MutateHeap(const Bytes& rows, Bytes& heap, Random& random)
{
    if (heap.empty())
        return;
    if (random() % 3 == 0) {
        LLVMFuzzerMutate(heap.data(), heap.size(), heap.size());
        return;
    }
    const std::size_t row = random() % (rows.size() / s_rowSize) * s_rowSize;
    std::uint64_t start = 0;
    std::memcpy(&start, &rows[row + 40], sizeof start);
    start += random() % 12 * sizeof start;
    if (start > heap.size() || heap.size() - start < sizeof start)
        return;
    std::uint64_t word = 0;
    std::memcpy(&word, &heap[start], sizeof word);
    word = random() % 2 == 0 ? AnyWord(random) : word + (random() % 2 == 0 ? 1 : ~0ULL);
    Put(heap, start, word, sizeof word);
}

struct Visit
{
    std::vector<std::string> datasets;
};

herr_t KeepDataset(hid_t /*object*/, const char* name, const H5O_info_t* info, void* visit)
{
    if (info->type == H5O_TYPE_DATASET && std::strncmp(name, "catalogue", 9) != 0)
        static_cast<Visit*>(visit)->datasets.emplace_back(name);
    return 0;
}

// Other bytes in an array, and their checksum in place of the former one, wherever the heap has that.
void MutateArray(hid_t file, Bytes& heap, Random& random)
{
    Visit visit;
    H5Ovisit2(file, H5_INDEX_NAME, H5_ITER_NATIVE, &KeepDataset, &visit, H5O_INFO_BASIC);
    if (visit.datasets.empty())
        return;
    const std::string& name = visit.datasets[random() % visit.datasets.size()];
    const hid_t dataset = H5Dopen2(file, name.c_str(), H5P_DEFAULT);
    const hid_t type = H5Dget_type(dataset);
    const hid_t creation = H5Dget_create_plist(dataset);
    const hsize_t size = H5Dget_storage_size(dataset);
    if (H5Pget_layout(creation) == H5D_CONTIGUOUS && H5Pget_external_count(creation) == 0 && size > 0 &&
        size < s_largest && H5Tis_variable_str(type) <= 0 && H5Tdetect_class(type, H5T_VLEN) <= 0) {
        Bytes bytes(size);
        if (H5Dread(dataset, type, H5S_ALL, H5S_ALL, H5P_DEFAULT, bytes.data()) >= 0) {
            const std::uint64_t former = XXH3_64bits(bytes.data(), size);
            LLVMFuzzerMutate(bytes.data(), size, size);
            const std::uint64_t now = XXH3_64bits(bytes.data(), size);
            H5Dwrite(dataset, type, H5S_ALL, H5S_ALL, H5P_DEFAULT, bytes.data());
            for (std::size_t at = 0; at + sizeof former <= heap.size(); ++at) {
                if (std::memcmp(&heap[at], &former, sizeof former) == 0)
                    Put(heap, at, now, sizeof now);
            }
        }
    }
    H5Pclose(creation);
    H5Tclose(type);
    H5Dclose(dataset);
}

/// The two datasets of the catalogue, as long as they stand in an open file.
class OpenCatalogue
{
public:
    explicit OpenCatalogue(hid_t file)
        : m_rows(H5Dopen2(file, "catalogue", H5P_DEFAULT))
        , m_heap(H5Dopen2(file, "catalogue-heap", H5P_DEFAULT))
    {
    }
    ~OpenCatalogue()
    {
        H5Dclose(m_rows);
        H5Dclose(m_heap);
    }
    OpenCatalogue(const OpenCatalogue&) = delete;
    OpenCatalogue& operator=(const OpenCatalogue&) = delete;

    bool Read()
    {
        return m_rows >= 0 && m_heap >= 0 && Transfer(m_rows, &rows, true) && Transfer(m_heap, &heap, true) &&
               !rows.empty() && rows.size() % s_rowSize == 0;
    }

    bool Write()
    {
        char uid[36] = {};
        std::uint32_t version = 0;
        if (!Attribute("uid", uid, sizeof uid, false) ||
            !Attribute("version", &version, sizeof version, false) || !Transfer(m_rows, &rows, false) ||
            !Transfer(m_heap, &heap, false))
            return false;
        XXH3_state_t* const state = XXH3_createState();
        XXH3_64bits_reset(state);
        XXH3_64bits_update(state, &version, sizeof version);
        XXH3_64bits_update(state, uid, sizeof uid);
        XXH3_64bits_update(state, rows.data(), rows.size());
        XXH3_64bits_update(state, heap.data(), heap.size());
        std::uint64_t checksum = XXH3_64bits_digest(state);
        XXH3_freeState(state);
        return Attribute("checksum", &checksum, sizeof checksum, true);
    }

    Bytes rows;
    Bytes heap;

private:
    static bool Transfer(hid_t dataset, Bytes* bytes, bool isRead)
    {
        const hid_t type = H5Dget_type(dataset);
        const hsize_t size = H5Dget_storage_size(dataset);
        const hid_t space = H5Dget_space(dataset);
        const auto count = static_cast<hsize_t>(H5Sget_simple_extent_npoints(space));
        H5Sclose(space);
        bool isDone = size < s_largest && count < s_largest && count * H5Tget_size(type) == size;
        if (isDone && isRead) {
            bytes->resize(size);
            isDone = size == 0 || H5Dread(dataset, type, H5S_ALL, H5S_ALL, H5P_DEFAULT, bytes->data()) >= 0;
        } else if (isDone) {
            isDone = bytes->size() == size && (size == 0 || H5Dwrite(dataset, type, H5S_ALL, H5S_ALL,
                                                                     H5P_DEFAULT, bytes->data()) >= 0);
        }
        H5Tclose(type);
        return isDone;
    }

    bool Attribute(const char* name, void* value, std::size_t size, bool isWrite) const
    {
        const hid_t attribute = H5Aopen(m_rows, name, H5P_DEFAULT);
        if (attribute < 0)
            return false;
        const hid_t type = H5Aget_type(attribute);
        const bool isDone =
            H5Aget_storage_size(attribute) == size && H5Tget_size(type) == size &&
            (isWrite ? H5Awrite(attribute, type, value) : H5Aread(attribute, type, value)) >= 0;
        H5Tclose(type);
        H5Aclose(attribute);
        return isDone;
    }

    hid_t m_rows;
    hid_t m_heap;
};

bool Mutate(hid_t file, Random& random)
{
    OpenCatalogue catalogue(file);
    if (!catalogue.Read())
        return false;
    const auto rounds = 1 + random() % 3;
    for (std::uint32_t round = 0; round < rounds; ++round) {
        switch (random() % 8) {
        case 0:
            CopyRow(catalogue.rows, random);
            break;
        case 1:
        case 2:
            MutateArray(file, catalogue.heap, random);
            break;
        case 3:
        case 4:
            MutateHeap(catalogue.rows, catalogue.heap, random);
            break;
        default:
            MutateRow(catalogue.rows, random);
            break;
        }
    }
    return catalogue.Write();
}

} // namespace

bool MutateCatalogue(const std::string& path, std::uint32_t seed)
{
    Random random(seed);
    H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
    const hid_t access = H5Pcreate(H5P_FILE_ACCESS);
    H5Pset_fclose_degree(access, H5F_CLOSE_STRONG);
    const hid_t file = H5Fopen(path.c_str(), H5F_ACC_RDWR, access);
    H5Pclose(access);
    if (file < 0)
        return false;
    const bool isDone = Mutate(file, random);
    return H5Fclose(file) >= 0 && isDone;
}

} // namespace Orrery
