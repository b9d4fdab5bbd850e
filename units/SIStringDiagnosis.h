#pragma once

#include "orrerycorevariables_export.h"

#include <QString>
#include <QStringList>

namespace Orrery {

/// Why a text is no SI string, told for a person. Made by Units::DiagnoseSIString.
struct ORRERYCOREVARIABLES_EXPORT SIStringDiagnosis
{
    bool valid = false; ///< the text is an SI string; then the fields below are empty
    int position = 0;   ///< of what is wrong, as a UTF-16 index; the length of the text at its end
    QString found;      ///< what stands there, shortened; empty at the end of the text
    QString expected;   ///< what could stand there, in words

    /// Texts to try in its place, the likeliest first; at most three, and each is an SI string or a key of the
    /// catalogue of units. None for a key that no SI string can say, such as "in": what helps is to look it up.
    QStringList suggestions;

    QString problem; ///< what is wrong, and where: the first half of the message
    QString advice;  ///< what to do about it: the second half

    /// Problem and advice in one line: "a second '/' at 3; write m/s^2 or m/(s*s)". Empty for a valid text.
    QString message() const;
};

} // namespace Orrery
