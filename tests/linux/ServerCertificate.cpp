#include "tests/linux/ServerCertificate.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <openssl/ec.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

namespace paneweld_tests {

namespace {

template<typename Type>
using Owned = std::unique_ptr<Type, void (*)(Type*)>;

Owned<X509> selfSigned(EVP_PKEY* key)
{
    Owned<X509> made(X509_new(), &X509_free);
    auto* const certificate = made.get();
    X509_set_version(certificate, X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate), 1);
    constexpr long day = 86400;
    X509_gmtime_adj(X509_getm_notBefore(certificate), -day);
    X509_gmtime_adj(X509_getm_notAfter(certificate), day);
    X509_set_pubkey(certificate, key);
    auto* const name = X509_get_subject_name(certificate);
    X509_NAME_add_entry_by_txt(
        name, "CN", MBSTRING_ASC, reinterpret_cast<unsigned char const*>("127.0.0.1"), -1, -1, 0);
    X509_set_issuer_name(certificate, name);
    Owned<X509_EXTENSION> const address(
        X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, "IP:127.0.0.1"), &X509_EXTENSION_free);
    EXPECT_EQ(X509_add_ext(certificate, address.get(), -1), 1);
    EXPECT_GT(X509_sign(certificate, key, EVP_sha256()), 0);
    return made;
}

} // namespace

ServerCertificate::ServerCertificate()
    : m_context(SSL_CTX_new(TLS_server_method()), &SSL_CTX_free)
{
    Owned<EVP_PKEY> const key(EVP_EC_gen("P-256"), &EVP_PKEY_free);
    auto const certificate = selfSigned(key.get());
    EXPECT_EQ(SSL_CTX_use_certificate(m_context.get(), certificate.get()), 1);
    EXPECT_EQ(SSL_CTX_use_PrivateKey(m_context.get(), key.get()), 1);
    std::unique_ptr<FILE, int (*)(FILE*)> const written(std::fopen(file().c_str(), "w"), &std::fclose);
    EXPECT_EQ(PEM_write_X509(written.get(), certificate.get()), 1);
}

} // namespace paneweld_tests
