#pragma once

#include <string>

#include "Tests/Platform/Linux/Curl/LoopbackServer.h"

namespace vorlane {

/// Makes a TLS server accept HTTP/2.
void offerHTTP2(SSL_CTX* context);

/// Answers every request of a connection with status 200 and the body, over HTTP/2.
LoopbackServer::Script http2Script(std::string body);

}  // namespace vorlane
