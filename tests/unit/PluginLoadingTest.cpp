#include "iOS/HostNameProvider.h"
#include "iOS/NSBundle+Paneweld.h"
#include "iOS/OSLog+Paneweld.h"
#include "iOS/String+Paneweld.h"
#include "tests/support/World.h"

#include "platform/foundation/Bundle.h"
#include "platform/runtime/ClassRegistry.h"

using namespace paneweld;
using platform::Class;
using platform::ClassRegistry;
using platform::List;
using platform::NSObject;
using platform::URL;
using platform::Value;

namespace {

class PluginLoading : public World {
protected:
    static constexpr char const* main = "/opt/ideas";
    static constexpr char const* framework = "/opt/ideas/Frameworks/Paneweld.framework";

    void addFramework(std::string const& path)
    {
        world.files().addFile(path + "/Paneweld", "code");
        world.files().addFile(path + "/Resources/Info.plist", "{ CFBundleExecutable = Paneweld; }");
        world.files().addFile(path + "/Resources/en.lproj/Localizable.strings",
            "\"folder_picker_prompt\" = \"Allow\"; \"count\" = \"%d of %d\";");
    }

    // A bundle whose code, once loaded, brings a class of the name.
    void bringClass(std::string const& path, Class const& description)
    {
        world.files().setCode(path, [path, &description] { ClassRegistry::shared().registerClass(path, description); });
    }

    void setMain(std::optional<std::string> identifier = {})
    {
        world.files().addDirectory(main);
        world.bundles().setMainBundle(main, std::move(identifier));
    }

    Class makeable(std::string name)
    {
        Class description { std::move(name) };
        description.allocInit = [this] {
            ++made;
            return std::make_shared<NSObject>();
        };
        return description;
    }

    int made = 0;
};

} // namespace

TEST_F(PluginLoading, TheFrameworkInTheMainBundleComesFirst)
{
    setMain();
    addFramework(framework);
    addFramework("/usr/lib/Paneweld.framework");
    world.bundles().bundle(URL::fileURL("/usr/lib/Paneweld.framework", URL::IsDirectory::Yes));
    auto const bundle = NSBundle::paneweld(world.bundles());
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->bundlePath(), framework);
    EXPECT_EQ(NSBundle::paneweld(world.bundles())->bundlePath(), framework);
}

TEST_F(PluginLoading, WithoutItTheFirstLoadedFrameworkWhosePathHasTheNameIsTaken)
{
    setMain();
    for (auto const* const path :
        { "/a/Other.framework", "/b/paneweld.framework", "/c/MyPaneweldFork.framework", "/d/Paneweld.framework" }) {
        addFramework(path);
        world.bundles().bundle(URL::fileURL(path, URL::IsDirectory::Yes));
    }
    EXPECT_EQ(NSBundle::paneweld(world.bundles())->bundlePath(), "/c/MyPaneweldFork.framework");
}

TEST_F(PluginLoading, WithoutAnyThereIsNone)
{
    EXPECT_EQ(NSBundle::paneweld(world.bundles()), nullptr);
    setMain();
    EXPECT_EQ(NSBundle::paneweld(world.bundles()), nullptr);
}

TEST_F(PluginLoading, ItIsLookedUpAfreshEachTime)
{
    setMain();
    EXPECT_EQ(NSBundle::paneweld(world.bundles()), nullptr);
    addFramework(framework);
    EXPECT_NE(NSBundle::paneweld(world.bundles()), nullptr);
}

TEST_F(PluginLoading, AnEntryObjectIsMadeAnewAtEachCall)
{
    setMain();
    addFramework(framework);
    auto const description = makeable("PaneweldAppKitController");
    bringClass(framework, description);
    auto const bundle = NSBundle::paneweld(world.bundles());
    auto const first = NSBundle::appKitController(*bundle);
    auto const second = NSBundle::appKitController(*bundle);
    EXPECT_TRUE(first && second && first != second);
    EXPECT_EQ(made, 2);
    EXPECT_EQ(NSBundle::updateController(*bundle), nullptr);
    EXPECT_EQ(NSBundle::macHostName(*bundle), std::nullopt);
}

TEST_F(PluginLoading, CodeThatDoesNotLoadYieldsNothing)
{
    setMain();
    addFramework(framework);
    auto const description = makeable("PaneweldAppKitController");
    ClassRegistry::shared().registerClass("/elsewhere", description);
    EXPECT_EQ(NSBundle::appKitController(*NSBundle::paneweld(world.bundles())), nullptr);
    EXPECT_TRUE(world.logRecords().empty());
}

TEST_F(PluginLoading, TheBundlesOwnClassComesBeforeTheProcesss)
{
    setMain();
    addFramework(framework);
    auto const foreign = makeable("PaneweldUpdateController");
    ClassRegistry::shared().registerClass("/elsewhere", foreign);
    Class own { "PaneweldUpdateController" };
    auto const mark = std::make_shared<NSObject>();
    own.allocInit = [mark] { return mark; };
    bringClass(framework, own);
    EXPECT_EQ(NSBundle::updateController(*NSBundle::paneweld(world.bundles())), mark);
    EXPECT_EQ(made, 0);
}

TEST_F(PluginLoading, AClassOfWhichNoObjectCanBeMadeIsPassedOverForTheProcesss)
{
    setMain();
    addFramework(framework);
    auto const foreign = makeable("PaneweldUpdateController");
    ClassRegistry::shared().registerClass("/elsewhere", foreign);
    Class const notAnObjectClass { "PaneweldUpdateController" };
    bringClass(framework, notAnObjectClass);
    EXPECT_TRUE(NSBundle::updateController(*NSBundle::paneweld(world.bundles())));
    EXPECT_EQ(made, 1);
}

TEST_F(PluginLoading, TheHostNameComesFromTheProviderClass)
{
    setMain();
    addFramework(framework);
    auto const provider = HostNameProvider::runtimeClass(&platform::Platform::current);
    bringClass(framework, provider);
    auto const bundle = NSBundle::paneweld(world.bundles());
    EXPECT_EQ(NSBundle::macHostName(*bundle), "Memory Machine");
    EXPECT_EQ(NSBundle::macHostName(*bundle), "Memory Machine");
    world.setLocalizedHostName("Ada's Laptop");
    EXPECT_EQ(NSBundle::macHostName(*bundle), "Ada's Laptop");
    world.setLocalizedHostName({});
    EXPECT_EQ(NSBundle::macHostName(*bundle), std::nullopt);
}

TEST_F(PluginLoading, AProviderThatDoesNotAnswerOrAnswersOtherwiseGivesNoName)
{
    setMain();
    addFramework(framework);
    auto provider = makeable("PaneweldHostNameProvider");
    bringClass(framework, provider);
    auto const bundle = NSBundle::paneweld(world.bundles());
    EXPECT_EQ(NSBundle::macHostName(*bundle), std::nullopt);
    provider.classMethods["localizedName"] = [](List const&) { return Value(5); };
    EXPECT_EQ(NSBundle::macHostName(*bundle), std::nullopt);
}

TEST_F(PluginLoading, TextsComeFromThePluginsBundleOrAreTheirKeys)
{
    setMain();
    EXPECT_EQ(String::localized(world, "folder_picker_prompt"), "folder_picker_prompt");
    EXPECT_EQ(String::localized(world, "count %d", { 1 }), "count %d");
    addFramework(framework);
    EXPECT_EQ(String::localized(world, "folder_picker_prompt"), "Allow");
    EXPECT_EQ(String::localized(world, "no_such_key"), "no_such_key");
    EXPECT_EQ(String::localized(world, "count", { 1, 2 }), "1 of 2");
}

TEST_F(PluginLoading, TheLogIsFiledUnderTheAppsIdentifier)
{
    setMain("com.example.Ideas");
    OSLog::paneweld(world).info("hello");
    EXPECT_EQ(world.logRecords().back().subsystem, "com.example.Ideas");
    EXPECT_EQ(world.logRecords().back().category, "pane-weld");
    EXPECT_EQ(&OSLog::paneweld(world), &OSLog::paneweld(world));
}

TEST_F(PluginLoading, WithoutAnIdentifierTheLogIsFiledUnderAStandIn)
{
    setMain();
    OSLog::paneweld(world).info("hello");
    EXPECT_EQ(world.logRecords().back().subsystem, "app.quorvel.iosapp");
}
