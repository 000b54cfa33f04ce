#include "platform/linux/compositors/KWinWindows.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace tavo {
namespace {

constexpr char kService[] = "org.kde.KWin";
constexpr BusMethod kMatch = {kService, "/WindowsRunner", "org.kde.krunner1", "Match"};
constexpr BusMethod kRun = {kService, "/WindowsRunner", "org.kde.krunner1", "Run"};
constexpr BusMethod kWindowInfo = {kService, "/KWin", "org.kde.KWin", "getWindowInfo"};

// The runner names a window "ACTION_{UUID}". This is the action that activates it.
constexpr std::string_view kActivate = "0_";

std::string text(GVariant* info, const char* key) {
    const char* value = nullptr;
    return g_variant_lookup(info, key, "&s", &value) != FALSE ? value : "";
}

// The name of an entry, which KWin may give as the path of its file.
std::string desktopFile(GVariant* info) {
    std::string name = text(info, "desktopFile");
    name.erase(0, name.rfind('/') + 1);
    return name;
}

BusWindow describe(GVariant* info, std::string id) {
    BusWindow window;
    window.id = std::move(id);
    window.names = {text(info, "resourceName"), text(info, "resourceClass"), desktopFile(info)};
    gboolean minimised = FALSE;
    g_variant_lookup(info, "minimized", "b", &minimised);
    window.minimised = minimised != FALSE;
    return window;
}

// The windows in an answer of Match(), each once. KWin lists the oldest window first.
std::vector<std::string> windowIds(GVariant* reply) {
    std::vector<std::string> ids;
    Variant matches(g_variant_get_child_value(reply, 0));
    const std::size_t count = g_variant_n_children(matches.get());
    for (std::size_t i = 0; i < count && ids.size() < kMostBusWindows; ++i) {
        const Variant match(g_variant_get_child_value(matches.get(), i));
        const char* id = nullptr;
        g_variant_get_child(match.get(), 0, "&s", &id);
        if (std::string_view(id).starts_with(kActivate) &&
            std::find(ids.begin(), ids.end(), id) == ids.end()) {
            ids.emplace_back(id);
        }
    }
    std::reverse(ids.begin(), ids.end());
    return ids;
}

// Asks for all windows at once, and answers when the last reply is there.
class Survey : public std::enable_shared_from_this<Survey> {
public:
    Survey(std::vector<std::string> ids, BusWindowLister::Answered answered)
        : ids_(std::move(ids)), answered_(std::move(answered)), found_(ids_.size()) {}

    void ask(GDBusConnection* bus, BusCalls& calls) {
        left_ = ids_.size();
        for (std::size_t i = 0; i < ids_.size(); ++i) {
            calls.call(bus, kWindowInfo, g_variant_new("(s)", ids_[i].c_str() + kActivate.size()),
                       "(a{sv})",
                       [self = shared_from_this(), i](const Variant& reply, GError* /*error*/) {
                           self->told(i, reply);
                       });
        }
        if (left_ == 0) {
            finish();
        }
    }

private:
    // A window that has been closed meanwhile has an empty description.
    void told(std::size_t index, const Variant& reply) {
        if (reply) {
            const Variant info(g_variant_get_child_value(reply.get(), 0));
            if (g_variant_n_children(info.get()) > 0) {
                found_[index] = describe(info.get(), ids_[index]);
            }
        }
        if (--left_ == 0) {
            finish();
        }
    }

    void finish() {
        BusWindows windows;
        for (std::optional<BusWindow>& window : found_) {
            if (window) {
                windows.windows.push_back(*std::move(window));
            }
        }
        answered_(std::move(windows));
    }

    const std::vector<std::string> ids_;
    const BusWindowLister::Answered answered_;
    std::vector<std::optional<BusWindow>> found_;
    std::size_t left_ = 0;
};

class KWinWindows final : public BusWindowLister {
public:
    void list(GDBusConnection* bus, BusCalls& calls, Answered answered) override {
        // Every window's title contains the empty text.
        calls.call(
            bus, kMatch, g_variant_new("(s)", ""), "(a(sssida{sv}))",
            [bus, &calls, answered = std::move(answered)](const Variant& reply, GError* /*error*/) {
                if (!reply) {
                    answered(std::nullopt);
                    return;
                }
                std::make_shared<Survey>(windowIds(reply.get()), answered)->ask(bus, calls);
            });
    }

    void front(GDBusConnection* bus, BusCalls& calls,
               const std::vector<std::string>& ids) override {
        for (const std::string& id : ids) {
            calls.call(bus, kRun, g_variant_new("(ss)", id.c_str(), ""), nullptr,
                       [](const Variant& /*reply*/, GError* /*error*/) {});
        }
    }
};

}  // namespace

std::unique_ptr<BusWindowLister> makeKWinWindows() {
    return std::make_unique<KWinWindows>();
}

}  // namespace tavo
