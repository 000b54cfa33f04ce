#include "platform/linux/session/SessionDesktopSettings.h"

#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/MainThreadPoster.h"
#include "platform/linux/settings/PortalDesktopSettings.h"
#include "platform/linux/settings/SettingValues.h"
#include "platform/linux/x11/XSettings.h"

namespace tavo {
namespace {

DesktopPreferences publishedSettings(const std::string& display) {
    const std::string property = readXSettings(display);
    const auto number = [&](const char* name) { return xNumberSetting(property, name); };
    DesktopPreferences told;
    if (isDarkTheme(xSetting(property, "Net/ThemeName").value_or(""))) {
        told.colorScheme = ColorScheme::Dark;
    }
    told.reducedMotion = number("Gtk/EnableAnimations") == 0;
    told.fontFamilies = familiesOfPangoFont(xSetting(property, "Gtk/FontName").value_or(""));
    if (const auto dots = number("Xft/DPI")) {  // in 1024ths
        told.screenAndTextScale = screenAndTextScaleOf(*dots / 1024.0);
        told.textScale = 1;  // the portal's is in this number already
    }
    if (const auto time = number("Net/DoubleClickTime")) {
        told.doubleClickTime = doubleClickTimeOf(*time);
    }
    if (const auto distance = number("Net/DoubleClickDistance"); distance && *distance >= 0) {
        told.doubleClickDistance = *distance;
    }
    const bool blinks = number("Net/CursorBlink") != 0;
    const auto time = number("Net/CursorBlinkTime");
    if (!blinks || time) {
        told.cursorBlinkTime = cursorBlinkTimeOf(blinks, time.value_or(0));
    }
    return told;
}

struct Read {
    DesktopPreferences configured;
    DesktopPreferences published;
};

// Shared with the thread that reads, which may outlast the settings.
class Reading {
public:
    Reading(ConfigurationFolders folders, std::string display, MainThreadPoster& poster,
            std::function<void()> done)
        : folders_(std::move(folders)),
          display_(std::move(display)),
          poster_(&poster),
          done_(std::move(done)) {}

    // What was read last. Any thread, like all functions here.
    Read latest() {
        const std::lock_guard lock(mutex_);
        return latest_;
    }

    void awaitFirst(std::chrono::milliseconds patience) {
        std::unique_lock lock(mutex_);
        finished_.wait_for(lock, patience, [this] { return finishedOnce_; });
    }

    // The poster is used no more.
    void leave() {
        const std::lock_guard lock(mutex_);
        poster_ = nullptr;
    }

    // Reads on a thread of its own. While that reads, a further call makes it read once more.
    static void begin(const std::shared_ptr<Reading>& self) {
        {
            const std::lock_guard lock(self->mutex_);
            self->wanted_ = true;
            if (std::exchange(self->running_, true)) {
                return;
            }
        }
        try {
            std::thread([self] { self->readWhileWanted(); }).detach();
        } catch (const std::system_error&) {
            self->readWhileWanted();  // the system allows no further thread
        }
    }

private:
    bool wanted() {
        const std::lock_guard lock(mutex_);
        running_ = std::exchange(wanted_, false) && poster_ != nullptr;
        return running_;
    }

    void readWhileWanted() {
        while (wanted()) {
            Read read = {configuredSettings(folders_), publishedSettings(display_)};
            const std::lock_guard lock(mutex_);
            latest_ = std::move(read);
            finishedOnce_ = true;
            finished_.notify_all();
            if (poster_ != nullptr) {
                poster_->post(done_);
            }
        }
    }

    const ConfigurationFolders folders_;
    const std::string display_;
    std::mutex mutex_;
    std::condition_variable finished_;
    // All under the mutex.
    MainThreadPoster* poster_;
    const std::function<void()> done_;
    Read latest_;
    bool finishedOnce_ = false;
    bool running_ = false;
    bool wanted_ = false;
};

class CombinedDesktopSettings final : public SessionDesktopSettings {
public:
    CombinedDesktopSettings(ConfigurationFolders folders, std::string display, SessionBus& bus,
                            MainQueue& mainQueue)
        : portal_(makePortalDesktopSettings(bus, mainQueue)),
          portalChanges_(portal_->changed.subscribe([this] { announce(); })),
          poster_(mainQueue),
          reading_(std::make_shared<Reading>(std::move(folders), std::move(display), poster_,
                                             [this] { announce(); })) {
        readAgain();
    }
    CombinedDesktopSettings(const CombinedDesktopSettings&) = delete;
    CombinedDesktopSettings& operator=(const CombinedDesktopSettings&) = delete;
    ~CombinedDesktopSettings() override { reading_->leave(); }

    DesktopPreferences preferences() const override {
        auto [told, published] = reading_->latest();
        const DesktopPreferences portal = portal_->preferences();
        fillIn(told, {.colorScheme = portal.colorScheme});
        fillIn(told, published);
        fillIn(told, portal);
        return told;
    }

    void awaitFirstAnswer(std::chrono::milliseconds patience) override {
        const auto end = std::chrono::steady_clock::now() + patience;
        reading_->awaitFirst(patience);
        portal_->awaitFirstAnswer(std::chrono::duration_cast<std::chrono::milliseconds>(
            end - std::chrono::steady_clock::now()));
    }

    void readAgain() override { Reading::begin(reading_); }

private:
    void announce() {
        DesktopPreferences now = preferences();
        if (std::exchange(announced_, now) != now) {
            changed.emit();
        }
    }

    const std::unique_ptr<DesktopSettings> portal_;
    const Subscription portalChanges_;
    DesktopPreferences announced_;
    MainThreadPoster poster_;
    const std::shared_ptr<Reading> reading_;
};

}  // namespace

std::unique_ptr<SessionDesktopSettings> makeSessionDesktopSettings(ConfigurationFolders folders,
                                                                   std::string display,
                                                                   SessionBus& bus,
                                                                   MainQueue& mainQueue) {
    return std::make_unique<CombinedDesktopSettings>(std::move(folders), std::move(display), bus,
                                                     mainQueue);
}

}  // namespace tavo
