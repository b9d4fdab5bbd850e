#include "foundations/property/Extensions.h"

namespace Orrery::Extensions {

IExtender::~IExtender() = default;
IAbstractExtension::~IAbstractExtension() = default;

} // namespace Orrery::Extensions
