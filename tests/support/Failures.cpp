#include "tests/support/Failures.h"

#include <exception>
#include <stdexcept>
#include <typeinfo>

namespace TestSupport {
namespace {
std::string typeOf(const std::exception& error)
{
    if (typeid(error) == typeid(std::invalid_argument))
        return "std::invalid_argument";
    if (typeid(error) == typeid(std::out_of_range))
        return "std::out_of_range";
    if (typeid(error) == typeid(std::length_error))
        return "std::length_error";
    if (typeid(error) == typeid(std::runtime_error))
        return "std::runtime_error";
    return typeid(error).name();
}
} // namespace

Failure failureOf(const std::function<void()>& operation)
{
    try {
        operation();
    } catch (const std::exception& error) {
        return {typeOf(error), error.what()};
    } catch (...) {
        return {"unknown", ""};
    }
    return {"none", ""};
}

Failure invalidArgument(const std::string& words)
{
    return {"std::invalid_argument", words};
}

Failure outOfRange(const std::string& words)
{
    return {"std::out_of_range", words};
}

Failure runtimeError(const std::string& words)
{
    return {"std::runtime_error", words};
}
} // namespace TestSupport
