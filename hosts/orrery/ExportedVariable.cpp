#include "hosts/orrery/ExportedVariable.h"

#include "hosts/orrery/Diagnostics.h"
#include "hosts/orrery/PlainText.h"

#include <algorithm>
#include <string>

namespace Orrery::Host {

namespace {

constexpr int s_mostAxes = 64; // a hostile file may have millions

std::unique_ptr<ColumnReader> readerOfAxis(const Variable& variable, int index, std::uint64_t offsets)
{
    Variable* axis = nullptr;
    if (variable.GetIndepVariable(&axis, index) < 0 || !axis) {
        warn("axis " + std::to_string(index + 1) + " leads nowhere and is left out");
        return nullptr;
    }
    const std::uint64_t count = axis->GetMaxIndepOffset();
    if (count != offsets) {
        warn("the axis " + inQuotes(axis->GetName().toStdString()) + " has " + std::to_string(count) +
             " values where the variable has " + std::to_string(offsets) + ", and is left out");
        return nullptr;
    }
    auto reader = std::make_unique<ColumnReader>(*axis);
    reader->preferReal();
    return reader;
}

} // namespace

ExportedVariable exportedVariable(const Variable& variable, const std::optional<Units>& units)
{
    ExportedVariable exported;
    exported.values = std::make_unique<ColumnReader>(variable);
    if (units)
        exported.values->convertTo(*units);
    const int axes = variable.GetIndepCount();
    for (int i = 0; i < std::min(axes, s_mostAxes); ++i) {
        if (auto reader = readerOfAxis(variable, i, exported.values->reader().offsets()))
            exported.axes.push_back(std::move(reader));
    }
    if (axes > s_mostAxes)
        warn("of " + std::to_string(axes) + " axes the first " + std::to_string(s_mostAxes) + " are written");
    return exported;
}

} // namespace Orrery::Host
