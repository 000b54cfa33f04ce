#include "platform/linux/tray/StatusNotifierItem.h"

#include <atomic>
#include <utility>

#include <unistd.h>

#include "platform/linux/dbus/BusCalls.h"

namespace tavo {
namespace {

constexpr char kWatcher[] = "org.kde.StatusNotifierWatcher";
constexpr char kWatcherPath[] = "/StatusNotifierWatcher";
constexpr char kPath[] = "/StatusNotifierItem";
constexpr char kMenuPath[] = "/StatusNotifierItem/Menu";
constexpr char kId[] = "tavolauncher";
// In bytes. The tokens of compositors have some dozens.
constexpr std::size_t kLongestToken = 4096;
constexpr std::chrono::seconds kTokenHolds{5};

constexpr char kDescription[] =
    "<node><interface name='org.kde.StatusNotifierItem'>"
    "<property name='Category' type='s' access='read'/>"
    "<property name='Id' type='s' access='read'/>"
    "<property name='Title' type='s' access='read'/>"
    "<property name='Status' type='s' access='read'/>"
    "<property name='WindowId' type='i' access='read'/>"
    "<property name='IconName' type='s' access='read'/>"
    "<property name='IconPixmap' type='a(iiay)' access='read'/>"
    "<property name='IconAccessibleDesc' type='s' access='read'/>"
    "<property name='OverlayIconName' type='s' access='read'/>"
    "<property name='OverlayIconPixmap' type='a(iiay)' access='read'/>"
    "<property name='AttentionIconName' type='s' access='read'/>"
    "<property name='AttentionIconPixmap' type='a(iiay)' access='read'/>"
    "<property name='AttentionMovieName' type='s' access='read'/>"
    "<property name='AttentionAccessibleDesc' type='s' access='read'/>"
    "<property name='ToolTip' type='(sa(iiay)ss)' access='read'/>"
    "<property name='IconThemePath' type='s' access='read'/>"
    "<property name='ItemIsMenu' type='b' access='read'/>"
    "<property name='Menu' type='o' access='read'/>"
    "<method name='ContextMenu'>"
    "<arg name='x' type='i' direction='in'/><arg name='y' type='i' direction='in'/></method>"
    "<method name='Activate'>"
    "<arg name='x' type='i' direction='in'/><arg name='y' type='i' direction='in'/></method>"
    "<method name='SecondaryActivate'>"
    "<arg name='x' type='i' direction='in'/><arg name='y' type='i' direction='in'/></method>"
    "<method name='Scroll'>"
    "<arg name='delta' type='i' direction='in'/>"
    "<arg name='orientation' type='s' direction='in'/></method>"
    "<method name='ProvideXdgActivationToken'>"
    "<arg name='token' type='s' direction='in'/></method>"
    "<signal name='NewTitle'/><signal name='NewIcon'/><signal name='NewAttentionIcon'/>"
    "<signal name='NewOverlayIcon'/><signal name='NewToolTip'/>"
    "<signal name='NewStatus'><arg name='status' type='s'/></signal>"
    "</interface></node>";

std::string newName() {
    static std::atomic<int> made = 0;
    return "org.kde.StatusNotifierItem-" + std::to_string(::getpid()) + '-' +
           std::to_string(++made);
}

// The bytes of each pixel are alpha, red, green, blue: network byte order (StatusNotifierItem,
// "IconPixmap").
GVariant* pixelBytes(const StatusItemImage& image) {
    std::vector<guint8> bytes;
    bytes.reserve(image.pixels.size() * 4);
    for (const std::uint32_t pixel : image.pixels) {
        for (const int shift : {24, 16, 8, 0}) {
            bytes.push_back(static_cast<guint8>(pixel >> shift));
        }
    }
    return g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, bytes.data(), bytes.size(), 1);
}

GVariant* pixmaps(const std::vector<StatusItemImage>& images) {
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("a(iiay)"));
    for (const StatusItemImage& image : images) {
        g_variant_builder_add(&list, "(ii@ay)", image.side, image.side, pixelBytes(image));
    }
    return g_variant_builder_end(&list);
}

}  // namespace

StatusNotifierItem::StatusNotifierItem(SessionBus& bus, StatusItemContent item,
                                       std::function<void(const StatusItemClick&)> clicked,
                                       std::function<Clock::time_point()> now)
    : item_(std::move(item)),
      clicked_(std::move(clicked)),
      now_(std::move(now)),
      name_(newName()),
      object_(kDescription, {.call =
                                 [this](const char* method, GVariant* parameters,
                                        GDBusMethodInvocation* invocation) {
                                     called(method, parameters, invocation);
                                 },
                             .property = [this](const char* name) { return property(name); }}),
      menu_(item_.menu, [this](std::size_t entry) { click({.entry = entry}); }),
      connections_(bus.follow([this](GDBusConnection* connection) { follow(connection); })) {}

void StatusNotifierItem::follow(GDBusConnection* bus) {
    leave();
    if (bus == nullptr) {
        return;
    }
    bus_ = bus;
    // The objects come before the name, because a panel that hears of the name asks for them at
    // once.
    object_.offer(bus, kPath);
    menu_.offer(bus, kMenuPath);
    callBus(bus, "RequestName", g_variant_new("(su)", name_.c_str(), kDoNotQueue));
    watch_ = g_bus_watch_name_on_connection(bus, kWatcher, G_BUS_NAME_WATCHER_FLAGS_NONE,
                                            &StatusNotifierItem::watcherAppeared, nullptr, this,
                                            nullptr);
}

void StatusNotifierItem::leave() {
    if (bus_ == nullptr) {
        return;
    }
    g_bus_unwatch_name(std::exchange(watch_, 0));
    if (g_dbus_connection_is_closed(bus_) == FALSE) {
        callBus(bus_, "ReleaseName", g_variant_new("(s)", name_.c_str()));
    }
    object_.withdraw();
    menu_.withdraw();
    token_.clear();
    bus_ = nullptr;
}

// Registers the item by the unique name of the connection, not by its own one: now and then the
// AppIndicator extension of GNOME 43 loses an item with a name of its own, because it forgets what
// it knows of the item when its watch of that name begins.
void StatusNotifierItem::watcherAppeared(GDBusConnection* bus, const gchar* /*name*/,
                                         const gchar* /*owner*/, gpointer /*data*/) {
    g_dbus_connection_call(bus, kWatcher, kWatcherPath, kWatcher, "RegisterStatusNotifierItem",
                           g_variant_new("(s)", g_dbus_connection_get_unique_name(bus)), nullptr,
                           G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, nullptr, nullptr);
}

// Does nothing for SecondaryActivate, the middle button, and for Scroll.
void StatusNotifierItem::called(const std::string& method, GVariant* parameters,
                                GDBusMethodInvocation* invocation) {
    if (method == "Activate") {
        click({});
    } else if (method == "ContextMenu") {
        StatusItemPoint point;
        g_variant_get(parameters, "(ii)", &point.x, &point.y);
        click({.menuAt = point});
    } else if (method == "ProvideXdgActivationToken") {
        const char* token = nullptr;
        g_variant_get(parameters, "(&s)", &token);
        token_ = std::string(token).size() <= kLongestToken ? token : "";
        tokenCame_ = now_();
    }
    g_dbus_method_invocation_return_value(invocation, nullptr);
}

GVariant* StatusNotifierItem::property(const std::string& name) const {
    if (name == "Category") {
        return g_variant_new_string("ApplicationStatus");
    }
    if (name == "Id") {
        return g_variant_new_string(kId);
    }
    if (name == "Title" || name == "IconAccessibleDesc" || name == "AttentionAccessibleDesc") {
        return g_variant_new_string(item_.title.c_str());
    }
    if (name == "Status") {
        return g_variant_new_string("Active");
    }
    if (name == "WindowId") {
        return g_variant_new_int32(0);
    }
    if (name == "IconPixmap") {
        return pixmaps(item_.images);
    }
    if (name == "OverlayIconPixmap" || name == "AttentionIconPixmap") {
        return pixmaps({});
    }
    if (name == "ToolTip") {
        return g_variant_new("(s@a(iiay)ss)", "", pixmaps({}), item_.title.c_str(), "");
    }
    if (name == "ItemIsMenu") {
        return g_variant_new_boolean(FALSE);
    }
    if (name == "Menu") {
        return g_variant_new_object_path(kMenuPath);
    }
    return g_variant_new_string("");
}

void StatusNotifierItem::click(StatusItemClick click) {
    std::string token = std::exchange(token_, {});
    if (now_() - tokenCame_ <= kTokenHolds) {
        click.request.activationToken = std::move(token);
    }
    clicked_(click);
}

}  // namespace tavo
