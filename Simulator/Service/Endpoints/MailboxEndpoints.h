#pragma once

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;

/// Adds inboxState, inboxMessage and updateInboxMessage, which a user's mailbox is read and changed by, and cardImage,
/// which hands out the images of its messages. The store has to outlive the router.
void addMailboxEndpoints(EndpointRouter& router, ServiceStore& store);

}  // namespace vorlane::service
