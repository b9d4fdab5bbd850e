#include "foundations/property/ErrorResult.h"

namespace Orrery {

OrreryException::OrreryException(ERESULT result) noexcept
    : m_result(result)
{
}

OrreryException::OrreryException(const OrreryException&) noexcept = default;
OrreryException::OrreryException(OrreryException&&) noexcept = default;
OrreryException& OrreryException::operator=(const OrreryException&) noexcept = default;
OrreryException::~OrreryException() = default;

ERESULT OrreryException::GetResult() const noexcept
{
    return m_result;
}

const char* OrreryException::what() const noexcept
{
    return std::exception::what();
}

} // namespace Orrery
