#include "Geo/VLGeoRegionFile.h"

#include <utility>

#include "Platform/Platform.h"

namespace vorlane {

const std::optional<VLGeoRegionFile::Records>& VLGeoRegionFile::getRegionsFromFile() {
    if (!isRead_) readFile();
    return records_;
}

void VLGeoRegionFile::readFile() {
    auto reading = file_.read();
    isRead_ = reading.status != PropertyListFile::Status::unreadable;
    if (reading.status != PropertyListFile::Status::contents) return;
    records_.emplace();
    for (auto& element : reading.contents) {
        if (auto* record = element.get_ptr<Dictionary*>()) records_->push_back(std::move(*record));
    }
}

void VLGeoRegionFile::saveRegionsToFile(Records records) {
    isRead_ = true;
    records_ = std::move(records);
    writeFile();
}

void VLGeoRegionFile::writeFile() {
    if (PropertyListFile::Step::postpone(file_, [this] { writeFile(); })) return;
    if (!records_) return;
    // The records replace all that the file holds, also if it could not be read before.
    file_.readAgain();
    file_.write(Array(records_->begin(), records_->end()));
}

void VLGeoRegionFile::deleteGeoRegionsFile() {
    isRead_ = true;
    records_.reset();
    file_.remove();
}

std::string VLGeoRegionFile::path() { return Platform::current().documentsFolder() + "/VLGeoRegions.plist"; }

}  // namespace vorlane
