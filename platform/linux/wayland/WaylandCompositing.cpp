#include "platform/linux/wayland/WaylandCompositing.h"

#include <QEvent>
#include <QGuiApplication>
#include <QMargins>
#include <QRegion>
#include <QTimer>
#include <QWindow>
#include <map>
#include <utility>

#include <blur-client-protocol.h>
#include <qpa/qplatformnativeinterface.h>
#include <qpa/qplatformwindow.h>
#include <wayland-client.h>

#include "platform/linux/wayland/WaylandGlobal.h"
#include "platform/linux/wayland/WaylandWindow.h"

namespace tavo {
namespace {

// A function of Qt's Wayland plug-in, under the name "setmargins": how much on each side of the
// surface is outside the window geometry, in the surface's coordinates. It makes the window larger
// by as much.
using SetMargins = void (*)(QWindow*, const QMargins&);

SetMargins findSetMargins() {
    auto* const function =
        QGuiApplication::platformNativeInterface()->nativeResourceFunctionForWindow("setmargins");
    // By way of void (*)(), the type to which compilers let any function be cast.
    return reinterpret_cast<SetMargins>(reinterpret_cast<void (*)()>(function));
}

// How many device pixels a unit of the surface's coordinates is.
qreal surfaceScale(const QWindow& window) {
    return window.handle()->devicePixelRatio();
}

// Whether Qt takes the margins off the smallest size before it tells the compositor: as seen, 6.4
// does not, and 6.8 does.
constexpr bool kQtTakesMarginsOff = QT_VERSION >= QT_VERSION_CHECK(6, 8, 0);

class WaylandCompositing final : public QObject, public Compositing {
public:
    WaylandCompositing()
        : setMargins_(qtWaylandDisplay() == nullptr ? nullptr : findSetMargins()),
          blurring_(
              org_kde_kwin_blur_manager_interface.name, 1,
              [this](wl_registry* registry, std::uint32_t name) {
                  manager_ = static_cast<org_kde_kwin_blur_manager*>(
                      wl_registry_bind(registry, name, &org_kde_kwin_blur_manager_interface, 1));
                  changed.emit();
              },
              [this] {
                  loseManager();
                  changed.emit();
              }) {}
    WaylandCompositing(const WaylandCompositing&) = delete;
    WaylandCompositing& operator=(const WaylandCompositing&) = delete;
    ~WaylandCompositing() override { loseManager(); }

    bool active() const override { return true; }
    bool blurs() const override { return manager_ != nullptr; }
    bool takesMargins() const override { return setMargins_ != nullptr; }

    void blurBehind(std::uintptr_t id, const std::vector<PixelRect>& region) override {
        QWindow* const window = ownWindow(id);
        if (window != nullptr && manager_ != nullptr) {
            Surface& surface = follow(*window);
            surface.blurred = region;
            blur(*window, surface);
        }
    }

    void setMargin(std::uintptr_t id, const WindowMargin& margin) override {
        QWindow* const window = ownWindow(id);
        if (window == nullptr || setMargins_ == nullptr) {
            return;
        }
        const int side = qRound(margin.width / surfaceScale(*window));
        Surface& surface = follow(*window);
        surface.margins = QMargins(side, side, side, side);
        setMargins_(window, surface.margins);
        // Qt measures its windows in device-independent pixels, of `scale` device pixels.
        const qreal scale = window->devicePixelRatio();
        // The compositor leaves the margin out.
        const int takenOff = kQtTakesMarginsOff ? 2 * side : 0;
        window->setMinimumSize({qRound(margin.smallestWidth / scale) + takenOff,
                                qRound(margin.smallestHeight / scale) + takenOff});
        tellSmallestSizeSoon(*window);
        // Qt makes this the region of input.
        const PixelRect& input = margin.input;
        window->setMask(margin.width == 0
                            ? QRegion()
                            : QRegion(QRectF(input.x / scale, input.y / scale, input.width / scale,
                                             input.height / scale)
                                          .toAlignedRect()));
    }

private:
    // A window and what its surface was asked to have. Qt destroys the surface when it hides the
    // window.
    struct Surface {
        std::vector<PixelRect> blurred;
        QMargins margins;
        bool exposed = false;
        org_kde_kwin_blur* blur = nullptr;  // null while the window is not exposed
    };

    Surface& follow(QWindow& window) {
        const auto [found, added] = surfaces_.try_emplace(&window);
        if (added) {
            found->second.exposed = window.isExposed();
            window.installEventFilter(this);
            connect(&window, &QObject::destroyed, this, [this, key = &window] {
                unblur(surfaces_[key]);
                surfaces_.erase(key);
            });
        }
        return found->second;
    }

    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() == QEvent::Expose) {
            auto& window = static_cast<QWindow&>(*object);
            Surface& surface = surfaces_[&window];
            const bool before = std::exchange(surface.exposed, window.isExposed());
            if (!surface.exposed) {
                unblur(surface);
            } else if (!before) {
                // Qt tells the compositor no window geometry while a window is not exposed.
                if (setMargins_ != nullptr) {
                    setMargins_(&window, surface.margins);
                }
                blur(window, surface);
                tellSmallestSizeSoon(window);
            }
        }
        return false;
    }

    // GNOME's compositor adds the margin that the window has at the moment to the smallest size,
    // and subtracts the margin of later from the sum. So it is told again once it has the margin.
    static void tellSmallestSizeSoon(QWindow& window) {
        QTimer::singleShot(0, &window, [&window] {
            if (window.handle() != nullptr) {
                window.handle()->propagateSizeHints();
            }
        });
    }

    // KWin follows when the surface is committed next.
    void blur(QWindow& window, Surface& surface) {
        wl_surface* const shown = waylandSurfaceOf(&window);
        if (surface.blurred.empty()) {
            unblur(surface);
        }
        if (manager_ == nullptr || shown == nullptr || !surface.exposed ||
            surface.blurred.empty()) {
            return;
        }
        if (surface.blur == nullptr) {
            surface.blur = org_kde_kwin_blur_manager_create(manager_, shown);
        }
        wl_region* const region = wl_compositor_create_region(qtWaylandCompositor());
        const qreal scale = surfaceScale(window);
        for (const PixelRect& part : surface.blurred) {
            const QRect rect =
                QRectF(part.x / scale, part.y / scale, part.width / scale, part.height / scale)
                    .toRect();
            wl_region_add(region, rect.x(), rect.y(), rect.width(), rect.height());
        }
        org_kde_kwin_blur_set_region(surface.blur, region);
        org_kde_kwin_blur_commit(surface.blur);
        wl_region_destroy(region);
    }

    static void unblur(Surface& surface) {
        if (surface.blur != nullptr) {
            org_kde_kwin_blur_release(surface.blur);
            surface.blur = nullptr;
        }
    }

    void loseManager() {
        for (auto& [window, surface] : surfaces_) {
            unblur(surface);
            surface.blurred.clear();
        }
        if (manager_ != nullptr) {
            org_kde_kwin_blur_manager_destroy(manager_);
            manager_ = nullptr;
        }
    }

    const SetMargins setMargins_;
    org_kde_kwin_blur_manager* manager_ = nullptr;
    std::map<QWindow*, Surface> surfaces_;
    WaylandGlobal blurring_;
};

}  // namespace

std::unique_ptr<Compositing> makeWaylandCompositing() {
    return std::make_unique<WaylandCompositing>();
}

}  // namespace tavo
