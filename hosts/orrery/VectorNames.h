#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace Orrery::Host {

/// The names that the vectors of one plot get in its folder, in their order.
///
/// A name that an earlier vector has gets "_2" and so on behind it. One that a sweep over such folders keeps for its
/// own parts gets "_": a request for a joined variable of that name would delete the part. Those are numbers,
/// "Parameter", and "X_Indeps" where X is another vector.
QStringList vectorNames(const QStringList& given);

} // namespace Orrery::Host
