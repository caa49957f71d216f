#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct evp_pkey_st;

namespace paneweld_tests {

// A key that a maker of apps signs updates with (Ed25519), always the same one for a number.
class SigningKey {
public:
    explicit SigningKey(std::uint8_t number);

    // In base64, as an app's Info and a feed have them.
    std::string publicKey() const;
    std::string sign(std::string_view bytes) const;
    // The feed with the comment that signs it.
    std::string signedFeed(std::string const& feed) const;

    static std::string base64(std::string_view bytes);

private:
    std::shared_ptr<evp_pkey_st> m_key;
};

} // namespace paneweld_tests
