#include "Benchmarks/Support/BareFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>

namespace vorlane::benchmarks {

void writeBareFile(const Data& bytes, const std::string& path) {
    const auto temporary = path + ".bare";
    const int file = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    const bool isWritten = file >= 0 && write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()) &&
                           close(file) == 0 && rename(temporary.c_str(), path.c_str()) == 0;
    if (!isWritten) throw std::runtime_error("cannot write " + path);
}

}  // namespace vorlane::benchmarks
