#include "tests/linux/SigningKey.h"

#include <array>
#include <gtest/gtest.h>
#include <openssl/evp.h>

namespace paneweld_tests {

SigningKey::SigningKey(std::uint8_t number)
{
    std::array<std::uint8_t, 32> seed {};
    seed.fill(number);
    m_key.reset(EVP_PKEY_new_raw_private_key(EVP_PKEY_ED25519, nullptr, seed.data(), seed.size()), EVP_PKEY_free);
    EXPECT_TRUE(m_key);
}

std::string SigningKey::publicKey() const
{
    std::string key(32, '\0');
    auto size = key.size();
    EXPECT_EQ(EVP_PKEY_get_raw_public_key(m_key.get(), reinterpret_cast<std::uint8_t*>(key.data()), &size), 1);
    return base64(key);
}

std::string SigningKey::sign(std::string_view bytes) const
{
    std::string signature(64, '\0');
    auto size = signature.size();
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> const context(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    EXPECT_EQ(EVP_DigestSignInit(context.get(), nullptr, nullptr, nullptr, m_key.get()), 1);
    EXPECT_EQ(EVP_DigestSign(context.get(), reinterpret_cast<std::uint8_t*>(signature.data()), &size,
                  reinterpret_cast<std::uint8_t const*>(bytes.data()), bytes.size()),
        1);
    return base64(signature);
}

std::string SigningKey::signedFeed(std::string const& feed) const
{
    return feed + "<!-- sparkle-signatures:\nedSignature: " + sign(feed) + "\nlength: " + std::to_string(feed.size())
        + "\n-->\n";
}

std::string SigningKey::base64(std::string_view bytes)
{
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
    auto const length = EVP_EncodeBlock(reinterpret_cast<std::uint8_t*>(text.data()),
        reinterpret_cast<std::uint8_t const*>(bytes.data()), static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

} // namespace paneweld_tests
