#include "Simulator/Service/Http/RequestJournal.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>

#include "Simulator/Service/Http/RecordedRequest.h"
#include "Simulator/Service/Http/ServiceError.h"
#include "Simulator/Service/Http/ServiceResponse.h"

namespace vorlane::service {

RequestJournal::RequestJournal(const std::string& path) {
    file_.reset(path == "-" ? stdout : std::fopen(path.c_str(), "ae"));
    if (!file_) throw ServiceError(fmt::format("cannot write {}: {}", path, std::strerror(errno)));
}

void RequestJournal::write(const RecordedRequest& request) {
    const auto line = jsonText(Value(request.asDictionary())) + "\n";
    const std::lock_guard lock(mutex_);
    // A failed write (a full disk, a closed pipe) does not stop the service.
    std::fwrite(line.data(), 1, line.size(), file_.get());
    std::fflush(file_.get());
}

void RequestJournal::Closer::operator()(std::FILE* file) const {
    if (file != stdout) std::fclose(file);
}

}  // namespace vorlane::service
