#pragma once

#include "iOS/NSWindow+Paneweld.h"
#include "iOS/StatusItemController.h"
#include "tests/support/World.h"

#include <fstream>
#include <iterator>
#include <utility>

// A memory world with a status bar, whose texts are the real ones, and everything that happens in one order: what the
// world was told, what was logged, what the host heard.
class StatusItemWorld : public World {
protected:
    using Lines = std::vector<std::string>;

    StatusItemWorld()
    {
        world.ledger().setListener([this](auto const& line) { m_happened.push_back(line.text); });
        world.setLogListener([this](auto const& record) {
            m_happened.push_back("log " + std::string(platform::nameOf(record.level)) + " " + record.message);
        });
        platform::NotificationCenter::defaultCenter().setTap([this](platform::Notification const& notification) {
            auto line = notification.name.rawValue();
            if (!line.starts_with("Paneweld."))
                return;
            if (notification.object)
                line += " from an object";
            for (auto const& [key, value] : notification.userInfo.value_or(platform::Dictionary {}))
                line += " " + std::string(key) + "=" + value.description();
            m_happened.push_back(line);
        });
    }

    ~StatusItemWorld() override
    {
        world.ledger().setListener({});
        world.setLogListener({});
        platform::NotificationCenter::defaultCenter().setTap({});
    }

    // The plug-in's bundle with the texts that are shipped, and an icon.
    void installBundle()
    {
        for (auto const* const language : { "en", "de", "fr", "es" }) {
            auto const table = std::string("/") + language + ".lproj/Localizable.strings";
            std::ifstream file(PANEWELD_TEST_RESOURCES + table);
            EXPECT_TRUE(file.is_open()) << table;
            world.files().addFile(resources + table, std::string(std::istreambuf_iterator<char>(file), {}));
        }
        world.files().addFile(resources + "/icon.pdf", "%PDF");
        world.setReadable(resources + "/icon.pdf");
        world.files().addDirectory("/opt/ideas");
        world.bundles().setMainBundle("/opt/ideas");
    }

    void start()
    {
        controller = paneweld::StatusItemController::create(world);
        forget();
    }

    // A window that is shown and tagged, with nobody else who looks after it.
    std::shared_ptr<backends::MemoryWindow> showTagged(std::string const& type, std::string const& id)
    {
        auto window = world.makeWindow(id, tag(type, id));
        window->show();
        paneweld::loadWindowIdentifierFromTitle(*window);
        forget();
        return window;
    }

    // What happened since the last look.
    Lines happened() { return std::exchange(m_happened, {}); }
    void forget() { m_happened.clear(); }

    std::shared_ptr<backends::MemoryStatusBarButton> button() { return world.statusBar()->button(); }

    static platform::List urls(Lines const& texts)
    {
        platform::List list;
        for (auto const& text : texts)
            list.push_back(*platform::URL::fromString(text));
        return list;
    }

    bool drop(std::optional<platform::List> contents)
    {
        backends::MemoryPasteboard pasteboard(std::move(contents));
        return button()->drop(pasteboard);
    }

    // The host says whether somebody is signed in.
    void tellUser(bool hasUser)
    {
        post(paneweld::NotificationName::updateMenuItemTitle(), paneweld::UpdateMenuItemTitle { hasUser }.userInfo());
        forget();
    }

    // The open menu, a separator as a dash.
    Lines titles()
    {
        Lines found;
        for (auto const& line : button()->menuLines())
            found.push_back(line.isSeparator ? "-" : line.title);
        return found;
    }

    std::string const resources = "/opt/ideas/Frameworks/Paneweld.framework/Resources";
    std::shared_ptr<paneweld::StatusItemController> controller;

private:
    Lines m_happened;
};
