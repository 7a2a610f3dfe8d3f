#pragma once

namespace vorlane {

/// Calls `observer` each time a platform is installed from now on, while the previous platform is still in place and
/// has been stopped. `isFirst` is true for the first platform that the host installs: what the host chose before is
/// kept. Never called with a lock held. Any thread.
void observePlatformInstalls(void (*observer)(bool isFirst));

/// Calls every observer. Called by `Platform::install()`.
void announcePlatformInstall();

}  // namespace vorlane
