#include "tests/linux/ReleasedApp.h"

#include "backends/linux/host/FileSystem.h"
#include "backends/linux/host/ProgramOutput.h"

#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace paneweld_tests {

namespace {

std::string outputOf(std::vector<std::string> arguments)
{
    auto const output = backends::outputOfProgram(
        std::move(arguments), std::chrono::steady_clock::now() + std::chrono::seconds { 30 });
    return output ? output.value() : std::string();
}

} // namespace

ReleasedApp::ReleasedApp(std::string const& version, std::string info)
{
    writeApp("apps/Ideas", version, info, "org.example.Ideas");
}

void ReleasedApp::writeApp(
    std::string const& folder, std::string const& version, std::string const& info, std::string const& identifier) const
{
    m_folder.write(folder + "/Info.plist",
        "{ CFBundleIdentifier = \"" + identifier + "\"; CFBundleVersion = \"" + version + "\"; " + info + " }");
    m_folder.write(folder + "/lib/data", version);
    // It starts only when all of it is of one version.
    auto const script = m_folder.write(folder + "/start",
        "#!/bin/sh\n[ \"$(cat \"$(dirname \"$0\")/lib/data\")\" = " + version + " ] && echo " + version + "\n");
    chmod(script.c_str(), 0755);
}

std::string ReleasedApp::start() const
{
    auto const said = outputOf({ std::filesystem::is_directory(path()) ? path() + "/start" : path() });
    return said.substr(0, said.find('\n'));
}

std::string ReleasedApp::archive(
    std::string const& version, std::string const& info, std::string const& identifier) const
{
    auto const folder = "releases/" + version;
    writeApp(folder + "/Ideas", version, info, identifier);
    auto const file = m_folder.path() + "/releases/" + version + ".tar.gz";
    outputOf(
        { "tar", "--create", "--gzip", "--file=" + file, "--directory=" + m_folder.path() + "/" + folder, "Ideas" });
    auto const bytes = backends::readFile(file);
    EXPECT_TRUE(bytes.hasValue());
    return bytes ? bytes.value() : std::string();
}

void ReleasedApp::rewrite(std::string const& version, std::string const& info) const
{
    writeApp("apps/Ideas", version, info, "org.example.Ideas");
}

void ReleasedApp::becomeImage(std::string const& version, unsigned mode, std::string const& info) const
{
    std::filesystem::remove_all(path());
    m_folder.write("apps/Ideas", image(version));
    EXPECT_EQ(chmod(path().c_str(), mode), 0);
    writeApp("mounted/usr/bin", version, info, "org.example.Ideas");
}

backends::UpdateItem ReleasedApp::item(std::string const& version, std::string const& archive, SigningKey const& key)
{
    backends::UpdateItem item;
    item.version = item.displayVersion = version;
    item.length = archive.size();
    item.signature = key.sign(archive);
    return item;
}

std::vector<std::string> ReleasedApp::leftovers() const
{
    std::vector<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(parent())) {
        if (entry.path().filename() != "Ideas")
            names.push_back(entry.path().filename());
    }
    return names;
}

} // namespace paneweld_tests
