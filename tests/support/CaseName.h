#pragma once

#include <gtest/gtest.h>

#include <string>

namespace TestSupport {
/// Names each case of a table by its `name` field: the last argument of INSTANTIATE_TEST_SUITE_P.
struct CaseName
{
    template <class Case>
    std::string operator()(const ::testing::TestParamInfo<Case>& test) const
    {
        return test.param.name;
    }
};
} // namespace TestSupport
