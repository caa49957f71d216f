#include "platform/foundation/Bundle.h"
#include "platform/foundation/Bundles.h"
#include "tests/support/DiskBundleFiles.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TextVectors.h"

namespace platform {
namespace {

using nlohmann::json;

std::string tableText(json const& table)
{
    std::string text;
    for (auto const& [key, value] : table.items())
        text += "\"" + key + "\" = \"" + value.get<std::string>() + "\";\n";
    return text;
}

void writeBundle(TemporaryFolder const& folder, json const& bundle)
{
    std::string const resources = "Test.framework/Resources/";
    auto const region = bundle.at("developmentRegion").get<std::string>();
    folder.write(resources + "Info.plist", "{ CFBundleDevelopmentRegion = \"" + region + "\"; }");
    if (!bundle.at("root").is_null())
        folder.write(resources + "Localizable.strings", tableText(bundle.at("root")));
    for (auto const& [language, table] : bundle.at("lproj").items())
        folder.write(resources + language + ".lproj/Localizable.strings", tableText(table));
}

TEST(LookupVectors, EveryKeyIsLookedUpInOneTable)
{
    auto const vectors = vectorsOf("E_strings_localisation_format.json", "lookup");
    ASSERT_EQ(vectors.size(), 14U);
    for (auto const& vector : vectors) {
        SCOPED_TRACE(vector.dump());
        TemporaryFolder const folder;
        DiskBundleFiles files;
        files.languages = vector.at("user_languages").get<std::vector<std::string>>();
        writeBundle(folder, vector.at("bundle"));
        folder.write("Main/program", "");
        for (auto const& language : vector.value("main_bundle_languages", std::vector<std::string>()))
            folder.write("Main/" + language + ".lproj/Localizable.strings", "a = main;");

        Bundles bundles(files);
        bundles.setMainBundle(folder.path() + "/Main");
        auto const bundle = bundles.bundle(URL::fileURL(folder.path() + "/Test.framework", URL::IsDirectory::Yes));
        ASSERT_TRUE(bundle);
        EXPECT_EQ(bundle->localizedString(vector.at("key").get<std::string>(), vector.value("value", "")),
            vector.at("expected").get<std::string>());
        EXPECT_TRUE(files.reports.empty()) << files.reports.front();
    }
}

} // namespace
} // namespace platform
