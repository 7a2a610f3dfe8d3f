#include "Public/VLOptionalDictionaryArgument.h"

#include "Public/VLValue.h"

namespace vorlane {

std::optional<Dictionary> VLOptionalDictionaryArgument::dictionary() const {
    if (!dictionary_) return std::nullopt;
    return *dictionary_;
}

}  // namespace vorlane
