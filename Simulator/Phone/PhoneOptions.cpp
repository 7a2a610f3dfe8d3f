#include "Simulator/Phone/PhoneOptions.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string_view>

#include "Categories/NSDictionary+VLJSON.h"
#include "Platform/NSURL.h"

namespace vorlane::phone {

namespace {

constexpr double kVirtualClockStart = 1'700'000'000.0;

double number(const std::string& text, const std::string& option) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) {
        throw std::invalid_argument(option + " takes a number, not " + text);
    }
    return value;
}

Dictionary dictionaryInFile(const std::string& path, const std::string& option) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::invalid_argument(option + ": cannot read " + path);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    std::optional<NSError> error;
    auto dictionary = vl_dictionaryWithJSON(text, error);
    if (!dictionary) throw std::invalid_argument(option + ": " + path + " is not a JSON object");
    return std::move(*dictionary);
}

std::string absoluteURL(const std::string& text, const std::string& option) {
    if (!NSURL::URLWithString(text)) throw std::invalid_argument(option + " takes an absolute URL, not " + text);
    return text;
}

void setClock(PhoneOptions& options, const std::string& text) {
    constexpr const char* kVirtual = "virtual";
    if (text == "real") {
        options.virtualClock.reset();
    } else if (text == kVirtual) {
        options.virtualClock = kVirtualClockStart;
    } else if (text.starts_with("virtual=")) {
        options.virtualClock = number(text.substr(std::string("virtual=").size()), "--clock");
    } else {
        throw std::invalid_argument("--clock takes real, virtual or virtual=SECONDS, not " + text);
    }
}

void setLogLevel(PhoneOptions& options, const std::string& text) {
    const double level = number(text, "--log-level");
    if (level != 0 && level != 1 && level != 2 && level != 3 && level != 4) {
        throw std::invalid_argument("--log-level takes 0 to 4, not " + text);
    }
    options.logLevel = static_cast<VLLogLevel>(static_cast<std::uint64_t>(level));
}

using OptionSetter = std::function<void(PhoneOptions&, const std::string&)>;

const std::map<std::string, OptionSetter>& optionSetters() {
    static const std::map<std::string, OptionSetter> table = {
        {"--data-dir", [](auto& options, const auto& text) { options.dataDirectory = text; }},
        {"--service", [](auto& options, const auto& text) { options.serviceOrigin = absoluteURL(text, "--service"); }},
        {"--urls", [](auto& options, const auto& text) { options.urls = dictionaryInFile(text, "--urls"); }},
        {"--info", [](auto& options, const auto& text) { options.info = dictionaryInFile(text, "--info"); }},
        {"--os-version", [](auto& options, const auto& text) { options.systemVersion = number(text, "--os-version"); }},
        {"--clock", setClock},
        {"--log-level", setLogLevel},
        {"--resources", [](auto& options, const auto& text) { options.resources = text; }},
    };
    return table;
}

}  // namespace

const char* PhoneOptions::usage() {
    return "usage: vorlane-phone --data-dir DIR [--service ORIGIN | --urls FILE] [--info FILE] [--os-version 12.0]\n"
           "                     [--clock real | virtual[=SECONDS_SINCE_1970]] [--log-level 0..4] [--resources DIR]\n"
           "\n"
           "A host application that reads one JSON object a line from standard input and writes its answers to "
           "standard\n"
           "output in the same form.\n"
           "\n"
           "  --data-dir DIR      the documents folder; created if it is missing\n"
           "  --service ORIGIN    sends all requests to one origin, such as http://127.0.0.1:8780\n"
           "  --urls FILE         a JSON object that maps endpoint names, such as inboxUrl, to absolute URLs\n"
           "  --info FILE         a JSON object: the Info dictionary of the application\n"
           "  --os-version N      the platform generation that the phone reports; 12.0 by default\n"
           "  --clock CLOCK       real, the default, or virtual: the clock stands still until \"advance\"\n"
           "  --log-level N       the level for a \"launch\" whose options name none\n"
           "  --resources DIR     the folder of the application's resource files\n"
           "  --help              prints this text\n";
}

PhoneOptions PhoneOptions::parse(int count, char** arguments) {
    PhoneOptions options;
    options.wantsHelp = std::find(arguments + 1, arguments + count, std::string_view("--help")) != arguments + count;
    if (options.wantsHelp) return options;
    for (int i = 1; i < count; i += 2) {
        const std::string option = arguments[i];
        const auto setter = optionSetters().find(option);
        if (setter == optionSetters().end()) throw std::invalid_argument("unknown option " + option);
        if (i + 1 == count) throw std::invalid_argument(option + " needs a value");
        setter->second(options, arguments[i + 1]);
    }
    if (options.dataDirectory.empty()) throw std::invalid_argument("--data-dir is missing");
    if (options.serviceOrigin && !options.urls.empty()) {
        throw std::invalid_argument("--service and --urls exclude each other");
    }
    return options;
}

}  // namespace vorlane::phone
