#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

/// Writes a property list that holds one array of many dictionaries, each of which is serialised once and then kept as
/// XML by the caller: a change of one dictionary costs the copying of the others, not their serialisation.
class VORLANE_EXPORT PropertyListElements {
public:
    /// The dictionary as an XML element. Arrays and dictionaries nested so deep that the list could not be read back
    /// are left out.
    static std::string element(Dictionary fields);

    /// The property list of a dictionary whose only key, `key`, holds the array of these elements.
    static Data listOf(const std::string& key, const std::vector<std::string_view>& elements);
};

}  // namespace vorlane
