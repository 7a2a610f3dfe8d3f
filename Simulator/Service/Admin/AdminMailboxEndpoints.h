#pragma once

namespace vorlane::service {

class EndpointRouter;
class MailboxStore;

/// Adds the operator's endpoints for mailboxes: to send, list and remove messages. The store must outlive the router.
void addAdminMailboxEndpoints(EndpointRouter& router, MailboxStore& mailboxes);

}  // namespace vorlane::service
