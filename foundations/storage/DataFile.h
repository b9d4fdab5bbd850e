#pragma once

#include "foundations/property/ErrorResult.h"
#include "foundations/property/PropertyObject.h"
#include "orrerycore_export.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>

namespace Orrery {

class ReferencedFiles;

/// One saved tree: a path, an open mode and the root folder of what the file holds.
///
/// A file is opened through DataFileFactory, which knows how to make each file type. The tree is in memory; it
/// reaches the file with Save, whole or not at all.
///
/// A reference into another file is followed when it is first asked: the file is looked for relative to the file that
/// holds the reference, so that a folder of files can be moved as one, and then at its absolute path. A file whose uid
/// is known and isn't the one that the reference was made for is passed over. One that is open is used as it is, and not
/// held; any other is opened read-only, and held by the tree that the reference stands in until that tree goes (Load,
/// Close, destruction). So a tree holds only files that were opened after it, and files that refer to one another let
/// go of one another. The references of one tree go on with the file that they have found, also when it is replaced on
/// disk, until that file or the tree itself is loaded anew.
///
/// Where a file or the target in it can't be found, the reference is unresolved, and one warning for each such file and
/// tree goes to the Qt log. It isn't looked for again before the tree is loaded anew or RetryReferences() is called, or
/// there has been a change at its path when this process has opened, made, loaded or moved some data file. A file that
/// is being loaded can't be referred to before it stands; that is neither told nor remembered.
///
/// Threads: one thread at a time, like the tree. Trees that are connected by references belong to one thread.
class ORRERYCORE_EXPORT DataFile : public std::enable_shared_from_this<DataFile>
{
public:
    class RootProperty;

    /// Hears how far a save has come: the bytes written so far, of those in all. False gives the save up.
    using SaveProgress = std::function<bool(std::uint64_t done, std::uint64_t total)>;

    /// How a file is to be stored. A file keeps its choices: they are found again when it is opened.
    enum Option
    {
        CompressionOption, ///< large numeric arrays are compressed
        PackingOption      ///< small numeric arrays share one dataset
    };

    /// What a file is opened for.
    enum OpenMode
    {
        ReadOnly,  ///< the file is read; the tree may change in memory and isn't saved
        ReadWrite, ///< the file is read, and Save replaces it
        Create     ///< an empty tree; there is no file, or the present one stays, until Save
    };

    DataFile(const DataFile&) = delete;
    DataFile& operator=(const DataFile&) = delete;

    /// The tree goes with the file while OwnsFileContents() is set.
    virtual ~DataFile();

    /// Replace the tree by what the file at GetPath() holds; the former tree is destroyed.
    ///
    /// Errors: a negative code and one line for a person in `*why`; the tree is then as it was.
    virtual ERESULT Load(QString* why = nullptr) = 0;

    /// Write the tree to GetPath(), replacing the file there in one step that also survives a crash.
    ///
    /// Errors: a negative code and one line for a person in `*why`; the file and the tree are then as they
    ///         were. A file opened ReadOnly is never saved (ER_FAILED). While another object, thread or process
    ///         saves the same file, the save is refused at once (ER_FAILED).
    /// Edge:   what is saved is the tree as it is when the save begins. Where the folder can't be brought to the disk
    ///         afterwards, that is an error too (ER_FAILED), and the new file is in its place all the same.
    virtual ERESULT Save(QString* why = nullptr) = 0;

    /// Let go of the file. The tree is destroyed while OwnsFileContents() is set. May be called again.
    virtual ERESULT Close() = 0;

    /// The type by which the file was opened, such as "HDF5"; saved with references into this file.
    virtual QString GetFileType() const = 0;

    /// Write the tree to another path, which is GetPath() from then on. A file opened ReadOnly becomes
    /// ReadWrite at its new place; its own path is refused.
    ///
    /// Errors: as Save; also ER_ALREADY_EXISTS while another open data file has that path. Path and mode stay
    ///         what they were, also when Save throws.
    /// Threads: waits while another thread opens or saves a data file.
    ERESULT SaveAs(const QString& path, QString* why = nullptr);

    /// The root folder; null after Close. Owned by this file while OwnsFileContents() is set.
    RootProperty* GetRoot();
    const RootProperty* GetRoot() const; ///< the root folder, for reading

    /// Let references look anew for files and targets that they haven't found, and warn again of those that still
    /// aren't there.
    void RetryReferences();

    QString GetPath() const;  ///< where Save writes to
    OpenMode GetMode() const; ///< as it was opened; SaveAs makes ReadOnly ReadWrite

    /// Whether the tree goes with the file; true unless it is changed. A tree that is let live on belongs to
    /// whoever cleared the flag, and has no file behind its root then.
    bool OwnsFileContents() const;
    void SetOwnsFileContents(bool owns); ///< see OwnsFileContents()

    /// Let `progress` hear of every later Save and SaveAs; an empty function ends that.
    ///
    /// It is called before the first byte is written, every few MiB, and a last time with done equal to total
    /// before the new file takes the place of the old one; total is the same in all calls of one save. When it
    /// gives up, the save fails with ER_FAILED and "the save was cancelled", and nothing has changed.
    ///
    /// Errors: an exception out of it fails the save in the same way; its text becomes the reason.
    /// Edge:   it may read and change the tree; the save goes on with the tree as it was when it began. A save of
    ///         this file from within is refused (ER_FAILED).
    /// Threads: called on the thread that saves, while no other thread can open or save a data file, or read an
    ///         array of one for the first time: it must not wait for one that does.
    void SetSaveProgress(SaveProgress progress);

    /// Compress large numeric arrays when the file is saved: 0, the default, not at all, 1 fast, 9 small.
    ///
    /// Errors: ER_INVALID_ARGUMENT for another level, ER_FAILED for a file type that can't compress; the level
    ///         stays what it was.
    /// Cost:   arrays that are compressed can't be read in place; a slice of one unpacks the chunks it touches.
    ERESULT SetCompressionLevel(int level);
    int GetCompressionLevel() const; ///< the level of the next save

    /// Store small numeric arrays together, for a file that only this library reads; off by default.
    ///
    /// Errors: ER_FAILED for a file type that has no such thing; the choice stays what it was.
    ERESULT SetPacked(bool packed);
    bool IsPacked() const; ///< the choice of the next save

protected:
    /// Starts with an empty tree.
    DataFile(const QString& path, OpenMode mode);

    /// Whether files of this type keep a choice; a type that says nothing keeps none. Save of a type that does
    /// looks at GetCompressionLevel() and IsPacked(), and Load tells what it has found by RestoreOptions().
    virtual bool HasOption(Option option) const;

    /// For Load: the choices kept in the file. A level that there isn't counts as 0.
    void RestoreOptions(int compressionLevel, bool packed);

    /// For Save: what is to hear of its progress; may be empty. A type that never calls it shows no progress.
    const SaveProgress& GetSaveProgress() const;

    /// Put a freshly loaded tree in place of the present one.
    void ReplaceRoot(std::unique_ptr<RootProperty> root);

    /// Destroy or release the tree, by OwnsFileContents().
    void DropRoot();

public:
    /// What tells this file from others that may take its place at its path; references into it keep that. Empty for a
    /// type that knows no such thing. A file that is saved to another path becomes another file; a copy that is made
    /// of the file on disk doesn't.
    virtual QString GetFileUid() const;

protected:
    /// Whether a file that was opened ReadOnly can go on as ReadWrite without more ado; a type that says nothing can't.
    virtual bool CanTurnReadWrite() const;

private:
    friend class DataFileFactory;
    friend struct Internal::NodeAccess;

    QString KnownFileType() const;
    void LetGoOf(RootProperty* root) const;

    QString m_path;
    QString m_openedAs; ///< the type by which the factory has made it
    OpenMode m_mode;
    bool m_isDying = false;
    bool m_ownsFileContents = true;
    bool m_isPacked = false;
    int m_compressionLevel = 0;
    SaveProgress m_saveProgress;
    RootProperty* m_root = nullptr;
};

/// Root folder of a data file's tree, named "Root".
class ORRERYCORE_EXPORT DataFile::RootProperty : public PropertyObject
{
public:
    /// `file` is not owned and must outlive the folder; null for a root without a file.
    explicit RootProperty(DataFile* file);
    RootProperty(const RootProperty&) = delete;
    ~RootProperty() override;

    /// The children of the other root replace those of this one; the file stays.
    RootProperty& operator=(const RootProperty& other);

    static const QString& StaticType(); ///< "RootProperty"
    const QString& PropertyObjType() const override;
    unsigned int GetTypeFlags() const override;

    /// A root with the same content and no file behind it.
    AbstractProperty* DoClone() const override;

    /// The file that this tree belongs to; null when there is none (any more).
    DataFile* GetParentFile() const;

private:
    friend class DataFile;
    friend class ReferencedFiles;

    DataFile* m_file;
    bool m_isDying = false;
    mutable std::unique_ptr<ReferencedFiles>
        m_referencedFiles; // made for the first reference into another file
};

} // namespace Orrery
