#include "benchmarks/foundations/storage/BenchmarkFiles.h"

#include "foundations/property/SimpleProperty.h"
#include "foundations/storage/DataFileFactory.h"

#include <benchmark/benchmark.h>

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace Orrery::StorageBenchmark {

namespace {

// One system call takes 2 GiB at the most; this is a usual piece of a copy.
constexpr std::size_t s_piece = 64U * 1024U * 1024U;

class Descriptor
{
public:
    Descriptor(const QString& path, int flags)
        : m_fd(::open(QFile::encodeName(path).constData(), flags, 0600))
    {
        if (m_fd < 0)
            throw std::runtime_error("can't open " + path.toStdString());
    }
    ~Descriptor() { ::close(m_fd); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Fd() const { return m_fd; }

    void Sync() const
    {
        if (::fsync(m_fd) != 0)
            throw std::runtime_error("can't sync");
    }

private:
    int m_fd;
};

} // namespace

std::shared_ptr<DataFile> Open(const QString& path, DataFile::OpenMode mode)
{
    std::shared_ptr<DataFile> file;
    QString why;
    if (DataFileFactory::Instance().Open(path, mode, &file, &why) < 0)
        throw std::runtime_error(why.toStdString());
    return file;
}

void Save(DataFile& file)
{
    QString why;
    if (file.Save(&why) < 0)
        throw std::runtime_error(why.toStdString());
}

void AddValue(PropertyObject& folder, const QString& name, Brindle::Quay::BVariant value)
{
    auto leaf = std::make_unique<SimpleProperty>(name);
    leaf->SetValue(std::move(value), IsCellArrayFalse);
    if (folder.InsertProperty(leaf.get()) < 0)
        throw std::runtime_error("a value can't be inserted");
    leaf.release();
}

void SyncAndRename(const QString& from, const QString& to)
{
    Descriptor(from, O_RDONLY).Sync();
    if (std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) != 0)
        throw std::runtime_error("can't rename");
    Descriptor(QFileInfo(to).path(), O_RDONLY | O_DIRECTORY).Sync();
}

void PlainSave(const QString& from, const QString& to, const void* data, std::size_t bytes)
{
    {
        const Descriptor file(from, O_WRONLY | O_CREAT | O_TRUNC);
        for (std::size_t at = 0; at < bytes; at += s_piece) {
            const std::size_t size = std::min(s_piece, bytes - at);
            if (::write(file.Fd(), static_cast<const char*>(data) + at, size) != static_cast<ssize_t>(size))
                throw std::runtime_error("can't write");
        }
    }
    SyncAndRename(from, to);
}

void PlainLoad(const QString& path, std::size_t bytes)
{
    void* const memory = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::runtime_error("no memory");
    const Descriptor file(path, O_RDONLY);
    for (std::size_t at = 0; at < bytes; at += s_piece) {
        const std::size_t size = std::min(s_piece, bytes - at);
        if (::read(file.Fd(), static_cast<char*>(memory) + at, size) != static_cast<ssize_t>(size))
            throw std::runtime_error("can't read");
    }
    benchmark::DoNotOptimize(memory);
    ::munmap(memory, bytes);
}

} // namespace Orrery::StorageBenchmark
