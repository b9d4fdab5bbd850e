#include "hosts/orrery/Diagnostics.h"

#include "hosts/orrery/PlainText.h"

#include <QtGlobal>

#include <cstdio>
#include <cstdlib>

namespace Orrery::Host {

namespace {

bool s_isShown = false;
QStringList* s_watched = nullptr;

const char* levelName(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return "debug";
    case QtInfoMsg:
        return "info";
    case QtWarningMsg:
        return "warning";
    default:
        return "error";
    }
}

void handleMessage(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (s_watched)
        s_watched->append(text);
    if (s_isShown || type == QtFatalMsg)
        std::fprintf(stderr, "orrery: %s: %s\n", levelName(type), printable(text.toStdString()).c_str());
    if (type == QtFatalMsg)
        std::abort();
}

} // namespace

void silenceLog()
{
    s_isShown = false;
    qInstallMessageHandler(&handleMessage);
}

void showLog()
{
    s_isShown = true;
}

void inform(const std::string& line)
{
    if (s_isShown)
        std::fprintf(stderr, "orrery: info: %s\n", line.c_str());
}

void warn(const std::string& line)
{
    std::fprintf(stderr, "orrery: warning: %s\n", line.c_str());
}

LogWatch::LogWatch()
    : m_former(s_watched)
    , m_formerHandler(qInstallMessageHandler(&handleMessage))
{
    s_watched = &m_lines;
}

LogWatch::~LogWatch()
{
    s_watched = m_former;
    qInstallMessageHandler(m_formerHandler);
}

QString LogWatch::after(const QString& beginning) const
{
    for (const QString& line : m_lines) {
        if (line.startsWith(beginning))
            return line.mid(beginning.size());
    }
    return QString();
}

} // namespace Orrery::Host
