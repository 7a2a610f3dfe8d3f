#include "Simulator/Phone/PhoneCommands.h"

namespace vorlane::phone {

Phone::Commands allCommands() {
    Phone::Commands all;
    for (auto* const group : {lifeCycleCommands, libraryCommands, timeCommands, queryCommands, helperCommands,
                              notificationCommands, userCommands, screenCommands, locationCommands, inboxCommands}) {
        all.merge(group());
    }
    return all;
}

}  // namespace vorlane::phone
