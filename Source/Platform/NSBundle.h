#pragma once

#include <optional>
#include <string>

#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

/// The application's Info dictionary and resource files. Immutable.
class VORLANE_EXPORT NSBundle {
public:
    /// With an empty `resourceFolder` the bundle has no resources.
    explicit NSBundle(Dictionary infoDictionary, std::string resourceFolder = {});

    const Dictionary& infoDictionary() const { return infoDictionary_; }

    /// Returns `nullopt` if the key is absent.
    std::optional<Value> objectForInfoDictionaryKey(const std::string& key) const;

    /// Returns the string under "CFBundleIdentifier", or `nullopt`.
    std::optional<std::string> bundleIdentifier() const;

    /// `pathForResource:ofType:` returns the path of `name`.`type` in the resource folder. Returns `nullopt` if the
    /// file does not exist or the name leads out of the folder.
    std::optional<std::string> pathForResource(const std::string& name, const std::string& type) const;

private:
    Dictionary infoDictionary_;
    std::string resourceFolder_;
};

}  // namespace vorlane
