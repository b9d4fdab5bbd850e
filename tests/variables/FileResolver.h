#pragma once

#include "foundations/property/PropertyPath.h"
#include "foundations/property/PropertyReference.h"
#include "foundations/storage/DataFile.h"
#include "foundations/storage/DataFileFactory.h"

#include <memory>
#include <vector>

namespace Orrery {

/// What a host sets up for references into other files, as long as it lives: their files are opened read-only and
/// kept open.
class FileResolver
{
public:
    FileResolver() { PropertyReference::SetExternalResolver(&resolve); }
    FileResolver(const FileResolver&) = delete;
    FileResolver& operator=(const FileResolver&) = delete;
    ~FileResolver()
    {
        PropertyReference::SetExternalResolver(nullptr);
        s_files.clear();
    }

private:
    static AbstractProperty* resolve(const PropertyReference& reference)
    {
        std::shared_ptr<DataFile> file;
        if (DataFileFactory::Instance().Open(reference.ReferenceFilePath(), DataFile::ReadOnly, &file,
                                             nullptr, reference.ReferenceFileType()) < 0)
            return nullptr;
        s_files.push_back(file);
        return Property::FindProperty(file->GetRoot(), reference.ReferencePath());
    }

    static inline std::vector<std::shared_ptr<DataFile>> s_files;
};

} // namespace Orrery
