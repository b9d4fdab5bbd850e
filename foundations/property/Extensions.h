#pragma once

#include "orrerycore_export.h"

namespace Orrery::Extensions {

/// Something that extensions can be attached to.
class ORRERYCORE_EXPORT IExtender
{
public:
    IExtender() = default;                            ///< holds nothing
    IExtender(const IExtender&) = default;            ///< what a derived class adds decides what is copied
    IExtender& operator=(const IExtender&) = default; ///< holds nothing to assign
    virtual ~IExtender();
};

/// Something that can be attached to an IExtender.
class ORRERYCORE_EXPORT IAbstractExtension
{
public:
    IAbstractExtension() = default;                                     ///< attached to nothing
    IAbstractExtension(const IAbstractExtension&) = default;            ///< a copy is attached to nothing
    IAbstractExtension& operator=(const IAbstractExtension&) = default; ///< what this is attached to stays
    virtual ~IAbstractExtension();
};

} // namespace Orrery::Extensions
