#include "Inbox/VLInboxRecord.h"

#include <charconv>
#include <cmath>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>

#include "Categories/NSCharacterSet+VLURLEncoding.h"
#include "Categories/NSDictionary+VLJSON.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Categories/NSString+VLHTML.h"

namespace vorlane {

namespace {

/// Returns `nullopt` unless the whole string is one finite number.
template <class Number>
std::optional<Number> numberWithString(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    if constexpr (std::is_floating_point_v<Number>) {
        if (!std::isfinite(number)) return std::nullopt;
    }
    return number;
}

std::optional<double> timeForKey(const Dictionary& answer, const std::string& key) {
    if (const auto text = stringForKey(answer, key)) return numberWithString<double>(*text);
    return numberForKey(answer, key);
}

std::optional<std::int64_t> flagForKey(const Dictionary& answer, const std::string& key) {
    const auto* value = valueForKey(answer, key);
    if (!value) return std::nullopt;
    if (value->is_boolean()) return value->get<bool>() ? 1 : 0;
    if (!value->is_string()) return integerValue(*value);
    const auto number = numberWithString<double>(value->get_ref<const std::string&>());
    return number ? integerValue(Value(*number)) : std::nullopt;
}

/// Accepts an id from 0 to 18446744073709551615, as a number or as a string of decimal digits.
std::optional<std::uint64_t> usableId(const Value& value) {
    constexpr double kLimit = 18446744073709551616.0;
    if (value.is_number_unsigned()) return value.get<std::uint64_t>();
    if (value.is_string()) return numberWithString<std::uint64_t>(value.get_ref<const std::string&>());
    if (!value.is_number()) return std::nullopt;
    const auto number = value.get<double>();
    if (number < 0 || number >= kLimit || std::trunc(number) != number) return std::nullopt;
    return value.is_number_float() ? static_cast<std::uint64_t>(number) : value.get<std::uint64_t>();
}

std::optional<std::string> metadataString(const Dictionary& answer) {
    const auto* metadata = dictionaryForKey(answer, "meta_data");
    auto text = metadata ? vl_asJSON(*metadata) : std::string();
    return text.empty() ? std::nullopt : std::optional(std::move(text));
}

/// Content with a bare "%" is not percent-encoded and stays unchanged.
std::string preparedPage(std::string content) {
    if (content.find('%') != std::string::npos) {
        if (auto decoded = stringByRemovingPercentEncoding(content)) content = std::move(*decoded);
    }
    if (content.find('&') != std::string::npos) content = vl_unescapeHTML(content);
    return vl_prependHTMLStringWithViewportMetaTag(content);
}

}  // namespace

VLInboxRecord VLInboxRecord::recordWithAnswer(std::uint64_t notificationId, const Dictionary& answer) {
    return {.notificationId = notificationId,
            .subject = stringForKey(answer, "sline"),
            .content = stringForKey(answer, "content"),
            .label = stringForKey(answer, "blbl"),
            .url = stringForKey(answer, "burl"),
            .phash = stringForKey(answer, "phash"),
            .read = flagForKey(answer, "read"),
            .created = timeForKey(answer, "created"),
            .end = timeForKey(answer, "end"),
            .cardUrl = stringForKey(answer, "card_url"),
            .backgroundColor = stringForKey(answer, "bg_color"),
            .foregroundColor = stringForKey(answer, "fg_color"),
            .metadata = metadataString(answer)};
}

VLInboxMessage::Content VLInboxRecord::messageContent() && {
    VLInboxMessage::Content message;
    message.messageId = notificationId;
    message.subject = std::move(subject);
    if (content) message.htmlContent = preparedPage(std::move(*content));
    message.label = std::move(label);
    message.url = std::move(url);
    message.phash = std::move(phash);
    message.read = read.value_or(0);
    message.created = created.value_or(0);
    message.end = end.value_or(0);
    message.cardImage = std::move(cardUrl);
    message.cardBackgroundColor = std::move(backgroundColor).value_or("");
    message.cardForegroundColor = std::move(foregroundColor).value_or("");
    if (metadata) message.metadata = vl_dictionaryWithJSON(metadata);
    return message;
}

std::vector<VLInboxEntry> inboxEntriesWithArray(const Array& elements) {
    std::vector<VLInboxEntry> entries;
    entries.reserve(elements.size());
    for (const auto& element : elements) {
        const auto* dictionary = element.get_ptr<const Dictionary*>();
        const auto* value = dictionary ? valueForKey(*dictionary, "id") : nullptr;
        const auto identifier = value ? usableId(*value) : std::nullopt;
        if (identifier) entries.push_back({*identifier, flagForKey(*dictionary, "read").value_or(0)});
    }
    return entries;
}

}  // namespace vorlane
