#pragma once

#include <QCoreApplication>

#include <exception>
#include <functional>

namespace Orrery::Host {

/// Qt's event loop with a way out for failures: none may pass through the loop or through a signal.
class EventLoop
{
public:
    EventLoop();

    /// Run `work`. What it throws ends the loop, and from then on nothing more is run.
    void guarded(const std::function<void()>& work);

    /// Run until QCoreApplication::quit() or the first failure.
    ///
    /// Errors: what was thrown by guarded work.
    void run();

private:
    int m_argumentCount = 1;
    char m_program[7] = "orrery";
    char* m_arguments[2] = {m_program, nullptr};
    QCoreApplication m_application;
    std::exception_ptr m_failure;
};

} // namespace Orrery::Host
