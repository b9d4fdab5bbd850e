#include "hosts/orrery/Diagnostics.h"

#include "hosts/orrery/Colour.h"
#include "hosts/orrery/PlainText.h"

#include <QtGlobal>

#include <cstdio>
#include <cstdlib>

namespace Orrery::Host {

namespace {

bool s_isShown = false;
bool s_isColoured = false;
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

void print(Ink ink, const std::string& beginning, const std::string& line)
{
    std::fprintf(stderr, "%s %s\n", (s_isColoured ? inked(ink, beginning) : beginning).c_str(), line.c_str());
}

void handleMessage(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (s_watched)
        s_watched->append(text);
    if (s_isShown || type == QtFatalMsg)
        print(type == QtWarningMsg ? Ink::Warning : Ink::Dim, std::string("orrery: ") + levelName(type) + ':',
              printable(text.toStdString()));
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
        print(Ink::Dim, "orrery: info:", line);
}

void colourMessages(bool isColoured)
{
    s_isColoured = isColoured;
}

void reportError(const std::string& line)
{
    print(Ink::Error, "orrery:", line);
}

void warn(const std::string& line)
{
    print(Ink::Warning, "orrery: warning:", line);
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
