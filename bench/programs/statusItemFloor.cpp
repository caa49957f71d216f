#include <cstdint>
#include <cstdio>
#include <string>
#include <systemd/sd-bus.h>
#include <unistd.h>

// A status item made by hand, with the library that Paneweld uses too, and nothing behind it: less than this cannot be
// done.

namespace {

constexpr auto interface = "org.kde.StatusNotifierItem";

int ignore(sd_bus_message* call, void*, sd_bus_error*) { return sd_bus_reply_method_return(call, ""); }

int text(sd_bus*, char const*, char const*, char const* property, sd_bus_message* reply, void*, sd_bus_error*)
{
    return sd_bus_message_append(reply, "s", std::string_view(property) == "Status" ? "Active" : "bench");
}

sd_bus_vtable const table[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Activate", "ii", "", ignore, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("ContextMenu", "ii", "", ignore, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_PROPERTY("Category", "s", text, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Id", "s", text, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Title", "s", text, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Status", "s", text, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("IconName", "s", text, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_VTABLE_END,
};

} // namespace

int main()
{
    sd_bus* bus = nullptr;
    auto const name = interface + std::string("-") + std::to_string(getpid()) + "-1";
    if (sd_bus_open_user(&bus) < 0
        || sd_bus_add_object_vtable(bus, nullptr, "/StatusNotifierItem", interface, table, nullptr) < 0
        || sd_bus_request_name(bus, name.c_str(), 0) < 0
        || sd_bus_call_method(bus, "org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
               "org.kde.StatusNotifierWatcher", "RegisterStatusNotifierItem", nullptr, nullptr, "s", name.c_str())
            < 0) {
        std::fprintf(stderr, "the floor found no list of status items\n");
        return 1;
    }
    int processed = 0;
    do {
        while ((processed = sd_bus_process(bus, nullptr)) > 0) { }
    } while (processed == 0 && sd_bus_wait(bus, UINT64_MAX) >= 0);
}
