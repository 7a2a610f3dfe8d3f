#include "Geo/VLGeoRegionFile.h"

#include <algorithm>
#include <utility>

#include "Categories/NSDictionary+VLLookup.h"
#include "Geo/VLGeoRegionRecord.h"
#include "Platform/Internal/PropertyListFile.h"
#include "Platform/Platform.h"

namespace vorlane {

namespace {

using Record = VLGeoRegionRecord;

VLGeoRegionFile::Records recordsIn(const Value& root) {
    VLGeoRegionFile::Records records;
    for (const auto& element : root) {
        if (const auto* record = element.get_ptr<const Dictionary*>()) records.push_back(*record);
    }
    return records;
}

void keepLaterTimes(Dictionary& record, const VLGeoRegionFile::Records& stored) {
    const auto identifier = stringForKey(record, Record::kIdentifierKey);
    for (const auto& other : stored) {
        if (stringForKey(other, Record::kIdentifierKey) != identifier) continue;
        for (const auto* key : {Record::kEnterTimestampKey, Record::kExitTimestampKey}) {
            record[key] = std::max(Record::numberIn(record, key), Record::numberIn(other, key));
        }
    }
}

}  // namespace

VLGeoRegionFile::VLGeoRegionFile()
    : file_(std::make_unique<PropertyListFile>(path(), PropertyListFile::Root::ArrayRoot)) {}

VLGeoRegionFile::~VLGeoRegionFile() = default;

const std::optional<VLGeoRegionFile::Records>& VLGeoRegionFile::getRegionsFromFile() {
    if (isRead_) return records_;
    const auto reading = file_->read();
    isRead_ = reading.status != PropertyListFile::Status::Unreadable;
    if (reading.status == PropertyListFile::Status::Contents) records_ = recordsIn(reading.contents);
    return records_;
}

void VLGeoRegionFile::saveRegionsToFile(Records records) {
    isRead_ = true;
    records_ = std::move(records);
    write();
}

void VLGeoRegionFile::write() {
    if (!records_ || PropertyListFile::Step::postpone(*file_, [this] { write(); })) return;
    if (const auto stored = file_->readAgain()) {
        for (auto& record : *records_) keepLaterTimes(record, recordsIn(*stored));
    }
    file_->write(Array(records_->begin(), records_->end()));
}

void VLGeoRegionFile::deleteGeoRegionsFile() {
    isRead_ = true;
    records_.reset();
    file_->remove();
}

std::string VLGeoRegionFile::path() { return Platform::current().documentsFolder() + "/VLGeoRegions.plist"; }

}  // namespace vorlane
