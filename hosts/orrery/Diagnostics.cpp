#include "hosts/orrery/Diagnostics.h"

#include "hosts/orrery/PlainText.h"

#include <QString>
#include <QtGlobal>

#include <cstdio>
#include <cstdlib>

namespace Orrery::Host {

namespace {

bool s_isShown = false;

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

} // namespace Orrery::Host
