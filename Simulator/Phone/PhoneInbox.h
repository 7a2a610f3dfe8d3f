#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Public/VLInboxMessage.h"
#include "Public/VLValue.h"
#include "Simulator/Phone/PhoneOperations.h"

namespace vorlane::phone {

using InboxMessages = std::vector<std::shared_ptr<VLInboxMessage>>;

/// Returns a message with its properties, or an image as {"width", "height", "bytes"}; null for null.
Value valueOf(const VLInboxMessage& message);
Value valueOf(const std::shared_ptr<const VLImage>& image);

/// Returns the message with this id in the last list that a handler received; null for null. Throws BadLine for an
/// unknown id.
std::shared_ptr<VLInboxMessage> messageFrom(const InboxMessages& messages, const Value& messageId);

/// Returns the table with the operations of `Vorlane` for the inbox added.
std::map<std::string, Operation> withInboxOperations(std::map<std::string, Operation> table);

}  // namespace vorlane::phone
