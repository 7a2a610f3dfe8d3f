#pragma once

#include "Simulator/Phone/Phone.h"

namespace vorlane::phone {

/// All commands by name. Add a new group of commands here.
Phone::Commands allCommands();

// The groups of commands, one file each.
Phone::Commands lifeCycleCommands();
Phone::Commands libraryCommands();
Phone::Commands timeCommands();
Phone::Commands queryCommands();
Phone::Commands helperCommands();
Phone::Commands notificationCommands();
Phone::Commands userCommands();
Phone::Commands screenCommands();
Phone::Commands locationCommands();
Phone::Commands inboxCommands();

}  // namespace vorlane::phone
