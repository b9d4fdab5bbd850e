#pragma once

#include <QString>
#include <QStringList>

#include <string>

namespace Orrery::Host {

/// Keep the library's log lines off standard error, where they would stand beside the one line that a failure
/// gets. Before this call they go where Qt sends them.
void silenceLog();

/// Show them from here on, as "orrery: warning: ..." or "orrery: debug: ...".
void showLog();

/// One line of this program's own for who has asked for the log: "orrery: info: ...". It must be safe to print.
void inform(const std::string& line);

/// Whether the beginnings of the lines below, and of the log, are coloured.
void colourMessages(bool isColoured);

/// The one line of a failure: "orrery: ...". It must be safe to print.
void reportError(const std::string& line);

/// One line on standard error that everybody sees: what is printed is good, but not all that was to be expected.
void warn(const std::string& line);

/// Collects the lines of the library's log while it lives: the library tells some failures nowhere else. Whether they
/// are shown doesn't matter. Where one lives already, the newer one gets the lines.
class LogWatch
{
public:
    LogWatch();
    ~LogWatch();
    LogWatch(const LogWatch&) = delete;
    LogWatch& operator=(const LogWatch&) = delete;

    /// What follows `beginning` in the first line that begins so; a null string if none does.
    QString after(const QString& beginning) const;

private:
    QStringList* m_former;
    QtMessageHandler m_formerHandler;
    QStringList m_lines;
};

} // namespace Orrery::Host
