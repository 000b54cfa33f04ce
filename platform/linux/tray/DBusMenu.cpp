#include "platform/linux/tray/DBusMenu.h"

#include <utility>

#include "platform/linux/dbus/GLibPointers.h"

namespace tavo {
namespace {

constexpr gint32 kRoot = 0;
constexpr guint32 kRevision = 1;
constexpr char kNoSuchEntry[] = "The menu has no such entry";
constexpr char kDescription[] =
    "<node><interface name='com.canonical.dbusmenu'>"
    "<property name='Version' type='u' access='read'/>"
    "<property name='TextDirection' type='s' access='read'/>"
    "<property name='Status' type='s' access='read'/>"
    "<property name='IconThemePath' type='as' access='read'/>"
    "<method name='GetLayout'>"
    "<arg name='parentId' type='i' direction='in'/>"
    "<arg name='recursionDepth' type='i' direction='in'/>"
    "<arg name='propertyNames' type='as' direction='in'/>"
    "<arg name='revision' type='u' direction='out'/>"
    "<arg name='layout' type='(ia{sv}av)' direction='out'/></method>"
    "<method name='GetGroupProperties'>"
    "<arg name='ids' type='ai' direction='in'/>"
    "<arg name='propertyNames' type='as' direction='in'/>"
    "<arg name='properties' type='a(ia{sv})' direction='out'/></method>"
    "<method name='GetProperty'>"
    "<arg name='id' type='i' direction='in'/>"
    "<arg name='name' type='s' direction='in'/>"
    "<arg name='value' type='v' direction='out'/></method>"
    "<method name='Event'>"
    "<arg name='id' type='i' direction='in'/>"
    "<arg name='eventId' type='s' direction='in'/>"
    "<arg name='data' type='v' direction='in'/>"
    "<arg name='timestamp' type='u' direction='in'/></method>"
    "<method name='EventGroup'>"
    "<arg name='events' type='a(isvu)' direction='in'/>"
    "<arg name='idErrors' type='ai' direction='out'/></method>"
    "<method name='AboutToShow'>"
    "<arg name='id' type='i' direction='in'/>"
    "<arg name='needUpdate' type='b' direction='out'/></method>"
    "<method name='AboutToShowGroup'>"
    "<arg name='ids' type='ai' direction='in'/>"
    "<arg name='updatesNeeded' type='ai' direction='out'/>"
    "<arg name='idErrors' type='ai' direction='out'/></method>"
    "<signal name='ItemsPropertiesUpdated'>"
    "<arg name='updatedProps' type='a(ia{sv})'/><arg name='removedProps' type='a(ias)'/></signal>"
    "<signal name='LayoutUpdated'>"
    "<arg name='revision' type='u'/><arg name='parent' type='i'/></signal>"
    "<signal name='ItemActivationRequested'>"
    "<arg name='id' type='i'/><arg name='timestamp' type='u'/></signal>"
    "</interface></node>";

GVariant* property(const std::string& name) {
    if (name == "Version") {
        return g_variant_new_uint32(3);
    }
    if (name == "TextDirection") {
        return g_variant_new_string("ltr");
    }
    if (name == "Status") {
        return g_variant_new_string("normal");
    }
    return name == "IconThemePath" ? g_variant_new_strv(nullptr, 0) : nullptr;
}

// In labels of dbusmenu an underscore marks the access key, and two underscores stand for one.
std::string label(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        escaped += c == '_' ? "__" : std::string(1, c);
    }
    return escaped;
}

GVariant* shortcut(const std::string& controlKey) {
    GVariantBuilder keys;
    g_variant_builder_init(&keys, G_VARIANT_TYPE("aas"));
    g_variant_builder_open(&keys, G_VARIANT_TYPE("as"));
    g_variant_builder_add(&keys, "s", "Control");
    g_variant_builder_add(&keys, "s", controlKey.c_str());
    g_variant_builder_close(&keys);
    return g_variant_builder_end(&keys);
}

// One argument of a call. GDBus has already checked the number and the types of the arguments.
template<typename Value>
Value argument(GVariant* parameters, gsize index, const char* type) {
    Value value = {};
    g_variant_get_child(parameters, index, type, &value);
    return value;
}

std::string stringArgument(GVariant* parameters, gsize index) {
    return argument<const char*>(parameters, index, "&s");
}

bool wanted(GVariant* names, const char* name) {
    const gsize count = g_variant_n_children(names);
    for (gsize i = 0; i < count; ++i) {
        if (stringArgument(names, i) == name) {
            return true;
        }
    }
    return count == 0;
}

}  // namespace

DBusMenu::DBusMenu(std::vector<StatusItemMenuEntry> entries,
                   std::function<void(std::size_t)> chosen)
    : entries_(std::move(entries)),
      chosen_(std::move(chosen)),
      object_(kDescription, {.call =
                                 [this](const char* method, GVariant* parameters,
                                        GDBusMethodInvocation* invocation) {
                                     called(method, parameters, invocation);
                                 },
                             .property = [](const char* name) { return property(name); }}) {}

void DBusMenu::called(const std::string& method, GVariant* parameters,
                      GDBusMethodInvocation* invocation) const {
    if (method == "GetLayout") {
        getLayout(parameters, invocation);
    } else if (method == "GetGroupProperties") {
        getGroupProperties(parameters, invocation);
    } else if (method == "GetProperty") {
        getProperty(parameters, invocation);
    } else if (method == "Event") {
        event(parameters, invocation);
    } else if (method == "EventGroup") {
        eventGroup(parameters, invocation);
    } else if (method == "AboutToShow") {
        aboutToShow(parameters, invocation);
    } else {
        aboutToShowGroup(parameters, invocation);
    }
}

void DBusMenu::getLayout(GVariant* parameters, GDBusMethodInvocation* invocation) const {
    const auto id = argument<gint32>(parameters, 0, "i");
    const auto depth = argument<gint32>(parameters, 1, "i");
    const Variant names(g_variant_get_child_value(parameters, 2));
    if (has(id)) {
        g_dbus_method_invocation_return_value(
            invocation, g_variant_new("(u@(ia{sv}av))", kRevision, node(id, depth, names.get())));
    } else {
        refuse(invocation, kNoSuchEntry);
    }
}

void DBusMenu::getGroupProperties(GVariant* parameters, GDBusMethodInvocation* invocation) const {
    const Variant ids(g_variant_get_child_value(parameters, 0));
    const Variant names(g_variant_get_child_value(parameters, 1));
    GVariantBuilder answer;
    g_variant_builder_init(&answer, G_VARIANT_TYPE("a(ia{sv})"));
    const auto add = [&](gint32 id) {
        if (has(id)) {
            g_variant_builder_add(&answer, "(i@a{sv})", id, properties(id, names.get()));
        }
    };
    const gsize count = g_variant_n_children(ids.get());
    for (gsize i = 0; i < count; ++i) {
        add(argument<gint32>(ids.get(), i, "i"));
    }
    if (count == 0) {
        for (gint32 id = kRoot; has(id); ++id) {
            add(id);
        }
    }
    g_dbus_method_invocation_return_value(invocation, g_variant_new("(a(ia{sv}))", &answer));
}

void DBusMenu::getProperty(GVariant* parameters, GDBusMethodInvocation* invocation) const {
    const auto id = argument<gint32>(parameters, 0, "i");
    const std::string name = stringArgument(parameters, 1);
    const Variant all(has(id) ? g_variant_ref_sink(properties(id, g_variant_new_strv(nullptr, 0)))
                              : nullptr);
    const Variant value(all ? g_variant_lookup_value(all.get(), name.c_str(), nullptr) : nullptr);
    if (value) {
        g_dbus_method_invocation_return_value(invocation, g_variant_new("(v)", value.get()));
    } else {
        refuse(invocation, "The menu has no such entry or property");
    }
}

void DBusMenu::event(GVariant* parameters, GDBusMethodInvocation* invocation) const {
    if (take(argument<gint32>(parameters, 0, "i"), stringArgument(parameters, 1))) {
        g_dbus_method_invocation_return_value(invocation, nullptr);
    } else {
        refuse(invocation, kNoSuchEntry);
    }
}

void DBusMenu::eventGroup(GVariant* parameters, GDBusMethodInvocation* invocation) const {
    const Variant events(g_variant_get_child_value(parameters, 0));
    GVariantBuilder unknown;
    g_variant_builder_init(&unknown, G_VARIANT_TYPE("ai"));
    gsize taken = 0;
    const gsize count = g_variant_n_children(events.get());
    for (gsize i = 0; i < count; ++i) {
        const Variant each(g_variant_get_child_value(events.get(), i));
        const auto id = argument<gint32>(each.get(), 0, "i");
        if (take(id, stringArgument(each.get(), 1))) {
            ++taken;
        } else {
            g_variant_builder_add(&unknown, "i", id);
        }
    }
    if (taken == 0 && count > 0) {
        g_variant_builder_clear(&unknown);
        refuse(invocation, kNoSuchEntry);
    } else {
        g_dbus_method_invocation_return_value(invocation, g_variant_new("(ai)", &unknown));
    }
}

void DBusMenu::aboutToShow(GVariant* parameters, GDBusMethodInvocation* invocation) const {
    if (has(argument<gint32>(parameters, 0, "i"))) {
        g_dbus_method_invocation_return_value(invocation, g_variant_new("(b)", FALSE));
    } else {
        refuse(invocation, kNoSuchEntry);
    }
}

void DBusMenu::aboutToShowGroup(GVariant* parameters, GDBusMethodInvocation* invocation) const {
    const Variant ids(g_variant_get_child_value(parameters, 0));
    GVariantBuilder unknown;
    g_variant_builder_init(&unknown, G_VARIANT_TYPE("ai"));
    for (gsize i = 0; i < g_variant_n_children(ids.get()); ++i) {
        const auto id = argument<gint32>(ids.get(), i, "i");
        if (!has(id)) {
            g_variant_builder_add(&unknown, "i", id);
        }
    }
    g_dbus_method_invocation_return_value(
        invocation,
        g_variant_new("(@aiai)", g_variant_new_array(G_VARIANT_TYPE_INT32, nullptr, 0), &unknown));
}

bool DBusMenu::has(gint32 id) const {
    return id >= kRoot && static_cast<std::size_t>(id) <= entries_.size();
}

GVariant* DBusMenu::node(gint32 id, gint32 depth, GVariant* names) const {
    GVariantBuilder children;
    g_variant_builder_init(&children, G_VARIANT_TYPE("av"));
    if (id == kRoot && depth != 0) {
        for (gint32 child = kRoot + 1; has(child); ++child) {
            g_variant_builder_add(&children, "v", node(child, 0, names));
        }
    }
    return g_variant_new("(i@a{sv}av)", id, properties(id, names), &children);
}

GVariant* DBusMenu::properties(gint32 id, GVariant* names) const {
    const Variant kept(g_variant_ref_sink(names));
    GVariantBuilder properties;
    g_variant_builder_init(&properties, G_VARIANT_TYPE_VARDICT);
    const auto add = [&](const char* name, GVariant* value) {
        const Variant taken(g_variant_ref_sink(value));
        if (wanted(names, name)) {
            g_variant_builder_add(&properties, "{sv}", name, value);
        }
    };
    if (id == kRoot) {
        add("children-display", g_variant_new_string("submenu"));
        return g_variant_builder_end(&properties);
    }
    const StatusItemMenuEntry& entry = entries_[static_cast<std::size_t>(id) - 1];
    add("enabled", g_variant_new_boolean(TRUE));
    add("visible", g_variant_new_boolean(TRUE));
    if (entry.text.empty()) {
        add("type", g_variant_new_string("separator"));
        return g_variant_builder_end(&properties);
    }
    add("label", g_variant_new_string(label(entry.text).c_str()));
    if (!entry.controlKey.empty()) {
        add("shortcut", shortcut(entry.controlKey));
    }
    return g_variant_builder_end(&properties);
}

bool DBusMenu::take(gint32 id, const std::string& event) const {
    if (!has(id)) {
        return false;
    }
    const std::size_t index = static_cast<std::size_t>(id) - 1;
    if (id != kRoot && event == "clicked" && !entries_[index].text.empty()) {
        chosen_(index);
    }
    return true;
}

}  // namespace tavo
