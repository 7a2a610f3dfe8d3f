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

/// A message with its properties; an image as {"width", "height", "bytes"}, null for none.
Value valueOf(const VLInboxMessage& message);
Value valueOf(const std::shared_ptr<const VLImage>& image);

/// The message with that id in the last list that a handler received; null for null. Throws BadLine for none.
std::shared_ptr<VLInboxMessage> messageFrom(const InboxMessages& messages, const Value& messageId);

/// The table with the operations of `Vorlane` that concern the inbox.
std::map<std::string, Operation> withInboxOperations(std::map<std::string, Operation> table);

}  // namespace vorlane::phone
