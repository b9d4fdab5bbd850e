// Prints the common type of every pair of element types as "code code code" lines, for CommonTypeOracle.py.
#include "tests/support/ElementTypes.h"

#include <cstdio>

int main()
{
    for (const auto& a : TestSupport::elementRows())
        for (const auto& b : TestSupport::elementRows())
            std::printf("%u %u %u\n", a.code, b.code,
                        Brindle::Quay::WellKnownType::getCommonWellKnownType(a.code, b.code).code());
    return 0;
}
