#include "Platform/NSPropertyListSerialization.h"

#include <utility>

#include "Platform/NSFileManager.h"
#include "Platform/PropertyList/PropertyListReader.h"
#include "Platform/PropertyList/PropertyListWriter.h"

namespace vorlane {

std::optional<Value> NSPropertyListSerialization::propertyListWithData(const Data& bytes) {
    return PropertyListReader::read(bytes);
}

Data NSPropertyListSerialization::dataWithPropertyList(const Value& propertyList) {
    return PropertyListWriter::write(propertyList);
}

Data NSPropertyListSerialization::dataWithPropertyList(const Dictionary& propertyList) {
    return PropertyListWriter::write(propertyList);
}

Data NSPropertyListSerialization::dataWithPropertyList(const Array& propertyList) {
    return PropertyListWriter::write(propertyList);
}

std::optional<Dictionary> NSPropertyListSerialization::dictionaryWithContentsOfFile(const std::string& path) {
    const auto bytes = NSFileManager::contentsAtPath(path);
    auto propertyList = bytes ? propertyListWithData(*bytes) : std::nullopt;
    if (!propertyList || !propertyList->is_object()) return std::nullopt;
    return std::move(propertyList->get_ref<Dictionary&>());
}

bool NSPropertyListSerialization::writeToFile(const Dictionary& dictionary, const std::string& path) {
    const auto bytes = PropertyListWriter::write(dictionary);
    return !bytes.empty() && NSFileManager::writeToFile(bytes, path);
}

}  // namespace vorlane
