#include "Platform/NSObject.h"

#include <cxxabi.h>

#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>

namespace vorlane {

namespace {

/// Where the name proper starts: behind the last "::" that does not belong to a template's or a function's arguments.
std::size_t startOfOwnName(const std::string& qualified) {
    std::size_t start = 0;
    int depth = 0;
    for (std::size_t i = 0; i < qualified.size(); ++i) {
        const char character = qualified[i];
        if (character == '<' || character == '(') ++depth;
        if (character == '>' || character == ')') --depth;
        if (depth == 0 && character == ':') start = i + 1;
    }
    return start;
}

/// The name of a class that is no template, read off its mangled name, such as N7vorlane10VLSettingsE: the last of its
/// names, each behind its length. Nothing for any other type. Start-up asks for a hundred of these.
std::optional<std::string> nameOfPlainClass(std::string_view mangled) {
    const bool isNested = mangled.starts_with('N') && mangled.ends_with('E');
    if (isNested) mangled = mangled.substr(1, mangled.size() - 2);
    std::string_view name;
    while (!mangled.empty()) {
        std::size_t length = 0;
        const auto [digitsEnd, error] = std::from_chars(mangled.data(), mangled.data() + mangled.size(), length);
        if (error != std::errc()) return std::nullopt;
        mangled.remove_prefix(static_cast<std::size_t>(digitsEnd - mangled.data()));
        name = mangled.substr(0, length);
        mangled.remove_prefix(name.size());
    }
    return std::string(name);
}

}  // namespace

NSObject::~NSObject() = default;

std::string NSObject::className() const { return NSStringFromClass(typeid(*this)); }

std::string NSStringFromClass(const std::type_info& type) {
    if (auto name = nameOfPlainClass(type.name())) return *name;
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status),
                                                           &std::free);
    const std::string qualified = name ? name.get() : type.name();
    return qualified.substr(startOfOwnName(qualified));
}

}  // namespace vorlane
