#include "Simulator/Service/Endpoints/MailboxEndpoints.h"

#include <fmt/format.h>

#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Categories/NSDictionary+VLLookup.h"
#include "Categories/NSString+VLHash.h"
#include "Simulator/Service/Http/EncodedText.h"
#include "Simulator/Service/Http/EndpointCall.h"
#include "Simulator/Service/Http/EndpointRouter.h"
#include "Simulator/Service/Http/MalformedRequest.h"
#include "Simulator/Service/Http/RequestPayload.h"
#include "Simulator/Service/Store/CardImage.h"
#include "Simulator/Service/Store/ServiceStore.h"

namespace vorlane::service {
namespace {

using Entries = std::vector<MailboxStore::Entry>;

constexpr const char* kImageFolder = "/card-images/";

ServiceResponse noSuchMessage() { return ServiceResponse::error(404, "there is no such message"); }

/// Every character of the hashed JSON counts, so it is written by hand: an app with the same messages computes the same
/// hash.
std::string stateHash(const Entries& entries) {
    std::string text = "{\"notification\":[";
    for (const auto& entry : entries) {
        if (&entry != &entries.front()) text += ',';
        text += fmt::format("{{\"id\":{},\"read\":{}}}", entry.id, entry.isRead ? 1 : 0);
    }
    return vl_md5(text + "]}");
}

ServiceResponse state(ServiceStore& store, EndpointCall& call) {
    call.readUser();
    const auto known = call.request.queryValue("stateHash");
    if (!known) throw MalformedRequest("the query has no \"stateHash\"");
    store.noteUser(call.appKey, call.trackingId);
    const auto entries = store.mailboxes().entries(call.appKey, call.trackingId);
    const auto hash = stateHash(entries);
    Array notification;
    for (const auto& entry : entries)
        notification.emplace_back(Dictionary{{"id", entry.id}, {"read", entry.isRead ? 1 : 0}});
    return ServiceResponse::json(Value(Dictionary{{"synchronisation_complete", *known == hash},
                                                  {"state_hash", hash},
                                                  {"notification", Value(std::move(notification))}}));
}

/// Returns `nullopt` for anything but an id.
std::optional<std::uint64_t> messageId(const EndpointCall& call) {
    const auto& text = call.parameters.at("messageId");
    std::uint64_t id = 0;
    const auto* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, id);
    return result.ec == std::errc() && result.ptr == end ? std::optional(id) : std::nullopt;
}

/// Encodes HTML as messages carry it: an app decodes percent-encoding first, character references second.
std::string contentOf(const std::string& html) {
    std::string escaped;
    for (const char character : html) {
        if (character == '&') {
            escaped += "&amp;";
        } else {
            escaped += character;
        }
    }
    return encodedText(escaped);
}

/// An image of the service itself has the origin at which the app found the service.
Value cardUrl(const Dictionary& row, const ServiceRequest& request) {
    const auto image = stringForKey(row, "image");
    if (!image) return row.at("cardUrl");
    return fmt::format("http://{}{}{}", request.header("Host").value_or("127.0.0.1"), kImageFolder, *image);
}

ServiceResponse message(MailboxStore& mailboxes, EndpointCall& call) {
    call.readUser();
    const auto id = messageId(call);
    const auto row = id ? mailboxes.message(call.appKey, call.trackingId, *id) : std::nullopt;
    if (!row) return noSuchMessage();
    return ServiceResponse::json(Value(Dictionary{{"id", *id},
                                                  {"sline", row->at("subject")},
                                                  {"content", contentOf(row->at("html").get<std::string>())},
                                                  {"blbl", row->at("label")},
                                                  {"burl", row->at("link")},
                                                  {"phash", row->at("phash")},
                                                  {"read", row->at("read").get<bool>() ? 1 : 0},
                                                  {"created", row->at("created")},
                                                  {"end", row->at("end")},
                                                  {"card_url", cardUrl(*row, call.request)},
                                                  {"bg_color", row->at("backgroundColor")},
                                                  {"fg_color", row->at("foregroundColor")},
                                                  {"meta_data", row->at("metadata")}}));
}

/// Returns whether the payload sets the key, which cannot be unset.
bool sets(const Dictionary& payload, const std::string& key) {
    const auto* value = valueForKey(payload, key);
    if (value && *value != Value(true)) throw MalformedRequest(fmt::format("\"{}\" can only be set to true", key));
    return value;
}

ServiceResponse update(MailboxStore& mailboxes, EndpointCall& call) {
    call.readUser();
    const auto payload = jsonPayload(call.request);
    const MailboxStore::Change change{sets(payload, "read"), sets(payload, "deleted")};
    if (!change.isRead && !change.isDeleted) throw MalformedRequest("the body has neither \"read\" nor \"deleted\"");
    const auto id = messageId(call);
    const bool isDone = id && mailboxes.change(call.appKey, call.trackingId, *id, change);
    return isDone ? ServiceResponse::ok() : noSuchMessage();
}

ServiceResponse image(MailboxStore& mailboxes, const EndpointCall& call) {
    const auto image = mailboxes.image(call.parameters.at("name"));
    if (!image) return ServiceResponse::error(404, "there is no such image");
    ServiceResponse response;
    response.contentType = image->contentType;
    response.body = image->bytes;
    return response;
}

}  // namespace

void addMailboxEndpoints(EndpointRouter& router, ServiceStore& store) {
    auto& mailboxes = store.mailboxes();
    // A tracking id may contain slashes, which are not encoded in the path.
    const std::string mailbox = "/{appKey}/{trackingId*}/rich/mailbox";
    router.add("inboxState", "GET", mailbox, [&store](EndpointCall& call) { return state(store, call); });
    router.add("inboxMessage", "GET", mailbox + "/messages/{messageId}",
               [&mailboxes](EndpointCall& call) { return message(mailboxes, call); });
    router.add("updateInboxMessage", "PUT", mailbox + "/messages/{messageId}",
               [&mailboxes](EndpointCall& call) { return update(mailboxes, call); });
    router.add("cardImage", "GET", std::string(kImageFolder) + "{name}",
               [&mailboxes](EndpointCall& call) { return image(mailboxes, call); });
}

}  // namespace vorlane::service
