#pragma once

#include "foundations/property/ErrorResult.h"

#include <QString>

#include <stdexcept>

namespace Orrery {

/// Ends a load or a save from anywhere inside it; a data file turns it into its code and its text at the edge.
class StorageError : public std::runtime_error
{
public:
    explicit StorageError(const QString& text, ERESULT code = ER_FAILED)
        : std::runtime_error(text.toStdString())
        , m_text(text)
        , m_code(code)
    {
    }

    const QString& Text() const { return m_text; }
    ERESULT Code() const { return m_code; }

private:
    QString m_text;
    ERESULT m_code;
};

} // namespace Orrery
