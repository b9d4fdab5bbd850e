#pragma once

#include "orrerycore_export.h"

namespace Orrery::Extensions {

/// Something that extensions can be attached to.
class ORRERYCORE_EXPORT IExtender
{
public:
    IExtender() = default;
    IExtender(const IExtender&) = default;
    IExtender& operator=(const IExtender&) = default;
    virtual ~IExtender();
};

/// Something that can be attached to an IExtender.
class ORRERYCORE_EXPORT IAbstractExtension
{
public:
    IAbstractExtension() = default;
    IAbstractExtension(const IAbstractExtension&) = default;
    IAbstractExtension& operator=(const IAbstractExtension&) = default;
    virtual ~IAbstractExtension();
};

} // namespace Orrery::Extensions
