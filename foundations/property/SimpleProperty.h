#pragma once

#include "foundations/property/AbstractProperty.h"
#include "foundations/variant/BVariant.h"
#include "orrerycore_export.h"

namespace Orrery {

using Brindle::Quay::BVariant;

/// A leaf of the tree: one value and the cell-array flag that belongs to it.
class ORRERYCORE_EXPORT SimpleProperty : public AbstractProperty
{
public:
    /// The value is null and the flag IsCellArrayFalse.
    explicit SimpleProperty(const QString& name);

    /// Name, flags, value; no parent. An array's elements are shared until one side changes them.
    SimpleProperty(const SimpleProperty& other);

    /// Takes over the value and its cell-array flag; name, flags and place stay.
    SimpleProperty& operator=(const SimpleProperty& other);

    static const QString& StaticType(); ///< "SimpleProperty"
    const QString& PropertyObjType() const override;
    unsigned int GetTypeFlags() const override;
    ~SimpleProperty() override;
    AbstractProperty* DoClone() const override;

    /// Always ER_SUCCESS.
    ERESULT SetValue(BVariant value, IsCellArray flag);

    BVariant GetValue() const;               ///< the value; an array is shared, not copied
    IsCellArray GetValueIsCellArray() const; ///< the flag that was stored with it

    /// The value itself, for reading without a copy; valid until it is set again.
    const BVariant& GetValueRef() const { return m_value; }

private:
    BVariant m_value;
    IsCellArray m_isCellArray = IsCellArrayFalse;
};

} // namespace Orrery
