#include "Platform/NSObject.h"

#include <cxxabi.h>

#include <cstddef>
#include <cstdlib>
#include <memory>

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

}  // namespace

NSObject::~NSObject() = default;

std::string NSObject::className() const { return NSStringFromClass(typeid(*this)); }

std::string NSStringFromClass(const std::type_info& type) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status),
                                                           &std::free);
    const std::string qualified = name ? name.get() : type.name();
    return qualified.substr(startOfOwnName(qualified));
}

}  // namespace vorlane
