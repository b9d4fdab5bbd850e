#include "foundations/property/Metadata.h"

namespace Orrery {

Metadata::Metadata() = default;

Metadata::Metadata(const QString& name)
    : PropertyObject(name)
{
}

Metadata::Metadata(const Metadata&) = default;
Metadata& Metadata::operator=(const Metadata&) = default;
Metadata::~Metadata() = default;

unsigned int Metadata::GetTypeFlags() const
{
    return PropertyTypeFlagObject | PropertyTypeFlagMetadata;
}

} // namespace Orrery
