#include "foundations/variant/Variant.h"

#include <cstdio>
#include <vector>

using namespace Brindle::Quay;

int main()
{
    const BVariant table(std::vector<int>{1, 2, 3, 4, 5, 6}, {2, 3});
    const BVariant column = slice(table, {IndexRange::all, IndexValue(2)});
    const int sum = getScalar<int>(elementAt(column, {0})) + getScalar<int>(elementAt(column, {1}));
    std::printf("sum of the last column: %d\n", sum);
    return sum == 9 ? 0 : 1;
}
