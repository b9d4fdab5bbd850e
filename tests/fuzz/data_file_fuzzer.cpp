// Any bytes in place of a data file are refused with a reason, or give a tree whose arrays can be read or say why not;
// what can be read whole can be saved, and comes back the same.
#include "foundations/property/PropertyObject.h"
#include "foundations/property/PropertyReference.h"
#include "foundations/property/SimpleProperty.h"
#include "foundations/storage/DataFileFactory.h"
#include "foundations/variant/VariantOperations.h"
#include "tests/foundations/storage/CompareTrees.h"
#include "tests/fuzz/CatalogueMutator.h"
#include "tests/fuzz/ScratchFile.h"

#include <QList>
#include <QString>
#include <QtGlobal>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <string>
#include <vector>

using namespace Orrery;

namespace {

void Discard(QtMsgType, const QMessageLogContext&, const QString&) {}

[[noreturn]] void Fail(const std::string& what)
{
    std::fprintf(stderr, "data_file_fuzzer: %s\n", what.c_str());
    std::abort();
}

void ExpectOneLine(const QString& why)
{
    if (why.isEmpty() || why.contains(QLatin1Char('\n')))
        Fail("not one line: '" + why.toStdString() + "'");
}

std::shared_ptr<DataFile> Open(const std::string& path)
{
    std::shared_ptr<DataFile> file;
    QString why;
    if (DataFileFactory::Instance().Open(QString::fromStdString(path), DataFile::ReadOnly, &file, &why) < 0)
        ExpectOneLine(why);
    return file;
}

// A part of an array that nobody has read yet.
bool ReadPart(const BVariant& array)
{
    const std::uint64_t first = array.getDimensions().empty() ? 0 : array.getDimensions()[0];
    if (first == 0)
        return true;
    try {
        sliceRange(array, first / 2, std::min(first / 2 + 2, first - 1));
        return true;
    } catch (const std::exception& error) {
        ExpectOneLine(QString::fromUtf8(error.what()));
        return false;
    }
}

bool ReadWhole(const BVariant& array)
{
    try {
        array.constData();
        return true;
    } catch (const std::exception& error) {
        ExpectOneLine(QString::fromUtf8(error.what()));
        return false;
    }
}

/// Whether everything below can be read, as far as it is saved; the rest is read too.
bool ReadAll(const PropertyObject& folder)
{
    bool isRead = true;
    QList<AbstractProperty*> children;
    folder.GetPropertyList(&children);
    for (const AbstractProperty* const child : qAsConst(children)) {
        if (const auto* const below = dynamic_cast<const PropertyObject*>(child)) {
            isRead = (ReadAll(*below) || !child->IsSerializable()) && isRead;
        } else if (const auto* const simple = dynamic_cast<const SimpleProperty*>(child)) {
            const BVariant value = simple->GetValue();
            if (value.isNull() || value.isScalar())
                continue;
            const bool isPartRead = ReadPart(value);
            const bool isWholeRead = ReadWhole(value);
            if (isWholeRead && !isPartRead)
                Fail("a part can't be read, but the whole can");
            isRead = (isWholeRead || !child->IsSerializable()) && isRead;
        } else if (const auto* const reference = dynamic_cast<const PropertyReference*>(child)) {
            reference->Resolve();
        }
    }
    return isRead;
}

// The path of another file is made absolute and clean as it is saved.
bool LeadsIntoFiles(const PropertyObject& folder)
{
    QList<AbstractProperty*> children;
    folder.GetPropertyList(&children);
    return std::any_of(children.cbegin(), children.cend(), [](const AbstractProperty* child) {
        if (const auto* const below = dynamic_cast<const PropertyObject*>(child))
            return LeadsIntoFiles(*below);
        const auto* const reference = dynamic_cast<const PropertyReference*>(child);
        return reference && !reference->ReferenceFilePath().isEmpty();
    });
}

/// A tree that was saved, and whether all of it could be read.
struct Saved
{
    std::unique_ptr<AbstractProperty> tree; ///< null when it can't be saved
    bool isSound = false;
};

/// Read the tree at `from`, or only open it, save it to `to`, and let go of both files.
Saved SaveAnew(const std::string& from, const std::string& to, bool isReadFirst)
{
    const std::shared_ptr<DataFile> file = Open(from);
    if (!file)
        Fail("opened once, but not again");
    Saved saved;
    saved.isSound = isReadFirst && ReadAll(*file->GetRoot());
    QString why;
    if (file->SaveAs(QString::fromStdString(to), &why) < 0) {
        ExpectOneLine(why);
        if (saved.isSound)
            Fail("can be read, but not saved: " + why.toStdString());
        return saved;
    }
    saved.tree.reset(file->GetRoot()->Clone());
    return saved;
}

// What was damaged is damaged still, and what wasn't is the same.
void ExpectLike(const Saved& saved, const std::string& path)
{
    const std::shared_ptr<DataFile> file = Open(path);
    if (!file)
        Fail("saved, but can't be opened");
    if (ReadAll(*file->GetRoot()) != saved.isSound)
        Fail(saved.isSound ? "saved, but can't be read" : "can be read once it has been saved");
    if (!saved.isSound)
        return;
    const auto& tree = static_cast<const PropertyObject&>(*saved.tree);
    const std::string difference = StorageTest::CompareTrees(tree, *file->GetRoot());
    if (!difference.empty() && !LeadsIntoFiles(tree))
        Fail("another tree: " + difference);
}

// What is saved and read again is what it was, whether it was read before or its bytes are only passed on.
void SaveAndCompare(const std::string& path)
{
    const ScratchFile copy;
    Saved saved = SaveAnew(path, copy.Path(), true);
    if (saved.tree)
        ExpectLike(saved, copy.Path());
    const ScratchFile passedOn;
    const bool isSound = saved.isSound;
    saved = SaveAnew(path, passedOn.Path(), false);
    if (!saved.tree) {
        if (isSound)
            Fail("saved after it was read, but not before");
        return;
    }
    saved.isSound = isSound;
    ExpectLike(saved, passedOn.Path());
}

// A fuzzer whose every input is refused finds nothing, and nobody notices.
bool ExpectThatSoundFilesOpen()
{
    const ScratchFile scratch;
    std::shared_ptr<DataFile> file;
    if (DataFileFactory::Instance().Open(QString::fromStdString(scratch.Path()), DataFile::Create, &file) < 0)
        Fail("no file can be made");
    file->GetRoot()->SetProperty(QStringLiteral("x"), BVariant(std::vector<double>{1, 2, 3}));
    QString why;
    if (file->Save(&why) < 0)
        Fail("no file can be saved: " + why.toStdString());
    file.reset();
    if (!Open(scratch.Path()))
        Fail("no file can be opened");
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QtMessageHandler former = qInstallMessageHandler(&Discard);
    static const bool isReady = ExpectThatSoundFilesOpen();
    Q_UNUSED(former)
    Q_UNUSED(isReady)

    const ScratchFile input;
    input.Write(data, size);
    if (!Open(input.Path()))
        return 0;
    SaveAndCompare(input.Path());
    return 0;
}

#ifdef ORRERY_FUZZER_ENGINE
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

// One in four changes is one of bytes, which damages what HDF5 reads; the others change what our loader reads.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned seed)
{
    if (seed % 4 == 0)
        return LLVMFuzzerMutate(data, size, maxSize);
    const ScratchFile file;
    file.Write(data, size);
    if (!MutateCatalogue(file.Path(), seed))
        return LLVMFuzzerMutate(data, size, maxSize);
    const std::vector<std::uint8_t> changed = file.Read();
    if (changed.empty() || changed.size() > maxSize)
        return LLVMFuzzerMutate(data, size, maxSize);
    std::copy(changed.begin(), changed.end(), data);
    return changed.size();
}
#endif
