#include "backends/linux/host/UpdateInstaller.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <openssl/evp.h>
#include <optional>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

// Verifying an archive as long as those of apps, whole and before a byte is unpacked.

namespace {

constexpr std::size_t archiveBytes = 50'000'000;

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Context = std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)>;

std::string base64(std::string const& bytes)
{
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
    text.resize(static_cast<std::size_t>(EVP_EncodeBlock(reinterpret_cast<std::uint8_t*>(text.data()),
        reinterpret_cast<std::uint8_t const*>(bytes.data()), static_cast<int>(bytes.size()))));
    return text;
}

// An archive where an installer expects it, with its signature.
class Archive {
public:
    Archive()
    {
        auto pattern = (std::filesystem::temp_directory_path() / "paneweld-bench-XXXXXX").string();
        m_folder = mkdtemp(pattern.data());
        std::filesystem::create_directory(m_folder + "/Ideas");
        installer.emplace(backends::UpdateTarget { backends::UpdateTarget::Kind::Folder, m_folder + "/Ideas" });
        auto const path = installer->prepare().take();
        std::string bytes(archiveBytes, '\0');
        std::uint32_t state = 1;
        for (auto& byte : bytes)
            byte = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
        std::ofstream(path, std::ios::binary) << bytes;
        std::string const seed(32, 'k');
        Key const pair(EVP_PKEY_new_raw_private_key(
                           EVP_PKEY_ED25519, nullptr, reinterpret_cast<std::uint8_t const*>(seed.data()), seed.size()),
            &EVP_PKEY_free);
        auto size = key.size();
        EVP_PKEY_get_raw_public_key(pair.get(), reinterpret_cast<std::uint8_t*>(key.data()), &size);
        size = signature.size();
        Context const context(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
        EVP_DigestSignInit(context.get(), nullptr, nullptr, nullptr, pair.get());
        EVP_DigestSign(context.get(), reinterpret_cast<std::uint8_t*>(signature.data()), &size,
            reinterpret_cast<std::uint8_t const*>(bytes.data()), bytes.size());
    }
    ~Archive()
    {
        installer.reset();
        std::filesystem::remove_all(m_folder);
    }
    Archive(Archive const&) = delete;
    Archive& operator=(Archive const&) = delete;

    std::optional<backends::UpdateInstaller> installer {};
    std::string key = std::string(32, '\0');
    std::string signature = std::string(64, '\0');

private:
    std::string m_folder;
};

Archive& archive()
{
    static Archive made;
    return made;
}

void fail(bool isGood)
{
    if (isGood)
        return;
    std::fprintf(stderr, "bench: a good archive is refused\n");
    std::exit(1);
}

void verifyArchive(benchmark::State& state)
{
    backends::UpdateItem item;
    item.length = archiveBytes;
    item.signature = base64(archive().signature);
    auto const key = base64(archive().key);
    for (auto _ : state)
        fail(!archive().installer->verify(item, { key }));
}
BENCHMARK(verifyArchive)->Unit(benchmark::kMillisecond);

// The library alone, over the mapped file.
void verifyArchiveFloor(benchmark::State& state)
{
    auto const path = archive().installer->archivePath();
    auto const& key = archive().key;
    auto const& signature = archive().signature;
    for (auto _ : state) {
        int const file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        void* const bytes = mmap(nullptr, archiveBytes, PROT_READ, MAP_PRIVATE, file, 0);
        close(file);
        Key const publicKey(EVP_PKEY_new_raw_public_key(EVP_PKEY_ED25519, nullptr,
                                reinterpret_cast<std::uint8_t const*>(key.data()), key.size()),
            &EVP_PKEY_free);
        Context const context(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
        EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, publicKey.get());
        fail(EVP_DigestVerify(context.get(), reinterpret_cast<std::uint8_t const*>(signature.data()), signature.size(),
                 static_cast<std::uint8_t const*>(bytes), archiveBytes)
            == 1);
        munmap(bytes, archiveBytes);
    }
}
BENCHMARK(verifyArchiveFloor)->Name("verifyArchive/floor")->Unit(benchmark::kMillisecond);

} // namespace
