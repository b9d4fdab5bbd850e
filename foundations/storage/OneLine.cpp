#include "foundations/storage/OneLine_p.h"

namespace Orrery {

QString OneLine(const QString& text)
{
    QString line;
    for (const QChar unit : text) {
        if (unit.category() == QChar::Other_Control || unit == QChar::LineSeparator ||
            unit == QChar::ParagraphSeparator)
            line += QStringLiteral("\\x%1").arg(unit.unicode(), 2, 16, QLatin1Char('0'));
        else
            line += unit;
    }
    return line;
}

} // namespace Orrery
