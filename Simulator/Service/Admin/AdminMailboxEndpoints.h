#pragma once

namespace vorlane::service {

class EndpointRouter;
class MailboxStore;

/// Adds the operator's endpoints for mailboxes: to send messages, to list them, and to remove them.
/// The store has to outlive the router.
void addAdminMailboxEndpoints(EndpointRouter& router, MailboxStore& mailboxes);

}  // namespace vorlane::service
