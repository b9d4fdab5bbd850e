#include "hosts/orrery/EventLoop.h"

#include <clocale>

namespace Orrery::Host {

EventLoop::EventLoop()
    : m_application(m_argumentCount, m_arguments)
{
    // The application object has taken over the user's locale, and messages would differ from other commands'.
    std::setlocale(LC_ALL, "C");
}

void EventLoop::guarded(const std::function<void()>& work)
{
    if (m_failure)
        return;
    try {
        work();
    } catch (...) {
        m_failure = std::current_exception();
        QCoreApplication::quit();
    }
}

void EventLoop::run()
{
    QCoreApplication::exec();
    if (m_failure)
        std::rethrow_exception(m_failure);
}

} // namespace Orrery::Host
