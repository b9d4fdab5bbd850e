#pragma once

#include "foundations/property/AbstractProperty.h"
#include "foundations/property/PropertyHandle.h"
#include "orrerycore_export.h"

namespace Orrery {

/// A node that stands for another node, in the same tree or in the tree of another file.
///
/// A bound reference follows its target: a living one that can be reached is the answer wherever it or the
/// reference has been renamed or moved to, and its path is worked out when it is asked for. A target that was
/// destroyed, or that has left the tree, is not the answer; then the last known path is looked up, so that a
/// node that has taken its place is found. One that was found by its path is followed from then on.
///
/// A path is relative ("../../x", from the reference itself) for a target in the same tree, and absolute, with
/// the path and the type of the file, for one in another. A copy keeps the path only: what leads inside a
/// cloned folder leads inside the clone, the rest resolves from its new place.
/// Copies that are made with the folder around them, and references of a loaded file, are bound as soon as the
/// whole of it stands.
///
/// Cost:   a bound reference is answered in a few loads for each folder above it and its target.
class ORRERYCORE_EXPORT PropertyReference : public AbstractProperty
{
public:
    /// Finds the target of a reference into another file, by ReferencePath() and its like; null for "can't".
    using ExternalResolver = AbstractProperty* (*)(const PropertyReference& reference);

    /// What a reference keeps of the file that holds its target.
    struct TargetFile
    {
        QString path;      ///< where it is looked for first; empty for a target in the same tree
        QString otherPath; ///< where it is looked for next; empty for nowhere
        QString type;      ///< as DataFile::GetFileType()
        QString uid; ///< as DataFile::GetFileUid(); empty when it isn't known, and then any file will do
    };

    PropertyReference();                             ///< unnamed and unset
    explicit PropertyReference(const QString& name); ///< unset: it resolves to null

    /// Name, flags and path; no parent.
    PropertyReference(const PropertyReference& other);

    /// Stand for what the other reference stands for. If that can't be reached from here, as in a reference
    /// that has no place yet, its path is taken over as it is. Name, flags and place stay.
    PropertyReference& operator=(const PropertyReference& other);

    static const QString& StaticType(); ///< "PropertyReference"
    const QString& PropertyObjType() const override;
    unsigned int GetTypeFlags() const override;
    ~PropertyReference() override;
    AbstractProperty* DoClone() const override;

protected:
    /// The target; null when it can't be resolved.
    virtual AbstractProperty* GetPropertyRef() const;

public:
    /// The path of the target; empty for a reference that isn't set, and for a target in another tree that
    /// belongs to no file, to which no path leads.
    virtual QString ReferencePath() const;

    /// The path of the file that holds the target; empty for a target in the same tree. As long as the target of a
    /// reference with two paths hasn't been found, the first where there is something, or the first.
    virtual QString ReferenceFilePath() const;

    /// The type of that file; empty for a target in the same tree.
    virtual QString ReferenceFileType() const;

protected:
    /// As GetPropertyRef of this class, for reading. What a subclass makes of GetPropertyRef isn't asked.
    virtual const AbstractProperty* GetPropertyConstRef() const;

    /// The target looked up through the file path and type.
    virtual AbstractProperty* ResolveExternalRef() const;

public:
    /// The target, by GetPropertyRef() and GetPropertyConstRef(); null when it can't be resolved.
    AbstractProperty* Resolve() const;
    const AbstractProperty* ResolveConst() const; ///< the target, for reading

    /// The node that this reference is bound to, if it lives and stands where a reference from here may lead; null
    /// for one that isn't bound, or would have to be looked up. Runs no code of a host, which a look-up may.
    AbstractProperty* BoundTarget() const;

    /// Bind the reference. It should have its place in the tree by then.
    ///
    /// Errors: ER_INVALID_ARGUMENT for null, for the reference itself, and for a target in another tree
    ///         unless both trees belong to files; the former binding is kept.
    ERESULT SetPropertyRef(const AbstractProperty* target);

    /// Set the reference as it was stored: the path, and the file's path and type for a target in another
    /// file. Nothing is looked up before the reference is used. An empty path makes it unset.
    void RestorePath(const QString& path, const QString& filePath = QString(),
                     const QString& fileType = QString());

    /// The same with all that is known of the other file.
    void RestorePath(const QString& path, const TargetFile& file);

    /// All that is known of the file that holds the target, as it would be restored; empty texts for a target in the
    /// same tree. What a subclass makes of the virtual operations isn't asked.
    TargetFile ReferenceFile() const;

    /// The kind of the target, by GetPropertyConstRef(); false when there is none.
    bool IsRefVariable() const;
    bool IsRefPropertyObject() const; ///< whether the target is a folder
    bool IsRefMetadata() const;       ///< whether it is a Metadata

    /// How references into other files are resolved in this process; null for not at all.
    ///
    /// Unless a host sets one of its own, the file is opened read-only through DataFileFactory, once, and goes with
    /// the tree that the reference stands in; see DataFile for the rules.
    ///
    /// Threads: may be set at any time from any thread.
    static void SetExternalResolver(ExternalResolver resolver);

    /// The one in use; until another is set, the built-in one.
    static ExternalResolver GetExternalResolver();

private:
    friend struct Internal::NodeAccess;

    AbstractProperty* Target() const;
    AbstractProperty* LookUp() const;
    AbstractProperty* LookUpOutside() const;
    void BindByPath() const;
    void ForgetPath() const;
    void RememberPath() const;
    void RememberLostTarget() const;
    void RememberPathOf(const AbstractProperty& target) const;
    void TakeOverDeparture() const;
    void TakeOverPath() const;
    void TakeOverFilePlace(const Internal::NodeLife& life) const;
    bool RefHasTypeFlag(unsigned int flag) const;

    // What is known of the target. While it can be reached, its path is worked out and not kept; the texts are
    // what was stored, or what was true when the target or this reference left the tree. All three are a memory
    // of one fact, so that asking may bring them up to date.
    mutable PropertyHandle m_target;
    mutable QString m_path;
    mutable TargetFile m_file;
};

} // namespace Orrery
