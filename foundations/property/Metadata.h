#pragma once

#include "foundations/property/PropertyObject.h"
#include "orrerycore_export.h"

namespace Orrery {

/// A folder that describes how other data are shown or handled; a host derives its own kinds from it.
class ORRERYCORE_EXPORT Metadata : public PropertyObject
{
public:
    Metadata();
    explicit Metadata(const QString& name);
    Metadata(const Metadata& other);
    Metadata& operator=(const Metadata& other);

    unsigned int GetTypeFlags() const override;
    ~Metadata() override;
    AbstractProperty* DoClone() const override = 0;
};

} // namespace Orrery
