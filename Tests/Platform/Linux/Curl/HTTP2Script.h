#pragma once

#include <string>

#include "Tests/Platform/Linux/Curl/LoopbackServer.h"

namespace vorlane {

/// Has a TLS server agree to HTTP/2.
void offerHTTP2(SSL_CTX* context);

/// Speaks as much HTTP/2 as it takes to answer every request of a connection with status 200 and that body.
LoopbackServer::Script http2Script(std::string body);

}  // namespace vorlane
