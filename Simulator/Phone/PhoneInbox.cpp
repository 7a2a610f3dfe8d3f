#include "Simulator/Phone/PhoneInbox.h"

#include <utility>

#include "Public/Vorlane.h"
#include "Simulator/Phone/Phone.h"
#include "Simulator/Phone/PhoneCommands.h"
#include "Simulator/Phone/PhoneValues.h"

namespace vorlane::phone {

namespace {

Value getMessages(const OperationCall& call) {
    if (!call.hasHandler()) {
        Vorlane::getInboxMessagesWithCompletionHandler(nullptr);
        return nullptr;
    }
    Vorlane::getInboxMessagesWithCompletionHandler([call](const InboxMessages& messages, std::size_t unreadCount) {
        call.phone().inboxMessages() = messages;
        Array list;
        for (const auto& message : messages) list.push_back(valueOf(*message));
        call.tell({std::move(list), unreadCount});
    });
    return nullptr;
}

Value openMessage(const OperationCall& call) {
    Vorlane::openInboxMessage(messageFrom(call.phone().inboxMessages(), call.argument(0)), call.errorHandler());
    return nullptr;
}

Value deleteMessage(const OperationCall& call) {
    Vorlane::deleteInboxMessage(messageFrom(call.phone().inboxMessages(), call.argument(0)), call.errorHandler());
    return nullptr;
}

Value loadImage(Phone& phone, const Dictionary& line) {
    const auto message = messageFrom(phone.inboxMessages(), requiredField(line, "messageId"));
    if (!message) throw BadLine("messageId must be the id of a message");
    const auto call = OperationCall::callOfLine(phone, line);
    if (call.hasHandler()) {
        message->loadImageWithCompletion(
            [call](const std::shared_ptr<const VLImage>& image) { call.tell({valueOf(image)}); });
    } else {
        message->loadImageWithCompletion(nullptr);
    }
    return nullptr;
}

}  // namespace

Value valueOf(const VLInboxMessage& message) {
    return Dictionary{{"messageId", message.messageId()},
                      {"subject", valueOf(message.subject())},
                      {"htmlContent", valueOf(message.htmlContent())},
                      {"label", valueOf(message.label())},
                      {"url", valueOf(message.url())},
                      {"phash", valueOf(message.phash())},
                      {"read", message.read()},
                      {"created", message.created()},
                      {"end", message.end()},
                      {"cardImage", valueOf(message.cardImage())},
                      {"cardBackgroundColor", message.cardBackgroundColor()},
                      {"cardForegroundColor", message.cardForegroundColor()},
                      {"metadata", message.metadata()},
                      {"loadedImage", valueOf(message.loadedImage())}};
}

Value valueOf(const std::shared_ptr<const VLImage>& image) {
    if (!image) return nullptr;
    return Dictionary{{"width", image->width()}, {"height", image->height()}, {"bytes", image->data().size()}};
}

std::shared_ptr<VLInboxMessage> messageFrom(const InboxMessages& messages, const Value& messageId) {
    if (messageId.is_null()) return nullptr;
    for (const auto& message : messages) {
        if (Value(message->messageId()) == messageId) return message;
    }
    throw BadLine("no message " + messageId.dump(-1, ' ', false, Value::error_handler_t::replace) +
                  " in the last inbox list");
}

std::map<std::string, Operation> withInboxOperations(std::map<std::string, Operation> table) {
    table.insert({{"getInboxMessagesWithCompletionHandler:", getMessages},
                  {"openInboxMessage:completionHandler:", openMessage},
                  {"deleteInboxMessage:completionHandler:", deleteMessage}});
    return table;
}

Phone::Commands inboxCommands() { return {{"loadImage", loadImage}}; }

}  // namespace vorlane::phone
