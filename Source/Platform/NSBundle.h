#pragma once

#include <optional>
#include <string>

#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

/// The application's own description of itself, and its resource files. Immutable.
class VORLANE_EXPORT NSBundle {
public:
    /// `resourceFolder` empty: the bundle has no resources.
    explicit NSBundle(Dictionary infoDictionary, std::string resourceFolder = {});

    const Dictionary& infoDictionary() const { return infoDictionary_; }

    /// The value under `key`; nothing when there is none.
    std::optional<Value> objectForInfoDictionaryKey(const std::string& key) const;

    /// The text under "CFBundleIdentifier"; nothing when there is none.
    std::optional<std::string> bundleIdentifier() const;

    /// `pathForResource:ofType:` finds `name`.`type` in the resource folder; nothing when there is no such file, or
    /// when the name leads out of the folder.
    std::optional<std::string> pathForResource(const std::string& name, const std::string& type) const;

private:
    Dictionary infoDictionary_;
    std::string resourceFolder_;
};

}  // namespace vorlane
