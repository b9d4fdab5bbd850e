#pragma once

#include <functional>

#include <sys/types.h>

namespace Orrery::StorageTest {

/// Run something in a child process of its own, whose limits, user and end are no matter of the test program.
///
/// The child ends by exit() with what `body` returns, so that everything that happens at the end of a process
/// happens. An exception out of `body` is printed and ends it with 99.
pid_t StartChild(const std::function<int()>& body);

/// Wait for the end of a child: its exit code, or minus the number of the signal that ended it.
///
/// Edge: one that is still there after two minutes is killed, and counts as that.
int EndOfChild(pid_t child);

/// Both in one.
int RunInChild(const std::function<int()>& body);

/// Let this process write no file beyond this length; 0 lifts the limit. With `survive`, a write past it is an
/// error, as on a full disk; otherwise it ends the process. Only for a child.
void LimitFileSize(unsigned long bytes, bool survive);

/// Give up the rights of the superuser, if this process has them. Only for a child.
void BecomeNobody();

} // namespace Orrery::StorageTest
