#include <fmt/format.h>

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Demo/Chapters.h"

namespace vorlane::demo {

namespace {

constexpr const char* kList = "getInboxMessagesWithCompletionHandler:";
constexpr double kYesterday = 1'699'920'000.0;
// A red dot.
constexpr const char* kImage =
    "89504e470d0a1a0a0000000d4948445200000001000000010802000000907753de0000000c4944415478da63f8cfc0000003010100f7034143"
    "0000000049454e44ae426082";

using Subjects = std::vector<std::string>;

void launch(Stage& stage, const std::string& what, Stage::Network network) {
    stage.switchOn(network);
    stage.play(what, {{"do", "launch"}, {"preset", "development"}});
}

/// Sends a message as the operator; `hour` is the hour of its creation.
Value send(Stage& stage, const std::string& user, const std::string& subject, int hour, Dictionary further = {}) {
    further.insert({{"appKey", Stage::appKey()},
                    {"trackingId", user},
                    {"subject", subject},
                    {"created", kYesterday + hour * 3600},
                    {"html", "<p>" + subject + "</p>"}});
    return stage.service().post("messages", Value(std::move(further)))["id"];
}

/// The service's record of a user's message: "read", "deleted" and more; an empty object without one.
Value stored(Stage& stage, const std::string& user, const Value& id) {
    const auto answer = stage.service().get(fmt::format("messages?appKey={}&trackingId={}", Stage::appKey(), user));
    for (const auto& message : answer["messages"]) {
        if (message["id"] == id) return message;
    }
    return Value::object();
}

/// The subjects in a list that a handler received, newest first.
Subjects subjectsIn(const Array& values) {
    Subjects subjects;
    if (values.empty()) return subjects;
    for (const auto& message : values[0]) subjects.push_back(message["subject"].get<std::string>());
    return subjects;
}

std::size_t fetches(Stage& stage) { return stage.service().requests("inboxMessage").size(); }

void fillAndRead(Stage& stage, const Value& sale) {
    const auto list = stage.call("the list of messages", kList);
    stage.promise("the inbox lists three messages, the newest first, all unread",
                  subjectsIn(list) == Subjects{"Sale", "News", "Welcome"} && list[1] == Value(3));
    stage.promise("each message was fetched once", fetches(stage) == 3);
    const auto image = stage.play("the card image of \"Sale\"", {{"do", "loadImage"}, {"messageId", sale}});
    stage.promise("the service's own image is loaded",
                  image.size() == 1 && image[0].is_object() && image[0]["width"] == Value(1));
    stage.call("open \"Sale\"", "openInboxMessage:completionHandler:", {sale});
    stage.promise("the service knows that the message was read",
                  stored(stage, "anna@example", sale)["read"] == Value(true));
    stage.promise("reading is an event", stage.lastPayload("registerEvent")["event_type"] == Value("Read"));
    const auto again = stage.call("the list once more", kList);
    stage.promise("within a minute the list comes from the database, with two unread messages",
                  again.size() == 2 && again[1] == Value(2) && fetches(stage) == 3);
    stage.switchOff();
}

void deleteOffline(Stage& stage, const Value& news) {
    launch(stage, "launch, without a network", Stage::Network::Unavailable);
    const auto offline = stage.call("the list, without a network", kList);
    stage.promise("without a network the inbox lists the stored messages",
                  subjectsIn(offline) == Subjects{"Sale", "News", "Welcome"} && offline[1] == Value(2));
    const auto deleted = stage.call("delete \"News\"", "deleteInboxMessage:completionHandler:", {news});
    stage.promise("a message can be deleted without a network", deleted == Array{nullptr});
    stage.promise("the deletion is not reported yet", stored(stage, "anna@example", news)["deleted"] == Value(false));
    stage.switchOff();
}

void catchUp(Stage& stage, const Value& news) {
    launch(stage, "launch, the network is back", Stage::Network::Available);
    const auto list = stage.call("the list of messages", kList);
    stage.promise("the deleted message does not come back",
                  subjectsIn(list) == Subjects{"Sale", "Welcome"} && list[1] == Value(1) && fetches(stage) == 3);
    stage.promise("the deletion is reported later", stored(stage, "anna@example", news)["deleted"] == Value(true));
}

void anotherInbox(Stage& stage) {
    stage.call("the user becomes boris@example", "setTrackingId:", {"boris@example"});
    const auto boris = stage.call("his list of messages", kList);
    stage.promise("another user sees only his own messages",
                  subjectsIn(boris) == Subjects{"Hello Boris"} && boris[1] == Value(1));
    stage.call("the user becomes anna@example again", "setTrackingId:", {"anna@example"});
    const auto anna = stage.call("her list of messages", kList);
    stage.promise("the first user's messages are still stored and not fetched again",
                  subjectsIn(anna) == Subjects{"Sale", "Welcome"} && anna[1] == Value(1) && fetches(stage) == 4);
    stage.switchOff();
}

}  // namespace

void playInbox(Stage& stage) {
    send(stage, "anna@example", "Welcome", 8);
    const auto news = send(stage, "anna@example", "News", 9, {{"label", "news"}});
    const auto sale = send(stage, "anna@example", "Sale", 10, {{"image", kImage}, {"link", "https://shop.example/"}});
    send(stage, "boris@example", "Hello Boris", 11);
    launch(stage, "launch, with three messages waiting", Stage::Network::Available);
    fillAndRead(stage, sale);
    deleteOffline(stage, news);
    catchUp(stage, news);
    anotherInbox(stage);
}

}  // namespace vorlane::demo
