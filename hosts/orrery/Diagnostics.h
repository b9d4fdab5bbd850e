#pragma once

namespace Orrery::Host {

/// Keep the library's log lines off standard error, where they would stand beside the one line that a failure
/// gets. Before this call they go where Qt sends them.
void silenceLog();

/// Show them from here on, as "orrery: warning: ..." or "orrery: debug: ...".
void showLog();

} // namespace Orrery::Host
