#include "backends/linux/dbus/Bus.h"
#include "backends/linux/dbus/Hostname.h"
#include "backends/linux/host/BundleDirectory.h"
#include "backends/linux/host/FileSystem.h"
#include "backends/linux/host/MachineInfo.h"
#include "backends/linux/host/OpenerPrograms.h"
#include "backends/linux/host/StandardErrorLog.h"
#include "backends/linux/host/UserEnvironment.h"
#include "backends/linux/loop/EventLoop.h"
#include "backends/linux/loop/MonotonicClock.h"
#include "tests/linux/SessionBus.h"
#include "tests/support/CollectedLog.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <poll.h>
#include <sstream>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

namespace paneweld_tests {

namespace fs = std::filesystem;

using backends::EventLoop;
using backends::MachineInfo;
using backends::StandardErrorLog;
using platform::LogLevel;

class HostFiles : public ::testing::Test {
protected:
    HostFiles()
    {
        std::string pattern = (fs::temp_directory_path() / "paneweld-test-XXXXXX").string();
        root = mkdtemp(pattern.data());
    }
    ~HostFiles() override { fs::remove_all(root); }

    void write(std::string const& path, std::string const& text)
    {
        fs::create_directories(fs::path(root + path).parent_path());
        std::ofstream(root + path, std::ios::binary) << text;
    }
    std::string read(std::string const& path)
    {
        std::ostringstream text;
        text << std::ifstream(root + path).rdbuf();
        return text.str();
    }
    bool runUntil(EventLoop& loop, std::function<bool()> condition)
    {
        while (!condition()) {
            pollfd wait { loop.pollableDescriptor(), POLLIN, 0 };
            if (poll(&wait, 1, 10000) <= 0)
                return false;
            loop.dispatch();
        }
        return true;
    }

    std::string root;
    CollectedLog lines;
    platform::OSLog log { lines, "test", "host" };
};

TEST_F(HostFiles, TellTheMachinesName)
{
    MachineInfo const plain(root);
    std::array<char, 256> name {};
    gethostname(name.data(), name.size() - 1);
    EXPECT_EQ(plain.localizedName(), name.data());
    write("/etc/machine-info", "# comment\nICON_NAME=laptop\nPRETTY_HOSTNAME=\"Ada\\\"s \\$Laptop\"\n");
    EXPECT_EQ(plain.localizedName(), "Ada\"s $Laptop");
    // Asked anew each time.
    write("/etc/machine-info", "PRETTY_HOSTNAME='Second one'\n");
    EXPECT_EQ(plain.localizedName(), "Second one");
    write("/etc/machine-info", "PRETTY_HOSTNAME=\n");
    EXPECT_EQ(plain.localizedName(), name.data());
    MachineInfo const served(root, [] { return std::optional<std::string>("From the service"); });
    EXPECT_EQ(served.localizedName(), "From the service");
}

TEST_F(HostFiles, TellTheModelAndTheSystem)
{
    MachineInfo const info(root);
    EXPECT_FALSE(info.machineModel());
    write("/proc/device-tree/model", std::string("Raspberry Pi 4 Model B\0", 23));
    EXPECT_EQ(info.machineModel(), "Raspberry Pi 4 Model B");
    write("/sys/class/dmi/id/product_family", "To be filled by O.E.M.\n");
    write("/sys/class/dmi/id/product_name", "20XW0026GE\n");
    EXPECT_EQ(info.machineModel(), "20XW0026GE");
    write("/sys/class/dmi/id/product_family", "ThinkPad X1 Carbon Gen 9\n");
    EXPECT_EQ(info.machineModel(), "ThinkPad X1 Carbon Gen 9");
    EXPECT_EQ(info.operatingSystemVersionString().substr(0, 5), "Linux");
    write("/usr/lib/os-release", "NAME=Vendor\nPRETTY_NAME=\"Vendor OS 1\"\n");
    EXPECT_EQ(info.operatingSystemVersionString(), "Vendor OS 1");
    write("/etc/os-release", "PRETTY_NAME='Own OS 2'\n");
    EXPECT_EQ(info.operatingSystemVersionString(), "Own OS 2");
}

TEST_F(HostFiles, ABusThatIsSilentOrAbsentCostsNothing)
{
    auto loop = EventLoop::create().take();
    backends::MonotonicClock clock;
    auto const begin = clock.now();
    backends::Hostname const absent(*loop, "unix:path=" + root + "/nobody");
    EXPECT_FALSE(absent.prettyName());
    // It listens, and says nothing.
    auto const path = root + "/silent";
    int const listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address { .sun_family = AF_UNIX, .sun_path = {} };
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(listener, 4), 0);
    {
        backends::Hostname const silent(*loop, "unix:path=" + path);
        loop->dispatch();
        EXPECT_FALSE(silent.prettyName());
    }
    close(listener);
    EXPECT_LT((clock.now() - begin).count(), 1);
}

// The service that knows the machine's name, as far as it is asked for it.
class HostnameService {
public:
    explicit HostnameService(std::string const& address)
    {
        sd_bus_new(&m_bus);
        sd_bus_set_address(m_bus, address.c_str());
        sd_bus_set_bus_client(m_bus, 1);
        sd_bus_start(m_bus);
        sd_bus_add_object(m_bus, nullptr, "/org/freedesktop/hostname1", answer, this);
        sd_bus_request_name(m_bus, "org.freedesktop.hostname1", 0);
    }
    ~HostnameService() { sd_bus_flush_close_unref(m_bus); }
    HostnameService(HostnameService const&) = delete;
    HostnameService& operator=(HostnameService const&) = delete;

    void run()
    {
        while (sd_bus_process(m_bus, nullptr) > 0) { }
    }
    void rename(std::string const& newName)
    {
        name = newName;
        sd_bus_emit_signal(m_bus, "/org/freedesktop/hostname1", "org.freedesktop.DBus.Properties", "PropertiesChanged",
            "sa{sv}as", "org.freedesktop.hostname1", 0, 1, "PrettyHostname");
        sd_bus_flush(m_bus);
    }

    std::string name = "Ada's Laptop";

private:
    static int answer(sd_bus_message* message, void* context, sd_bus_error*)
    {
        if (!sd_bus_message_is_method_call(message, "org.freedesktop.DBus.Properties", "Get"))
            return 0;
        auto const& name = static_cast<HostnameService*>(context)->name;
        return sd_bus_reply_method_return(message, "v", "s", name.c_str());
    }

    sd_bus* m_bus = nullptr;
};

TEST_F(HostFiles, TheServiceIsAskedWithoutWaitingAndFollowed)
{
    SessionBus bus;
    auto loop = EventLoop::create().take();
    auto const address = bus.address();
    auto const runBoth = [&](HostnameService* service, std::function<bool()> condition) {
        backends::MonotonicClock clock;
        auto const end = clock.now() + platform::Seconds { 4 };
        while (!condition() && clock.now() < end) {
            pollfd wait { loop->pollableDescriptor(), POLLIN, 0 };
            poll(&wait, 1, 5);
            loop->dispatch();
            if (service)
                service->run();
        }
        return condition();
    };

    // Nobody there is answered at once, as an error.
    auto connected = backends::Bus::connect(*loop, address);
    ASSERT_TRUE(connected.hasValue());
    bool hasAnswered = false;
    auto const question
        = connected.value()->getText({ "org.example.Nobody", "/", "org.example", "Name" }, [&](auto text) {
              hasAnswered = true;
              EXPECT_FALSE(text);
          });
    EXPECT_TRUE(runBoth(nullptr, [&] { return hasAnswered; }));

    HostnameService service(address);
    backends::Hostname const hostname(*loop, address);
    EXPECT_FALSE(hostname.prettyName());
    EXPECT_TRUE(runBoth(&service, [&] { return hostname.prettyName() == "Ada's Laptop"; }));
    service.rename("Other");
    EXPECT_TRUE(runBoth(&service, [&] { return hostname.prettyName() == "Other"; }));
    service.rename("");
    EXPECT_TRUE(runBoth(&service, [&] { return !hostname.prettyName(); }));
    // A bus that dies leaves us as we are.
    bus.end();
    int turns = 0;
    for (pollfd wait { loop->pollableDescriptor(), POLLIN, 0 }; poll(&wait, 1, 100) > 0 && turns < 100; ++turns)
        loop->dispatch();
    EXPECT_LT(turns, 100);
    EXPECT_FALSE(hostname.prettyName());
}

TEST_F(HostFiles, OpenersGetTheAddressAsItIsAndTheUsersEnvironment)
{
    auto loop = EventLoop::create().take();
    auto const opener = root + "/opener";
    write("/opener",
        "#!/bin/sh\nprintf '%s' \"$2\" > \"" + root + "/address\"\nenv > \"" + root + "/environment\"\nexit 3\n");
    chmod(opener.c_str(), 0755);
    setenv("APPDIR", root.c_str(), 1);
    setenv("LD_LIBRARY_PATH", "/bundle/lib", 1);
    setenv("LD_LIBRARY_PATH_ORIG", "/users/lib", 1);
    setenv("XDG_DATA_DIRS", "/bundle/share", 1);
    setenv("XDG_DATA_DIRS_ORIG", "/users/share", 1);
    backends::OpenerPrograms openers(*loop, { { root + "/nothing" }, { opener, "--open" } });
    auto const url = *platform::URL::fromString("https://example.org/a%20b?c='d\"&e=$(f);g");
    std::optional<platform::NSError> error;
    openers.open(url, [&](auto const& why) { error = why; });
    EXPECT_FALSE(error) << "the call does not wait";
    ASSERT_TRUE(runUntil(*loop, [&] { return error.has_value(); }));
    EXPECT_EQ(read("/address"), url.absoluteString());
    EXPECT_EQ(
        error->localizedDescription, root + "/nothing: No such file or directory; " + opener + " failed: exit code 3");
    auto const environment = "\n" + read("/environment");
    EXPECT_NE(environment.find("\nLD_LIBRARY_PATH=/users/lib\n"), std::string::npos);
    EXPECT_NE(environment.find("\nXDG_DATA_DIRS=/users/share\n"), std::string::npos);
    EXPECT_EQ(environment.find("/bundle/"), std::string::npos);
    EXPECT_EQ(environment.find("_ORIG="), std::string::npos);
}

TEST_F(HostFiles, AnOpenerThatIsNotThereIsSaid)
{
    auto loop = EventLoop::create().take();
    backends::OpenerPrograms openers(*loop, { { root + "/nothing" } });
    std::optional<platform::NSError> error;
    openers.open(*platform::URL::fromString("https://example.org/"), [&](auto const& why) { error = why; });
    ASSERT_TRUE(runUntil(*loop, [&] { return error.has_value(); }));
    EXPECT_NE(error->localizedDescription.find("No such file"), std::string::npos);
}

TEST_F(HostFiles, TheEnvironmentOutsideABundleIsUnchanged)
{
    char const* const environment[] = { "LD_PRELOAD=/users/wish.so", "A=1", "B_ORIG=2", nullptr };
    EXPECT_EQ(backends::environmentOfUser(environment),
        (std::vector<std::string> { "A=1", "B_ORIG=2", "LD_PRELOAD=/users/wish.so" }));
    char const* const bundled[] = { "APPDIR=/bundle", "LD_PRELOAD=/bundle/own.so", "A=1", nullptr };
    EXPECT_EQ(backends::environmentOfUser(bundled), (std::vector<std::string> { "A=1" }));
}

TEST_F(HostFiles, BundlesAreFolders)
{
    write("/Some.framework/Resources/Info.plist", "text");
    backends::BundleDirectory directory(log);
    auto const bundle = root + "/Some.framework";
    EXPECT_TRUE(directory.isDirectory(bundle));
    EXPECT_FALSE(directory.isDirectory(bundle + "/Resources/Info.plist"));
    EXPECT_TRUE(directory.isFile(bundle + "/Resources/Info.plist"));
    EXPECT_FALSE(directory.isFile(bundle));
    EXPECT_EQ(directory.list(bundle), (std::vector<std::string> { "Resources" }));
    EXPECT_TRUE(directory.list(bundle + "/nothing").empty());
    EXPECT_EQ(directory.read(bundle + "/Resources/Info.plist"), "text");
    EXPECT_FALSE(directory.read(bundle));
    EXPECT_FALSE(directory.read(bundle + "/nothing"));
    directory.report("a sentence");
    EXPECT_EQ(lines.messages, (std::vector<std::string> { "a sentence" }));
    auto const missing = directory.loadCode(bundle, bundle + "/Some");
    ASSERT_FALSE(missing.hasValue());
    EXPECT_NE(missing.error().localizedDescription.find("Some"), std::string::npos);
    write("/Some.framework/Some", "no code");
    EXPECT_FALSE(directory.loadCode(bundle, bundle + "/Some").hasValue());
}

TEST(Languages, AreTheUsersInOrder)
{
    using backends::languagesIn;
    EXPECT_EQ(languagesIn("fr_FR.UTF-8"), (std::vector<std::string> { "fr-FR" }));
    EXPECT_EQ(languagesIn("de_AT@euro:de:en_GB.UTF-8"), (std::vector<std::string> { "de-AT", "de", "en-GB" }));
    EXPECT_TRUE(languagesIn("C.UTF-8").empty());
    EXPECT_TRUE(languagesIn("POSIX:").empty());
    CollectedLog lines;
    backends::BundleDirectory const directory(platform::OSLog(lines, "test", "bundle"));
    for (auto const* name : { "LC_ALL", "LC_MESSAGES", "LANG", "LANGUAGE" })
        unsetenv(name);
    EXPECT_TRUE(directory.userLanguages().empty());
    setenv("LANG", "it_IT.UTF-8", 1);
    EXPECT_EQ(directory.userLanguages(), (std::vector<std::string> { "it-IT" }));
    setenv("LANGUAGE", "pt:en", 1);
    EXPECT_EQ(directory.userLanguages(), (std::vector<std::string> { "pt", "en" }));
    setenv("LC_ALL", "C", 1);
    EXPECT_TRUE(directory.userLanguages().empty());
}

TEST(Files, TellHomeAndWhatCanBeRead)
{
    backends::FileSystem const files;
    setenv("HOME", "/some/where", 1);
    EXPECT_EQ(files.homeDirectoryForCurrentUser().absoluteString(), "file:///some/where/");
    unsetenv("HOME");
    EXPECT_TRUE(files.homeDirectoryForCurrentUser().isFileURL());
    EXPECT_TRUE(files.isReadableFile("/"));
    EXPECT_FALSE(files.isReadableFile("/there/is/nothing"));
}

TEST(StandardError, HasOneLineARecord)
{
    std::array<int, 2> ends {};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK), 0);
    StandardErrorLog log({ .level = LogLevel::Info, .showsPrivateValues = false, .descriptor = ends[1] });
    EXPECT_FALSE(log.accepts(LogLevel::Debug));
    log.write({ LogLevel::Debug, "s", "c", "unseen" });
    log.write({ LogLevel::Error, "com.example", "x11", "two\nlines\x1b[1m caf\u00E9" });
    std::array<char, 256> bytes {};
    auto const count = ::read(ends[0], bytes.data(), bytes.size());
    ASSERT_GT(count, 0);
    EXPECT_EQ(std::string(bytes.data(), static_cast<std::size_t>(count)),
        "paneweld error com.example:x11 two\\nlines\\x1b[1m caf\u00E9\n");
    // A reader that is slow or gone ends nobody.
    for (int i = 0; i < 5000; ++i)
        log.write({ LogLevel::Error, "com.example", "x11", "filling" });
    close(ends[0]);
    log.write({ LogLevel::Error, "com.example", "x11", "nobody reads" });
    close(ends[1]);
}

TEST(StandardError, IsToldByTheEnvironmentWhatToWrite)
{
    unsetenv("PANEWELD_LOG");
    unsetenv("PANEWELD_LOG_PRIVATE");
    EXPECT_TRUE(StandardErrorLog().accepts(LogLevel::Error));
    EXPECT_FALSE(StandardErrorLog().accepts(LogLevel::Default));
    EXPECT_FALSE(StandardErrorLog().showsPrivateValues());
    setenv("PANEWELD_LOG", "debug", 1);
    EXPECT_TRUE(StandardErrorLog().accepts(LogLevel::Debug));
    setenv("PANEWELD_LOG", "default", 1);
    EXPECT_TRUE(StandardErrorLog().accepts(LogLevel::Default));
    EXPECT_FALSE(StandardErrorLog().accepts(LogLevel::Info));
    setenv("PANEWELD_LOG", "off", 1);
    EXPECT_FALSE(StandardErrorLog().accepts(LogLevel::Fault));
    setenv("PANEWELD_LOG", "loud", 1);
    EXPECT_TRUE(StandardErrorLog().accepts(LogLevel::Error));
    EXPECT_FALSE(StandardErrorLog().accepts(LogLevel::Default));
    setenv("PANEWELD_LOG_PRIVATE", "1", 1);
    EXPECT_TRUE(StandardErrorLog().showsPrivateValues());
}

} // namespace paneweld_tests
