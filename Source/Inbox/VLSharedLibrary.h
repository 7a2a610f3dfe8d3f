#pragma once

#include <string>

namespace vorlane {

/// A shared library that few programs need, loaded when first used. It stays loaded to the end of the process. Any
/// thread.
class VLSharedLibrary {
public:
    /// Loads `name`, as the dynamic linker finds it. A failure is logged at ERROR.
    explicit VLSharedLibrary(const char* name);

    bool isLoaded() const { return handle_ != nullptr; }

    /// Finds the function `name` and returns true; otherwise logs at ERROR, leaves `function` null and returns false.
    template <class Function>
    bool find(const char* name, Function*& function) const {
        function = reinterpret_cast<Function*>(address(name));
        return function != nullptr;
    }

private:
    void* address(const char* name) const;

    // Fixed at construction.
    const std::string name_;
    void* handle_;
};

}  // namespace vorlane
