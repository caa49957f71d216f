#pragma once

#include "tests/support/TemporaryFolder.h"

#include <memory>
#include <string>

struct ssl_ctx_st;

namespace paneweld_tests {

// Who a test's web server says it is over https: 127.0.0.1, by its own word alone. Trusted by whoever is told to
// (SSL_CERT_FILE).
class ServerCertificate {
public:
    ServerCertificate();

    std::string file() const { return m_folder.path() + "/certificate.pem"; }
    ssl_ctx_st* context() const { return m_context.get(); }

private:
    platform::TemporaryFolder m_folder;
    std::shared_ptr<ssl_ctx_st> m_context;
};

} // namespace paneweld_tests
