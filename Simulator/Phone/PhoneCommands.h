#pragma once

#include "Simulator/Phone/Phone.h"

namespace vorlane::phone {

/// Every word that the phone knows. A new group of words is added here, and nowhere else.
Phone::Commands allCommands();

// The groups, one file each.
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
