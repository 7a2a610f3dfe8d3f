#pragma once

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;

/// Adds inboxState, inboxMessage and updateInboxMessage, which read and change a user's mailbox, and cardImage, which
/// serves the images of its messages. The store must outlive the router.
void addMailboxEndpoints(EndpointRouter& router, ServiceStore& store);

}  // namespace vorlane::service
