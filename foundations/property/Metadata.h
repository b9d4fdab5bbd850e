#pragma once

#include "foundations/property/PropertyObject.h"
#include "orrerycore_export.h"

namespace Orrery {

/// A folder that describes how other data are shown or handled; a host derives its own kinds from it.
class ORRERYCORE_EXPORT Metadata : public PropertyObject
{
public:
    Metadata();                                 ///< an unnamed, empty folder
    explicit Metadata(const QString& name);     ///< an empty folder of that name, without a parent
    Metadata(const Metadata& other);            ///< name, flags and clones of the children; no parent
    Metadata& operator=(const Metadata& other); ///< as the assignment of a PropertyObject

    unsigned int GetTypeFlags() const override;
    ~Metadata() override;
    AbstractProperty* DoClone() const override = 0;
};

} // namespace Orrery
