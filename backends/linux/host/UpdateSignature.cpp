#include "backends/linux/host/UpdateSignature.h"

#include "backends/linux/host/LateLibrary.h"
#include "backends/shared/Base64.h"
#include "platform/foundation/Result.h"

#include <openssl/evp.h>

#include <cstddef>
#include <memory>

namespace backends {

using platform::NSError;

namespace {

constexpr std::size_t keyBytes = 32;
constexpr std::size_t signatureBytes = 64;

struct CryptoLibrary {
#define PANEWELD_CRYPTO_FUNCTIONS(function)                                                                            \
    function(EVP_PKEY_new_raw_public_key);                                                                             \
    function(EVP_PKEY_free);                                                                                           \
    function(EVP_MD_CTX_new);                                                                                          \
    function(EVP_MD_CTX_free);                                                                                         \
    function(EVP_DigestVerifyInit);                                                                                    \
    function(EVP_DigestVerify)
#define PANEWELD_DECLARE(name) decltype(&::name) name = nullptr
    PANEWELD_CRYPTO_FUNCTIONS(PANEWELD_DECLARE);
#undef PANEWELD_DECLARE

    static platform::Result<CryptoLibrary> load()
    {
        // The second one has the same functions as far as they are needed here.
        auto library = LateLibrary::load("libcrypto.so.3");
        if (!library)
            library = LateLibrary::load("libcrypto.so.1.1");
        if (!library)
            return library.error();
        CryptoLibrary table;
        char const* missing = nullptr;
#define PANEWELD_FIND(name)                                                                                            \
    if (!library.value().find(#name, table.name))                                                                      \
    missing = #name
        PANEWELD_CRYPTO_FUNCTIONS(PANEWELD_FIND);
#undef PANEWELD_FIND
        if (missing)
            return NSError { "Loader", 2, std::string("libcrypto has no ") + missing };
        return table;
    }
};

bool isSignedBy(CryptoLibrary const& crypto, std::vector<std::uint8_t> const& key,
    std::vector<std::uint8_t> const& signature, std::span<std::uint8_t const> bytes)
{
    std::unique_ptr<EVP_PKEY, decltype(crypto.EVP_PKEY_free)> const publicKey(
        crypto.EVP_PKEY_new_raw_public_key(EVP_PKEY_ED25519, nullptr, key.data(), key.size()), crypto.EVP_PKEY_free);
    std::unique_ptr<EVP_MD_CTX, decltype(crypto.EVP_MD_CTX_free)> const context(
        crypto.EVP_MD_CTX_new(), crypto.EVP_MD_CTX_free);
    return publicKey && context
        && crypto.EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, publicKey.get()) == 1
        && crypto.EVP_DigestVerify(context.get(), signature.data(), signature.size(), bytes.data(), bytes.size()) == 1;
}

} // namespace

std::optional<NSError> whyNotSigned(
    std::span<std::uint8_t const> bytes, std::string const& signature, std::vector<std::string> const& keys)
{
    std::vector<std::vector<std::uint8_t>> readKeys;
    for (auto const& text : keys) {
        if (auto key = bytesFromBase64(text); key && key->size() == keyBytes)
            readKeys.push_back(std::move(*key));
    }
    if (readKeys.empty())
        return NSError { "Updates", 1002, "the app has no key to check updates with" };
    auto const readSignature = bytesFromBase64(signature);
    if (!readSignature || readSignature->size() != signatureBytes)
        return NSError { "Updates", 3000, signature.empty() ? "it is not signed" : "its signature cannot be read" };
    if (bytes.empty())
        return NSError { "Updates", 3002, "it is empty" };
    auto const crypto = CryptoLibrary::load();
    if (!crypto)
        return crypto.error();
    for (auto const& key : readKeys) {
        if (isSignedBy(crypto.value(), key, *readSignature, bytes))
            return std::nullopt;
    }
    return NSError { "Updates", 3001, "its signature is not by a key of the app" };
}

} // namespace backends
