#pragma once

#include "hosts/orrery/csv/CsvFile.h"
#include "results/Result.h"

#include <QMap>

namespace Orrery::Host {

/// Which of the variables the others lie over.
struct CsvAxis
{
    bool isWanted = true;
    QString
        name; ///< if empty, it is the first one, unless that has an array or a complex number in each record
};

/// Put what a CSV file holds into a result: a folder "table" with one variable for each of the file's. They lie over the
/// axis. Comments become texts of a hidden folder "table" of the setup folder.
///
/// `*renamed` gets the names that were taken or are kept for other uses, with what became of them.
/// Units:  display units are the first of the given ones that measure the same.
/// Errors: Failure for an axis that isn't there or holds more than one value in a record; when the tree refuses a node.
void importCsv(Result* result, CsvTable table, const CsvAxis& axis, const std::vector<Units>& displayUnits,
               QMap<QString, QString>* renamed);

} // namespace Orrery::Host
