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

/// Returns where the unqualified name starts: after the last "::" outside template and function arguments.
std::size_t startOfUnqualifiedName(const std::string& qualified) {
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

/// Returns the last name in the mangled name of a class that is no template, such as N7vorlane10VLSettingsE; `nullopt`
/// for any other type. Start-up needs a hundred of them, and demangling is slow.
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
    return qualified.substr(startOfUnqualifiedName(qualified));
}

}  // namespace vorlane
